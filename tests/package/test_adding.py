"""A table is added as docs/adding-a-table.md says, to the letter."""

# ./dev adds: checks verify

import re
import shutil
import subprocess
from pathlib import Path

import pytest

from tools import TOP, add_table


def test_guide_leads_to_the_table(tmp_path):
    guide = (TOP / "docs" / "adding-a-table.md").read_text("utf-8")
    commands = "".join(re.findall(r"^```sh\n(.*?)^```$", guide, re.DOTALL | re.MULTILINE))
    others = shutil.ignore_patterns(".*", "build", "dist", "node_modules", "__pycache__")
    tree = shutil.copytree(TOP, tmp_path / "tree", ignore=others)
    before = {path: path.read_bytes() for path in tree.rglob("*.*") if path.is_file()}
    ask = "import json; from marlune.tables.data_tables import EX_H_2030 as t; print(json.dumps(t))"
    done = subprocess.run(
        ["bash", "-euo", "pipefail"], input=f"{commands}./dev python -c '{ask}'\n", cwd=tree,
        capture_output=True, text=True, check=False,
    )  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    table = add_table.json.loads(done.stdout.splitlines()[-1])
    assert table["data"]["qx_m"] == [0.31, 0.35, 0.4, 0.46, 0.53, 0.61, 1.0]
    assert table["data"]["mi_m"] == [0.006, 0.004, 0.002, 0.001, 0.0005, 0.0, 0.0]
    assert (table["table_name"], table["base_year"], table["omega"]) == ("EX-H-2030", 2030, 103)
    # The file that the guide shows is the one that was written; the others have more lines only.
    shown = re.search(r"^// clang-format off.*?^static_assert.*?$", guide, re.DOTALL | re.MULTILINE)
    assert shown and shown[0] in (tree / "tables/published/ex2030.hpp").read_text("utf-8")
    assert {path.name for path, content in before.items() if path.read_bytes() != content} == {
        "body.hpp", "inventory.hpp", "digests.txt", "catalogue.md", "provenance.md",
        "data_tables.pyi", "data_tables_sources.json",
    }  # fmt: skip


@pytest.mark.parametrize(
    "text, options, message",
    [
        ("age,qx_m\n65,0.1\n67,1\n", "", "qx_m has not one figure for each age 65-67"),
        ("age,qx_m\n65,0.1\n65,1\n", "", "line 3: X qx_m has age 65 twice"),
        ("age,qx_m\n65,0.1\n66,n/a\n", "", "line 3: 'n/a' is not a figure"),
        ("age,qx_m\n65\n", "", "line 2: 1 cells under 2 heads"),
        ("age,qx_m,qx_m\n65,0.1,0.1\n", "", "qx_m is there twice"),
        ("age,rate\n65,0.1\n", "", "rate is no column"),
        ("qx_m\n0.1\n", "", "the first column is not age"),
        ("age,qx_m\n", "", "no figures of X"),
        ("age,qx_m,mi_m\n65,0.1,0\n", "", "--base-year is missing"),
        ("age,qx_m\n65,0.1\n", "--base-year=2020", "--base-year is given"),
        ("age,qx_m\n65,0.1\n", "--family=../x", "'../x' is no name of files"),
        ("age,qx_m\n65,0.1\n", "GAM71", "there is a table GAM71"),
        ("age,qx_m\n65,0.1\n", "x;", "'x;' is no name of a table"),
        (None, "", "No such file"),
        ("", "", "the first column is not age"),
        ("age,qx_m\n66,1\n65,0.1\n", "", "line 3: age 65 stands after a higher one"),
        ("age,qx_m\n65,5.1\n", "", "qx_m, age 65: 5.1 is no rate (rates per mille take"),
        ("age,qx_m\n65,1001\n", "--per-mille", "qx_m, age 65: 1001 is no rate\n"),
        ("age,qx_m,qx_m.0\n65,0.1,0.1\n", "", "both with and without durations"),
        ("age,qx_m.ult\n65,0.1\n", "", "a select table has, for each sex"),
        ("age,mi_m\n65,0\n", "--base-year=2020", "no decrement rates"),
        ("age,qx_m\n65,0.1\n", "DummyX", "'DummyX' is no name of a table"),
        ("age,qx_m\n65,0.1\n", "--family=documents", "'documents' is no name of files"),
    ],
)
def test_what_makes_no_table_is_refused(text, options, message, tmp_path, monkeypatch, capsys):
    monkeypatch.setattr(Path, "write_text", lambda *_: pytest.fail("something is written"))
    if text is not None:
        (tmp_path / "x.csv").write_bytes(text.encode())
    named = [options] if options and options[0] != "-" else ["X", *options.split()]
    assert add_table.main([named[0], str(tmp_path / "x.csv"), *named[1:], "--description=x"]) == 2
    assert message in capsys.readouterr().err


def test_nothing_is_left_where_a_file_cannot_be_written(tmp_path):
    (tmp_path / "in.toml.partial").mkdir()
    with pytest.raises(IsADirectoryError):
        add_table.write({tmp_path / name: "" for name in ("in.hpp", "in.toml", "body.hpp")})
    assert [path.name for path in tmp_path.iterdir()] == ["in.toml.partial"]
