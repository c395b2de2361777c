"""What `dev` refuses, locks, cleans up and keeps from others, with stand-ins for its slow tools."""

import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

import pytest

TOP = Path(__file__).resolve().parents[2]


def tools(folder, **scripts):
    """A folder with these shell scripts as commands, to be searched before all others."""
    folder.mkdir(exist_ok=True)
    for name, script in scripts.items():
        path = folder / name.replace("_", "-").replace("3-", "3.")
        path.write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        path.chmod(0o755)
    return folder


def start(command, folder, **variables):
    """The command as on a machine on which only its own run has left something, in `folder`."""
    keep = {key: value for key, value in os.environ.items() if not key.startswith("DATA_TABLES_")}
    path = f"{folder / 'bin'}:{os.environ['PATH']}"
    return subprocess.Popen(
        list(map(str, command)), text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        env=keep | {"PATH": path, "XDG_CACHE_HOME": str(folder / "cache")} | variables,
    )  # fmt: skip


def run(command, folder, **variables):
    started = start(command, folder, **variables)
    out, said = started.communicate(timeout=100)
    return started.returncode, out, said


def parts_of_dev(script, folder, **variables):
    """The script in a shell that has the functions of `dev`."""
    sources = "; ".join(f". '{TOP}/tools/dev/{name}.sh'" for name in ("sets", "root", "builds"))
    start = f'set -euo pipefail; say() {{ :; }}; fail() {{ echo "$*"; exit 1; }}; {sources}; '
    return run(["bash", "-c", start + script], folder, **variables)


def clone(folder):
    """As much of the tree as `dev` needs to start."""
    shutil.copytree(TOP / "tools" / "dev", folder / "tools" / "dev")
    shutil.copy(TOP / "dev", folder)
    return folder / "dev"


def everything_in(folder):
    return {path: path.is_file() and path.read_bytes() for path in folder.rglob("*")}


@pytest.mark.parametrize("character", ";:\"'`$\\\n")
def test_path_that_tools_would_misread_is_refused_before_anything_is_done(character, tmp_path):
    dev = clone(tmp_path / f"a{character}b")
    victim = tmp_path / "b" / "build" / "release"
    victim.mkdir(parents=True)
    before = everything_in(tmp_path)
    status, out, said = run([dev, "run"], tmp_path)
    assert (status, out, said.count("\n")) == (1, "", 1) and "move the tree" in said
    assert everything_in(tmp_path) == before


@pytest.mark.parametrize(
    "arguments, build, message",
    [
        (["run"], "../release", "DATA_TABLES_BUILD is not one of release clang debug sanitize"),
        (["run"], "release clang", "DATA_TABLES_BUILD is not one of"),
        (["build"], "release", "unknown command: build"),
    ],
)
def test_what_dev_does_not_know_is_refused_before_anything_is_done(
    arguments, build, message, tmp_path
):
    dev = clone(tmp_path / "tree")
    before = everything_in(tmp_path)
    status, _, said = run([dev, *arguments], tmp_path, DATA_TABLES_BUILD=build)
    assert status == 1 and message in said and everything_in(tmp_path) == before


def test_dev_runs_by_a_link_and_in_a_folder_with_a_space(tmp_path):
    link = tmp_path / "link"
    link.symlink_to(clone(tmp_path / "a tree"))
    assert run([link, "help"], tmp_path)[0] == 0


FETCHES = {
    "npm": (["atlas"], {}),
    # A machine without CPython 3.14.
    "mmdebstrap": (["run"], {"python3_14": "exit 1", "id": "echo 0"}),
}


@pytest.mark.parametrize("tool", FETCHES)
def test_fetch_that_is_ended_leaves_no_process_and_the_next_one_clears_its_folder(tool, tmp_path):
    command, others = FETCHES[tool]
    # Its last argument is the folder of a root; npm works in the folder that it fills.
    begin = 'mkdir -p "${@: -1}"; touch half' if tool == "mmdebstrap" else "touch half"
    hang = f"touch {tmp_path}/began; exec -a {tmp_path} sleep 1000"
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

    def until(condition):
        end = time.monotonic() + 30
        while not condition():
            assert time.monotonic() < end, "nothing happens"
            time.sleep(0.02)

    fetching = start([TOP / "dev", *command], tmp_path)
    until((tmp_path / "began").exists)
    assert processes() and list(tmp_path.glob("cache/data_tables/*.partial"))
    fetching.send_signal(signal.SIGTERM)
    fetching.communicate(timeout=30)
    until(lambda: not processes())
    tools(tmp_path / "bin", **{tool: "exit 1"})
    status, _, said = run([TOP / "dev", *command], tmp_path)
    assert status == 1 and "; the log is " in said
    assert not list(tmp_path.glob("cache/data_tables/*.partial"))


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
        "isolated /. --bind /tmp /tmp python3.14 -c 'import os; print(os.environ[\"HOME\"])'",
        tmp_path, **caller,
    )  # fmt: skip
    assert (status, out) == (0, "/root\n") and not planted.exists(), said


def test_two_first_runs_build_one_after_the_other(tmp_path):
    dev = clone(tmp_path / "tree")
    alone = f"mkdir {tmp_path}/busy || touch {tmp_path}/clash; sleep 0.2; rmdir {tmp_path}/busy"
    made = "mkdir -p build/release; touch build/release/build.ninja; echo >>build/release/made"
    tools(
        tmp_path / "bin", ninja="echo no work to do", cmake=f"{alone}; [ $1 = --build ] || {made}"
    )
    both = [start([dev, "python", "-c", ""], tmp_path) for _ in range(2)]
    for each in both:
        _, said = each.communicate(timeout=60)
        assert each.returncode == 0, said
    assert not (tmp_path / "clash").exists()


@pytest.mark.parametrize("current", [True, False])
def test_tree_that_cannot_be_written_runs_when_its_build_is_up_to_date(current, tmp_path):
    if not current:
        tools(tmp_path / "bin", ninja="echo '[1/2] Building'")
    else:
        (tmp_path / "bin").mkdir()
    read_only = ["bwrap", "--dev-bind", "/", "/", "--ro-bind", TOP, TOP]
    status, _, said = run([*read_only, TOP / "dev", "run"], tmp_path)
    assert (status == 0) == current and ("is not up to date" in said) != current, said


def test_options_of_the_sanitizers_bear_a_path_with_a_space(tmp_path):
    here = tmp_path / "a tree"
    (here / "tests").mkdir(parents=True)
    (here / "tests" / "leaks.supp").write_text("")
    script = f"here='{here}' look_for_leaks=1; python_of sanitize -c 'import os; os._exit(7)'"
    assert parts_of_dev(script, tmp_path)[::2] == (7, "")
