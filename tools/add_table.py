"""Write one more published table into the sources, from its figures.

FILE is a CSV as docs/adding-a-table.md describes it, or a publication of which a reader of
./dev verify knows the table. Written are the file of the family in tables/published/ and in
provenance/ (in one that is there the table comes last), and the lines in tables/body.hpp and
tables/inventory.hpp: all four, or none. What no figures tell is called "not stated".
"""

import argparse
import csv
import json
import os
import re
import sys
import tomllib
from collections.abc import Iterator
from dataclasses import dataclass
from fnmatch import fnmatchcase
from pathlib import Path
from typing import Any

from tools import TOP
from tools.verify.page import page_of
from tools.verify.printed import Printed, UnreadableError, age_of, figure_of

# Double underscores are reserved in C++; other names are those of what is no published table.
NAME = r"(?!Dummy|REPO_TABLES$)[A-Z][A-Za-z0-9]*(_[A-Za-z0-9]+)*"
SEXES = {"m": "Males", "f": "Females"}
HEADER = """\
#pragma once

// {title}.
//
// Issuer       not stated
// Closing      not stated
// Checked      not stated

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"
#include "payload/record.hpp"

namespace marlune::tables::published {{

}} // namespace marlune::tables::published
"""
FAMILY = """\
title = "{title}"
country = "not stated"
issuer = "not stated"
publication = "not stated"
"""
MEANING = """
[[{kind}]]
tables = "{name}"
text = "not stated"
"""
READING = """
[[reading]]
tables = "{name}"
"""
COLUMNS = """
[[columns]]
columns = "{name} {key}*"
order = "not stated"
basis = "{basis}"
place = "not stated"
documents = []
"""


@dataclass
class Table:
    name: str
    family: str
    options: argparse.Namespace
    columns: list[Printed]

    @property
    def keys(self) -> list[str]:
        """The keys of "data" in their order."""
        return list(dict.fromkeys(each.column.partition(".")[0] for each in self.columns))

    def of(self, key: str) -> list[Printed]:
        return [each for each in self.columns if each.column.partition(".")[0] == key]

    @property
    def durations(self) -> list[str]:
        """Those of a select table, without the ultimate one."""
        decrements = next(key for key in self.keys if key[:2].lower() != "mi")
        labels = (each.column.partition(".")[2] for each in self.of(decrements))
        return [label for label in labels if label not in ("", "ult")]

    @property
    def ages(self) -> list[int]:
        return list(self.columns[0].figures)


# ---- the figures ----


def figures_of(path: Path, name: str) -> list[Printed]:
    """The columns of a CSV, or those that a reader finds in a publication."""
    if path.suffix != ".csv":
        from tools.verify.__main__ import read

        return [each for each in read(path)[2] if each.table == name and not each.computed]
    with path.open(encoding="utf-8-sig", newline="") as file:
        head, *rows = [*csv.reader(file)] or [[]]
    if head[:1] != ["age"]:
        raise UnreadableError(f"{path}: the first column is not age")
    columns = [Printed(name, column.strip(), "") for column in head[1:]]
    for line, row in enumerate(rows, 2):
        where = f"{path}, line {line}"
        if len(row) != len(head):
            raise UnreadableError(f"{where}: {len(row)} cells under {len(head)} heads")
        age = age_of(row[0], where)
        for column, text in zip(columns, row[1:]):
            if age < max(column.figures, default=0):
                raise UnreadableError(f"{where}: age {age} stands after a higher one")
            column.add(age, figure_of(text, where), where)
    return columns


def expect_whole(table: Table) -> None:
    """Refuses columns that make no table; how rates follow each other is for the compiler."""
    names = [each.column for each in table.columns]
    if not names or not table.ages:
        raise UnreadableError(f"no figures of {table.name} in there")
    for each in names:
        if not re.fullmatch(r"((qx|ix|ox)_[mf](\.(\d+|ult))?)|((mi|MI)_[mf](\.\d{4})?)", each):
            raise UnreadableError(f"{each} is no column: qx_m, ix_f.ult, mi_m.2030 and such are")
        if names.count(each) > 1:
            raise UnreadableError(f"{each} is there twice")
    first, last = min(table.ages), max(table.ages)
    for column in table.columns:
        if sorted(column.figures) != list(range(first, last + 1)):
            raise UnreadableError(f"{column.column} has not one figure for each age {first}-{last}")
        per_mille = table.options.per_mille and column.column[:2].lower() != "mi"
        for age, figure in column.figures.items():
            if figure > (1000 if per_mille else 1):
                hint = "" if per_mille else " (rates per mille take --per-mille)"
                raise UnreadableError(f"{column.column}, age {age}: {figure} is no rate{hint}")
    labels = {key: [each.column.partition(".")[2] for each in table.of(key)] for key in table.keys}
    if any("" in of and len(of) > 1 for of in labels.values()):
        raise UnreadableError("a column stands both with and without durations or years")
    decrements = [of for key, of in labels.items() if key[:2].lower() != "mi"]
    if not decrements:
        raise UnreadableError("there are no decrement rates")
    period = table.durations
    begins = int(period[0]) if period else 0
    whole = [*map(str, range(begins, begins + len(period))), "ult"] if period else [""]
    if any(of != whole for of in decrements):
        raise UnreadableError("a select table has, for each sex, durations in order, then ult")
    improves = any(key[:2].lower() == "mi" for key in table.keys)
    wanted = {"--base-year": table.options.base_year, "--formula": table.options.formula}
    for option, value in wanted.items():
        if improves != (value is not None):
            raise UnreadableError(
                f"{option} is {'missing: there are' if improves else 'given, but there are no'}"
                " improvement rates"
            )


# ---- what is written ----


def quoted(text: str) -> str:
    return json.dumps(text, ensure_ascii=False)


def entries_of(table: Table, key: str) -> str:
    """The expression of a column."""
    pages = {each.column.partition(".")[2]: each.column.replace(".", "_") for each in table.of(key)}
    rates = {label: f"literal({table.name}_{page})" for label, page in pages.items()}
    if "" in rates:
        return f'flat("{key}", {rates[""]})'
    shape = "year_grid" if key[:2].lower() == "mi" else "select_mapping"
    of = {label: "Label::ult()" if label == "ult" else label for label in rates}
    return f'{shape}("{key}", {{' + ", ".join(f"{{{of[x]}, {rates[x]}}}" for x in rates) + "}})"


def order_of(table: Table) -> str:
    """A key order that has the keys of the table."""
    generational, select = table.options.base_year is not None, bool(table.durations)
    if table.options.unisex:
        return "sex_independent_after_ages"
    if generational:
        return "generational_select" if select else "generational"
    return "select_after_generational" if select else "static_table"


def payload_of(table: Table) -> Iterator[str]:
    """The pages of literals, the description, and its proof."""
    options = table.options
    yield "// clang-format off"
    for column in table.columns:
        key, _, label = column.column.partition(".")
        unit = "per mille" if options.per_mille and key[:2].lower() != "mi" else "decimal"
        what = "annual improvement" if key[:2].lower() == "mi" else "rates"
        yield f"// {SEXES[key[-1]]}{f', {label}' * bool(label)}: {what}, {unit}."
        yield from list(page_of(column))[1:]
    yield "// clang-format on"
    yield ""
    yield f"inline constexpr Payload {table.name}{{"
    fields = {
        "attribute": f'"{table.name}"',
        "order": f"key_order::{order_of(table)}",
        "table_name": quoted(options.table_name or table.name),
        "table_type": f"TableType::{options.type}",
        "base_year": options.base_year,
        "formula": options.formula and f"Formula::{options.formula}",
        "select_period": len(table.durations) or None,
        "sex_independent": "true" if options.unisex else None,
        "unit": "Unit::per_mille" if options.per_mille else None,
        "omega": max(table.ages),
        "start_age": min(table.ages),
        "description": quoted(options.description),
        "data": "{" + ", ".join(entries_of(table, key) for key in table.keys) + "}",
    }
    yield from (f"    .{name} = {value}," for name, value in fields.items() if value is not None)
    yield "};"
    yield f"static_assert(proved<{table.name}>());"


def provenance_of(table: Table, said: dict[str, Any]) -> Iterator[str]:
    """What has to be said of the table, and is not said of all tables of its family."""

    def is_said(kind: str, word: str) -> bool:
        entries = [each for each in said.get(kind, []) if word in each]
        return any(fnmatchcase(table.name, each["tables"]) for each in entries)

    for kind in ("use", "standing", "age_basis"):
        if not is_said(kind, "text"):
            yield MEANING.format(kind=kind, name=table.name)
    words = {"projection": table.options.base_year is not None, "select": bool(table.durations)}
    needed = [word for word, has in words.items() if has and not is_said("reading", word)]
    if needed:
        yield READING.format(name=table.name)
        yield from (f'{word} = "not stated"\n' for word in needed)
    for key in table.keys:
        improvement = key[:2].lower() == "mi"
        basis = "improvement" if improvement else "select" if table.durations else "aggregate"
        yield COLUMNS.format(name=table.name, key=key, basis=basis)


def inserted(path: Path, before: str, lines: str) -> str:
    """The text of a file with lines before the first one that has another text."""
    above, mark, below = path.read_text("utf-8").partition(before)
    if not mark:
        raise UnreadableError(f"{path.relative_to(TOP)} has no {before!r} any more")
    return above + lines + mark + below


def texts_of(table: Table) -> dict[Path, str]:
    """Every file that changes, with its new text."""
    header = TOP / "tables" / "published" / f"{table.family}.hpp"
    facts = TOP / "provenance" / f"{table.family}.toml"
    body, inventory = TOP / "tables" / "body.hpp", TOP / "tables" / "inventory.hpp"
    include = f'#include "published/{header.name}"\n'
    bound = inserted(
        body,
        "    // Synthetic, with lists of their own\n",
        f"    table(published::{table.name}),\n",
    )
    if include not in bound:
        found = re.findall(r'#include "(?:dav2004r|published)/.*\n', bound)
        place = next((each for each in found if each > include), '#include "synthetic/')
        bound = bound.replace(place, include + place, 1)
    end = "} // namespace marlune::tables::published"
    text = header.read_text("utf-8") if header.exists() else HEADER.format(title=table.family)
    above, _, below = text.partition(end)
    payload = "\n".join(payload_of(table))
    said = facts.read_text("utf-8") if facts.exists() else FAMILY.format(title=table.family)
    return {
        header: f"{above}{payload}\n\n{end}{below}",
        facts: said + "".join(provenance_of(table, tomllib.loads(said))),
        inventory: inserted(inventory, '    "Dummy', f'    "{table.name}",\n'),
        body: bound,
    }


def write(texts: dict[Path, str]) -> None:
    """Writes all files, or none: what can fail comes first."""
    partial = {path: path.with_name(path.name + ".partial") for path in texts}
    try:
        for path, text in texts.items():
            partial[path].write_text(text, "utf-8")
        for path in texts:
            os.replace(partial[path], path)
            print(path.relative_to(TOP))
    finally:
        for each in partial.values():
            each.unlink(missing_ok=True)


def main(arguments: list[str]) -> int:
    parser = argparse.ArgumentParser(
        prog="./dev add-table", description=__doc__, formatter_class=argparse.RawTextHelpFormatter
    )
    parser.add_argument("name", help="of the table, as an attribute of the module")
    parser.add_argument("file", type=Path, help="a CSV, or a publication")
    parser.add_argument("--description", required=True, help="its text in the module")
    parser.add_argument("--table-name", help="its name in the module (that of the attribute)")
    parser.add_argument("--family", help="the name of its files (the table's own)")
    parser.add_argument("--type", choices=("life", "disability", "exit"), default="life")
    parser.add_argument("--per-mille", action="store_true", help="the decrement rates are")
    parser.add_argument("--base-year", type=int, help="of the rates that improve")
    parser.add_argument("--formula", choices=("exponential", "linear", "discrete", "projected"))
    parser.add_argument("--unisex", action="store_true", help="one column serves both sexes")
    options = parser.parse_args(arguments)
    family = options.family or options.name.lower()
    try:
        if not re.fullmatch(NAME, options.name):
            raise UnreadableError(f"{options.name!r} is no name of a table")
        if not re.fullmatch(r"(?!(declared|documents|synthetic)$)[a-z][a-z0-9_]*", family):
            raise UnreadableError(f"{family!r} is no name of files")
        if f'"{options.name}"' in (TOP / "tables" / "inventory.hpp").read_text("utf-8"):
            raise UnreadableError(f"there is a table {options.name}")
        table = Table(options.name, family, options, figures_of(options.file, options.name))
        expect_whole(table)
        write(texts_of(table))
    except (UnreadableError, OSError, UnicodeDecodeError, csv.Error) as error:
        print(f"add-table: {error}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
