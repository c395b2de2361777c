"""Print the catalogue: a line for each table, then how a table is handed to a consumer."""

import sys
from collections.abc import Iterator
from typing import Any

from marlune.tables.data_tables import REPO_TABLES, PER2020_Ind_1o
from tools import TOP
from tools.markup import markdown, wrapped
from tools.provenance import Entry, ProvenanceError, age_ranges, register, warnings_of
from tools.provenance_document import once, titled

type Payload = dict[str, Any]
type Column = Any  # a list, or lists by label

DOCUMENT = TOP / "docs" / "catalogue.md"
HEAD = ("name", "published name", "type", "ages", "base", "unit", "columns", "shape", "formula")


def use_of(name: str) -> str:
    """What the table is for, and what must not be missed."""
    use = register()["tables"][name]["use"]["text"]
    warning = warnings_of(name)
    return f"{use}; **{warning}**" if warning else use


def shape_of(column: Column) -> str:
    if isinstance(column, list):
        return "flat"
    keys = list(column)
    if keys[-1] == "ult":
        return f"durations {keys[0]}-{keys[-2]}, ult"
    return f"years {keys[0]}-{keys[-1]} ({len(keys)})"


def line(name: str, payload: Payload) -> tuple[str, ...]:
    columns = payload["data"]
    shapes = {shape_of(column): None for column in columns.values()}
    return (
        name,
        payload["table_name"],
        payload["table_type"],
        f"{payload['start_age']}-{payload['omega']}",
        str(payload.get("base_year") or "-"),
        "per mille" if payload["decrement_scale_factor"] == 1000 else "decimal",
        " ".join(columns),
        "; ".join(shapes),
        payload.get("generational_formula_type", "-"),
    )


def print_catalogue() -> None:
    lines = [HEAD] + [line(name, payload) for name, payload in REPO_TABLES.items()]
    widths = [max(map(len, column)) for column in zip(*lines)]
    for row, name in zip(lines, [None, *REPO_TABLES]):
        warning = name and warnings_of(name)
        cells = [cell.ljust(width) for cell, width in zip(row, widths)]
        print("  ".join(cells + [f"WARNING: {warning}"] * bool(warning)).rstrip())


def print_documented_use() -> None:
    payload = dict(PER2020_Ind_1o)
    data = payload.pop("data")
    print('\nThe documented use: copy the payload, take "data" out of the copy, pass on the rest.')
    print("TableBuilder(")
    print("    {" + ", ".join(f"{key!r}: {len(rates)} rates" for key, rates in data.items()) + "},")
    for key, value in payload.items():
        print(f"    {key}={value!r},")
    print(")")


def completed_of(name: str) -> str:
    """The ages that a rule has filled, and the columns that have them."""
    by_ages: dict[str, list[str]] = {}
    for column, entry in register()["tables"][name]["columns"].items():
        if entry["completed"]:
            by_ages.setdefault(age_ranges(entry["completed"]), []).append(f"`{column}`")
    return "; ".join(f"{', '.join(columns)} {ages}" for ages, columns in by_ages.items()) or "-"


def grades_of(name: str) -> str:
    doubts = register()["tables"][name]["doubts"]
    return ", ".join(dict.fromkeys(doubt["grade"] for doubt in doubts)) or "-"


def family_of(family: Entry) -> list[str]:
    """A family: its country, its tables, and what holds of them, each text once."""
    names = family["tables"]
    rows: list[tuple[str, ...]] = [
        (each, use_of(each), grades_of(each), completed_of(each), REPO_TABLES[each]["table_name"])
        for each in names
    ]
    head: tuple[str, ...] = ("name", "for", "doubts", "completed", "published name")
    if not family["country"]:  # synthetic tables have no other name, and nothing to doubt
        head, rows = head[:2], [row[:2] for row in rows]
    items = [
        wrapped(f"- **{titled(kind)}**: {text}" + (f": {tables}." if tables else "."))
        for kind in ("standing", "age_basis", "projection", "select")
        for text, tables in once(names, kind)
        if family["country"] or kind in ("projection", "select")
    ]
    title = f"### {family['title']}, {family['country']}"
    return [title] * bool(family["country"]) + [markdown(head, rows), "\n".join(items)]


def tables_of_document() -> Iterator[tuple[str, str]]:
    """The lists of the document, by the name in the comment before each."""
    for kind in ("published", "synthetic"):
        families = [
            each for each in register()["families"].values()
            if bool(each["country"]) == (kind == "published")
        ]  # fmt: skip
        parts = [part for family in families for part in family_of(family)]
        yield f"{kind}: families", "\n\n".join(parts)
        facts = [line(name, REPO_TABLES[name]) for family in families for name in family["tables"]]
        yield f"{kind}: facts", markdown(("name", *HEAD[2:]), [(row[0], *row[2:]) for row in facts])


def document_text() -> str:
    """docs/catalogue.md, with its tables between the comments that name them."""
    written = DOCUMENT.read_text("utf-8")
    for name, table in tables_of_document():
        begin, end = f"<!-- {name} -->\n\n", "\n\n<!-- end -->"
        before, rest = written.split(begin)
        written = before + begin + table + end + rest.partition(end)[2]
    return written


if __name__ == "__main__":
    try:
        print_catalogue()
    except ProvenanceError as error:
        sys.exit(f"provenance/: {error}")
    print_documented_use()
