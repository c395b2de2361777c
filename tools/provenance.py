"""Where every table comes from: the files of the folder provenance/, joined with the module.

One file for each family says what no program can know: use, publication, documents, doubts.
What the module knows (ages, unit, closing, digest) is taken from it. Tables and columns are named
by patterns, "TABLE" or "TABLE COLUMN" with * ? and [...]; a column is its key, after a dot the
select duration or the calendar years. docs/provenance.md says what the words mean.
"""

import hashlib
import json
import tomllib
from collections.abc import Iterable, Iterator
from decimal import Decimal
from fnmatch import fnmatchcase
from functools import cache
from pathlib import Path
from typing import Any

from marlune.tables.data_tables import REPO_TABLES
from tools import TOP

FOLDER = TOP / "provenance"
VERIFIED = FOLDER / "verified.json"
DECLARED = "declared.toml"
NO_FAMILIES = ("documents.toml", DECLARED)
REGISTER = TOP / "marlune" / "tables" / "data_tables_sources.json"
GRADES = ("value", "completion", "paper trail")
# What is said of every table, with its source.
MEANING = ("use", "standing", "age_basis")
NOT_STATED = "not stated"
# What a file says, what is marked it has to; whatever else stands there is an error.
WORDS = {
    "family": "title! country issuer! publication! use! standing! age_basis! reading grids default"
    " columns! agreed facts doubts",
    **dict.fromkeys(MEANING, "tables! text! source"),
    "reading": "tables! projection select",
    "columns": "columns! order! basis! place! documents! computed invented",
    "doubts": "grade! columns! ages text! warning reconstructed",
    "document": "what! copy read! sha256!",
}


# What a file or the register says under one heading.
type Entry = dict[str, Any]
type Verified = dict[str, list[Entry]]  # by "TABLE COLUMN"
type Ages = list[list[int]]  # the first and the last of each interval
type Labels = list[int | str]
type Rates = list[float]


class ProvenanceError(Exception):
    """A file of provenance/ does not fit the module, or not the others."""


def expect(holds: object, *what: object) -> None:
    if not holds:
        raise ProvenanceError(": ".join(map(str, what)))


# ---- the files ----


def read_toml(name: str) -> Entry:
    try:
        return tomllib.loads((FOLDER / name).read_text("utf-8"))
    except tomllib.TOMLDecodeError as error:
        raise ProvenanceError(f"{name}: {error}") from None


def expect_words(kind: str, item: Entry, *where: str) -> None:
    words = WORDS[kind].split()
    strange = set(item) - {word.rstrip("!") for word in words}
    expect(not strange, *where, kind, f"unknown words {sorted(strange)}")
    missing = [word[:-1] for word in words if word.endswith("!") and word[:-1] not in item]
    expect(not missing, *where, kind, f"says no {', '.join(missing)}")


def read_family(path: Path) -> Entry:
    """A family as its file says it."""
    family = read_toml(path.name)
    expect_words("family", family, path.name)
    lists = {kind: family.get(kind, []) for kind in (*MEANING, "reading", "columns", "doubts")}
    default = family.get("default", {})
    for kind, listed in lists.items():
        for item in listed:
            expect_words(kind, default | item if kind == "columns" else item, path.name)
    for kind in MEANING:
        for item in lists[kind]:
            stated = not item["text"].startswith(NOT_STATED)
            expect(
                stated == ("source" in item),
                path.name,
                kind,
                item["tables"],
                "says no source" if stated else "not stated, but by a source",
            )
    for doubt in lists["doubts"]:
        expect(doubt["grade"] in GRADES, path.name, f"no such grade: {doubt['grade']}")
    others: Entry = {"country": None, "grids": {}, "default": {}, "agreed": {}, "facts": {}}
    return {"id": path.stem} | others | family | lists


def families() -> list[Entry]:
    """The families in the order of their tables, which every one of them has."""
    paths = sorted(path for path in FOLDER.glob("*.toml") if path.name not in NO_FAMILIES)
    read = [read_family(path) for path in paths]
    owner = {}
    for name in REPO_TABLES:
        of = [each for each in read if any(entries_of(each["use"], name))]
        expect(len(of) == 1, name, f"{len(of)} files say what it is for, not one")
        owner[name] = of[0]
    for each in read:
        each["tables"] = [name for name in REPO_TABLES if owner[name] is each]
        for entry in (entry for kind in MEANING for entry in each[kind]):
            matched = any(entries_of([entry], name) for name in each["tables"])
            expect(matched, each["id"], f"no table {entry['tables']}")
    order = list(REPO_TABLES)
    return sorted(read, key=lambda each: order.index(each["tables"][0]))


def entries_of(entries: list[Entry], name: str) -> list[Entry]:
    """The entries that are about a table."""
    return [each for each in entries if fnmatchcase(name, each["tables"])]


def intervals(ages: str) -> Ages:
    """[[first, last], …] from "20, 63-70"."""
    bounds = [part.split("-") for part in ages.replace(" ", "").split(",")]
    return [[int(each[0]), int(each[-1])] for each in bounds]


# ---- the module ----


def columns_of(family: Entry, name: str) -> Iterator[tuple[str, str, Labels | None, list[Rates]]]:
    """Every column of a table that has a row: its name, its key, the labels in it, its lists."""
    for key, column in REPO_TABLES[name]["data"].items():
        if isinstance(column, list):
            yield key, key, None, [column]
            continue
        labels = list(column)
        spans = [str(label) for label in labels]
        if labels[-1] != "ult":
            spans = [f"{labels[0]}-{labels[-1]}"]
            for pattern, given in family["grids"].items():
                spans = given if fnmatchcase(f"{name} {key}", pattern) else spans
        for span in spans:
            first, _, last = span.partition("-")
            held = [each for each in labels if str(each) == first or first < str(each) <= last]
            yield f"{key}.{span}", key, held, [column[label] for label in held]


def facts_of(name: str, key: str, lists: list[Rates]) -> Entry:
    """What the module knows of a column."""
    payload = REPO_TABLES[name]
    values = [repr(value) for rates in lists for value in rates]
    decimals = [-int(Decimal(value).normalize().as_tuple().exponent) for value in values]
    printed = "".join(f"{value}\n" for value in values)
    # Improvement rates are decimal in every table.
    scale = 1 if key.lower().startswith("mi_") else payload["decrement_scale_factor"]
    return {
        "unit": "per mille" if scale == 1000 else "decimal",
        "ages": [payload["start_age"], payload["omega"]],
        "closing": ", ".join(sorted({repr(rates[-1]) for rates in lists})),
        "decimals": max(0, *decimals),
        "digest": hashlib.sha256(printed.encode()).hexdigest()[:16],
    }


# ---- the last verification ----


def last_verified() -> Verified:
    """What `./dev verify --record` found, by column."""
    return recorded_by_verify()[1]


def recorded_by_verify() -> tuple[str | None, Verified]:
    """The digest of what was allowed when the columns were verified, and what was found of each."""
    recorded = json.loads(VERIFIED.read_text("utf-8")) if VERIFIED.exists() else {}
    return recorded.pop(DECLARED, None), recorded


def declared_digest() -> str:
    """Of the differences that the last verification allowed."""
    return hashlib.sha256((FOLDER / DECLARED).read_bytes()).hexdigest()


def changed_since() -> Iterator[str]:
    """The columns whose digits are not those that were verified, and what was allowed."""
    allowed, verified = recorded_by_verify()
    if verified and allowed != declared_digest():
        yield DECLARED
    for where, entries in verified.items():
        name, column = where.split(" ")
        digest = register()["tables"][name]["columns"][column]["digest"]
        if any(each["digest"] != digest for each in entries):
            yield where


# ---- the register ----


def only[Found](found: list[Found], *what: str) -> Found:
    expect(len(found) == 1, *what, f"matched by {len(found)} entries, not by one")
    return found[0]


def doubt_of(doubt: Entry, columns: Iterable[tuple[str, str]]) -> Entry:
    """A doubt as the register has it: the columns that it is about, and their ages."""
    ages = intervals(doubt["ages"]) if "ages" in doubt else None
    about = [each for each in map(" ".join, columns) if fnmatchcase(each, doubt["columns"])]
    expect(about, "a doubt is about no column", doubt)
    return {
        "grade": doubt["grade"],
        "text": doubt["text"],
        "warning": doubt.get("warning"),
        "reconstructed": doubt.get("reconstructed", False),
        "columns": dict.fromkeys(about, ages),
    }


def columns_described(
    family: Entry, name: str, seen: dict[tuple[int, ...], list[str]], verified: Verified
) -> Iterator[tuple[str, Entry]]:
    """The columns of a table, as the register has them."""
    for column, key, labels, lists in columns_of(family, name):
        where = f"{name} {column}"
        entries = [each for each in family["columns"] if fnmatchcase(where, each["columns"])]
        entry = only(entries, where)
        entry["used"] = True
        entry = family["default"] | entry
        first = seen.setdefault(tuple(map(id, lists)), [name, column])
        computed, invented = entry.get("computed"), entry.get("invented", False)
        described = {
            "key": key,
            "labels": labels,
            "published": not computed and not invented,
            "computed": computed,
            "same_as": None if first == [name, column] else first,
            **{word: entry[word] for word in ("place", "order", "basis", "documents")},
            **facts_of(name, key, lists),
            "reconstructed": [],
            "doubtful": [],
            "completed": [],
            "verified": [
                {word: value for word, value in each.items() if word != "digest"}
                for each in verified.get(where, [])
            ],
        }
        yield column, described


def meant(entry: Entry) -> Entry:
    return {"text": entry["text"], "source": entry.get("source")}


def table_of(family: Entry, name: str, columns: Entry, doubts: list[Entry]) -> Entry:
    payload = REPO_TABLES[name]
    reading = entries_of(family["reading"], name)
    readings = {}
    for word, needed in (("projection", payload["generational"]), ("select", "select" in payload)):
        found = [each[word] for each in reading if word in each]
        readings[word] = only(found, name, word) if needed else None
    mine = []
    for doubt in doubts:
        ages = {each.removeprefix(f"{name} "): of for each, of in doubt["columns"].items()
                if each.startswith(f"{name} ")}  # fmt: skip
        if ages:
            mine.append(doubt | {"columns": ages})
    for doubt in mine:
        for column, ages in doubt["columns"].items():
            if doubt["reconstructed"]:
                columns[column]["reconstructed"] += ages
            elif doubt["grade"] == "value":
                columns[column]["doubtful"] += ages or [columns[column]["ages"]]
            elif doubt["grade"] == "completion":
                columns[column]["completed"] += ages or []
    return {
        "family": family["id"],
        **{kind: meant(only(entries_of(family[kind], name), name, kind)) for kind in MEANING},
        "published_name": payload["table_name"],
        "invented": all(each["basis"] == "invented" for each in columns.values()),
        "type": payload["table_type"],
        "base_year": payload.get("base_year"),
        "formula": payload.get("generational_formula_type"),
        **readings,
        "doubts": mine,
        "columns": columns,
    }


@cache
def register() -> Entry:
    """Everything, as marlune/tables/data_tables_sources.json has it. Do not change it."""
    verified = last_verified()
    documents = read_toml("documents.toml")
    for name, document in documents.items():
        expect_words("document", document, name)
    read, used = families(), set()
    tables: Entry = {}
    seen: dict[tuple[int, ...], list[str]] = {}
    for family in read:
        columns = {
            name: dict(columns_described(family, name, seen, verified)) for name in family["tables"]
        }
        idle = [each["columns"] for each in family["columns"] if "used" not in each]
        expect(not idle, family["id"], f"no column is like {idle}")
        places = [(name, column) for name in family["tables"] for column in columns[name]]
        doubts = [doubt_of(doubt, places) for doubt in family["doubts"]]
        for name in family["tables"]:
            tables[name] = table_of(family, name, columns[name], doubts)
        entries = [entry for of in columns.values() for entry in of.values()]
        named = dict.fromkeys(each for entry in entries for each in entry["documents"])
        family["documents"] = list(named)
        stray = set(family["agreed"]) - set(family["documents"])
        expect(not stray, family["id"], f"no column names {stray}, said to agree")
        used.update(family["documents"])
    strange = used ^ set(documents)
    expect(not strange, "documents.toml", f"not here or not used: {strange}")
    held = {f"{name} {column}" for name in tables for column in tables[name]["columns"]}
    expect(set(verified) <= held, VERIFIED.name, f"no such columns: {set(verified) - held}")
    kept = ("title", "country", "issuer", "publication", "tables", "documents", "agreed", "facts")
    project = tomllib.loads((TOP / "pyproject.toml").read_text("utf-8"))["project"]
    return {
        "module": "marlune.tables.data_tables",
        "version": project["version"],
        "documents": documents,
        "families": {each["id"]: {word: each[word] for word in kept} for each in read},
        "tables": {name: tables[name] for name in REPO_TABLES},
    }


def register_text() -> str:
    """JSON; a column, a document and a doubt to a line, so that a change is one line as well."""

    def text(value: Any, depth: int) -> str:
        inner = list(value.items()) if isinstance(value, dict) else value
        if not depth or not isinstance(value, dict | list) or not inner:
            return json.dumps(value, ensure_ascii=False)
        if isinstance(value, list):
            if not isinstance(value[0], dict):
                return json.dumps(value, ensure_ascii=False)
            return "[\n" + ",\n".join(text(each, 0) for each in value) + "\n]"
        lines = (f"{json.dumps(key)}: {text(each, depth - 1)}" for key, each in inner)
        return "{\n" + ",\n".join(lines) + "\n}"

    return text(register(), 4) + "\n"


def published_rows() -> Iterator[tuple[str, str, Entry]]:
    """Table, column and entry of every published column, each list of rates once."""
    for name, table in register()["tables"].items():
        for column, entry in table["columns"].items():
            if entry["published"] and not entry["same_as"]:
                yield name, column, entry


def warnings_of(name: str) -> str | None:
    """What has to be said wherever the table is named, or None."""
    table = register()["tables"][name]
    parts = [
        f"ages {age_ranges(each['reconstructed'])} are reconstructed, not published"
        for each in table["columns"].values() if each["reconstructed"]
    ]  # fmt: skip
    parts += [doubt["warning"] for doubt in table["doubts"] if doubt["warning"]]
    return "; ".join(dict.fromkeys(parts)) or None


def age_ranges(ages: Ages) -> str:
    """ "91-120" from [[91, 120]]."""
    return ", ".join(str(a) if a == b else f"{a}-{b}" for a, b in ages)
