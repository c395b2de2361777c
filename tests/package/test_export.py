"""What ./dev export writes: every value, what describes it, and annuities from nothing but that."""

# ./dev adds: arrays
import csv
import hashlib
import json
import math
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
import zipfile
from decimal import Decimal
from itertools import chain
from typing import Any

import pandas
import pytest

import life
from columns import SYNTHETIC, lists_of
from files import readme_line
from marlune.tables.data_tables import REPO_TABLES
from tools import TOP, export, xtbml


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    """Written by a process, then once more over it: the same, and what the ZIP holds.

    In the process of the tests the attributes of the module may stand in another order.
    """
    above = tmp_path_factory.mktemp("export")
    command, written = [sys.executable, "-m", "tools.export", str(above)], set()
    for _ in range(2):
        subprocess.run(command, cwd=TOP, check=True, capture_output=True)
        (archive,) = above.glob("*.zip")
        written.add(archive.read_bytes())
    assert len(written) == 1
    made = archive.with_suffix("")
    assert sorted(above.iterdir()) == [made, archive]
    with zipfile.ZipFile(archive) as packed:
        held = {name: packed.read(name) for name in packed.namelist()}
    files = {str(file.relative_to(above)): file for file in made.rglob("*") if file.is_file()}
    assert held == {name: file.read_bytes() for name, file in files.items()}
    return made


def rows_of(folder, name) -> list[dict[str, Any]]:
    content = (folder / f"{name}.csv").read_bytes()
    assert content.count(b"\n") == content.count(b"\r\n") and content.endswith(b"\r\n")
    return list(csv.DictReader(content.decode("utf-8").splitlines(), strict=True))


def test_every_value_to_the_bit(folder):
    held = [
        (name, key, str(*path), table["start_age"] + index, repr(value))
        for name, table in REPO_TABLES.items()
        for key, column in table["data"].items()
        for path, rates in lists_of(column)
        for index, value in enumerate(rates)
    ]
    rows = rows_of(folder, "rates")
    got = [
        (row["table"], row["column"], row["duration"] or row["year"], int(row["age"]), row["value"])
        for row in rows
    ]
    assert got == held and not any(row["duration"] and row["year"] for row in rows)
    years = {row["year"] for row in rows if row["kind"] == "improvement"} - {""}
    assert years == {str(year) for year in range(2004, 2037)}
    scale = {"per mille": 1000, "decimal": 1}
    for row in rows:
        factor = REPO_TABLES[row["table"]]["decrement_scale_factor"]
        assert scale[row["unit"]] == (1 if row["kind"] == "improvement" else factor), row


def test_grades_and_sexes(folder):
    rows = {
        (row["table"], row["column"], row["duration"] + row["year"], row["age"]): row
        for row in rows_of(folder, "rates")
    }
    grades = {key: row["grade"] for key, row in rows.items()}
    assert [grades["AM92_AF92", "qx_m", "0", age] for age in ("90", "91")] == [
        "published", "completed",
    ]  # fmt: skip
    assert [grades["IASS90", "ix_m", "", age] for age in ("20", "21", "62", "63")] == [
        "doubtful", "reconstructed", "reconstructed", "doubtful",
    ]  # fmt: skip
    trends = [grades["DAV2004R_Agg_2o", "MI_f", year, "60"] for year in ("2004", "2005", "2024")]
    assert trends == ["published", "doubtful", "published"]
    assert grades["DAV2004R_SelUlt_1o", "qx_f", "1", "60"] == "computed"
    assert grades["GKMF80", "qx_f", "", "94"] == "doubtful" != grades["GKMF80", "qx_m", "", "94"]
    assert {table for (table, *_), grade in grades.items() if grade == "invented"} == {*SYNTHETIC}
    assert rows["IASS90", "ix_m", "", "40"]["sex"] == "unisex"
    assert rows["PASEM2010", "qx_f", "", "40"]["sex"] == "female"
    assert rows["PASEM2010", "qx_m", "", "40"]["order"] == "first"


def test_tables_say_how_they_are_read(folder):
    """The expressions, from the file alone, give the rates of examples/life.py."""
    rows = {row["name"]: row for row in rows_of(folder, "tables")}
    assert [*rows] == [*REPO_TABLES]
    told = 0
    for name, row in rows.items():
        table = REPO_TABLES[name]
        assert (row["synthetic"] == "true") == (name in SYNTHETIC)
        for key, value in table.items():
            if key != "data":
                cell = {"table_name": "published_name", "table_type": "type"}.get(key, key)
                text = str(value).lower() if isinstance(value, bool) else str(value)
                assert row[cell] == text.replace("None", ""), (name, key)
        assert bool(row["formula"]) == table["generational"], name
        assert row["use"] and row["standing"] and row["age_basis"], name
        if row["formula_expression"] == "not stated":
            continue
        told += 1
        key, age, year = next(iter(table["data"])), 60, int(row["base_year"] or 0) + 40
        decrement, sex = key.split("_")
        q = life.rate(table, sex, age, int(row["base_year"] or 0), decrement=decrement)
        improvement = next((each for each in table["data"] if each[0] in "mM"), None)
        names = {"q": q, "exp": math.exp, "prod": math.prod, "base_year": year - 40, "year": year}
        if improvement:
            lists, at = life.lists_of(table, improvement), age - table["start_age"]
            by_year = {y: life.in_force(lists, y, None)[at] for y in range(1890, year + 1)}
            names["mi"] = lists["ult"][at] if "ult" in lists else by_year
        own = eval(row["formula_expression"], names)
        assert own == pytest.approx(life.rate(table, sex, age, year, decrement=decrement)), name
    assert told == len(REPO_TABLES) - 7
    assert "reconstructed" in rows["IASS90"]["warning"] and "21" in rows["IASS90"]["warning"]


def test_description_is_that_of_the_files(folder):
    package = json.loads((folder / "datapackage.json").read_bytes())
    digests = (TOP / "tests" / "digests.txt").read_text()
    assert package["catalogue_digest"] in digests and package["version"] in folder.name
    assert all(len(each["sha256"]) == 64 for each in package["sources"])
    kinds = {"integer": int, "number": float, "string": str}
    kinds["boolean"] = {"true": True, "false": False}.__getitem__  # type: ignore[assignment]
    keys: dict[str, set[str]] = {}
    for resource in package["resources"]:
        content = (folder / resource["path"]).read_bytes()
        assert resource["bytes"] == len(content)
        assert resource["hash"] == f"sha256:{hashlib.sha256(content).hexdigest()}"
        rows, schema = rows_of(folder, resource["name"]), resource["schema"]
        assert [*rows[0]] == [field["name"] for field in schema["fields"]]
        for field in schema["fields"]:
            cells = {row[field["name"]] for row in rows}
            limits = field.get("constraints", {})
            assert "" not in cells or not limits.get("required"), field
            assert [kinds[field["type"]](cell) for cell in cells - {""}], field
            assert cells == set(limits.get("enum", cells)), field
        assert {cell for row in rows for cell in row} == {each["name"] for each in schema["fields"]}
        unique = [*schema.get("uniqueKeys", []), schema.get("primaryKey", [*rows[0]])]
        for key in unique:
            assert len({tuple(row[each] for each in key) for row in rows}) == len(rows), key
        keys |= {resource["name"] + each: {row[each] for row in rows} for each in ("name", "table")
                 if each in rows[0]}  # fmt: skip
        documents = {each["title"] for each in package["sources"]}
        named = chain.from_iterable(row.get("documents", "").split("; ") for row in rows)
        assert set(named) - {""} <= documents
    assert keys["ratestable"] == keys["tablesname"]
    (reference,) = package["resources"][0]["schema"]["foreignKeys"]
    assert reference == {
        "fields": ["table"],
        "reference": {"resource": "tables", "fields": ["name"]},
    }


def test_pandas_from_the_files_alone(folder, monkeypatch):
    monkeypatch.chdir(folder)
    names: dict[str, Any] = {"pd": pandas}
    exec(readme_line(folder, "pandas"), names)
    rates = names["rates"]
    assert [value.hex() for value in rates["value"]] == [
        float(row["value"]).hex() for row in rows_of(folder, "rates")
    ]
    am92 = rates[(rates.table == "AM92_AF92") & (rates.sex == "male")]
    by_duration = am92.set_index(["duration", "age"])["value"]
    select = [by_duration["0", 40], by_duration["1", 41], *by_duration["ult"].loc[42:]]
    assert f"{life.annuity_due(life.survival(select), 0.04):.3f}" == "20.009"


# ---- XTbML ----


def read_xtbml(file):
    """Nation, class and, by age or by age at selection and year, the rates of each table."""
    root = ElementTree.parse(file).getroot()
    assert root.tag == "XTbML" and int(root.findtext("ContentClassification/TableIdentity", ""))
    tables: list[dict[Any, Decimal]] = []
    for table in root.findall("Table"):
        assert table.findtext("MetaData/ScalingFactor") == "0"
        first, last = (
            int(table.findtext(f"MetaData/AxisDef/{word}ScaleValue", "")) for word in ("Min", "Max")
        )
        rates: dict[Any, Decimal] = {}
        for outer in table.findall("Values/Axis"):
            at = [] if outer.get("t") is None else [int(outer.get("t", ""))]
            for each in outer.iter("Y"):
                key = (*at, int(each.get("t", "")))
                rates[key if at else key[0]] = Decimal(each.text or "")
        ages = sorted({key[0] if isinstance(key, tuple) else key for key in rates})
        assert ages == list(range(first, last + 1))
        tables.append(rates)
    return tables


def test_xtbml_holds_what_it_can(folder):
    held = {}
    for file in (folder / "xtbml").iterdir():
        name, key, _ = file.name.split(".")
        table = REPO_TABLES[name]
        first, column = table["start_age"], table["data"][key]
        scale = table["decrement_scale_factor"] if key[0] in "qio" else 1
        *select, flat = read_xtbml(file)
        ultimate = column["ult"] if isinstance(column, dict) else column
        assert flat == {first + at: Decimal(repr(rate)) / scale for at, rate in enumerate(ultimate)}
        assert len(select) == isinstance(column, dict)
        for rates in select:
            *durations, _ = column
            lives = range(first, table["omega"] - len(durations) + 2)
            assert rates == {
                (age, year): Decimal(repr(column[duration][age + year - 1 - first]))
                for age in lives
                for year, duration in enumerate(durations, start=1)
            }
        held[name, key] = file.read_text("utf-8")
    lost = {(name, key) for name, table in REPO_TABLES.items() for key in table["data"]} - {*held}
    assert {name for name, _ in lost if name not in SYNTHETIC} == {
        "IASS90", "SS90TOT", "SS90ABS", "DAV2004R_Agg_2o", "DAV2004R_SelUlt_2o",
        *(name for name in REPO_TABLES if name[-5:] == "_2020"),
    }  # fmt: skip
    assert not any(name in SYNTHETIC for name, _ in held)
    told = "\n".join(xtbml.left_out())
    assert all(name in told for name, _ in lost if name not in SYNTHETIC)
    assert "Spain</Nation>" in held["PER2020_Ind_1o", "qx_f"]
    assert '<ContentType tc="22">Projection Scale' in held["DAV2004R_SelUlt_1o", "MI_f"]
    assert "WARNING" in held["GKMF80", "qx_f"]


# ---- what is there already ----


def test_other_things_are_left_alone(tmp_path):
    other = tmp_path / f"data_tables-{export.register()['version']}" / "mine.txt"
    other.parent.mkdir()
    other.write_text("mine")
    with pytest.raises(SystemExit, match="holds something else: move it away"):
        export.write(tmp_path)
    assert [*tmp_path.rglob("*.*")] == [other.parent, other] and other.read_text() == "mine"
