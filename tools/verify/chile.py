"""The Chilean supervisor's workbook: in each sheet the TM-2020 table stands right of older ones."""

from collections.abc import Iterator
from typing import Any

from tools.verify.formats import expect_heads, read_columns
from tools.verify.printed import Printed, Sheets

NAME = "articles-20210_tablas_mort_hist.xlsx"
# Of each sheet: the cell at which the table begins, and its title there.
SHEETS = {
    "Vejez-Mujeres": (12, "TABLA RV-2020-MUJERES"),
    "Invalidez-Mujeres": (8, "TABLA MI-2020-MUJERES"),
    "Sobrevivencia-Mujeres": (8, "TABLA B-2020-MUJERES"),
    "Vejez-Hombres": (12, "TABLA CB-2020-HOMBRES"),
    "Invalidez-Hombres": (8, "TABLA MI-2020 - HOMBRES"),
    "Sobrevivencia-Hombres": (8, "TABLA CB-2020-HOMBRES"),
}
YEARS = [str(year) for year in range(2021, 2036)] + ["2036*"]
HEADS = ["Edad", "qx 2020", "Factores de mejoramiento AAx,t"], ["", "", *YEARS]


def identify(form: str, content: Any, _file_name: str) -> str | None:
    return NAME if form == "workbook" and SHEETS.keys() & content.keys() else None


def read(_name: str, sheets: Sheets) -> Iterator[Printed]:
    for sheet in filter(SHEETS.get, sheets):
        cell, title = SHEETS[sheet]
        expect_heads(sheets, sheet, 0, cell, [[title], *HEADS])
        family, sex = title.removeprefix("TABLA ")[:2].strip("-"), sheet.partition("-")[2][0]
        table, key = f"{family}_{sex}_2020", {"H": "m", "M": "f"}[sex]
        keys = [f"qx_{key}", *(f"mi_{key}.{year.rstrip('*')}" for year in YEARS)]
        places = ((at, Printed(table, column, f"sheet {sheet}")) for at, column in enumerate(keys))
        columns = {cell + 1 + at: printed for at, printed in places}
        yield from read_columns(sheets, sheet, 3, cell, columns)
