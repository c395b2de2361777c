"""The files of provenance/: what does not fit is refused, and what is doubtful is marked."""

import re
import shutil
import subprocess
import sys

import pytest

import marlune.tables.data_tables as module
from tools import TOP, documents, provenance

USE, STANDING = "[[use]]\ntables = ", "[[standing]]\ntables = "
IDLE = "[[columns]]\ncolumns = 'X'\nplace = '-'\ndocuments = []\n"
MORE = "{}'{}'\ntext = 'x'\nsource = 'y'\n[[use]]"
CHANGES = {  # the file, what stands there, what takes its place, what is said
    "no use": ("pasem2010", f'{USE}"PASEM2010"', f"{USE}'PASEM2011'", "PASEM2010: 0 files"),
    "two uses": ("am92", "[[use]]", MORE.format(USE, "GAM71"), "GAM71: 2 files"),
    "use of no table": ("gam", "[[use]]", MORE.format(USE, "GAM72"), "no table GAM72"),
    "use without a source": ("swiss", 'source = "SOA', '# "', "use: GRMF80: says no source"),
    "standing without a source":
        ("per2020", 'source = "BOE-A-2020-17154, Séptimo"', "", "standing: *: says no"),
    "standing of none":
        ("gam", f'{STANDING}"*"', f"{STANDING}'GAM71'", "GAM83: standing: matched by 0"),
    "unknown with a source":
        ("gam", 'text = "not stated"', 'text = "not stated"\nsource = "x"', "by a source"),
    "column without a place": ("gam", '"GAM71 qx_m"', '"GAM71 qx_f"', "GAM71 qx_m: matched by 0"),
    "column with two places":
        ("gam", "[[columns]]", IDLE.replace("X", "GAM71 qx_m") + "[[columns]]", "matched by 2"),
    "agreement of no column": ("swiss", "[agreed]", "[agreed]\n'x' = 'y'", "{'x'}, said to agree"),
    "place of no column": ("swiss", "[agreed]", IDLE + "[agreed]", "no column is like"),
    "no reading": ("per2020", "PER2020_*", "PER2020_Ind*", "projection: matched by 0"),
    "unknown grade": ("am92", '"completion"', '"doubtful"', "no such grade: doubtful"),
    "unknown word": ("am92", "grade =", "degree =", "unknown words ['degree']"),
    "missing word": ("am92", 'text = "Duration 0', '# "', "says no text"),
    "no place": ("swiss", 'place = "SOA', '# "', "says no place"),
    "no digest": ("documents", "sha256 =", "# =", "says no sha256"),
    "no TOML": ("am92", "[facts]", "[facts", "am92.toml: "),
    "doubt about no column": ("am92", "qx_?.0", "qx_?.9", "about no column"),
    "document that nobody knows": ("am92", '"t2360.xml"', '"t2361.csv"', "t2361.csv"),
    "document that nobody uses": ("documents", '["t818.xml"]', '["t818.pdf"]', "t818.pdf"),
    "years in no grid": ("dav2004r", '"2005-2023", ', "", "MI_?.2005-2023"),
}  # fmt: skip


@pytest.mark.parametrize("change", CHANGES)
def test_file_that_does_not_fit_is_refused(change, tmp_path, monkeypatch):
    file, good, bad, message = CHANGES[change]
    shutil.copytree(TOP / "provenance", tmp_path, dirs_exist_ok=True)
    changed = tmp_path / f"{file}.toml"
    text = changed.read_text("utf-8")
    assert good in text
    changed.write_text(text.replace(good, bad, 1), "utf-8")
    monkeypatch.setattr(provenance, "FOLDER", tmp_path)
    with pytest.raises(provenance.ProvenanceError) as refused:
        provenance.register.__wrapped__()
    assert message in str(refused.value)


def test_verified_column_that_is_gone_is_told(monkeypatch):
    monkeypatch.setattr(provenance, "last_verified", lambda: {"GAM83 qx_x": []})
    with pytest.raises(provenance.ProvenanceError, match="no such columns"):
        provenance.register.__wrapped__()


def test_documents_that_say_something_else_are_told_until_they_are_written(tmp_path, monkeypatch):
    def said(*options):
        try:
            documents.main(options)
        except SystemExit as end:
            return end.code
        return ""

    written, changed = tmp_path / "written.md", []
    monkeypatch.setattr(documents, "WRITTEN", {written: lambda: "is\n"})
    monkeypatch.setattr(provenance, "changed_since", lambda: changed)
    written.write_text("was\n")
    assert said().splitlines()[-2:] == ["-was", "+is"] and written.read_text() == "was\n"
    assert (said("--write"), said(), written.read_text()) == ("", "", "is\n")
    changed.append("GAM83 qx_m")
    told = "GAM83 qx_m: changed since it was verified; see docs/verifying.md"
    assert said("--write") == said() == told
    assert said("--any") == documents.__doc__
    monkeypatch.setitem(documents.WRITTEN, written, provenance.register.__wrapped__)
    monkeypatch.setattr(provenance, "FOLDER", tmp_path)
    (tmp_path / "documents.toml").write_text("[")
    assert said().startswith("provenance/: documents.toml: ")


def test_reconstructed_ages_are_marked_in_the_row_of_their_table():
    command = [sys.executable, "-m", "tools.catalogue"]
    printed = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    stub = (TOP / "marlune" / "tables" / "data_tables.pyi").read_text("utf-8")
    hints = re.findall(r'^(\w+): .*\n"""([^"]*)', stub, re.M)
    for marked in (
        [line.split()[0] for line in printed.splitlines() if "21-62 are reconstructed" in line],
        [name for name, hint in hints if "21-62 are reconstructed" in hint.replace("\n", " ")],
        re.search(r"- (.*) : ages 21 to 62 are reconstructed", module.__doc__)[1].split(", "),
    ):
        assert marked == ["IASS90", "SS90TOT", "SS90ABS"]
