"""Memory runs out at every point of the import and of the functions, once or for good.

_testcapi.set_nomemory lets allocations of the interpreter fail, by number. A module of the standard
library goes through the same as control: what it suffers as well is not the fault of this one.
Where the system gives no more, the C library has nothing either, nor what a thread needs.
"""

import importlib.util
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest

from harness import NAME, SANITIZED, trial

PARTS = 8
# Every point on two builds. The others differ by the compiler alone, or are slow.
STRIDE = {"clang": 11, "sanitize": 41}.get(os.environ.get("DATA_TABLES_BUILD", ""), 1)
# CPython 3.15.0 itself crashes when an append in importlib, before the module is reached, fails.
FIRST = 200 if sys.version_info[:2] == (3, 15) else 0

# Mapped and found before the forks. The C++ run-time library then sets aside what it throws with
# when nothing is left.
IMPORT = """
    ctypes.CDLL(importlib.util.find_spec(NAME).origin)
    action = lambda: __import__(NAME)
    def check(failed):
        # After the exec step the interpreter itself may still fail, and leaves what is complete.
        gone = NAME not in sys.modules
        assert (failed and gone) or complete(sys.modules[NAME]), failed
"""
CONTROL = """
    action = lambda: __import__("_queue")
    def check(failed):
        assert failed or "_queue" in sys.modules
"""
CALL = """
    module = import_it()
    expected = repr(action())
    def check(failed):
        assert failed or repr(action()) == expected
"""
BUILD = "action = lambda: module._build_dav2004r_data()", CALL
# With a zip that is not the interpreter's, nothing that the compiler has computed is taken.
BY_RULES = """
    import builtins
    builtins.zip = lambda *each, zip=builtins.zip: zip(*each)
""", *BUILD  # fmt: skip
BLEND = "action = lambda: module._dav_mi_linear(start, target)", CALL
FLOATS = "start, target = [n / 7 for n in range(40)], [n / 3 for n in range(50)]", *BLEND
FRACTIONS = """
    from fractions import Fraction
    start, target = ([Fraction(n, prime) for n in range(40)] for prime in (10007, 10009))
""", *BLEND  # fmt: skip


def sweep(setting, allocations, lasting, record_property, at_least, stride=1):
    """The parts of the sweep run side by side."""
    first = FIRST if setting == [IMPORT] and allocations == "of_interpreter" else 0
    # An import has much that is done once in a process, and may be the one thing that fails.
    block = 1 if setting == [IMPORT] else 16

    def part(index):
        points = f"{first + index * stride}, {PARTS * stride}"
        call = f"sweep(action, check, {allocations}, {lasting}, {points}, {block})"
        return int(trial(*setting, f"print({call})"))

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        failed = sum(pool.map(part, range(PARTS)))
    record_property("points that failed", failed)
    print(failed, "points failed")
    assert failed >= at_least // stride


once_and_for_good = pytest.mark.parametrize("lasting", [False, True], ids=["once", "for good"])


@once_and_for_good
@pytest.mark.parametrize(
    ("setting", "stride", "at_least"),
    [
        pytest.param([IMPORT], 1, 1_500, id="import"),
        pytest.param([CONTROL], 1, 200, id="control"),
        pytest.param(FLOATS, 1, 600, id="blend of floats"),
        pytest.param(FRACTIONS, 1, 1_000, id="blend of fractions"),
        pytest.param(BUILD, 1, 80, id="build"),
        pytest.param(BY_RULES, STRIDE, 6_000, id="build by the rules"),
    ],
)
def test_interpreter_has_no_memory(setting, lasting, stride, at_least, record_property):
    sweep(setting, "of_interpreter", lasting, record_property, at_least, stride)


@pytest.mark.skipif(SANITIZED, reason="the sanitizer has taken malloc over")
@once_and_for_good
def test_cxx_code_has_no_memory(lasting, tmp_path, monkeypatch, record_property):
    """Only the import has C++ code that allocates by itself; the functions do without."""
    library = tmp_path / "failing_new.so"
    source = Path(__file__).with_name("failing_new.cpp")
    command = ["c++", "-std=c++20", "-O1", "-shared", "-fPIC", source, "-o", library]
    subprocess.run(command, check=True)
    monkeypatch.setenv("LD_PRELOAD", str(library))
    sweep([IMPORT], "of_cxx", lasting, record_property, at_least=2)


def test_refusal_has_no_memory():
    """Where there is no memory for its entry in the traceback, a refusal is still that refusal."""
    trial("""
        module, told = import_it(), []
        build, blend = module._build_dav2004r_data, vars(module).pop("_dav_mi_linear")
        class Own(list): pass
        calls = [
            [build], [blend], [blend, []], [blend, [], [], []], [blend, [], 5], [blend, [], Own()],
            [blend, ["a"], ["b"]], [lambda: blend([], x=1)], [lambda: blend([], mi_start=1)],
        ]
        for call in calls:
            text, without, sound = str(failure_of(*call)), 0, 0
            for point in itertools.count():
                heal = of_interpreter(point, point + 1)
                error = failure_of(*call)
                heal()
                refusal = error.__context__ if type(error) is MemoryError else error
                if refusal is None:
                    continue
                assert str(refusal) == text, repr(refusal)
                own = 'File "data_tables"' in "".join(traceback.format_exception(refusal))
                # What takes its place where the entry of a caller fails is the interpreter's.
                assert error is refusal or own, (call, point)
                without += not own
                sound = sound + 1 if own and error is refusal else 0
                if sound == 16:
                    break
            told.append(without)
        assert min(told) > 3, told
    """)


GREEDY = """
    import resource, threading
    eaten, malloc = [None] * 2_000_000, ctypes.CDLL(None).malloc
    malloc.restype = ctypes.c_void_p
    def eat(*rest):
        # All that the system gives, to the smallest piece.
        in_use = int(Path("/proc/self/statm").read_text().split()[0]) * resource.getpagesize()
        resource.setrlimit(resource.RLIMIT_AS, (in_use + (4 << 20), -1))
        try:
            for place in range(len(eaten)):
                eaten[place] = place + 0.5
        finally:
            while malloc(1):
                pass
    def starve(action):
        failures.append(failure_of(action))
        resource.setrlimit(resource.RLIMIT_AS, (-1, -1))
        eaten.clear()
    class Greedy(float):
        __sub__ = eat
    def in_thread(action):
        thread = threading.Thread(target=action)
        thread.start()
        thread.join()
    failures = []
    call = lambda: module._dav_mi_linear([0.0], [Greedy()])
"""
END = """
    assert [*map(type, failures)] == [MemoryError], failures
    assert import_it()._dav_mi_linear([0.0], [1.0])[2014] == [0.5]
"""
MEALS = {
    "import": "zip, builtins.zip = builtins.zip, eat; starve(import_it); builtins.zip = zip",
    "call": "module = import_it(); starve(call)",
    "call in a new thread": "module = import_it(); in_thread(lambda: starve(call))",
}


@pytest.mark.skipif(SANITIZED, reason="the sanitizer needs more room than there is")
@pytest.mark.parametrize("meal", MEALS.values(), ids=MEALS)
def test_system_has_no_memory(meal):
    trial(GREEDY, meal, END)


@pytest.mark.skipif(SANITIZED, reason="the C++ library is not inside")
def test_no_storage_of_a_thread_waits_for_its_first_use():
    """Where there is no memory for it then, the C library ends the process."""
    module = str(importlib.util.find_spec(NAME).origin)
    listed = subprocess.run(["readelf", "-rW", module], check=True, capture_output=True, text=True)
    assert "Relocation section" in listed.stdout
    assert not re.findall(r".*(?:DTPMOD|DTPREL|DTPOFF|TLSDESC).*", listed.stdout)
