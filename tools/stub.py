"""The tables of marlune/tables/data_tables.pyi, below the line that says so."""

from collections.abc import Iterable, Iterator
from textwrap import fill

from marlune.tables.data_tables import REPO_TABLES
from tools import TOP
from tools.catalogue import Payload, line, shape_of, use_of

STUB = TOP / "marlune" / "tables" / "data_tables.pyi"
MARK = "# Everything below is written by `./dev python -m tools.documents --write`.\n"
SEXES = {"qx": "_QX", "ix": "_IX", "ox": "_OX", "mi": "_Mi", "MI": "_MI"}
SHAPES = {"flat": "Rates", "durations": "SelectMapping", "years": "YearGrid"}


def type_of(payload: Payload) -> str:
    """The exact type of a table: its kind, then the keys and the shape of its columns."""
    improvement = [key for key in payload["data"] if key.lower().startswith("mi_")]
    decrement = [key for key in payload["data"] if key not in improvement]
    arguments = []
    for keys in filter(None, (decrement, improvement)):
        (shape,) = {shape_of(payload["data"][key]).split()[0] for key in keys}
        arguments += [
            SEXES[keys[0][:2]] if len(keys) == 2 else f'Literal["{keys[0]}"]', SHAPES[shape]
        ]  # fmt: skip
    static = "Table" if "select" in payload else "StaticTable"
    kind = "GenerationalTable" if payload["generational"] else static
    return f"{'Select' * ('select' in payload)}{kind}[Columns[{', '.join(arguments)}]]"


def literal(names: Iterable[str]) -> str:
    return "Literal[" + ", ".join(f'"{name}"' for name in names) + "]"


def wrapped(text: str, indent: str) -> str:
    return fill(text, 100, initial_indent=indent, subsequent_indent=indent, break_on_hyphens=False)


def hint(name: str, payload: Payload) -> str:
    """What an editor shows for the attribute."""
    _, _, kind, ages, base, unit, *_, formula = line(name, payload)
    facts = [kind, f"ages {ages}", unit]
    if payload["generational"]:
        facts.append(f"{formula.removesuffix('_improvement')} improvement from {base}")
    return wrapped(f'"""{use_of(name)}; {", ".join(facts)}."""', "")


def text() -> Iterator[str]:
    """What follows the mark: the attributes, the names, the type of REPO_TABLES."""
    by_type: dict[str, list[str]] = {}
    for name, payload in REPO_TABLES.items():
        by_type.setdefault(type_of(payload), []).append(name)
        yield f"{name}: {type_of(payload)}\n{hint(name, payload)}"
    yield f"\ntype TableName = Literal[\n{wrapped(literal(REPO_TABLES)[8:-1], '    ')}\n]\n"
    yield "@type_check_only\nclass Tables(_Repository):"
    yield '    """Literal names give the exact type of the table."""\n'
    for type_, names in by_type.items():
        yield "    @overload\n    def __getitem__("
        yield wrapped(f"self, name: {literal(names)}, /", " " * 8)
        yield f"    ) -> {type_}: ..."
    yield "    @overload\n    def __getitem__(self, name: TableName, /) -> TablePayload: ..."


def stub_text() -> str:
    stub = STUB.read_text(encoding="utf-8")
    return stub[: stub.index(MARK) + len(MARK)] + "\n" + "\n".join(text()) + "\n"
