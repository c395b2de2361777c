"""One interpreter of a process has the module; its threads share it, and forks take it along."""

import pytest

from harness import trial

INTERPRETERS = """
    import _interpreters
    from _interpreters import destroy
    IMPORT = f"import {NAME} as module\\nassert list(vars(module))[-1] == '__test__'"
    OWN_GIL = f"ImportError: module {NAME} does not support loading in subinterpreters"
    BROKEN = "TypeError: 'NoneType' object is not callable"
    def expect(outcome, interpreter, before=""):
        if interpreter is main:
            error = failure_of(exec, before + IMPORT, {})
            seen = error and f"{type(error).__name__}: {error}"
        else:
            error = _interpreters.exec(interpreter, before + IMPORT)
            seen = error and f"{error.type.__name__}: {error.msg}"
        assert seen == outcome, seen
    main = None
    legacy, other = _interpreters.create("legacy"), _interpreters.create("legacy")
    isolated = _interpreters.create("isolated")
    # An interpreter with a GIL of its own may be told to load what was not made for it.
    FORCED = "import _imp; _imp._override_multi_interp_extensions_check(-1)\\n"
    BREAK = "import builtins; kept = zip; builtins.zip = None\\n"
    MEND = "builtins.zip = kept\\n"
"""
SCENARIOS = {
    "main first": """
        for _ in range(2):
            expect(None, main)
            expect(REFUSED, legacy)
            expect(OWN_GIL, isolated)
        expect(REFUSED, isolated, FORCED)
        expect(None, main)
    """,
    "another first": """
        expect(OWN_GIL, isolated)
        for _ in range(2):
            expect(None, legacy)
            expect(REFUSED, main)
        destroy(legacy)
        expect(REFUSED, main)
        expect(REFUSED, other)
    """,
    "another first, and fails": """
        expect(BROKEN, legacy, BREAK)
        expect(REFUSED, main)
        expect(None, legacy, MEND)
        expect(REFUSED, other)
    """,
    "one with its own GIL first": """
        expect(None, isolated, FORCED)
        expect(REFUSED, main)
        destroy(isolated)
        expect(REFUSED, legacy)
    """,
    "one that ends at once": """
        import _testcapi
        assert _testcapi.run_in_subinterp(IMPORT) == 0
        expect(REFUSED, main)
    """,
}


@pytest.mark.parametrize("scenario", SCENARIOS.values(), ids=SCENARIOS)
def test_first_interpreter_keeps_the_module(scenario):
    trial(INTERPRETERS, scenario)


TOGETHER = """
    import threading, time
    sys.setswitchinterval(1e-6)
    def together(actions):
        # What each action returned, or the type of what it raised, in threads that start at once.
        barrier, results = threading.Barrier(len(actions)), []
        def work(action):
            barrier.wait()
            failure = failure_of(lambda: results.append(action()))
            if failure: results.append(type(failure))
        threads = [threading.Thread(target=work, args=[action]) for action in actions]
        for thread in threads: thread.start()
        for thread in threads: thread.join()
        return results
"""


def test_threads_import_at_once_and_some_fail():
    trial(
        TOGETHER,
        """
        left = 5
        def sleepy_zip(*lists):
            global left
            time.sleep(0.001)
            if left:
                left -= 1
                raise LookupError
            return kept(*lists)
        kept, builtins.zip = zip, sleepy_zip
        results = together([import_it] * 16)
        assert results.count(LookupError) == 5 and len(results) == 16, results
        assert results.count(sys.modules[NAME]) == 11, results
        """,
    )


def test_threads_call_at_once_while_the_lists_change():
    trial(
        TOGETHER,
        """
        module = import_it()
        blend, expected = module._dav_mi_linear, repr(module._DAV2004R_DATA)
        start, target = [0.25] * 40, [0.75] * 40
        def change():
            for _ in range(300):
                start.extend([0.25] * 9); target.append(1)
                del start[40:], target[40:]
        def call():
            for _ in range(60):
                years = blend(start, target)
                assert list(years) == list(range(2004, 2025))
                assert all(len(rates) >= 40 for rates in years.values())
                assert years[2014][:40] == [0.5] * 40
            assert repr(module._build_dav2004r_data()) == expected
        assert together([change] * 4 + [call] * 12) == [None] * 16
        """,
    )


def test_forks_import_and_call():
    trial("""
        import threading
        forks = []
        def forking_zip(*lists):
            # In the midst of the body: parent and child each go through the rest of it.
            if not forks:
                forks.append(os.fork())
            return kept(*lists)
        assert forked(lambda: import_it() is None) == 0
        kept, builtins.zip = zip, forking_zip
        module = import_it()
        if forks[0] == 0:
            os._exit(17)
        assert os.waitstatus_to_exitcode(os.waitpid(forks[0], 0)[1]) == 17
        def again():
            expected = repr(module._DAV2004R_DATA)
            del sys.modules[NAME]
            assert import_it() is module and importlib.reload(module) is module
            assert repr(module._build_dav2004r_data()) == expected
        assert forked(again) == 0
        thread = threading.Thread(target=lambda: forks.append(forked(again)))
        thread.start()
        thread.join()
        assert forks[1:] == [0], forks
    """)
