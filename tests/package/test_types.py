# ./dev adds: arrays npm types
"""What the stub is worth to those who check types: the module as installed, in mypy and pyright."""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

import marlune.tables.data_tables as module
from tools import TOP

STAND_IN = TOP / "tests" / "package" / "stand_in"
PYRIGHT = Path(os.environ["DATA_TABLES_NPM"]) / "pyright" / "index.js"

GOOD = """
from __future__ import annotations

from typing import TYPE_CHECKING, assert_type

from marlune.tables.data_tables import (
    AM92_AF92, GAM71, CB_H_2020, REPO_TABLES, DAV2004R_SelUlt_2o, DummySD_SelectGen_d,
    PER2020_Ind_1o,
)

if TYPE_CHECKING:
    from marlune.tables.data_tables import TableName, TablePayload

# Exact by attribute and by name, without casts.
assert_type(PER2020_Ind_1o["data"]["qx_f"][65], float)
assert_type(2026 - PER2020_Ind_1o["base_year"], int)
assert_type(AM92_AF92["data"]["qx_m"][0][65], float)
assert_type(CB_H_2020["data"]["qx_m"][65], float)
assert_type(CB_H_2020["data"]["mi_m"][2022][65], float)
assert_type(DAV2004R_SelUlt_2o["data"]["MI_f"][2024][65], float)
assert_type(DAV2004R_SelUlt_2o["select_period"], int)
assert_type(DummySD_SelectGen_d["data"]["mi_m"]["ult"][65], float)
assert_type(REPO_TABLES["AM92_AF92"]["data"]["qx_m"]["ult"][65], float)
assert_type(REPO_TABLES["IASS90"]["data"]["ix_m"][65], float)

# Any table.
def reads(*tables: TablePayload) -> None: ...

for name, payload in REPO_TABLES.items():
    assert_type(name, TableName)
    assert_type(REPO_TABLES[name], TablePayload)
    reads(payload)
reads(PER2020_Ind_1o, AM92_AF92, CB_H_2020, DAV2004R_SelUlt_2o, GAM71)

def by_text(text: str) -> TablePayload:
    table = REPO_TABLES.get(text)
    if table is None:
        raise KeyError(text)
    return table
"""

# Each line is an error in both checkers.
BAD = """
from marlune.tables.data_tables import (
    AM92_AF92, GAM71, CB_H_2020, IASS90, REPO_TABLES, DAV2004R_Agg_1o, PER2020_Ind_1o,
    TablePayload, _dav_mi_linear,
)

# Misspelt.
PER2020_Ind_1o["omega_age"]
REPO_TABLES["GAM71"]["start"]
PER2020_Ind_1o["data"]["qx"]
AM92_AF92["data"]["qx_m"]["ultimate"]
# A column that the table does not have: one for both sexes, in capitals, of one sex, static.
IASS90["data"]["ix_f"]
DAV2004R_Agg_1o["data"]["mi_m"]
GAM71["data"]["mi_m"]
# Another shape.
_1: float = AM92_AF92["data"]["qx_m"][65]
_2: float = CB_H_2020["data"]["mi_m"][65]
_3: list[str] = GAM71["data"]["qx_m"]
def _4(table: TablePayload) -> float: return table["data"]["qx_m"][65]
_dav_mi_linear((0.1,), [0.1])
"""
# The page about types shows both, in a block each.
PAGE = (TOP / "docs" / "types.md").read_text()
MIXED, USE, HAND_OVER = re.findall(r"^```py(?:thon)?\n(.*?)^```", PAGE, re.M | re.S)
MISTAKES = {
    ("bad.py", number)
    for number, line in enumerate(BAD.splitlines(), 1)
    if line and line[0] not in "# )" and not line.startswith("from ")
}
MISTAKES |= {
    ("mixed.py", number) for number, line in enumerate(MIXED.splitlines(), 1) if "# error" in line
}
FILES = {"good.py": GOOD, "use.py": USE, "bad.py": BAD, "mixed.py": MIXED}
FILES["beside.py"] = f"""
from marlune import TableBuilder
from marlune.tables.data_tables import REPO_TABLES
{HAND_OVER}"""


@pytest.fixture(scope="module", params=["alone", "beside"])
def environment(request, tmp_path_factory):
    """A virtual environment with the module installed, alone or beside the rest of marlune."""
    folder = tmp_path_factory.mktemp(request.param)
    options = ("--without-pip", "--system-site-packages")
    subprocess.run([sys.executable, "-m", "venv", *options, folder / "venv"], check=True)
    (site,) = (folder / "venv" / "lib").glob("python3.14/site-packages")
    hidden = shutil.ignore_patterns("__pycache__")
    shutil.copytree(Path(module.__file__).parents[2], site, ignore=hidden, dirs_exist_ok=True)
    for name, text in FILES.items():
        (folder / name).write_text(text)
    if request.param == "alone":
        (folder / "beside.py").unlink()
    else:
        shutil.copytree(STAND_IN / "marlune", site / "marlune", ignore=hidden, dirs_exist_ok=True)
        (site / "marlune" / "py.typed").touch()
    shutil.copytree(TOP / "examples", folder / "examples")
    settings: dict[str, object] = {"include": ["*.py", "examples"], "typeCheckingMode": "strict"}
    # So that each mistake is an error for its own reason alone.
    settings |= {"reportUnusedExpression": False, "reportPrivateUsage": False}
    (folder / "pyrightconfig.json").write_text(json.dumps(settings))
    return folder


def check(folder, *command):
    """What a checker prints of these files, in the environment that has the module."""
    files = [*folder.glob("*.py"), *folder.glob("examples/*.py")]
    # It finds the module by the interpreter of the environment alone.
    bare = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    done = subprocess.run(
        [*command, folder / "venv" / "bin" / "python", *files], cwd=folder, env=bare,
        capture_output=True, text=True, check=False, timeout=300,
    )  # fmt: skip
    assert done.returncode in (0, 1), done.stdout + done.stderr
    return done.stdout, len(files)


def mypy(folder):
    """The errors of mypy --strict: file name, line, message."""
    command = sys.executable, "-m", "mypy", "--strict", "--python-executable"
    output, number = check(folder, *command)
    assert f"(checked {number} source files)" in output, output
    errors = re.findall(r"^(?:.*/)?(\w+\.py):(\d+): error: (.*)$", output, re.M)
    return [(name, int(line), message) for name, line, message in errors]


def pyright(folder):
    """The errors and warnings of pyright: file name, line, message."""
    output, number = check(folder, "node", PYRIGHT, "--outputjson", "--pythonpath")
    report = json.loads(output)
    assert report["summary"]["filesAnalyzed"] == number
    return [
        (Path(each["file"]).name, each["range"]["start"]["line"] + 1, each["message"])
        for each in report["generalDiagnostics"]
    ]


@pytest.mark.parametrize("checker", [mypy, pyright])
def test_use_and_examples_pass_and_each_mistake_is_an_error(environment, checker):
    errors = checker(environment)
    assert [error for error in errors if error[0] not in ("bad.py", "mixed.py")] == []
    assert {(name, line) for name, line, _ in errors} == MISTAKES and len(MISTAKES) == 16


def test_readme_hands_over_in_the_form_that_is_checked():
    assert HAND_OVER in (TOP / "README.md").read_text()
