"""Processes that embed the interpreter, end it and start again; what C++ throws at the border."""

import os
import subprocess
import sys
import sysconfig
import textwrap
from pathlib import Path

import pytest

from compiler import SOURCE
from harness import NAME, REFUSED

COMMON = f"""
import builtins, importlib, sys
def outcome():
    try:
        module = importlib.import_module("{NAME}")
    except BaseException as error:
        return f"{{type(error).__name__}}: {{error}}"
    assert list(vars(module))[-2:] == ["REPO_TABLES", "__test__"]
    assert module._dav_mi_linear([0.0], [1.0])[2014] == [0.5]
    return "complete"
import _interpreters
def outcome_in(other, before=""):
    complete = "import {NAME} as module; assert list(vars(module))[-1] == '__test__'"
    failure = _interpreters.exec(other, before + complete)
    return f"{{failure.type.__name__}}: {{failure.msg}}" if failure else "complete"
"""
FAIL = "kept = zip; del builtins.zip; print(outcome()); builtins.zip = kept"
OTHER = 'print(outcome_in(_interpreters.create("legacy")))'
BROKEN = "NameError: name 'zip' is not defined"


@pytest.fixture(scope="module")
def embed(tmp_path_factory):
    """Runs programs, one in each round of one process, and returns the lines that they printed."""
    program = tmp_path_factory.mktemp("embedding") / "embedding"
    variables = sysconfig.get_config_vars()
    environment = {key: value for key, value in os.environ.items() if key != "LD_PRELOAD"}
    subprocess.run(
        ["c++", "-std=c++20", "-Wall", "-Wno-missing-field-initializers", "-O1", "-o", program,
         f"-I{SOURCE}", f"-I{variables['INCLUDEPY']}", "-rdynamic",
         Path(__file__).with_name("embedding.cpp"), SOURCE / "interpreter/traceback.cpp",
         f"-L{variables['LIBDIR']}", f"-Wl,-rpath,{variables['LIBDIR']}",
         f"-lpython{variables['VERSION']}{sys.abiflags}"],
        check=True, env=environment,
    )  # fmt: skip

    def run(*rounds):
        done = subprocess.run(
            [program, *(COMMON + textwrap.dedent(each) for each in rounds)],
            env=os.environ | {"PYTHONHOME": sys.base_prefix, "ASAN_OPTIONS": "detect_leaks=0"},
            capture_output=True, text=True, check=False, timeout=300,
        )  # fmt: skip
        assert done.returncode == 0, f"{done.returncode}\n{done.stdout}\n{done.stderr}"
        return done.stdout.splitlines()

    return run


IT = "print(outcome())"
ROUNDS = {
    "import": ([IT] * 4, ["complete"] + [REFUSED] * 3),
    "failing first import": ([f"{FAIL}\n{IT}", IT, FAIL, IT], [BROKEN, "complete"] + [REFUSED] * 3),
    "no import that succeeds": ([FAIL, IT, OTHER, IT], [BROKEN] + [REFUSED] * 3),
    "sub-interpreter": ([OTHER, OTHER, IT, OTHER], ["complete"] + [REFUSED] * 3),
    "both": ([f"{IT}\n{OTHER}", f"{OTHER}\n{IT}"] * 2, ["complete"] + [REFUSED] * 7),
}


@pytest.mark.parametrize(("rounds", "outcomes"), ROUNDS.values(), ids=ROUNDS)
def test_interpreter_that_starts_again_gets_nothing_of_the_one_before(embed, rounds, outcomes):
    assert embed(*rounds) == outcomes


def test_of_interpreters_that_import_at_once_one_has_the_module(embed):
    """Each has a GIL of its own, and the first still marks itself when the second asks."""
    assert sorted(
        embed("""
        import threading
        def ask(interpreter):
            barrier.wait()
            sys.stdout.write(outcome_in(interpreter, forced) + "\\n")
        forced = "import _imp; _imp._override_multi_interp_extensions_check(-1)\\n"
        barrier = threading.Barrier(3)
        askers = [
            threading.Thread(target=ask, args=[_interpreters.create("isolated")]) for _ in range(3)
        ]
        for asker in askers: asker.start()
        for asker in askers: asker.join()
    """)
    ) == [REFUSED, REFUSED, "complete"]


def test_function_that_is_only_named_like_a_builtin_is_called(embed):
    assert embed(f"""
        import border
        builtins.round = border.round
        from {NAME} import DummySD_Select
        print({{*DummySD_Select["data"]["ix_m"][1]}})
    """) == ["{'rounded'}"]


def test_whatever_is_thrown_stops_at_the_border(embed):
    assert embed("""
        import border
        for kind in ("length_error", "sentence", "int"):
            try:
                border.throws(kind)
            except SystemError as error:
                print(error, error.__traceback__.tb_next.tb_frame.f_code.co_name)
    """) == [
        "data_tables has failed within itself: too long border.throws",
        "data_tables has failed within itself: a rule that is broken border.throws",
        "data_tables has failed within itself border.throws",
    ]  # fmt: skip


@pytest.mark.skipif(hasattr(sys, "gettotalrefcount"), reason="the debug interpreter ends at once")
def test_failure_that_says_nothing(embed):
    """There is nothing to add a traceback entry to; the import says at least that it has failed."""
    assert embed(f"""
        import border, importlib.util
        try:
            border.throws("nothing")
        except SystemError:
            print("SystemError")
        from _imp import exec_dynamic
        class At:
            def __del__(self):
                vars(module)["_QX_LIFE"] = border.Silent()
        module = importlib.util.module_from_spec(importlib.util.find_spec("{NAME}"))
        module._OX_M_BASE = At()
        try:
            exec_dynamic(module)
        except ImportError as error:
            print(error)
        print(outcome())
    """) == ["SystemError", "init data_tables", "complete"]
