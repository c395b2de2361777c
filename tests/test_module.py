"""The module's life: entry, create step, exec step, failure and retry."""

import inspect
import subprocess
import sys
import sysconfig
from pathlib import Path

import pytest

import marlune.tables.data_tables as module
from compiler import SOURCE
from snippets import run

NAME = "marlune.tables.data_tables"


def test_nothing_is_left_beside_the_attributes():
    printed = run(f"import {NAME} as module; print(*vars(module), module.__test__)")
    *names, test = printed.split()
    by_interpreter = {"__name__", "__doc__", "__package__", "__loader__", "__spec__", "__file__"}
    assert names[-2:] == ["REPO_TABLES", "__test__"]
    assert set(names[: names.index("__builtins__")]) == by_interpreter
    assert test == "{}" and module.__builtins__ is sys.modules["builtins"]


def test_identity_of_the_module():
    assert module.__name__ == NAME and module.__package__ == "marlune.tables"
    assert sys.modules["data_tables"] is module
    spec = module.__spec__
    assert module.__file__ == spec.origin and module.__loader__ is spec.loader


def test_functions_describe_themselves():
    blend, build = module._dav_mi_linear, module._build_dav2004r_data
    for function in (blend, build):
        assert type(function).__name__ == "builtin_function_or_method"
        assert function.__module__ == "data_tables"
    assert blend.__doc__ == (
        "Build DAV 2004 R year-indexed MI grid (2004 start → linear blend → 2024 target)."
    )
    assert build.__doc__ is None
    assert [str(inspect.signature(each)) for each in (blend, build)] == [
        "(mi_start, mi_ziel)",
        "()",
    ]
    import pickle

    assert pickle.loads(pickle.dumps(blend)) is blend


def test_every_text_is_hashed_by_the_import():
    # The hash stands behind the length of a text; -1 says that nobody has asked for it yet.
    run(f"""
        import ctypes
        from {NAME} import REPO_TABLES
        at = object.__basicsize__ + ctypes.sizeof(ctypes.c_ssize_t)
        def hashed(text):
            return ctypes.c_ssize_t.from_address(id(text) + at).value != -1
        values = [value for table in REPO_TABLES.values() for value in table.values()]
        assert all(hashed(value) for value in values if type(value) is str)
        fresh = "%x" % at
        assert not hashed(fresh)
    """)


def test_importing_again_gives_the_same_objects():
    # The interpreter leaks a byte when a create step hands out a module that exists already. The
    # process ends before anybody looks for it.
    run(f"""
        import importlib, os, sys
        import {NAME} as module
        inventory, table = module.REPO_TABLES, module.GAM71
        del sys.modules["{NAME}"]
        again = importlib.import_module("{NAME}")
        assert again is module and again.REPO_TABLES is inventory and again.GAM71 is table
        assert importlib.reload(module) is module and module.REPO_TABLES is inventory
        os._exit(0)
    """)


def test_short_name_that_is_taken_stays_taken():
    run(f"""
        import sys
        sys.modules["data_tables"] = sys
        import {NAME} as module
        assert sys.modules["data_tables"] is sys and list(vars(module))[-1] == "__test__"
    """)


FAILING_IMPORT = f"""
    import builtins, sys, traceback
    def fails():
        try:
            import {NAME}
        except BaseException as error:
            assert "{NAME}" not in sys.modules
            return error
        raise AssertionError("the import went through")
    def told(error):
        # The type and the text, then the frames of the module: function, line, name of the module.
        frames = [(frame.f_code, line, frame.f_globals)
                  for frame, line in traceback.walk_tb(error.__traceback__)]
        return repr(error), [(code.co_name, line, names["__name__"])
                             for code, line, names in frames if code.co_filename == "data_tables"]
    def module_dict():
        return vars(sys.modules["{NAME}"])
    def succeeds():
        import {NAME} as module
        assert list(vars(module))[-2:] == ["REPO_TABLES", "__test__"]
"""


def frames(*functions):
    """Of each function the name, the line of its file that holds a text, and the module."""
    found = []
    for function, file, text in functions:
        lines = (SOURCE / file).read_text().splitlines()
        (line,) = (number for number, each in enumerate(lines, 1) if text in each)
        found.append((function, line, NAME))
    return found


def body(text):
    return "init data_tables", "body.hpp", text


def function(name):
    return f"data_tables.{name}", "dav2004r/functions.cpp", f'"data_tables.{name}"'


BUILD, BLEND = function("_build_dav2004r_data"), function("_dav_mi_linear")
NOT_DEFINED = "NameError(\"name '{}' is not defined\")"


def losing(name, lost):
    """A replaced builtin takes an attribute away while the body runs."""
    return f"""
    def replaced(*arguments, real={name}):
        module_dict().pop("{lost}", None)
        return real(*arguments)
    builtins.{name} = replaced
    """


NOT_LOOKED_UP = """
    class Name(str):
        __hash__ = str.__hash__
        def __eq__(self, other):
            if not mended: raise OSError(other)
            return False
    sys.modules[Name("data_tables")] = None
"""
FAILURES = [
    ("del builtins.zip", NOT_DEFINED.format("zip"), "int builtins_line"),
    ("del builtins.round", NOT_DEFINED.format("round"), "int builtins_line"),
    (NOT_LOOKED_UP, "OSError('data_tables')", "int short_name_line"),
    *((losing(name, lost), NOT_DEFINED.format(lost), statement) for name, lost, statement in (
        ("zip", "PASEM2010", 'inventory("REPO_TABLES")'),
        ("round", "_IX_F_BASE", "table(synthetic::DummySD_Select)"),
        ("round", "DummyLIFE_Unisex", 'inventory("REPO_TABLES")'),
    )),
]  # fmt: skip


@pytest.mark.parametrize(("setting", "failure", "statement"), FAILURES)
def test_import_fails_at_the_statement_that_needs_it_and_the_next_one_succeeds(
    setting, failure, statement
):
    printed = run(f"""
    {FAILING_IMPORT}
    own, mended = (zip, round), False
    {setting}
    print(told(fails()))
    mended, (builtins.zip, builtins.round) = True, own
    half_built = sys.modules.get("data_tables")
    succeeds()
    assert half_built is not sys.modules["{NAME}"]
    assert half_built in (None, sys.modules["data_tables"])
    """)
    assert eval(printed) == (failure, frames(body(statement)))


def test_failure_inside_the_functions_carries_their_names():
    printed = run(
        FAILING_IMPORT
        + """
    kept = zip
    def zip(*lists):
        global blend
        blend = module_dict()["_dav_mi_linear"]
        raise KeyboardInterrupt("stop")
    builtins.zip = zip
    print(told(fails()))
    # What a failed import leaves behind is in no module.
    try:
        blend([None], [0.1])
    except TypeError as error:
        frame = error.__traceback__.tb_next.tb_frame
        assert frame.f_code.co_name == "data_tables._dav_mi_linear"
        assert "__name__" not in frame.f_globals
    """
    )
    at = body('call("_DAV2004R_DATA"')
    assert eval(printed) == ("KeyboardInterrupt('stop')", frames(at, BUILD, BLEND))


def test_other_runtime_version_warns():
    # The version is a constant of the interpreter: the page that holds it is made writable.
    out = run(f"""
        import ctypes, sys, warnings
        version = ctypes.c_ulong.in_dll(ctypes.pythonapi, "Py_Version")
        page = ctypes.addressof(version) & ~4095
        assert ctypes.CDLL(None).mprotect(ctypes.c_void_p(page), 8192, 7) == 0
        version.value = 0x04000000 | version.value & 0xF0FF | sys.version_info.minor << 16
        warnings.simplefilter("always")
        with warnings.catch_warnings(record=True) as caught:
            import {NAME}
        print(caught[0].message, caught[0].filename, len(caught), list(vars({NAME}))[-1])
    """)
    minor = sys.version_info.minor
    text = (
        f"compile time Python version 3.{minor} of module 'data_tables'"
        " does not match runtime version "
    )
    at_once = "<frozen importlib._bootstrap>"  # the frame that runs the exec step
    assert out == f"{text}4.{minor} {at_once} 1 __test__\n"


def test_second_module_of_a_process_is_bound_to_fail():
    run(f"""
        import importlib.util, _imp
        spec = importlib.util.find_spec("{NAME}")
        first, second = (importlib.util.module_from_spec(spec) for _ in range(2))
        assert _imp.exec_dynamic(first) == 0 and list(vars(first))[-1] == "__test__"
        inventory = first.REPO_TABLES
        assert _imp.exec_dynamic(first) == 0 and first.REPO_TABLES is inventory
        try:
            _imp.exec_dynamic(second)
        except RuntimeError as error:
            assert str(error) == (
                "Module 'data_tables' has already been imported."
                " Re-initialisation is not supported."
            )
        else:
            raise AssertionError
        assert "REPO_TABLES" not in vars(second)
    """)


def test_only_the_entry_is_exported():
    listed = subprocess.run(
        ["nm", "-D", "--defined-only", module.__file__], capture_output=True, text=True, check=True
    )
    assert [line.split()[-1] for line in listed.stdout.splitlines()] == ["PyInit_data_tables"]


def test_module_is_built_for_this_interpreter():
    # The headers of the debug interpreter count references; those of the other do not.
    suffix = sysconfig.get_config_var("EXT_SUFFIX")
    assert Path(module.__file__).name == f"data_tables{suffix}"


def test_installation_leaves_room_for_the_rest_of_the_package():
    folder = Path(module.__file__).parents[2]
    assert {str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file()} == {
        f"marlune/tables/{Path(module.__file__).name}",
        "marlune/tables/data_tables_sources.json",
        "marlune-stubs/tables/data_tables.pyi",
        "marlune-stubs/py.typed",
    }
