"""Compares what a document prints with what the module holds, cell by cell, as decimals."""

import math
from collections.abc import Iterable, Iterator
from dataclasses import dataclass, field, replace
from decimal import ROUND_HALF_UP, Decimal

from marlune.tables.data_tables import REPO_TABLES
from tools.verify.printed import DOUBLE, Printed
from tools.verify.record import Declared, Record

# The age, what is printed, what is held.
type Cell = tuple[int, Decimal | None, Decimal | None]
type Figures = dict[int, Decimal]
# The columns, by the id of their object, and the ages that a declaration has been met in.
type Met = dict[int, set[tuple[int, int]]]


@dataclass
class Compared:
    """A printed column beside the held one."""

    printed: Printed
    equal: int = 0
    # Those of declared differences by reason.
    declared: dict[str, list[Cell]] = field(default_factory=dict)
    not_printed: dict[str, list[Cell]] = field(default_factory=dict)
    differences: list[Cell] = field(default_factory=list)


def held_columns() -> dict[tuple[str, str], Figures]:
    """Every list of the module by table and column, its values by age."""
    columns = {}
    for table, payload in REPO_TABLES.items():
        for key, column in payload["data"].items():
            lists = {key: column}
            if not isinstance(column, list):
                lists = {f"{key}.{label}": rates for label, rates in column.items()}
            for name, rates in lists.items():
                ages = enumerate(rates, payload["start_age"])
                columns[table, name] = {age: Decimal(repr(rate)) for age, rate in ages}
    return columns


HELD = held_columns()


def compare(
    record: Record, document: str, printed_columns: Iterable[Printed]
) -> tuple[list[Compared], list[str]]:
    """What was compared, and what is wrong with the document as a whole, a line for each."""
    compared: list[Compared] = []
    problems: list[str] = []
    met: Met = {id(declared): set() for declared in record.declared}
    printed_columns = [column for column in printed_columns if column.figures]
    for printed in printed_columns:
        if (printed.table, printed.column) not in HELD:
            problems.append(f"{printed.table} {printed.column}: the module has no such column")
            continue
        applying = [item for item in record.declared if item.concerns(document, printed)]
        compared.append(compare_column(printed, applying, met))
    problems += missing_columns(record, document, compared)
    problems += stale(record, document, [column.printed for column in compared], met)
    return compared, problems


def worked_out(printed: Printed, worked: tuple[str, str, int]) -> Figures:
    """What an example of a document has to be: years of improvement, their factor, the rate."""
    what, kind, year = worked
    rates, improvement = (HELD[printed.table, key + printed.column[2:]] for key in ("qx", "mi"))
    found = {}
    for age in printed.figures:
        years = year - 2012 + (age if kind == "born" else 0)
        factor = Decimal(repr(math.exp(-float(improvement[age]) * years)))
        found[age] = {
            "years": Decimal(years),
            "factor": factor,
            "rate": rates[age] * factor / 1000,
        }
    return {age: each[what] for age, each in found.items()}


def compare_column(printed: Printed, applying: list[Declared], met: Met) -> Compared:
    worked = printed.worked
    held = worked_out(printed, worked) if worked else HELD[printed.table, printed.column]
    result = Compared(printed)
    if printed.decimals is not None:
        step = Decimal((0, (1,), -printed.decimals))
        rounded = {a: each.quantize(step, ROUND_HALF_UP) for a, each in printed.figures.items()}
        printed = replace(printed, figures=rounded)
    for age in sorted(printed.figures.keys() | held.keys()):
        figure, rate = printed.figures.get(age), held.get(age)
        if figure is not None and rate is not None and agrees(printed, figure, rate):
            result.equal += 1
            continue
        for declared in applying:
            if explains(declared, age, figure, rate, held):
                met[id(declared)].add((id(result.printed), age))
                reasons = result.not_printed if figure is None else result.declared
                reasons.setdefault(declared.reason, []).append((age, figure, rate))
                break
        else:
            result.differences.append((age, figure, rate))
    return result


def agrees(printed: Printed, figure: Decimal, rate: Decimal) -> bool:
    # The module computes in doubles, the reader exactly; a product has fewer digits than a double.
    return figure == (DOUBLE.plus(rate) if printed.computed else rate)


def explains(
    declared: Declared, age: int, figure: Decimal | None, rate: Decimal | None, held: Figures
) -> bool:
    if declared.kind == "rounded":
        if figure is None or rate is None or -int(figure.as_tuple().exponent) != declared.decimals:
            return False
        return figure == rate.quantize(figure, ROUND_HALF_UP)
    if age not in declared.cells:
        return False
    match declared.kind:
        case "figures":
            return figure == declared.cells[age]
        case "repeats":
            return rate is None and age > max(held) and figure == held[max(held)]
        case _:
            return figure is None


def missing_columns(record: Record, document: str, compared: list[Compared]) -> Iterator[str]:
    """Where provenance and the document do not agree about what the document holds."""
    read = {(column.printed.table, column.printed.column) for column in compared}
    claimed = record.claims.get(document, set())
    for column in sorted(claimed - read):
        yield f"{' '.join(column)}: the document should hold it and does not"
    for column in sorted(read - claimed):
        yield f"{' '.join(column)}: not on record as read from this document"


def stale(record: Record, document: str, printed_columns: list[Printed], met: Met) -> Iterator[str]:
    """Declared differences that this document does not show."""
    for declared in record.declared:
        if document not in declared.documents:
            continue
        concerned = [column for column in printed_columns if declared.concerns(document, column)]
        if not concerned:
            yield f"{declared.columns}: declared ({declared.reason}), but nothing of it is printed"
        for printed in concerned:
            ages = {age for column, age in met[id(declared)] if column == id(printed)}
            gone = sorted(declared.cells.keys() - ages)
            if gone or not ages:
                where = f"{printed.table} {printed.column}, {printed.place}"
                which = f" at age {', '.join(map(str, gone))}" if gone else ""
                yield f"{where}: declared, but no longer so{which}: {declared.reason}"
