"""What `dev` refuses, locks, cleans up, builds anew and keeps from others, with stand-ins for its
slow tools and a small tree in place of the module's.
"""

import os
import shutil
import signal
import subprocess
import time
from contextlib import contextmanager
from pathlib import Path

import pytest

from tools import TOP

NAMESPACES = subprocess.run(
    ["bwrap", "--unshare-pid", "--dev-bind", "/", "/", "--proc", "/proc", "true"],
    capture_output=True, check=False,
).returncode == 0  # fmt: skip
takes_namespaces = pytest.mark.skipif(not NAMESPACES, reason="this machine allows no namespaces")

# A module in Python, checked and copied by the build.
SMALL_PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(small NONE)
set(made ${PROJECT_BINARY_DIR}/marlune/tables/data_tables.py)
add_custom_command(OUTPUT ${made} DEPENDS ${PROJECT_SOURCE_DIR}/module.py
  COMMAND ${Python_EXECUTABLE} -m py_compile ${PROJECT_SOURCE_DIR}/module.py
  COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/module.py ${made} VERBATIM)
add_custom_target(module ALL DEPENDS ${made})
install(FILES ${made} DESTINATION marlune/tables)
"""
PRINT = ["python", "-c", "import marlune.tables.data_tables as module; print(module.VALUE)"]


def tools(folder, **scripts):
    """A folder with these shell scripts as commands, to be searched before all others."""
    folder.mkdir(exist_ok=True)
    for name, script in scripts.items():
        path = folder / name.replace("_", "-").replace("3-", "3.")
        path.write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        path.chmod(0o755)
    return folder


@contextmanager
def started(command, folder, **variables):
    """The command as on a machine on which only its own run has left something, in `folder`."""
    keep = {key: value for key, value in os.environ.items() if not key.startswith("DATA_TABLES_")}
    path = f"{folder / 'bin'}:{os.environ['PATH']}"
    process = subprocess.Popen(
        list(map(os.fsencode, command)), text=True, stdin=subprocess.DEVNULL, cwd=folder,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, errors="replace", start_new_session=True,
        env=keep | {"PATH": path, "XDG_CACHE_HOME": str(folder / "cache")} | variables,
    )  # fmt: skip
    try:
        yield process
    finally:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()


def run(command, folder, **variables):
    with started(command, folder, **variables) as process:
        out, said = process.communicate(timeout=100)
    return process.returncode, out, said


def parts_of_dev(script, folder, **variables):
    """The script in a shell that has the functions of `dev`."""
    names = ("sets", "root", "systems", "npm", "builds", "tests")
    start = (
        f"set -euo pipefail; here='{TOP}' caller=$PWD; say() {{ echo \"$*\" >&2; }}; "
        'fail() { say "$*"; exit 2; }; '
        + "; ".join(f". '{TOP}/tools/dev/{name}.sh'" for name in names)
    )
    return run(["bash", "-c", f"{start}\n{script}"], folder, **variables)


def clone(folder, value=None):
    """As much of the tree as `dev` needs to start, or to build a module with this value."""
    shutil.copytree(TOP / "tools" / "dev", folder / "tools" / "dev")
    shutil.copy(TOP / "dev", folder)
    if value is not None:
        shutil.copy(TOP / "CMakePresets.json", folder)
        (folder / "CMakeLists.txt").write_text(SMALL_PROJECT)
        (folder / "marlune").mkdir()
        (folder / "module.py").write_text(f"VALUE = {value}\n")
    return folder / "dev"


def everything_in(folder):
    return {path: path.is_file() and path.read_bytes() for path in folder.rglob("*")}


def until(condition):
    end = time.monotonic() + 30
    while not condition():
        assert time.monotonic() < end, "nothing happens"
        time.sleep(0.02)


# ---- what is refused ----


@pytest.mark.parametrize("part", [*";:|\"'`$\\\n", "\udcff"])
def test_path_that_tools_would_misread_is_refused_before_anything_is_done(part, tmp_path):
    dev = clone(tmp_path / f"a{part}b")
    victim = tmp_path / "b" / "build" / "release"
    victim.mkdir(parents=True)
    before = everything_in(tmp_path)
    status, out, said = run([dev, "run"], tmp_path)
    assert (status, out, said.count("\n")) == (2, "", 1) and "move the tree" in said
    assert everything_in(tmp_path) == before


LACKS_PYTHON = {"python3_14": "exit 1", "id": "echo 1000"}


@pytest.mark.parametrize(
    "arguments, variables, scripts, message",
    [
        (["run"], {"DATA_TABLES_BUILD": "../release"}, {}, "_BUILD is not one of release clang "),
        (["run"], {"DATA_TABLES_BUILD": "release clang"}, {}, "DATA_TABLES_BUILD is not one of"),
        (["build"], {}, {}, "unknown command: build"),
        (["run"], {"DATA_TABLES_SOURCES": "/nowhere"}, {}, "there is no folder /nowhere"),
        (["run"], {"DATA_TABLES_ROOT": "/x"}, {}, "set by dev alone"),
        (["mutants"], {}, {}, "it takes a clone"),
        *((each, {}, {"id": "echo 1000"}, "missing on this machine: lost")
          for each in (["atlas"], ["arches", "arm64"], ["arches", "wasm32"])),
        *((each, {}, LACKS_PYTHON, "making a root that has it needs root\n")
          for each in (["run"], ["atlas"], ["wheel"], ["arches", "arm64"])),
        *((["run"], {"XDG_CACHE_HOME": folder, "HOME": "/proc/x"}, LACKS_PYTHON | {"id": "echo 0"},
           f"dev: {cache}/data_tables cannot be written")
          for folder, cache in (("/proc/y", "/proc/y"), ("relative", "/proc/x/.cache"))),
    ],
)  # fmt: skip
def test_what_dev_does_not_know_or_have_is_refused_before_anything_is_done(
    arguments, variables, scripts, message, tmp_path
):
    dev = clone(tmp_path / "tree")
    tools(tmp_path / "bin", **scripts)
    # In a root this is what is looked for, and nothing lacks.
    dev.write_text(dev.read_text().replace("/var/lib/data_tables", "/var/lib/nothing"))
    with (dev.parent / "tools" / "dev" / "sets.sh").open("a") as sets:
        sets.write("proof[base]+=' lost'\n")
    before = everything_in(tmp_path)
    status, _, said = run([dev, *arguments], tmp_path, **variables)
    assert status == 2 and message in said and everything_in(tmp_path) == before, said


def test_cache_of_somebody_else_is_refused(tmp_path):
    cache = tmp_path / "cache" / "data_tables"
    cache.mkdir(parents=True)
    os.chown(cache, 12345, -1)
    tools(tmp_path / "bin", python3_14="exit 1", id="echo 0")
    status, _, said = run([TOP / "dev", "run"], tmp_path)
    assert status == 2 and "belongs to somebody else" in said and not list(cache.iterdir())


# ---- roots ----

# A machine without CPython 3.14, on which nothing can be installed.
BARE = {"python3_14": "exit 1", "id": "echo 0", "apt_get": "exit 1"}
NO_NAMESPACES = "echo 'bwrap: Creating new namespace failed: Operation not permitted' >&2; exit 1"
FETCHES = {"npm": (["atlas"], {}), "mmdebstrap": (["run"], BARE | {"bwrap": NO_NAMESPACES})}


@pytest.mark.parametrize("tool", FETCHES)
def test_fetch_that_is_ended_leaves_no_process_and_the_next_one_clears_its_folder(tool, tmp_path):
    command, others = FETCHES[tool]
    if tool == "mmdebstrap":
        # Its last argument is the folder of a root. proot may be traced itself, by another one.
        others = others | {"proot": "exit 0"}
        begin = 'mkdir -p "${@: -1}"; touch "${@: -1}/half"'
    else:
        # It works in the folder that it fills.
        begin = '[[ "$*" = *--ignore-scripts* ]] && touch half'
    hang = f"trap '' TERM; touch {tmp_path}/began; (exec -a {tmp_path} sleep 1000); true"
    tools(tmp_path / "bin", **others, **{tool: f"{begin}; {hang}"})

    def processes():
        found = []
        for path in Path("/proc").glob("[0-9]*/cmdline"):
            try:
                if os.fsencode(tmp_path) in path.read_bytes():
                    found.append(path)
            except OSError:
                continue  # It has ended meanwhile.
        return found

    with started([TOP / "dev", *command], tmp_path) as fetching:
        until((tmp_path / "began").exists)
        assert processes() and list(tmp_path.glob("cache/data_tables/*.partial/half"))
        fetching.send_signal(signal.SIGTERM)
        fetching.communicate(timeout=30)
        until(lambda: not processes())
    tools(tmp_path / "bin", **{tool: "exit 1"})
    status, _, said = run([TOP / "dev", *command], tmp_path)
    assert status == 2 and "; the log is " in said
    assert not list(tmp_path.glob("cache/data_tables/*.partial"))


MAKE_PYTHON = 'mkdir -p "${@: -1}/usr/bin"; touch "${@: -1}/usr/bin/python3.14"'


@pytest.mark.parametrize(
    "mmdebstrap, message",
    [
        ('mkdir "${@: -1}"', "no root could be made"),
        (f"{MAKE_PYTHON}; exit 1", "no root could be made"),
        ("echo tar: No space left on device; exit 1", "disk is full:\ntar: No space left"),
        (
            "echo W: Temporary failure resolving the mirror; seq 20; exit 1",
            "network cannot be reached:\nW: Temporary failure resolving",
        ),
    ],
)
def test_half_a_root_is_not_taken_and_the_reason_is_said(mmdebstrap, message, tmp_path):
    tools(tmp_path / "bin", **BARE, bwrap=NO_NAMESPACES, proot="exit 0", mmdebstrap=mmdebstrap)
    status, _, said = run([TOP / "dev", "run"], tmp_path)
    assert status == 2 and message in said, said
    assert not list(tmp_path.glob("cache/data_tables/root-*/"))


def test_roots_are_made_one_after_the_other_and_entered_the_way_that_works(tmp_path):
    alone = f"mkdir {tmp_path}/busy || touch {tmp_path}/clash; sleep 0.2; rmdir {tmp_path}/busy"
    make = f'{MAKE_PYTHON}; chmod +x "${{@: -1}}"/usr/bin/*; mkdir -p "${{@: -1}}"/{{root,var/lib}}'
    entered = f'[ "${{@: -1}}" = true ] || echo "$0 $*" >>{tmp_path}/entered'
    tools(tmp_path / "bin", **BARE, bwrap=NO_NAMESPACES, proot=entered)
    tools(tmp_path / "bin", mmdebstrap=f"echo made >>{tmp_path}/made; {alone}; {make}")
    command = [TOP / "dev", "run"]
    with started(command, tmp_path) as one, started(command, tmp_path) as two:
        for each in (one, two):
            _, said = each.communicate(timeout=60)
            assert each.returncode == 0 and "no namespaces here (Creating new" in said, said
    assert (tmp_path / "made").read_text() == "made\n" and not (tmp_path / "clash").exists()
    assert (tmp_path / "entered").read_text().count(f"--bind={TOP}") == 2
    tools(tmp_path / "bin", proot="exit 1")
    status, _, said = run(command, tmp_path)
    assert status == 2 and "no root can be entered on this machine" in said


@pytest.mark.parametrize("root, brought", [(True, True), (True, False), (False, False)])
def test_what_a_machine_with_its_own_python_lacks_is_brought_or_named(root, brought, tmp_path):
    # Without `lost` something is missing; apt-get brings it, or does not.
    bring = f"[ $1 = update ] || touch {tmp_path}/brought" if brought else "exit 1"
    tools(tmp_path / "bin", id=f"echo {0 if root else 1000}", apt_get=bring, dpkg="exit 0")
    script = f"""
        proof[bench]=lost
        command() {{ [ "$*" != "-v lost" ] || [ -e {tmp_path}/brought ] && builtin command "$@" ||
          [ -e {tmp_path}/brought ]; }}
        complete_machine base bench && echo complete
    """
    status, out, said = parts_of_dev(script, tmp_path)
    if brought:
        assert (status, out) == (0, "complete\n"), said
    elif root:
        assert status == 1 and "in a root: it lacks lost" in said, said
    else:
        assert said.count("\n") == 1 and "lost" in said and "apt-get install cython3" in said, said


def test_set_counts_as_added_when_all_of_it_was(tmp_path):
    (tmp_path / "root" / "var" / "lib" / "data_tables").mkdir(parents=True)
    script = f"""
        root={tmp_path}/root
        isolated() {{ [ -e {tmp_path}/network ]; }}
        lacking $root tests clang
        (extend_root $root tests clang) >{tmp_path}/failure 2>&1 || true
        lacking $root tests clang
        touch {tmp_path}/network
        extend_root $root tests
        lacking $root tests clang
        packages[tests]+=" python3-more"
        lacking $root tests
    """
    status, out, said = parts_of_dev(script, tmp_path)
    assert (status, out.split()) == (0, "tests clang tests clang clang tests".split()), said


@takes_namespaces
def test_interpreter_of_the_root_runs_nothing_from_the_callers_home(tmp_path):
    site = tmp_path / ".local" / "lib" / "python3.14" / "site-packages"
    site.mkdir(parents=True)
    (site / "planted.pth").write_text(f"import os; os.system('touch {tmp_path}/planted')\n")
    planted = tmp_path / "planted"
    caller = {"HOME": str(tmp_path), "PYTHONNOUSERSITE": ""}
    assert run(["python3.14", "-c", ""], tmp_path, **caller)[0] == 0 and planted.exists()
    planted.unlink()
    # This machine for a root, by another name than the one that stands for itself.
    status, out, said = parts_of_dev(
        "way=namespaces; isolated /. / /tmp -- "
        "python3.14 -c 'import os; print(os.environ[\"HOME\"])'",
        tmp_path, **caller,
    )  # fmt: skip
    assert (status, out) == (0, "/root\n") and not planted.exists(), said


# ---- builds ----


def test_two_first_runs_build_one_after_the_other(tmp_path):
    dev = clone(tmp_path / "tree", value=1)
    alone = f"mkdir {tmp_path}/busy || touch {tmp_path}/clash; sleep 0.2; rmdir {tmp_path}/busy"
    tools(tmp_path / "bin", cmake=f'{alone}; PATH=${{PATH#*:}} exec cmake "$@"')
    with started([dev, *PRINT], tmp_path) as one, started([dev, *PRINT], tmp_path) as two:
        for each in (one, two):
            out, said = each.communicate(timeout=60)
            assert (each.returncode, out) == (0, "1\n"), said
    assert not (tmp_path / "clash").exists()


def test_what_runs_is_built_of_this_tree_as_it_is_now(tmp_path):
    dev = clone(tmp_path / "a = b (2) & #%!", value=1)
    here = dev.parent
    installed = here / "build" / "release" / "installed"

    def answer(dev=dev, folder=tmp_path, **variables):
        status, out, said = run([dev, *PRINT], folder, **variables)
        return (int(out) if status == 0 else None), said

    assert answer(CMAKE_TOOLCHAIN_FILE="/x", CMAKE_GENERATOR="Unix Makefiles")[0] == 1
    # Within the second of the last build, of the same length.
    for value in (2, 3, 4):
        (here / "module.py").write_text(f"VALUE = {value}\n")
        assert answer()[0] == value
    # Nor what another place, an earlier state or the caller's environment has.
    other = tmp_path / "other"
    (other / "marlune" / "tables").mkdir(parents=True)
    (other / "marlune" / "__init__.py").touch()
    (other / "marlune" / "tables" / "__init__.py").touch()
    (other / "marlune" / "tables" / "data_tables.py").write_text("VALUE = 7\n")
    shutil.copytree(other / "marlune" / "tables", installed / "marlune" / "old")
    (here / "module.py").write_text("VALUE = 5\n")
    caller = {
        "DESTDIR": str(tmp_path / "destination"), "PYTHONPATH": str(other), "PYTHONHOME": "/x",
        "PYTHONSAFEPATH": "1",
    }  # fmt: skip
    assert answer(**caller)[0] == 5
    assert not list(installed.rglob("old/*.py")) and not (tmp_path / "destination").exists()
    # A build that fails gives no answer, least of all that of the last one.
    (here / "module.py").write_text("VALUE = \n")
    value, said = answer()
    assert value is None and "SyntaxError" in said and "building release failed" in said


def test_build_is_made_anew_by_other_tools_with_other_flags_and_in_another_place(tmp_path):
    dev = clone(tmp_path / "tree", value=1)

    def configured(dev=dev, **variables):
        status, out, said = run([dev, *PRINT], tmp_path, **variables)
        assert (status, out) == (0, "1\n"), said
        return "configuring release" in said

    assert configured() and not configured()
    assert configured(CXXFLAGS="-O1") and configured() and not configured()
    tools(tmp_path / "bin", wrap='exec "$@"')
    assert configured(CXX="wrap c++") and not configured(CXX="wrap c++")
    tools(tmp_path / "bin", wrap='[ "$2" != --version ] || echo another; exec "$@"')
    assert configured(CXX="wrap c++") and configured()
    status, _, said = run([dev, *PRINT], tmp_path, CXX="no-such-compiler")
    assert status == 2 and "the compiler does not run: no-such-compiler" in said
    shutil.copytree(dev.parent, tmp_path / "copy", symlinks=True)
    before = everything_in(dev.parent)
    (tmp_path / "copy" / "module.py").write_text("VALUE = 1 # in the copy\n")
    assert configured(tmp_path / "copy" / "dev") and everything_in(dev.parent) == before
    # What is not dev's own is left alone.
    shutil.rmtree(dev.parent / "build" / "release")
    own = dev.parent / "build" / "release" / "notes"
    own.parent.mkdir()
    own.touch()
    status, _, said = run([dev, *PRINT], tmp_path)
    assert status == 2 and "holds something else than a build" in said and own.exists()
    shutil.rmtree(dev.parent / "build")
    (dev.parent / "build").symlink_to(tmp_path / "copy" / "build")
    before = everything_in(tmp_path)
    status, _, said = run([dev, *PRINT], tmp_path)
    assert status == 2 and "reached by a link" in said and everything_in(tmp_path) == before


@takes_namespaces
def test_tree_that_cannot_be_written_runs_when_its_build_is_up_to_date(tmp_path):
    dev = clone(tmp_path / "tree", value=1)
    here = dev.parent
    command = ["bwrap", "--dev-bind", "/", "/", "--ro-bind", here, here, dev, *PRINT]
    assert "is not up to date" in run(command, tmp_path)[2]
    assert run([dev, *PRINT], tmp_path)[0] == 0
    for change in (lambda: None, lambda: os.utime(here / "build" / "release" / "build.ninja")):
        change()
        assert run(command, tmp_path)[:2] == (0, "1\n")
    (installed,) = here.glob("build/release/installed/marlune/tables/data_tables.py")
    for file in (installed, here / "module.py"):
        before = file.read_text()
        file.write_text("VALUE = 2\n")
        status, _, said = run(command, tmp_path)
        assert status == 2 and "is not up to date" in said
        file.write_text(before)


def test_options_of_the_sanitizers_bear_a_path_with_a_space(tmp_path):
    here = tmp_path / "a tree"
    (here / "tests").mkdir(parents=True)
    (here / "tests" / "leaks.supp").write_text("")
    script = f"here='{here}' look_for_leaks=1; python_of sanitize -c 'import os; os._exit(7)'"
    assert parts_of_dev(script, tmp_path)[::2] == (7, "")


def test_paths_of_tests_are_those_of_the_callers_folder_and_no_files_are_an_error(tmp_path):
    script = """
        caller=$here/tests/reliability
        from_top -k atlas -x test_leaks.py::test_x ../package -m embedding.cpp nothing
        printf '%s ' "${arguments_from_top[@]}"
        files_below tests/test_laws.py::test_x
    """
    status, out, said = parts_of_dev(script, tmp_path)
    assert (status, out.split()) == (0, (
        "-k atlas -x tests/reliability/test_leaks.py::test_x tests/package "
        "-m embedding.cpp nothing tests/test_laws.py"
    ).split()), said  # fmt: skip
    status, _, said = parts_of_dev(f". '{TOP}/tools/check.sh'; tree_files '*.none'", tmp_path)
    assert status == 2 and "there are no files: *.none" in said
