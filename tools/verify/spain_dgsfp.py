"""The Spanish supervisor's workbook of December 2019: the gazette's annexes with all decimals.

The tables have the names of the draft there, PER2012 and PASEM2019.
"""

from tools.verify.formats import expect_heads, read_columns
from tools.verify.printed import Printed

NAME = "PERMF_PASEM_2020.xlsx"
SHEET = "Nuevas tablas"
RATE, LAMBDA = "qx base 2012 en tanto por mil", "λ = factor de mejora"
LOADINGS = "Recargo técnico qx base", "Recargo técnico factor de mejora"
DEATHS = "qx base 2019 en tanto por mil"
# The cells of the ages and of the title; title, table; heads of its columns.
BLOCKS = (
    (1, 2, "Anexo 1.1. PER2012_Col_2ndo.orden", "PER2020_Col_2o", (RATE, LAMBDA)),
    (1, 7, "Anexo 1.1. PER2012_Ind_2ndo.orden", "PER2020_Ind_2o", (RATE, LAMBDA)),
    (12, 13, "Anexo 2.1. PER2012_Col_1er.orden", "PER2020_Col_1o",
     (LOADINGS[0], RATE, LOADINGS[1], LAMBDA)),
    (22, 23, "Anexo 2.1. PER2012_Ind_1er.orden", "PER2020_Ind_1o",
     (LOADINGS[0], RATE, LOADINGS[1], LAMBDA)),
    (32, 33, "Anexo 1.2. PASEM2019_General_2ndo.orden", "PASEM2020_Gen_2o", (DEATHS,)),
    (32, 36, "Anexo 1.3. PASEM2019_Decesos_2ndo.orden", "PASEM2020_Dec_2o", (DEATHS,)),
    (39, 40, "Anexo 2.2. PASEM2019_Rel_1er.orden", "PASEM2020_Rel_1o", (DEATHS,)),
    (39, 43, "Anexo 2.3. PASEM2019_NoRel_1er.orden", "PASEM2020_NoRel_1o", (DEATHS,)),
    (39, 46, "Anexo 2.4. PASEM2019_Decesos_1er.2orden", "PASEM2020_Dec_1o", (DEATHS,)),
)  # fmt: skip
# The key of a column, and the decimals of the gazette.
COLUMNS = {RATE: ("qx", 3), LAMBDA: ("mi", 4), DEATHS: ("qx", 4)}
FIRST_ROW = 9


def identify(form, content, _file_name):
    return NAME if form == "workbook" and SHEET in content else None


def read(_name, sheets):
    for ages, cell, title, table, heads in BLOCKS:
        blank = [""] * (len(heads) - 1)
        titles = [title, *blank, *blank, ""], ["Mujeres", *blank, "Hombres", *blank]
        expect_heads(sheets, SHEET, 5, cell, [*titles, [""] * 2 * len(heads), [*heads, *heads]])
        columns = {}
        for offset, head in enumerate(heads + heads):
            if head in COLUMNS:
                key, decimals = COLUMNS[head]
                column = f"{key}_{'f' if offset < len(heads) else 'm'}"
                place = f"annex {title.split()[1].rstrip('.')}"
                columns[cell + offset] = Printed(table, column, place, decimals=decimals)
        yield from read_columns(sheets, SHEET, FIRST_ROW, ages, columns)
