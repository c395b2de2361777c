"""What provenance has of documents: their digests, the columns in them, declared differences."""

import tomllib
from collections.abc import Iterator
from dataclasses import dataclass
from decimal import Decimal
from fnmatch import fnmatchcase

from tools import provenance
from tools.verify.printed import Printed

DECLARED = "declared.toml"
# What a declared difference says of cells; the file tells what each means.
KINDS = {"figures", "repeats", "not_printed", "rounded"}


@dataclass
class Declared:
    documents: list[str]
    columns: str  # a pattern for "table column"
    place: str  # a pattern
    kind: str
    reason: str
    cells: dict[int, Decimal | None]  # by age; the printed figure where it is declared
    decimals: int | None = None  # of rounded figures

    def concerns(self, document: str, printed: Printed) -> bool:
        return (
            document in self.documents
            and fnmatchcase(f"{printed.table} {printed.column}", self.columns)
            and fnmatchcase(printed.place, self.place)
        )


@dataclass
class Record:
    digests: dict[str, str]  # of each document, by its name
    rows: dict[tuple[str, str], str]  # the row of provenance that a list of rates belongs to
    claims: dict[str, set[tuple[str, str]]]  # the lists that each document should hold
    without: list[str]  # published columns that no document holds
    declared: list[Declared]


def ages_of(text: str) -> dict[int, Decimal | None]:
    """The ages of a list such as "63, 69, 75-77"."""
    ages: dict[int, Decimal | None] = {}
    for part in text.split(","):
        first, _, last = part.strip().partition("-")
        ages |= dict.fromkeys(range(int(first), int(last or first) + 1))
    return ages


def figures_of(text: str) -> dict[int, Decimal | None]:
    """The figures of a list such as "0-14: 0, 63: 3.612"."""
    pairs = (part.split(":") for part in text.split(","))
    return {age: Decimal(figure.strip()) for ages, figure in pairs for age in ages_of(ages)}


def declarations(entry: provenance.Entry) -> Iterator[Declared]:
    (kind,) = KINDS & entry.keys()
    common = (entry.get("place", "*"), kind, entry["reason"])
    if kind == "figures":
        for columns, figures in entry[kind].items():
            yield Declared(entry["documents"], columns, *common, figures_of(figures))
        return
    place = (entry["documents"], entry["columns"], *common)
    if kind == "rounded":
        yield Declared(*place, cells={}, decimals=entry[kind])
    else:
        yield Declared(*place, ages_of(entry[kind]))


def load() -> Record:
    register = provenance.register()
    rows: dict[tuple[str, str], str] = {}
    claims: dict[str, set[tuple[str, str]]] = {}
    without = []
    for table, facts in register["tables"].items():
        for row, entry in facts["columns"].items():
            key, labels = entry["key"], entry["labels"]
            names = [key] if labels is None else [f"{key}.{label}" for label in labels]
            rows |= {(table, name): row for name in names}
            if entry["same_as"]:
                continue
            for document in entry["documents"]:
                claims.setdefault(document, set()).update((table, name) for name in names)
            if entry["published"] and not entry["documents"]:
                without.append(f"{table} {row}")
    digests = {name: facts["sha256"] for name, facts in register["documents"].items()}
    told = tomllib.loads((provenance.FOLDER / DECLARED).read_text(encoding="utf-8"))
    declared = [item for entry in told["declared"] for item in declarations(entry)]
    return Record(digests, rows, claims, without, declared)
