"""The workbook "DAV 2004 R": base tables, trends, select factors."""

from collections.abc import Iterator
from typing import Any

from tools.verify.formats import expect_heads, read_columns
from tools.verify.printed import Printed, Sheets, UnreadableError

NAME = "Germany_Annuities_DAV_2004R.xlsx"
SEXES = {"Männer": "m", "Frauen": "f"}
ORDERS = {"1. Ordnung": "1o", "2. Ordnung": "2o"}  # "Bestand" is for business before 2005
BASES = {"Selektionstafel": ("SelUlt", ".ult"), "Aggregattafel": ("Agg", "")}
TRENDS = {"Starttrend": ".2004", "Zieltrend": ".2024", "Trend": ""}
# The heads as they stand; of two cells that are merged the right one is empty.
TWICE = ("2. Ordnung", "Bestand")
BASE_HEADS = [
    ["", *[base for base in BASES for _ in SEXES] * 3],
    ["", *["qx(1999)"] * 12],
    ["", *(order for order in (*TWICE, "1. Ordnung") for _ in range(4))],
    ["Alter", *[*SEXES] * 6],
]
TREND_HEADS = [
    ["", *["F_1(x)", "F_1(y)", "F_2(x)", "F_2(y)"] * 2, "F(x)", "F(y)"],
    ["", *["Starttrend", "", "Zieltrend", ""] * 2, "Trend", ""],
    ["", *(cell for order in TWICE for cell in (order, "") * 2), "1. Ordnung", ""],
    ["Alter", *[*SEXES] * 5],
]
FACTOR_HEADS = [["Faktoren für Selektionstafel"], ["", *SEXES]]


def identify(form: str, content: Any, _file_name: str) -> str | None:
    sheets = {"Basistafeln", "Trends", "Selektionsfaktoren"}
    return NAME if form == "workbook" and sheets <= content.keys() else None


def read(_name: str, sheets: Sheets) -> list[Printed]:
    rates = base_tables(sheets)
    return [*rates, *trends(sheets), *select_rates(sheets, rates)]


def base_tables(sheets: Sheets) -> list[Printed]:
    expect_heads(sheets, "Basistafeln", 0, 0, BASE_HEADS)
    columns = {}
    for cell, (base, _, order, sex) in enumerate(zip(*BASE_HEADS)):
        if order in ORDERS:
            shape, key = BASES[base]
            table, column = f"DAV2004R_{shape}_{ORDERS[order]}", f"qx_{SEXES[sex]}{key}"
            columns[cell] = Printed(table, column, "Basistafeln")
    return read_columns(sheets, "Basistafeln", len(BASE_HEADS), 0, columns)


def trends(sheets: Sheets) -> list[Printed]:
    expect_heads(sheets, "Trends", 0, 0, TREND_HEADS)
    columns: dict[int, Printed] = {}
    trend = order = ""
    for cell, (_, *above, sex) in enumerate(zip(*TREND_HEADS)):
        trend, order = above[0] or trend, above[1] or order
        if order in ORDERS:
            table, column = f"DAV2004R_Agg_{ORDERS[order]}", f"MI_{SEXES[sex]}{TRENDS[trend]}"
            columns[cell] = Printed(table, column, "Trends")
    return read_columns(sheets, "Trends", len(TREND_HEADS), 0, columns)


def select_rates(sheets: Sheets, rates: list[Printed]) -> Iterator[Printed]:
    """The select rates that follow from the ultimate rates and the factors of durations 1 to 5."""
    expect_heads(sheets, "Selektionsfaktoren", 0, 0, FACTOR_HEADS)
    factors = {
        cell: Printed("factors", SEXES[sex], "Selektionsfaktoren")
        for cell, sex in enumerate(SEXES, 1)
    }
    read_columns(sheets, "Selektionsfaktoren", 2, 0, factors)
    for ultimate in rates:
        if not ultimate.column.endswith(".ult"):
            continue
        column = ultimate.column.removesuffix(".ult")
        for factor in factors.values():
            for duration, value in factor.figures.items() if column.endswith(factor.column) else ():
                if not 0 < value < 1:
                    raise UnreadableError(f"Selektionsfaktoren: {value} is not a select factor")
                yield Printed(
                    ultimate.table,
                    f"{column}.{duration}",
                    "Basistafeln × Selektionsfaktoren",
                    computed=True,
                    figures={age: rate * value for age, rate in ultimate.figures.items()},
                )
