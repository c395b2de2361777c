"""What the page holds: tables, lists, and what the register of sources says of them."""

import base64
import json
import re
import zlib

from marlune.tables import data_tables
from tools import TOP, digest, export, provenance, provenance_document
from tools.markup import as_html, plain

# The table that holds for a life until its annuity starts, from when the other one counts.
BEFORE = {f"DAV2004R_SelUlt_{order}": f"DAV2004R_Agg_{order}" for order in ("1o", "2o")}


class ShapeError(Exception):
    """A text or a file is not what is read here."""


def decrement_of(record):
    """What the rates of a table are rates of."""
    return {"life": "death"}.get(record["type"], record["type"])


def orders_of(record):
    """The orders that the columns of a table are stated to have."""
    orders = dict.fromkeys(each["order"] for each in record["columns"].values())
    named = {"first": "first order", "second": "second order"}
    return [named.get(each, each) for each in orders if each not in ("not stated", "-")]


def series_of(name, record):
    """The lists of a table.

    Column, label in it or None, list, whether computed, what is marked, order, grade of what is not
    marked. What holds of a whole column is in the warnings of the table.
    """
    for entry in record["columns"].values():
        marks = [
            {"kind": kind, "from": first, "to": last}
            for kind in ("reconstructed", "doubtful", "completed")
            for first, last in entry[kind]
            if [first, last] != entry["ages"]
        ]
        unmarked = {**entry, **{mark["kind"]: [] for mark in marks}}
        grade = export.grade_of(unmarked, entry["ages"][0])
        column = data_tables.REPO_TABLES[name]["data"][entry["key"]]
        for label in entry["labels"] or [None]:
            rates = column if label is None else column[label]
            shown = None if label is None else str(label)
            yield entry["key"], shown, rates, bool(entry["computed"]), marks, entry["order"], grade


def doubts_of(name, record):
    """Every doubt about a table: its grade and its text, with the ages that it is about."""
    for doubt in record["doubts"]:
        ages = [f"{key} {provenance.age_ranges(of)}" for key, of in doubt["columns"].items() if of]
        text = doubt["text"] + (f" Ages: {'; '.join(ages)}." if ages else "")
        yield {"grade": doubt["grade"], "text": as_html(text, name)}


def facts_of(name, family):
    """The facts about a family, name and text."""
    for heading, text in provenance_document.items_of(family):
        yield heading, as_html(text, name)


def table_of(name, record, family, lists):
    payload = data_tables.REPO_TABLES[name]
    rows = {key: each for key, each in record["columns"].items() if each["published"]}
    places = dict.fromkeys(each["place"] for each in rows.values() if each["documents"])
    publication = family["publication"] if places else "publication not found"
    source = "; ".join([family["issuer"], publication, *places])
    facts = list(facts_of(name, family))
    return {
        "name": name,
        "purpose": record["use"]["text"],
        "standing": record["standing"],
        "warning": provenance.warnings_of(name),
        "age_basis": record["age_basis"],
        "projection": record["projection"] and plain(record["projection"]),
        "select": record["select"] and plain(record["select"]),
        "before": BEFORE.get(name),
        "decrement": decrement_of(record),
        "family": family["title"],
        "country": family["country"],
        "source": None if record["invented"] else plain(source),
        "orders": orders_of(record),
        "meta": [[key, value] for key, value in payload.items() if key != "data"],
        "series": [
            [key, label, lists.setdefault(" ".join(map(repr, rates)), len(lists)), *more]
            for key, label, rates, *more in series_of(name, record)
        ],
        "doubts": list(doubts_of(name, record)),
        "facts": facts,
        "rows": [
            [as_html(cell, name) for cell in provenance_document.cells_of(name, *row)]
            for row in rows.items()
        ],
    }


def release_date(version):
    changelog = (TOP / "CHANGELOG.md").read_text(encoding="utf-8")
    dated = re.search(rf"^## {re.escape(version)} \((\d{{4}}-\d\d-\d\d)\)$", changelog, re.M)
    if not dated:
        raise ShapeError(f"CHANGELOG.md has no heading ## {version} (YYYY-MM-DD)")
    return dated[1]


def packed_files():
    """What ./dev export writes, but for the rates, which the page has already."""
    files = {name: each.decode() for name, each in export.contents().items() if name != "rates.csv"}
    text = json.dumps(files, ensure_ascii=False, separators=(",", ":"))
    return base64.b64encode(zlib.compress(text.encode(), 9)).decode()


def contents():
    """All that the page shows, with every distinct list once."""
    register = provenance.register()
    lists = {}
    tables = [
        table_of(name, record, register["families"][record["family"]], lists)
        for name, record in register["tables"].items()
    ]
    invented = register["families"]["synthetic"]["publication"]
    return {
        "version": register["version"],
        "date": release_date(register["version"]),
        "digest": digest.digest_of(data_tables)[0][:16],
        "keys": list(dict.fromkeys(key for table in tables for key, _ in table["meta"])),
        "heads": provenance_document.HEAD,
        "invented": as_html(f"{invented}.", "synthetic"),
        "tables": tables,
        "lists": list(lists),
        "rates": [each["name"] for each in export.fields_of(export.RATES)],
        "files": packed_files(),
    }
