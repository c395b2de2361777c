"""Write all tables as files that need neither CPython nor this module, and the same as a ZIP.

Usage: ./dev export [FOLDER]. FOLDER, dist unless named, gets data_tables-VERSION and, of the same
content, data_tables-VERSION.zip: rates.csv with a row for each value, tables.csv with one for each
table, datapackage.json that describes both, README.txt that says how to read them, and in xtbml/
what that exchange format can hold. Built twice, every file is the same to the byte; see
docs/export.md.
"""

import csv
import hashlib
import io
import json
import os
import shutil
import sys
import tempfile
import zipfile
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import Any

from marlune.tables import data_tables
from tools import TOP, xtbml
from tools.digest import digest_of, digests_of
from tools.markup import plain
from tools.provenance import register, warnings_of

TABLES: dict[str, Any] = {**data_tables.REPO_TABLES}
KINDS = {"q": "death", "i": "disability", "o": "exit", "m": "improvement"}
MARKS = ("reconstructed", "doubtful", "completed")
GRADES = ["published", "computed", *reversed(MARKS), "invented"]
SEXES = {"m": "male", "f": "female"}
# What a rate q of the base year is in a calendar year, in Python: by formula and shape of mi.
EXPRESSIONS = {
    (None, None): "q",
    ("exponential_improvement", "flat"): "q * exp(-mi * (year - base_year))",
    ("exponential_improvement", "by year"): (
        "q * exp(-sum(mi[y] for y in range(base_year, year)))"
    ),
    ("discrete_improvement", "flat"): "q * (1 - mi) ** (year - base_year)",
    ("projected_improvement", "by year"): (
        "q * prod(1 - mi[y] for y in range(base_year + 1, year + 1))"
    ),
    ("linear_improvement", "flat"): "not stated",
}
# The columns of both files: name, type, what is in it.
RATES = """
table string the name of the table, as in tables.csv
published_name string the name that the publication gives the table
kind string what the value is a rate of: death, disability, exit, or the improvement of such rates
column string the column of the table in the module
sex string male, female, or unisex where one set of rates serves both
age integer the age in whole years, that reached where the table is select
duration string in select tables the duration, a number or ult, else empty
year integer the calendar year of an improvement rate that has one, else empty
value number the rate of a year of age, as repr() of Python writes it, in its unit
unit string per mille or decimal; improvement rates are decimal in every table
order string first (with loadings), second (best estimate), or as the publication has it
grade string how the value has come about
"""
COLUMNS = """
name string the name of the table, its key in rates.csv
published_name string the name that the publication gives the table
synthetic boolean whether the table is invented, for tests
family string the publication that the table is from
country string where it was published
issuer string who has issued it
publication string where it was published
type string life, disability or exit; what the decrement is
use string what the table is for, as a publication says
use_source string the publication that says so
standing string whether the table is in force
standing_source string the publication that says so
age_basis string how the age of a life is counted
age_basis_source string the publication that says so
start_age integer the first age
omega integer the last age
columns string the columns, in the order of the table
sex_independent boolean whether one set of rates serves both sexes
select boolean whether there are rates by select duration
select_period integer the number of numbered select durations
select_reading string which age select rates go by
generational boolean whether the rates improve with the calendar year
base_year integer the calendar year of the rates
decrement_scale_factor integer 1000 where decrement rates are per mille, 1 where they are decimal
mi_scale_factor integer 1: improvement rates are decimal
generational_formula_type string the name of the formula of improvement
formula string that formula in words
formula_expression string the same in Python; q and mi are those of the age
warning string what has to be known before the table is used
doubts string what is doubtful, with its grade
documents string the documents that were read, as in the sources of datapackage.json
description string the module's own text, kept as users know it; not all of it is so
digest string a digest of all that the module holds of the table
"""


def fields_of(text: str) -> list[dict[str, Any]]:
    lines = [line.split(" ", 2) for line in text.strip().splitlines()]
    return [dict(zip(("name", "type", "description"), line)) for line in lines]


# ---- the rows ----


def grade_of(entry: dict[str, Any], age: int) -> str:
    """How the value of an age has come about: of several grades the least."""
    for kind in MARKS:
        if any(first <= age <= last for first, last in entry[kind]):
            return kind
    if entry["basis"] == "invented":
        return "invented"
    return "computed" if entry["computed"] else "published"


def rates_of(name: str) -> Iterator[list[Any]]:
    """The rows of a table in rates.csv, in the order of the module."""
    payload, record = TABLES[name], register()["tables"][name]
    for entry in record["columns"].values():
        key, ages = entry["key"], range(payload["start_age"], payload["omega"] + 1)
        sex = "unisex" if payload.get("sex_independent") else SEXES[key[-1]]
        for label in entry["labels"] or [None]:
            column = payload["data"][key]
            rates = column if label is None else column[label]
            by_year = label is not None and "ult" not in column
            duration, year = ("", label) if by_year else ("" if label is None else label, "")
            for age, value in zip(ages, rates, strict=True):
                yield [
                    name, payload["table_name"], KINDS[key[0].lower()], key, sex, age,
                    duration, year, repr(value), entry["unit"], entry["order"],
                    grade_of(entry, age),
                ]  # fmt: skip


def shape_of_improvement(payload: dict[str, Any]) -> str | None:
    for key, column in payload["data"].items():
        if key[0] in "mM":
            return "flat" if isinstance(column, list) or "ult" in column else "by year"
    return None


def table_row(name: str, digest: str) -> list[Any]:
    """The row of a table in tables.csv. Texts of the register lose their markup."""
    payload, record = TABLES[name], register()["tables"][name]
    family = register()["families"][record["family"]]
    formula, shape = payload.get("generational_formula_type"), shape_of_improvement(payload)
    # Of the years between those that synthetic tables have no text says anything.
    gaps = record["invented"] and formula == "exponential_improvement" and shape == "by year"
    documents = dict.fromkeys(
        each for entry in record["columns"].values() for each in entry["documents"]
    )
    texts = {
        kind + suffix: record[kind][word]
        for kind in ("use", "standing", "age_basis")
        for suffix, word in (("", "text"), ("_source", "source"))
    }
    doubts = (f"{each['grade']}: {each['text']}" for each in record["doubts"])
    texts |= {word: family[word] for word in ("country", "issuer", "publication")}
    texts |= {
        "family": family["title"], "formula": record["projection"], "warning": warnings_of(name),
        "select_reading": record["select"], "doubts": " | ".join(doubts),
    }  # fmt: skip
    cells = payload | {key: plain(text or "") for key, text in texts.items()}
    cells |= {
        "name": name, "published_name": payload["table_name"], "synthetic": record["invented"],
        "type": payload["table_type"], "columns": " ".join(payload["data"]),
        "sex_independent": payload.get("sex_independent", False),
        "select": payload.get("select", False),
        "formula_expression": "not stated" if gaps else EXPRESSIONS[formula, shape],
        "documents": "; ".join(documents), "digest": digest,
    }  # fmt: skip
    return [written(cells.get(each["name"])) for each in fields_of(COLUMNS)]


def written(cell: Any) -> Any:
    return str(cell).lower() if isinstance(cell, bool) else cell


def csv_of(fields: str, rows: Iterable[list[Any]]) -> bytes:
    """As RFC 4180 has it, UTF-8."""
    text = io.StringIO()
    writer = csv.writer(text)
    writer.writerow(each["name"] for each in fields_of(fields))
    writer.writerows(rows)
    return text.getvalue().encode()


# ---- what describes them ----


def resource(name: str, content: bytes, fields: list[dict[str, Any]], **keys: Any) -> Any:
    return {
        "name": name, "type": "table", "path": f"{name}.csv", "format": "csv",
        "mediatype": "text/csv", "encoding": "utf-8", "bytes": len(content),
        "hash": f"sha256:{hashlib.sha256(content).hexdigest()}",
        "dialect": {"delimiter": ",", "lineTerminator": "\r\n"},
        "schema": {"fields": fields, **keys},
    }  # fmt: skip


def description_of(rates: bytes, tables: bytes, version: str, digest: str) -> bytes:
    """datapackage.json, for programs that read Frictionless data packages."""
    enums = {
        "kind": list(KINDS.values()), "sex": [*SEXES.values(), "unisex"], "grade": GRADES,
        "unit": ["per mille", "decimal"],
    }  # fmt: skip
    of_rates, of_tables = fields_of(RATES), fields_of(COLUMNS)
    for field in of_rates:
        field["constraints"] = {"required": field["name"] not in ("duration", "year")}
        if field["name"] in enums:
            field["constraints"]["enum"] = enums[field["name"]]
    sources = [
        {
            "title": name,
            "description": plain(f"{each['what']}. Copy: {each.get('copy', 'not recorded')}."),
            "sha256": each["sha256"],
        }
        for name, each in register()["documents"].items()
    ]
    package = {
        "$schema": "https://datapackage.org/profiles/2.0/datapackage.json",
        "name": "data-tables",
        "title": "Actuarial decrement tables",
        "description": "Every value of marlune.tables.data_tables, as README.txt says.",
        "version": version,
        "catalogue_digest": digest,
        "resources": [
            resource(
                "rates", rates, of_rates,
                uniqueKeys=[["table", "column", "age", "duration", "year"]],
                foreignKeys=[
                    {"fields": ["table"], "reference": {"resource": "tables", "fields": ["name"]}}
                ],
            ),
            resource("tables", tables, of_tables, primaryKey=["name"]),
        ],
        "sources": sources,
    }  # fmt: skip
    return (json.dumps(package, ensure_ascii=False, indent=1) + "\n").encode()


README = """\
Actuarial decrement tables of marlune.tables.data_tables {version}, catalogue {digest}.
rates.csv has a row for each value, tables.csv for each table: use, formula, source, doubts.
Grade "invented": for tests only. "reconstructed" or "doubtful": first read warning in tables.csv.
Per mille: divide by 1000. Other years: formula_expression. Select rates: by the age reached.
Excel: Data > From Text/CSV, 65001: Unicode (UTF-8), comma, and for duration the type Text.
R: rates <- read.csv("rates.csv", colClasses = c(duration = "character"))
Julia: using CSV, DataFrames; rates = CSV.read("rates.csv", DataFrame; types = Dict(7 => String))
pandas: rates = pd.read_csv("rates.csv", dtype={{"duration": str}}, float_precision="round_trip")
DuckDB: CREATE TABLE rates AS FROM read_csv('rates.csv', types={{'duration':'TEXT','year':'INT'}});
xtbml/ has decimal rates, select ones by the age at selection, but not: {lost}.
"""


def contents() -> dict[str, bytes]:
    """The files of the folder, by name."""
    version, catalogue = register()["version"], digest_of(data_tables)[0]
    rates = csv_of(RATES, (row for name in TABLES for row in rates_of(name)))
    digests = digests_of(TABLES)
    tables = csv_of(COLUMNS, (table_row(name, digests[name]) for name in TABLES))
    readme = README.format(version=version, digest=catalogue[:8], lost=", ".join(xtbml.LOST))
    return {
        "README.txt": readme.encode(),
        "datapackage.json": description_of(rates, tables, version, catalogue),
        "rates.csv": rates,
        "tables.csv": tables,
    } | {f"xtbml/{name}": content for name, content in xtbml.files(version)}


# ---- writing ----


def zip_of(top: str, files: dict[str, bytes]) -> bytes:
    """The files below a folder, the same whenever and by whomever they are packed."""
    archive = io.BytesIO()
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as packed:
        for name, content in files.items():
            member = zipfile.ZipInfo(f"{top}/{name}")  # of 1980, the first year that ZIP knows
            member.compress_type, member.external_attr = zipfile.ZIP_DEFLATED, 0o644 << 16
            packed.writestr(member, content)
    return archive.getvalue()


def write(folder: Path) -> Path:
    """Write the folder and the ZIP below `folder`, each in one step, and return the ZIP."""
    files, top = contents(), f"data_tables-{register()['version']}"
    target, archive = folder / top, folder / f"{top}.zip"
    if target.exists() and not (target / "datapackage.json").is_file():
        sys.exit(f"{target} holds something else: move it away")
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(dir=folder) as made:
        for name, content in files.items():
            file = Path(made, top, name)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(content)
        Path(made, "zip").write_bytes(zip_of(top, files))
        if target.exists():
            shutil.move(target, Path(made, "before"))
        os.rename(Path(made, top), target)
        os.replace(Path(made, "zip"), archive)
    return archive


def main() -> None:
    if len(sys.argv) > 2 or any(each.startswith("-") for each in sys.argv[1:]):
        sys.exit(__doc__)
    archive = write(Path(sys.argv[1] if len(sys.argv) > 1 else TOP / "dist").resolve())
    folder = archive.with_suffix("")
    for file in sorted(folder.rglob("*.*"), key=lambda file: (file.parent != folder, file)):
        if file.parent == folder:
            print(f"{file.stat().st_size:9,}", file)
    held = list((folder / "xtbml").iterdir())
    size = sum(file.stat().st_size for file in held)
    print(f"{size:9,}", folder / "xtbml", f"({len(held)} files)")
    print(f"{archive.stat().st_size:9,}", archive)
    print("Not in xtbml:", *xtbml.left_out(), sep="\n  ")


if __name__ == "__main__":
    main()
