"""What others may do to the module while it is imported or called: it fails or does right.

A failed import is repeated, to see that it leaves nothing behind, and then followed by one in
surroundings put right again, which has to succeed.
"""

import random

import pytest

import marlune.tables.data_tables as data_tables
from columns import blended
from harness import trial

IMPORT = """
    import types, warnings
    own_zip, own_round = zip, round
    def module_dict():
        return vars(sys.modules["data_tables"])
    def bind(**attributes):
        module_dict().update(attributes)
    class At:
        # Bound in advance to a name that the body binds: acts when that statement lets it go.
        def __init__(self, action): self.action = action
        def __del__(self): self.action()
    class Liar(list):
        def __iter__(self): return iter((1, 0.5))
    def body_with(statement, action):
        module = new_module()
        vars(module)[statement] = At(action)
        exec_dynamic(module)
        sys.modules[NAME] = module
    action = lambda: __import__(NAME)
"""
FAIL_AND_RECOVER = """
    failures = set()
    def fail():
        sys.modules.pop("data_tables", None)
        failures.add(repr(failure_of(action)))
        assert NAME not in sys.modules
    growths = growth(fail, times=3)
    assert max(growths) <= 0, growths
    sys.modules["builtins"], builtins.zip, builtins.round = builtins, own_zip, own_round
    warnings.resetwarnings()
    import_it()
    print(*failures, sep="\\n")
"""


def zip_(result):
    return f"builtins.zip = lambda *lists: {result}"


def at(statement, action):
    return f"action = lambda: body_with({statement!r}, lambda: {action})"


FAILURES = {
    zip_(5): """TypeError("'int' object is not iterable")""",
    zip_("[[0.1]]"): "ValueError('not enough values to unpack (expected 2, got 1)')",
    zip_("[[.1, .2, object()]]"): "ValueError('too many values to unpack (expected 2)')",
    zip_("[None]"): """TypeError("'NoneType' object is not iterable")""",
    zip_("[('a', .1)]"): """TypeError("unsupported operand type(s) for -: 'float' and 'str'")""",
    zip_("((.1, .2 / (3 - n)) for n in range(9))"): "ZeroDivisionError('division by zero')",
    zip_("sys.exit('now')"): "SystemExit('now')",
    zip_("module_dict().clear() or []"): """NameError("name '_dav_mi_linear' is not defined")""",
    "builtins.zip = type('zip', (zip,), {'__next__': None})": "TypeError(",
    "builtins.round = None": """TypeError("'NoneType' object is not callable")""",
    "builtins.round = lambda *rest: [][0]": "IndexError('list index out of range')",
    "del sys.modules['builtins']": """NameError("name 'zip' is not defined")""",
    "sys.modules['builtins'] = 5": """NameError("name 'zip' is not defined")""",
    """
    class Builtins(types.ModuleType):
        def __getattr__(self, name): raise OSError(name)
    sys.modules['builtins'] = Builtins('builtins')""": "OSError('zip')",
    """
    warnings.simplefilter("error")
    version = ctypes.c_ulong.in_dll(ctypes.pythonapi, "Py_Version")
    page = ctypes.addressof(version) & ~4095  # A constant of the interpreter: made writable.
    assert ctypes.CDLL(None).mprotect(ctypes.c_void_p(page), 8192, 7) == 0
    version.value = 0x030D00F0""": 'RuntimeWarning("compile time Python version 3.1',
    """
    size = ctypes.c_ssize_t.from_address(id(float) + float.__base__.__basicsize__ * 2)
    assert size.value == float.__basicsize__
    def action():
        size.value += 8
        try: __import__(NAME)
        finally: size.value -= 8""": "ImportError('data_tables has been built for an interp",
    at("_dav_mi_linear", "bind(_dav_mi_linear=5)"): "TypeError(",
    at("_build_dav2004r_data", "bind(_build_dav2004r_data=5)"): "TypeError(",
    at("_DAV2004R_DATA", "module_dict()['_DAV2004R_DATA'].clear()"): "KeyError('Agg_2o')",
    at("_DAV2004R_DATA", "bind(_DAV2004R_DATA=5)"): "TypeError(",
    at("_OX_M_BASE", "bind(_QX_LIFE=own_zip())"): (
        """TypeError("'zip' object is not subscriptable")"""
    ),
    at("_OX_M_BASE", "bind(_QX_LIFE='ab')"): """TypeError("can't multiply sequence by non-int""",
    at("_OX_F_BASE", "bind(_OX_M_BASE=5)"): """TypeError("'int' object is not iterable")""",
    at("_OX_F_BASE", "bind(_OX_M_BASE=['a'])"): """TypeError("'<' not supported between""",
    at("_IX_F_BASE", "bind(_IX_M_BASE=[1j])"): """TypeError("type complex doesn't define""",
    at("GRMF80", "module_dict().clear()"): """NameError("name 'PER2020_""",
}


@pytest.mark.parametrize(("setting", "failure"), FAILURES.items(), ids=range(len(FAILURES)))
def test_import_fails_as_it_should_and_then_succeeds(setting, failure):
    printed = trial(IMPORT, setting, FAIL_AND_RECOVER)
    assert printed.startswith(failure) and printed.count("\n") == 1, printed


# Each setting, and what it makes of a list of the module.
SUCCESSES = {
    "zip gives pairs that are walked otherwise than they are": (
        "builtins.zip = lambda *lists: [Liar([7, 7])]",
        "_build_dav2004r_data()['Agg_2o']['MI_m'][2005] == [1 + 0.05 * -0.5]",
    ),
    "a base is walked otherwise than it is": (
        at("_OX_F_BASE", "bind(_OX_M_BASE=Liar(module_dict()['_OX_M_BASE']))"),
        "DummyEXIT_Select['data']['ox_m'][1] == [1.0, 0.5 * 0.8]",
    ),
    "round clears the list under the walk": (
        "builtins.round = lambda *rest: module_dict()['_IX_M_BASE'].clear()",
        "DummySD_Select['data']['ix_m'][1] == [None]",
    ),
    "round lengthens the list under the walk": (
        """
        def longer(rate, places):
            rates = module_dict()["_IX_F_BASE"]
            rates.extend([1] * (len(rates) < 200))
        builtins.round = longer""",
        "DummySD_Select['data']['ix_f'][1] == [None] * 200",
    ),
    "round looks at every list": (
        """
        lists = itertools.count()
        def look(rate, places):
            if next(lists) % 90 == 0:
                sum(len(repr(each[:3])) for each in gc.get_objects() if type(each) is list)
            return own_round(rate, places)
        builtins.round = look""",
        "REPO_TABLES['DummyEXIT_SelectGen_d'] is module.DummyEXIT_SelectGen_d",
    ),
    "elements clear the list under the walk": (
        """
        class Odd(float):
            def __lt__(self, other): return module_dict()["_OX_M_BASE"].clear() or True
        action = lambda: body_with(
            "_OX_F_BASE", lambda: bind(_OX_M_BASE=[Odd(n) for n in range(9)]))""",
        "DummyEXIT_Select['data']['ox_m'][1] == [0.0]",
    ),
    "a base is asked for the slice that base[:100] is": (
        """
        class Own(list):
            def __getitem__(self, key): return [0.5] if key == slice(None, 100, None) else []
        action = lambda: body_with("_OX_M_BASE", lambda: bind(_QX_LIFE=Own()))""",
        "DummyLIFE_LinearGen['data']['mi_f'] == [0.5 * 0.0015, 0.0]",
    ),
    "data that the module has lost is among the builtins": (
        """
        def lose(name="_DAV2004R_DATA"): setattr(builtins, name, module_dict().pop(name))
        action = lambda: body_with("_DAV2004R_DATA", lose)""",
        "DAV2004R_Agg_2o['data'] is builtins._DAV2004R_DATA['Agg_2o']",
    ),
    "rates can be multiplied, and are no factors": (
        """
        class Rate:
            def __init__(self, rate): self.rate = rate
            def __mul__(self, factor): return self.rate * factor
            def __lt__(self, other): return self.rate < other
        def blend(start, target):
            for each in gc.get_objects():
                if type(each) is list and len(each) > 90 and type(each[0]) is float:
                    each[:] = map(Rate, each)
        def become_tuples(*names):
            bind(**{name: tuple(map(Rate, module_dict()[name])) for name in names})
        action = lambda: body_with("_build_dav2004r_data", lambda: bind(
            _dav_mi_linear=blend,
            _IX_F_BASE=At(lambda: become_tuples("_QX_LIFE", "_OX_M_BASE", "_IX_M_BASE"))))""",
        "DummyLIFE_LinearGen['data']['mi_m'][:-1] == [q * 0.0015 for q in module._QX_LIFE[:100]]",
    ),
    "imported again in the midst": (
        """
        def again():
            sys.modules.pop(NAME, None)
            module = sys.modules["data_tables"]
            assert importlib.import_module(NAME) is module and exec_dynamic(module) == 0
            assert importlib.reload(module) is module and "GRMF95" not in vars(module)
        action = lambda: body_with("GRMF80", again)""",
        "GRMF95['omega'] > 0",
    ),
}


@pytest.mark.parametrize(("setting", "effect"), SUCCESSES.values(), ids=SUCCESSES)
def test_import_goes_by_what_it_finds(setting, effect):
    trial(IMPORT, setting, f"action(); module = import_it(); assert module.{effect}; leave()")


def test_spec_with_a_fault():
    """A missing attribute is tolerated, but for the name; None is kept, but for the locations."""
    trial("""
        origin, places = importlib.util.find_spec(NAME).origin, "submodule_search_locations"
        sound = {"name": NAME, "origin": origin, "loader": 1, "parent": "p", places: ["here"]}
        kept_as = dict(zip(sound, "__name__ __file__ __loader__ __package__ __path__".split()))
        def create(bad, fault, at=99):
            class Spec:
                def __getattr__(self, name):
                    reads.append(name)
                    if name != bad or reads.count(name) < at:
                        return sound[name]
                    if isinstance(fault, type):
                        raise fault(name)
                    return fault
            reads.clear()
            return vars(create_dynamic(Spec())).get(kept_as.get(bad), "absent")
        reads = []
        create(None, None)
        last = {name: reads.count(name) for name in sound}  # The interpreter reads some before.
        for name in sound:
            for fault in (OSError, SystemExit, *[AttributeError] * (name == "name")):
                assert type(failure_of(create, name, fault, last[name])) is fault, (name, fault)
            assert create(name, 5, last[name]) == 5
            assert create(name, None, last[name]) == ("absent" if name == places else None)
            if name != "name":
                unset = "absent" if name in ("origin", places) else None
                assert create(name, AttributeError, last[name]) == unset, name
        import_it()
    """)


def test_finalizer_imports_while_a_failed_import_is_given_up():
    """The last owner of `round` is the failed import, and drops it when the module is forgotten."""
    trial(
        IMPORT,
        """
        made = []
        class Round:
            def __call__(self, *arguments):
                del self, sys.modules[NAME]
                builtins.round = own_round
                raise LookupError
            def __del__(self):
                made.append(import_it())
        builtins.round = Round()
        assert type(failure_of(action)) is LookupError
        assert import_it() is made[0] and len(made) == 1, made
        leave()
        """,
    )


def test_function_of_a_failed_import():
    """The blending does without the module, begun or not; the builder says what it misses."""
    trial(
        IMPORT,
        """
        import threading
        begun, failed, results = threading.Event(), threading.Event(), []
        class Slow(float):
            def __sub__(self, other):
                begun.set()
                assert failed.wait(60)
                return 1.0
        def failing_zip(*lists):
            global blend, build, thread
            if threading.current_thread() is not threading.main_thread():
                return own_zip(*lists)
            blend, build = map(module_dict().get, ["_dav_mi_linear", "_build_dav2004r_data"])
            thread = threading.Thread(target=lambda: results.append(blend([0.0], [Slow()])))
            thread.start()
            begun.wait(60)
            raise LookupError
        builtins.zip = failing_zip
        assert type(failure_of(action)) is LookupError
        builtins.zip = own_zip
        late = failure_of(build)
        assert type(late) is RuntimeError and "module data_tables, which is not imp" in str(late)
        rates = blend([0.0, 1.0], [1.0])
        assert list(rates) == list(range(2004, 2025)) and rates[2014] == [0.5], rates
        failed.set()
        thread.join()
        assert results[0][2005] == [0.05] and list(results[0]) == list(range(2004, 2025)), results
        # Asked for in the midst of an import that has nothing ready yet.
        class Builtins(types.ModuleType):
            def __getattr__(self, name):
                results.append(blend([0.0], [1.0])[2014])
                return getattr(builtins, name)
        sys.modules["builtins"] = Builtins("builtins")
        import_it()
        assert results[1:] == [[0.5], [0.5]] and blend([0.0], [1.0])[2014] == [0.5], results
        """,
    )


# ---- lists that change while they are blended ----


class Meddler:
    """A number whose arithmetic does at random what it likes to the lists, and writes it down."""

    def __init__(self, dice, lists, log):
        self.dice, self.lists, self.log = dice, lists, log

    def act(self, how, other):
        self.log.append((how, other if isinstance(other, float) else type(other).__name__))
        victim, another = self.dice.choice(self.lists), Meddler(self.dice, self.lists, self.log)
        match self.dice.randrange(40):
            case 0:
                raise LookupError(len(self.log))
            case 1:
                return NotImplemented
            case 2:
                return "text"
            case 3:
                victim.clear()
            case 4 | 5:
                victim[:] = [0.5] * self.dice.randrange(12)
            case 6 | 7:
                del victim[self.dice.randrange(9) :]
            case 8 | 9 | 10:
                victim[:0] = [another] * (len(victim) < 30)
            case 11 | 12 | 13:
                victim.extend([0.25] * (len(victim) < 30))
        return self.dice.choice([0.5, 2, another])

    def __repr__(self):
        return "Meddler"


for name in ("add", "radd", "sub", "rsub", "mul", "rmul"):
    setattr(Meddler, f"__{name}__", lambda self, other, name=name: self.act(name, other))


def story(blend, seed):
    """All that can be seen of a blend: what the elements were asked, the result or the failure."""
    dice, log, lists = random.Random(seed), [], ([], [])
    for each in lists:
        each += dice.choices([0.1, 0.7, 3, Meddler(dice, lists, log)], k=dice.randrange(1, 9))
    try:
        return log, "result", repr(blend(*lists)), repr(lists)
    except (LookupError, TypeError) as error:
        return log, type(error), str(error), repr(lists)


def test_meddling_elements_see_the_same_as_by_the_rule():
    """The walk, the order of the operations and the failures are those of the plain expression."""
    ends = set()
    for seed in range(2000):
        told = story(data_tables._dav_mi_linear, seed)
        assert told == story(blended, seed), seed
        ends.add(told[1])
    assert ends == {"result", LookupError, TypeError}
