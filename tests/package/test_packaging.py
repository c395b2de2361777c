"""The interpreters that the package refuses, and its changelog."""

import json
import re
import subprocess
import sys
import sysconfig

import pytest

from compiler import compile_source
from tools import TOP

# An interpreter that says something untrue about itself.
STUB = """#!{python} -I
import platform, sys, sysconfig
{lie}
exec(sys.argv[sys.argv.index("-c") + 1])
"""


@pytest.mark.parametrize(
    "kind, lie",
    {
        "CPython 3.13 with a GIL": "sys.version_info = (3, 13, 9, 'final', 0)",
        "CPython 3.16 with a GIL": "sys.version_info = (3, 16, 0, 'final', 0)",
        "CPython 3.14 without a GIL": "sysconfig.get_config_vars()['Py_GIL_DISABLED'] = 1",
        "PyPy 3.14 with a GIL": "platform.python_implementation = lambda: 'PyPy'",
        "does not run": "sys.exit(1)",
    }.items(),
)
def test_cmake_names_an_interpreter_that_does_not_do(kind, lie, tmp_path):
    stub = tmp_path / "python"
    stub.write_text(STUB.format(python=sys.executable, lie=lie), encoding="utf-8")
    stub.chmod(0o755)
    command = ["cmake", "-G", "Ninja", "-S", TOP, "-B", tmp_path, f"-DPython_EXECUTABLE={stub}"]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    said = " ".join(done.stderr.split())
    assert done.returncode != 0 and "is for CPython 3.14 or 3.15 with a GIL" in said, said
    assert f"Found: {stub} ({kind})" in said, said


@pytest.mark.parametrize(
    "flags, options, small",
    [
        ("", "-GNinja", True),
        ("", "-GNinja -DCMAKE_BUILD_TYPE=release", True),
        ("", "-GNinja -DCMAKE_BUILD_TYPE=RelWithDebInfo", False),
        ("", "-GNinja Multi-Config", True),
        ("-O2 -g", "-GNinja", False),
        ("-O2 -g", "-GNinja -DDATA_TABLES_SMALL=ON", True),
    ],
)
def test_flags_of_a_packager_are_kept(flags, options, small, tmp_path, monkeypatch):
    monkeypatch.setenv("CXXFLAGS", flags)
    command = ["cmake", "-S", TOP, "-B", tmp_path, f"-DPython_EXECUTABLE={sys.executable}"]
    subprocess.run([*command, *options.replace(" -D", "\n-D").split("\n")], check=True)
    built = json.loads((tmp_path / "compile_commands.json").read_text("utf-8"))
    several = "Multi" in options
    release = [e["command"] for e in built if not several or "/Release/" in e["output"]]
    module = [command for command in release if "tables/module.cpp" in command]
    assert module and all(("-Os" in command) == small for command in module), module
    assert all(flags in command and " -s " not in command for command in release)
    assert "--strip-all" not in "".join(each.read_text() for each in tmp_path.glob("*.ninja"))


@pytest.mark.parametrize(
    "changed, message",
    {
        "#define PY_VERSION_HEX 0x030D09F0": "data_tables is for CPython 3.14 and 3.15",
        "#define PY_VERSION_HEX 0x031000A1": "data_tables is for CPython 3.14 and 3.15",
        "#define Py_GIL_DISABLED 1": "this one is free-threaded",
        "": "",
    }.items(),
)
def test_compiler_refuses_other_headers(changed, message):
    name = changed.split()[1] if changed else "NOTHING"
    compiled, said = compile_source(
        f'#include <Python.h>\n#undef {name}\n{changed}\n#include "interpreter/reference.hpp"',
        "-fsyntax-only", "-isystem", sysconfig.get_path("include"),
    )  # fmt: skip
    assert compiled == (message == "") and message in said, said


def test_changed_column_needs_a_row_in_the_changelog(tmp_path):
    def check(version, changelog, *digests):
        """What the check says of a tree with this changelog and these columns."""
        tables = {
            f"T{number}": {"columns": {"qx_m": {"published": 1, "same_as": None, "digest": each}}}
            for number, each in enumerate(digests)
        }
        (tmp_path / "marlune" / "tables").mkdir(parents=True, exist_ok=True)
        register = tmp_path / "marlune" / "tables" / "data_tables_sources.json"
        register.write_text(json.dumps({"tables": tables}), encoding="utf-8")
        (tmp_path / "pyproject.toml").write_text(f"[project]\nversion = '{version}'\n")
        (tmp_path / "CHANGELOG.md").write_text(changelog, encoding="utf-8")
        command = [sys.executable, "-m", "tools.changelog", tmp_path]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        assert (done.returncode == 0) == (done.stderr == "")
        return done.stderr

    def section(version, digest, *rows):
        return "\n".join([f"\n## {version}", f"Digest of all columns: `{digest}`", *rows, ""])

    def digest_in(said):
        return re.search(r"the register gives (\w{16})\n", said)[1]

    first = section("1.0", digest_in(check("1.0", section("1.0", ""), "aa", "bb")))
    assert check("1.0", first, "aa", "bb") == ""
    # A column changes, another one is added.
    now = ("aa", "b2", "cc")
    digest = digest_in(check("1.0", first, *now))
    changed = "| `T1` | `qx_m` | `bb` | `b2` | misprint | page 1 |"
    added = "| `T2` | `qx_m` | - | `cc` | asked for | page 2 |"
    assert check("1.1", section("1.1", digest, changed, added) + first, *now) == ""
    for rows in [(), (changed,), (added,), (changed.replace("bb", "ba"), added)]:
        said = check("1.1", section("1.1", digest, *rows) + first, *now)
        assert "1.0: digest of all columns: undoing the rows of 1.1 gives" in said, rows
    missing = "reason or source is missing"
    told = {"misprint": missing, "page 1": missing, "b2": "the column has b2"}
    for what, said in told.items():
        rows = (changed.replace(what, ""), added)
        assert said in check("1.1", section("1.1", digest, *rows) + first, *now)
    assert "the version in pyproject.toml is 1.2" in check("1.2", first, "aa", "bb")
