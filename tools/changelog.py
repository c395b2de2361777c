"""Check that CHANGELOG.md names every changed published column; silent where it does.

Usage: changelog.py [FOLDER], by default the top of the tree. Every section carries one digest over
the published columns of the register of sources as they were released. Undoing the newest section's
rows of changed columns must lead to the digest of the section below, and so on down to the first
release.
"""

import hashlib
import json
import re
import sys
import tomllib
from collections.abc import Iterator
from pathlib import Path

from tools import TOP

NONE = "-"  # in place of a digest, where a column is new or gone


def rows_of(text: str) -> list[list[str]]:
    """The cells of every row that starts with a name in backticks."""
    rows = re.findall(r"^\| `.*$", text, flags=re.MULTILINE)
    return [[cell.strip(" `") for cell in row.split("|")[1:-1]] for row in rows]


def digest_of(columns: dict[tuple[str, str], str]) -> str:
    """One digest for all columns, in whatever order they are listed."""
    lines = sorted(f"{table} {column} {digest}\n" for (table, column), digest in columns.items())
    return hashlib.sha256("".join(lines).encode()).hexdigest()[:16]


def published(register: str) -> dict[tuple[str, str], str]:
    """The digest of every published column, of lists that tables share once."""
    tables = json.loads(register)["tables"].items()
    return {
        (name, column): entry["digest"]
        for name, table in tables
        for column, entry in table["columns"].items()
        if entry["published"] and not entry["same_as"]
    }


def problems_of(changelog: str, register: str, version: str) -> Iterator[str]:
    columns = published(register)
    _, *sections = re.split(r"^## ", changelog, flags=re.MULTILINE)
    release = NONE
    for number, section in enumerate(sections):
        above, release = release, section.split(maxsplit=1)[0]
        if number == 0 and release != version:
            yield f"the newest section is {release}, the version in pyproject.toml is {version}"
        stated = re.search(r"[Dd]igest of all columns: `(.*)`", section)
        if stated is None or stated[1] != digest_of(columns):
            what = "the register" if number == 0 else f"undoing the rows of {above}"
            yield f"{release}: digest of all columns: {what} gives {digest_of(columns)}"
            return
        for table, column, old, new, reason, source in rows_of(section):
            now = columns.pop((table, column), NONE)
            if new != now:
                yield f"{release}: {table} {column}: new is {new}, but the column has {now}"
            if not (reason and source):
                yield f"{release}: {table} {column}: reason or source is missing"
            if old != NONE:
                columns[table, column] = old


def main() -> None:
    top = Path(sys.argv[1] if len(sys.argv) > 1 else TOP)
    changelog, register, project = (
        (top / name).read_text("utf-8")
        for name in (
            "CHANGELOG.md", "marlune/tables/data_tables_sources.json", "pyproject.toml"
        )
    )  # fmt: skip
    version = tomllib.loads(project)["project"]["version"]
    problems = list(problems_of(changelog, register, version))
    for problem in problems:
        print(f"CHANGELOG.md: {problem}", file=sys.stderr)
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
