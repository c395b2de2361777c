"""The CMI's own workbook of the 92 Series: sheets AM92 and AF92."""

from collections.abc import Iterator
from typing import Any

from tools.verify.formats import expect_heads, read_columns
from tools.verify.printed import Printed, Sheets

NAME = "92series.xls"
SHEETS = {"AM92": ("qx_m", "males"), "AF92": ("qx_f", "females")}
TITLE = "Permanent Assurances, {}, combined - {} two years select: values of q[x-t]+t"
HEAD = ["Age x", "Duration 0", "Duration 1", "Durations 2+"]


def identify(form: str, content: Any, _file_name: str) -> str | None:
    return NAME if form == "workbook" and SHEETS.keys() <= content.keys() else None


def read(_name: str, sheets: Sheets) -> Iterator[Printed]:
    for sheet, (column, sex) in SHEETS.items():
        expect_heads(sheets, sheet, 0, 0, [[TITLE.format(sex, sheet)]])
        expect_heads(sheets, sheet, 2, 0, [HEAD])
        keys = (f"{column}.0", f"{column}.1", f"{column}.ult")
        place = f"sheet {sheet}"
        columns = {cell: Printed("AM92_AF92", key, place) for cell, key in enumerate(keys, 1)}
        yield from read_columns(sheets, sheet, 3, 0, columns)
