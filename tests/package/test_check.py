# ./dev adds: checks clang npm verify
"""Each step of `./dev check` fails, in a copy of the tree with one fault that it has to see."""

import json
import os
import re
import shutil
import subprocess

import pytest

from tools import TOP

STEPS = re.search(r"^steps=\((.*)\)", (TOP / "tools" / "check.sh").read_text(), re.MULTILINE)[1]
MODULE = "build/release/installed/marlune"
# The file at whose end a line is added, the line, and what the step has to name.
FAULTS = {
    "shell": ("dev", "echo $two", "SC2086"),
    "python": ("tools/links.py", "import os", "E402"),
    "javascript": ("tools/atlas/added.js", "const none = 1 == 2;", "added.js"),
    "headers": ("tables/added.hpp", "inline std::vector<int> none;", "added.hpp"),
    "tidy": ("tables/added.cpp", "int *none = 0;", "added.cpp"),
    "stub": ("marlune/tables/data_tables.pyi", "def none() -> None: ...", "data_tables.none"),
    "documents": ("provenance/gam.toml", "none = 1", "unknown words ['none']"),
    "publications": ("none/README.md", "none", "none"),
    "atlas": ("docs/atlas.html", " ", "atlas.html"),
    "changelog": ("CHANGELOG.md", "| `GAM71` | `qx_m` | `0` | `1` | none | none |", "GAM71"),
    "types": ("tools/links.py", "NONE: int = None", "links.py"),
    "format": ("tables/added.cpp", "int  none;", "added.cpp"),
    "spelling": ("README.md", "t" "eh", "README.md"),
    "links": ("README.md", "[none](none.md)", "none.md"),
}  # fmt: skip


@pytest.mark.parametrize("step", STEPS.split())
def test_fault_fails_the_step_that_looks_for_it(step, tmp_path):
    file, line, named = FAULTS[step]
    tree = tmp_path / "tree"
    shutil.copytree(TOP, tree, ignore=shutil.ignore_patterns("build", "dist", ".git"))
    if step == "tidy":  # the others take a minute
        for source in tree.glob("tables/**/*.cpp"):
            source.unlink()
    # What was built of the tree serves its copy.
    shutil.copytree(TOP / MODULE, tree / MODULE)
    with (tree / "tools" / "dev" / "builds.sh").open("a") as builds:
        builds.write("build() { :; }\n")
    (tree / "build" / "clang").mkdir()
    (tree / "build" / "clang" / "compile_commands.json").write_text(
        json.dumps([{"directory": str(tree), "file": file, "command": f"c++ -c {file}"}])
    )
    (tree / file).parent.mkdir(exist_ok=True)
    with (tree / file).open("a") as text:
        text.write(f"{line}\n")
    done = subprocess.run(
        [tree / "dev", "check", step], stdin=subprocess.DEVNULL, capture_output=True, text=True,
        check=False, env=os.environ | {"DATA_TABLES_SOURCES": str(tree / "none")}
        if step == "publications" else None,
    )  # fmt: skip
    said = done.stdout + done.stderr
    assert done.returncode == 1 and f"dev: {step}: that is not as it has to be" in said, said
    assert named in said, said
