"""The workbook "DAV 2004 R": base tables, trends, select factors."""

from tools.verify.formats import read_columns, text_of
from tools.verify.printed import Printed, UnreadableError

NAME = "Germany_Annuities_DAV_2004R.xlsx"
SEXES = {"Männer": "m", "Frauen": "f"}
ORDERS = {"1. Ordnung": "1o", "2. Ordnung": "2o"}  # "Bestand" is for business before 2005
BASES = {"Aggregattafel": ("Agg", ""), "Selektionstafel": ("SelUlt", ".ult")}
TRENDS = {"Trend": "", "Starttrend": ".2004", "Zieltrend": ".2024"}
HEAD_ROWS = 4


def identify(form, content, _file_name):
    sheets = {"Basistafeln", "Trends", "Selektionsfaktoren"}
    return NAME if form == "workbook" and sheets <= content.keys() else None


def read(_name, sheets):
    rates = base_tables(sheets)
    return [*rates, *trends(sheets), *select_rates(sheets, rates)]


def heads(sheets, sheet):
    """Each cell of a sheet's head, a merged one standing for the cells that it spans."""
    rows = []
    for row in sheets[sheet][:HEAD_ROWS]:
        texts = list(map(text_of, row))
        for cell in range(2, len(texts)):
            texts[cell] = texts[cell] or texts[cell - 1]
        rows.append(texts)
    return enumerate(zip(*rows))


def base_tables(sheets):
    columns = {}
    for cell, (base, year, order, sex) in heads(sheets, "Basistafeln"):
        if base in BASES and year == "qx(1999)" and order in ORDERS and sex in SEXES:
            shape, key = BASES[base]
            table, column = f"DAV2004R_{shape}_{ORDERS[order]}", f"qx_{SEXES[sex]}{key}"
            columns[cell] = Printed(table, column, "Basistafeln")
    return read_columns(sheets, "Basistafeln", HEAD_ROWS, 0, columns)


def trends(sheets):
    columns = {}
    for cell, (_, trend, order, sex) in heads(sheets, "Trends"):
        if trend in TRENDS and order in ORDERS and sex in SEXES:
            table, column = f"DAV2004R_Agg_{ORDERS[order]}", f"MI_{SEXES[sex]}{TRENDS[trend]}"
            columns[cell] = Printed(table, column, "Trends")
    return read_columns(sheets, "Trends", HEAD_ROWS, 0, columns)


def select_rates(sheets, rates):
    """The select rates that follow from the ultimate rates and the factors of durations 1 to 5."""
    head = [text_of(cell) for cell in sheets["Selektionsfaktoren"][1]]
    factors = {
        cell: Printed("factors", SEXES[sex], "Selektionsfaktoren")
        for cell, sex in enumerate(head)
        if sex in SEXES
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
