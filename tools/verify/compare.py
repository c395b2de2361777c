"""Compares what a document prints with what the module holds, cell by cell, as decimals."""

import math
from dataclasses import dataclass, field, replace
from decimal import ROUND_HALF_UP, Decimal

from marlune.tables.data_tables import REPO_TABLES
from tools.verify.printed import DOUBLE


@dataclass
class Compared:
    """A printed column beside the held one."""

    printed: object
    equal: int = 0
    # Cells as age, printed figure, held rate; those of declared differences by reason.
    declared: dict[str, list[tuple]] = field(default_factory=dict)
    not_printed: dict[str, list[tuple]] = field(default_factory=dict)
    differences: list[tuple] = field(default_factory=list)


def held_columns():
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


def compare(record, document, printed_columns):
    """What was compared, and what is wrong with the document as a whole, a line for each."""
    compared, problems = [], []
    met = {id(declared): set() for declared in record.declared}
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


def worked_out(printed):
    """What an example of a document has to be: years of improvement, their factor, the rate."""
    what, kind, year = printed.worked
    rates, improvement = (HELD[printed.table, key + printed.column[2:]] for key in ("qx", "mi"))
    worked = {}
    for age in printed.figures:
        years = year - 2012 + (age if kind == "born" else 0)
        factor = Decimal(repr(math.exp(-float(improvement[age]) * years)))
        worked[age] = {
            "years": Decimal(years),
            "factor": factor,
            "rate": rates[age] * factor / 1000,
        }
    return {age: each[what] for age, each in worked.items()}


def compare_column(printed, applying, met):
    held = worked_out(printed) if printed.worked else HELD[printed.table, printed.column]
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


def agrees(printed, figure, rate):
    # The module computes in doubles, the reader exactly; a product has fewer digits than a double.
    return figure == (DOUBLE.plus(rate) if printed.computed else rate)


def explains(declared, age, figure, rate, held):
    if declared.kind == "rounded":
        if figure is None or rate is None or figure.as_tuple().exponent != -declared.decimals:
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


def missing_columns(record, document, compared):
    """Where provenance and the document do not agree about what the document holds."""
    read = {(column.printed.table, column.printed.column) for column in compared}
    claimed = record.claims.get(document, set())
    for column in sorted(claimed - read):
        yield f"{' '.join(column)}: the document should hold it and does not"
    for column in sorted(read - claimed):
        yield f"{' '.join(column)}: not on record as read from this document"


def stale(record, document, printed_columns, met):
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
