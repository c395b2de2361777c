"""Compare docs/provenance.md with the module; silent where they agree.

--write   put the module's digests into it first
"""

import hashlib
import sys
from decimal import Decimal
from pathlib import Path

from marlune.tables.data_tables import REPO_TABLES

PROVENANCE = Path(__file__).resolve().parent.parent / "docs" / "provenance.md"
# The cells of a provenance row. The module knows all of them but order and basis.
HEAD = ("table", "column", "unit", "order", "basis", "ages", "closing", "decimals", "digest")


def published_columns():
    """Table, column, and the lists that hold the published values of the column."""
    seen = set()
    for table, payload in REPO_TABLES.items():
        if table.startswith("Dummy"):
            continue
        # Of DAV 2004 R the numbered durations and the years in between are computed at import.
        dav = table.startswith("DAV2004R_")
        for key, column in payload["data"].items():
            if id(column) in seen:
                continue  # a DAV trend: it serves both tables of an order
            seen.add(id(column))
            if isinstance(column, list):
                yield table, key, [column]
                continue
            first, *_, last = column
            if last != "ult" and not dav:
                yield table, f"{key}.{first}-{last}", list(column.values())
                continue
            published = ([last] if last == "ult" else [first, last]) if dav else column
            for label in published:
                yield table, f"{key}.{label}", [column[label]]


def facts_of(table, column, lists):
    """The cells of a row, as far as the module knows them."""
    payload = REPO_TABLES[table]
    values = [repr(value) for rates in lists for value in rates]
    decimals = [-Decimal(value).normalize().as_tuple().exponent for value in values]
    printed = "".join(f"{value}\n" for value in values)
    # Improvement rates are decimal in every table.
    scale = 1 if column.lower().startswith("mi_") else payload["decrement_scale_factor"]
    return {
        "unit": "per mille" if scale == 1000 else "decimal",
        "ages": f"{payload['start_age']}-{payload['omega']}",
        "closing": ", ".join(sorted({repr(rates[-1]) for rates in lists})),
        "decimals": str(max(0, *decimals)),
        "digest": hashlib.sha256(printed.encode()).hexdigest()[:16],
    }


def rows_of(lines):
    """Line number and cells of every row that starts with a name in backticks."""
    for number, line in enumerate(lines):
        if line.startswith("| `"):
            yield number, [cell.strip(" `") for cell in line.split("|")[1:-1]]


def disagreements(write=False):
    """What the provenance and the module do not agree about, a line for each."""
    facts = {column[:2]: facts_of(*column) for column in published_columns()}
    lines = PROVENANCE.read_text(encoding="utf-8").splitlines()
    listed, wrong = set(), []
    for number, cells in rows_of(lines):
        row = dict(zip(HEAD, cells, strict=True))
        column = (row["table"], row["column"])
        if column not in facts:
            wrong.append(f"{' '.join(column)}: not a published column of the module")
            continue
        if column in listed:
            wrong.append(f"{' '.join(column)}: listed twice in the document")
        listed.add(column)
        if write:
            before, _, after = lines[number].rpartition(row["digest"])
            row["digest"] = facts[column]["digest"]
            lines[number] = before + row["digest"] + after
        wrong += [
            f"{' '.join(column)}: {what} is {row[what]} in the document, {fact} in the module"
            for what, fact in facts[column].items()
            if row[what] != fact
        ]
    if write:
        PROVENANCE.write_text("\n".join(lines) + "\n", encoding="utf-8")
    missing = [column for column in facts if column not in listed]
    return wrong + [f"{' '.join(column)}: not in the document" for column in missing]


if __name__ == "__main__":
    options = set(sys.argv[1:])
    if options - {"--write"}:
        sys.exit(__doc__)
    problems = disagreements("--write" in options)
    for problem in problems:
        print(problem, file=sys.stderr)
    sys.exit(bool(problems))
