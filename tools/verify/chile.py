"""The Chilean supervisor's workbook: in each sheet the TM-2020 table stands right of older ones."""

import re

from tools.verify.formats import read_columns, text_of
from tools.verify.printed import Printed, UnreadableError

NAME = "articles-20210_tablas_mort_hist.xlsx"
TITLE = re.compile(r"TABLA(CB|MI|RV|B)-2020-(HOMBRES|MUJERES)")
SHEET = re.compile(r"(Vejez|Invalidez|Sobrevivencia)-(Hombres|Mujeres)")
YEARS = [str(year) for year in range(2021, 2036)] + ["2036*"]


def identify(form, content, _file_name):
    return NAME if form == "workbook" and any(map(SHEET.fullmatch, content)) else None


def read(_name, sheets):
    for sheet in filter(SHEET.fullmatch, sheets):
        titles = [TITLE.fullmatch(text_of(cell).replace(" ", "")) for cell in sheets[sheet][0]]
        for cell, title in enumerate(titles):
            if not title:
                continue
            family, sex = title[1], title[2][0]
            names, years = ([text_of(head) for head in row[cell:]] for row in sheets[sheet][1:3])
            if names[:2] != ["Edad", "qx 2020"] or years[2 : 2 + len(YEARS)] != YEARS:
                raise UnreadableError(f"sheet {sheet}: the heads under {title[0]} are not as known")
            table, key = f"{family}_{sex}_2020", {"H": "m", "M": "f"}[sex]
            columns = {cell + 1: Printed(table, f"qx_{key}", f"sheet {sheet}")}
            for offset, year in enumerate(YEARS, 2):
                column = f"mi_{key}.{year.rstrip('*')}"
                columns[cell + offset] = Printed(table, column, f"sheet {sheet}")
            yield from read_columns(sheets, sheet, 3, cell, columns)
