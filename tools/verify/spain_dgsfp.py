"""The Spanish supervisor's workbook of December 2019: the gazette's annexes with all decimals.

The tables have the names of the draft there, PER2012 and PASEM2019.
"""

from collections.abc import Iterator
from decimal import Decimal
from typing import Any

from tools.verify.formats import expect_heads, read_columns
from tools.verify.printed import Printed, Sheets, UnreadableError

type Read = dict[tuple[str, str], Printed]

NAME = "PERMF_PASEM_2020.xlsx"
SHEET = "Nuevas tablas"
RATE, LAMBDA = "qx base 2012 en tanto por mil", "λ = factor de mejora"
LOADINGS = "Recargo técnico qx base", "Recargo técnico factor de mejora"
DEATHS = "qx base 2019 en tanto por mil"
# The cells of the ages and of the title; title, table; heads of its columns.
BLOCKS: tuple[tuple[int, int, str, str, tuple[str, ...]], ...] = (
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
COLUMNS = {
    RATE: ("qx", 3),
    LAMBDA: ("mi", 4),
    DEATHS: ("qx", 4),
    LOADINGS[0]: ("loading of qx", None),
    LOADINGS[1]: ("loading of mi", None),
}
FIRST_ROW = 9
TOLERANCE = Decimal("1e-9")  # of a spreadsheet's own arithmetic
# There the improvement of individual business exceeds what the told loading leads to, by so much.
OTHERWISE_LOADED, LARGEST_GAP = range(91, 97), Decimal("0.0001000001")


def identify(form: str, content: Any, _file_name: str) -> str | None:
    return NAME if form == "workbook" and SHEET in content else None


def read(_name: str, sheets: Sheets) -> Iterator[Printed]:
    read: Read = {}
    for ages, cell, title, table, heads in BLOCKS:
        blank = [""] * (len(heads) - 1)
        titles = [title, *blank, *blank, ""], ["Mujeres", *blank, "Hombres", *blank]
        expect_heads(sheets, SHEET, 5, cell, [*titles, [""] * 2 * len(heads), [*heads, *heads]])
        columns = {}
        for offset, head in enumerate(heads + heads):
            key, decimals = COLUMNS[head]
            column = f"{key}_{'f' if offset < len(heads) else 'm'}"
            place = f"annex {title.split()[1].rstrip('.')}"
            columns[cell + offset] = Printed(table, column, place, decimals=decimals)
        for printed in read_columns(sheets, SHEET, FIRST_ROW, ages, columns):
            read[table, printed.column] = printed
    expect_loadings(read)
    yield from (printed for (_, column), printed in read.items() if "loading" not in column)


def expect_loadings(read: Read) -> None:
    """Refuses loadings that do not lead from the second order to the first."""
    for (table, column), loadings in read.items():
        name = column.removeprefix("loading of ")
        if name == column:
            continue
        first, second = (read[each, name].figures for each in (table, table.replace("1o", "2o")))
        for age, loading in loadings.figures.items():
            if name.startswith("qx"):
                expected = second[age] * (1 - loading)
            else:
                expected = second[age] + loading
            known = table == "PER2020_Ind_1o" and name.startswith("mi") and age in OTHERWISE_LOADED
            if abs(first[age] - expected) > (LARGEST_GAP if known else TOLERANCE * expected):
                raise UnreadableError(f"{table} {column}, age {age}: {loading} does not lead there")
