"""The CMI's own workbook of the 92 Series: sheets AM92 and AF92."""

from tools.verify.formats import read_columns, text_of
from tools.verify.printed import Printed

NAME = "92series.xls"
SHEETS = {"AM92": "qx_m", "AF92": "qx_f"}
HEAD = ["Age x", "Duration 0", "Duration 1", "Durations 2+"]


def identify(form, content, _file_name):
    return NAME if form == "workbook" and SHEETS.keys() <= content.keys() else None


def read(_name, sheets):
    for sheet, column in SHEETS.items():
        rows = [[text_of(cell) for cell in row[:4]] for row in sheets[sheet]]
        if HEAD in rows:  # without it the sheet's columns are missed by the comparison
            keys = (f"{column}.0", f"{column}.1", f"{column}.ult")
            place = f"sheet {sheet}"
            columns = {cell: Printed("AM92_AF92", key, place) for cell, key in enumerate(keys, 1)}
            yield from read_columns(sheets, sheet, rows.index(HEAD) + 1, 0, columns)
