"""Where every table comes from: the files of the folder provenance/, joined with the module.

One file for each family says what no program can know: use, publication, documents, doubts.
What the module knows (ages, unit, closing, digest) is taken from it. Tables and columns are named
by patterns, "TABLE" or "TABLE COLUMN" with * ? and [...]; a column is its key, after a dot the
select duration or the calendar years. docs/provenance.md says what the words mean.
"""

import hashlib
import json
import tomllib
from decimal import Decimal
from fnmatch import fnmatchcase
from functools import cache
from textwrap import fill

from marlune.tables.data_tables import REPO_TABLES
from tools import TOP

FOLDER = TOP / "provenance"
VERIFIED = FOLDER / "verified.json"
DECLARED = "declared.toml"
NO_FAMILIES = ("documents.toml", DECLARED)
REGISTER = TOP / "marlune" / "tables" / "data_tables_sources.json"
DOCUMENT = TOP / "docs" / "provenance.md"
MARK = "<!-- What follows is written by `./dev python -m tools.documents --write`. -->\n"
GRADES = ("value", "completion", "paper trail")
# What is said of every table, with its source.
MEANING = ("use", "standing", "age_basis")
NOT_STATED = "not stated"
# The cells of a row of docs/provenance.md.
HEAD = (
    "table", "column", "place", "unit", "order", "basis", "ages", "not published", "closing",
    "decimals", "verified", "digest",
)  # fmt: skip
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


class ProvenanceError(Exception):
    """A file of provenance/ does not fit the module, or not the others."""


def expect(holds, *what):
    if not holds:
        raise ProvenanceError(": ".join(map(str, what)))


# ---- the files ----


def read_toml(name):
    try:
        return tomllib.loads((FOLDER / name).read_text("utf-8"))
    except tomllib.TOMLDecodeError as error:
        raise ProvenanceError(f"{name}: {error}") from None


def expect_words(kind, item, *where):
    words = WORDS[kind].split()
    strange = set(item) - {word.rstrip("!") for word in words}
    expect(not strange, *where, kind, f"unknown words {sorted(strange)}")
    missing = [word[:-1] for word in words if word.endswith("!") and word[:-1] not in item]
    expect(not missing, *where, kind, f"says no {', '.join(missing)}")


def read_family(path):
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
    others = {"country": None, "grids": {}, "default": {}, "agreed": {}, "facts": {}}
    return {"id": path.stem} | others | family | lists


def families():
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


def entries_of(entries, name):
    """The entries that are about a table."""
    return [each for each in entries if fnmatchcase(name, each["tables"])]


def intervals(ages):
    """[[first, last], …] from "20, 63-70"."""
    bounds = [part.split("-") for part in ages.replace(" ", "").split(",")]
    return [[int(each[0]), int(each[-1])] for each in bounds]


# ---- the module ----


def columns_of(family, name):
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


def facts_of(name, key, lists):
    """What the module knows of a column."""
    payload = REPO_TABLES[name]
    values = [repr(value) for rates in lists for value in rates]
    decimals = [-Decimal(value).normalize().as_tuple().exponent for value in values]
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


def last_verified():
    """What `./dev verify --record` found, by column."""
    return recorded_by_verify()[1]


def recorded_by_verify():
    """The digest of what was allowed when the columns were verified, and what was found of each."""
    recorded = json.loads(VERIFIED.read_text("utf-8")) if VERIFIED.exists() else {}
    return recorded.pop(DECLARED, None), recorded


def declared_digest():
    """Of the differences that the last verification allowed."""
    return hashlib.sha256((FOLDER / DECLARED).read_bytes()).hexdigest()


def changed_since():
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


def only(found, *what):
    expect(len(found) == 1, *what, f"matched by {len(found)} entries, not by one")
    return found[0]


def doubt_of(doubt, columns):
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


def columns_described(family, name, seen, verified):
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


def meant(entry):
    return {"text": entry["text"], "source": entry.get("source")}


def table_of(family, name, columns, doubts):
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
def register():
    """Everything, as marlune/tables/data_tables_sources.json has it. Do not change it."""
    verified = last_verified()
    documents = read_toml("documents.toml")
    for name, document in documents.items():
        expect_words("document", document, name)
    read, tables, seen, used = families(), {}, {}, set()
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


def published_rows():
    """Table, column and entry of every published column, each list of rates once."""
    for name, table in register()["tables"].items():
        for column, entry in table["columns"].items():
            if entry["published"] and not entry["same_as"]:
                yield name, column, entry


def warnings_of(name):
    """What has to be said wherever the table is named, or None."""
    table = register()["tables"][name]
    parts = [
        f"ages {age_ranges(each['reconstructed'])} are reconstructed, not published"
        for each in table["columns"].values() if each["reconstructed"]
    ]  # fmt: skip
    parts += [doubt["warning"] for doubt in table["doubts"] if doubt["warning"]]
    return "; ".join(dict.fromkeys(parts)) or None


def age_ranges(ages):
    """ "91-120" from [[91, 120]]."""
    return ", ".join(str(a) if a == b else f"{a}-{b}" for a, b in ages)


# ---- what is written ----


def markdown(head, rows, code=1):
    """A table; the first cells of each row are code."""
    rows = [head, *([*(f"`{cell}`" for cell in row[:code]), *row[code:]] for row in rows)]
    widths = [max(map(len, column)) for column in zip(*rows)]
    lines = [
        "| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"
        for row in rows
    ]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return "\n".join(lines)


def register_text():
    """JSON; a column, a document and a doubt to a line, so that a change is one line as well."""

    def text(value, depth):
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


def items_of(family):
    """What is said about a family, name and text."""
    yield "Issuer", family["issuer"] + (f", {family['country']}." if family["country"] else ".")
    yield "Publication", family["publication"] + "."
    for name in family["documents"]:
        it = register()["documents"][name]
        agreed = family["agreed"].get(name)
        copy = it.get("copy", "not recorded")
        text = f"`{name}`, {it['what']}. Copy: {copy}; read {it['read']}; sha256 `{it['sha256']}`."
        yield "Document", text + (f" Equal: {agreed}." if agreed else "")
    for kind in MEANING:
        for text, names in once(family["tables"], kind):
            yield titled(kind), f"{names}: {text}." if names else f"{text}."
    yield from family["facts"].items()


def titled(kind):
    return kind.replace("_", " ").capitalize()


def once(names, key):
    """What the register says of tables under a key, each text once: the text, the tables or ""."""
    found = {}
    for name in names:
        text = register()["tables"][name][key]
        if isinstance(text, dict):
            text = text["text"] + (f" ({text['source']})" if text["source"] else "")
        found.setdefault(text, []).append(f"`{name}`")
    for text, tables in found.items():
        if text:
            yield text, ", ".join(tables) if len(found) > 1 else ""


def doubts_of(family):
    """The doubts about a family, each once: grade, text, and what it is about."""
    found = {}
    for name in family["tables"]:
        table = register()["tables"][name]
        for doubt in table["doubts"]:
            by_ages = found.setdefault((doubt["grade"], doubt["text"]), {})
            columns = doubt["columns"]
            if not any(columns.values()) and columns.keys() == table["columns"].keys():
                by_ages.setdefault("", []).append(f"`{name}`")
                continue
            for column, ages in columns.items():
                by_ages.setdefault(age_ranges(ages or []), []).append(f"`{name} {column}`")
    for (grade, text), by_ages in found.items():
        parts = [", ".join(of) + (f" at {ages}" if ages else "") for ages, of in by_ages.items()]
        yield grade, text, "; ".join(parts)


def cells_of(name, column, entry):
    ages = f"{entry['ages'][0]}-{entry['ages'][1]}"
    kinds = ("reconstructed", "doubtful", "completed")
    marks = [f"{age_ranges(entry[kind])} {kind}" for kind in kinds if entry[kind]]
    verified = [
        f"{each['document']} {each['equal']} of {each['cells']}"
        + (" computed" if each["computed"] else "")
        + (f", {sum(each['declared'].values())} declared" if each["declared"] else "")
        for each in entry["verified"]
    ]
    return (
        name, column, entry["place"], entry["unit"], entry["order"], entry["basis"], ages,
        f"**{'; '.join(marks)}**" if marks else "-", entry["closing"], str(entry["decimals"]),
        "; ".join(verified) or "-", f"`{entry['digest']}`",
    )  # fmt: skip


def wrapped(text):
    return fill(text, 100, subsequent_indent="  ", break_on_hyphens=False, break_long_words=False)


def document_text():
    """docs/provenance.md: what stands above the mark is kept."""
    above, mark, _ = DOCUMENT.read_text("utf-8").partition(MARK)
    expect(mark, DOCUMENT.name, "the comment is gone below which it is written")
    written = [above + MARK.rstrip()]
    for family in register()["families"].values():
        parts = [wrapped(f"- **{name}**: {text}") for name, text in items_of(family)]
        parts += [
            wrapped(f"- **Doubt ({grade})**: {text} About {about}.")
            for grade, text, about in doubts_of(family)
        ]
        rows = [cells_of(*row) for row in published_rows() if row[0] in family["tables"]]
        written += [f"## {family['title']}", "\n".join(parts)]
        if rows:
            written.append(markdown(HEAD, rows, 2))
    return "\n\n".join(written) + "\n"
