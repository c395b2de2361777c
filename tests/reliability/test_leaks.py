"""Nothing is left behind by calls, nor by imports that fail for lack of memory.

Imports that fail for other reasons are looked at in the same way in test_hostile_surroundings.py.
"""

from pathlib import Path

import pytest

import marlune.tables.data_tables as module
from harness import growth, trial

blend, build = module._dav_mi_linear, module._build_dav2004r_data


class Sour:
    """A number whose arithmetic works for a while."""

    def __init__(self, sound):
        self.sound = sound

    def reckon(self, other):
        self.sound -= 1
        if self.sound < 0:
            raise ArithmeticError("sour")
        return self

    __add__ = __radd__ = __sub__ = __rsub__ = __mul__ = __rmul__ = reckon


def build_with(replacement):
    """Build while the attribute `_dav_mi_linear` is something else, or gone."""
    del module._dav_mi_linear
    if replacement is not None:
        module._dav_mi_linear = replacement
    try:
        return build()
    finally:
        module._dav_mi_linear = blend


WRONG = (
    "", "[], [], []", "[], target=[]", "[], mi_start=[]", "mi_ziel=[]", "[], (0.1,)",
    "type('Rates', (list,), {})(), []",
)  # fmt: skip
CALLS = {
    "floats": (lambda: blend([0.1, 0.2], [0.3, 0.4, 0.5]), None),
    "ints and others": (lambda: blend([1, Sour(99), True], [0.5, 2, 10**40]), None),
    "keywords": (lambda: blend(mi_ziel=[0.1], mi_start=[0.2]), None),
    "build": (build, None),
    "build with another blend": (lambda: build_with(lambda start, target: start), None),
    **{wrong: (eval(f"lambda: blend({wrong})"), TypeError) for wrong in WRONG},
    "no number": (lambda: blend([0.1, 0.2, "x"], [0.3, 0.4, "y"]), TypeError),
    "sour difference": (lambda: blend([0.1] * 9 + [Sour(0)], [0.2] * 10), ArithmeticError),
    "sour product": (lambda: blend([0.1] * 9 + [Sour(1)], [0.2] * 10), ArithmeticError),
    "sour sum": (lambda: blend([0.1] * 9 + [Sour(2)], [0.2] * 10), ArithmeticError),
    "sour later": (lambda: blend([0.1] * 9 + [Sour(20)], [0.2] * 10), ArithmeticError),
    "build with an argument": (lambda: build(1), TypeError),
    "build without blend": (lambda: build_with(None), NameError),
    "build with a blend that fails": (lambda: build_with(lambda start: start), TypeError),
}


def growth_by_calls():
    """The names of the calls that answered otherwise than they should, or left something behind."""

    def outcome(call):
        try:
            call()
        except Exception as error:
            return type(error)

    for name, (call, failure) in CALLS.items():
        if outcome(call) is not failure or max(growth(lambda call=call: outcome(call))) > 0:
            yield name


def test_calls_leave_nothing_behind():
    """In a process where nothing else allocates or frees, in which a leak would show."""
    printed = trial(f"""
        sys.path.append({str(Path(__file__).parent)!r})
        import test_leaks
        kept = []
        growths = growth(lambda: kept.append(object()), times=50)
        print(min(growths) >= 40, len(test_leaks.CALLS), *test_leaks.growth_by_calls())
    """)
    assert printed == f"True {len(CALLS)}\n"


@pytest.mark.parametrize("point", [400, 900, 1_100, 1_300])
def test_imports_without_memory_leave_nothing_behind(point):
    trial(f"""
        allocations = itertools.cycle(range({point}, {point} + 5))
        def fail():
            # Several in a row: there are some that the interpreter does without.
            point = next(allocations)
            assert fails(lambda: __import__(NAME), of_interpreter, point, point + 20), point
        growths = growth(fail)
        assert max(growths) <= 0, growths
    """)


def test_importing_again_costs_the_byte_that_the_interpreter_forgets():
    """It keeps the state of a module, of no size here, anew each time that create hands it out."""
    trial("""
        module = import_it()
        def again():
            del sys.modules[NAME]
            assert import_it() is module
        growths = growth(again, times=7)
        assert max(growths) <= 7, growths
        leave()
    """)
