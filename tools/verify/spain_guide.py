"""A. Fernández Morales' guide to tables in spreadsheets: examples of PER2020_Ind_2o, females.

Each of its tables has the same rows of a spreadsheet with a column more than the one before.
"""

import re
import unicodedata
from collections.abc import Iterator
from decimal import Decimal
from typing import Any

from tools.verify.printed import Pages, Printed, UnreadableError

NAME = "PER2020-spreadsheet-guide.pdf"
TABLE = "PER2020_Ind_2o"
FOR = (
    "tabla de segundo orden para seguros individuales de supervivencia para la población femenina",
    "(PER2020 Ind 2ndo.orden) para generación de mujeres nacidas",
)
TITLE = re.compile(r"Tabla \d+: .*")
YEARS = "x qx,2012 λx t − 2012 e−λx (t−2012)"
BORN = "x qx,2012 λx g + x − 2012 e−λx (g+x−2012)"
# Each by its title: what stands in the first row and in the heads, and how many figures in a row.
TABLES = {
    "Tabla 2: Datos disponibles": ("t=", f"{YEARS} qx,t", 2),
    "Tabla 3: Años de mejora": ("t= 2025", f"{YEARS} qx,2012", 3),
    "Tabla 4: Factor de reducción": ("t= 2025", f"{YEARS} qx,2012", 4),
    "Tabla 5: Tasas 2025": ("t= 2025", f"{YEARS} qx,2025", 5),
    "Tabla 6: Tasas 2030": ("t= 2030", f"{YEARS} qx,2030", 5),
    "Tabla 7: Datos disponibles": ("g= 2000", f"{BORN} qx,2000+x", 2),
    "Tabla 8: Años de mejora": ("g= 2000", f"{BORN} qx,2000+x", 3),
    "Tabla 9: Factor de reducción": ("g= 2000", f"{BORN} qx,2000+x", 4),
    "Tabla 10: Tasas nacidas en 2000": ("g= 2000", f"{BORN} qx,2000+x", 5),
    "Tabla 11: Tasas nacidas en 1990": ("g= 1990", f"{BORN} qx,1990+x", 5),
}
FIGURES = tuple(map(re.compile, (r"0,\d{6}", r"0,\d{3,6}", r"\d\d", r"0,\d{4,6}", r"0,\d{4,6}")))


def words(line: str) -> str:
    return unicodedata.normalize("NFC", " ".join(line.split()))


def identify(form: str, pages: Any, _file_name: str) -> str | None:
    last = [*TABLES][-1]
    return NAME if form == "pdf" and any(last in map(words, page) for page in pages) else None


def read(_name: str, pages: Pages) -> Iterator[Printed]:
    lines = [words(line) for page in pages for line in page if line.strip()]
    missing = [each for each in FOR if each not in " ".join(lines)]
    if missing:
        raise UnreadableError(f"does not say what it is about: {missing[0]}")
    for at, title in enumerate(lines):
        if TITLE.fullmatch(title) and lines[at + 1] == "A B C D E F":
            yield from example(title, lines[at + 2 : at + 8])


def example(title: str, lines: list[str]) -> list[Printed]:
    if title not in TABLES:
        raise UnreadableError(f"not a known example: {title}")
    first, heads, width = TABLES[title]
    if lines[:2] != [f"1 {first}", f"2 {heads}"]:
        raise UnreadableError(f"{title}: not 1 {first}, 2 {heads}, but {', '.join(lines[:2])}")
    place = title.partition(":")[0].replace("Tabla", "table")
    kind, year = ("born" if first[0] == "g" else "in"), int(first[2:] or 0)
    columns = [Printed(TABLE, "qx_f", place), Printed(TABLE, "mi_f", place, decimals=4)]
    columns += [
        Printed(TABLE, column, f"{place}, {what} {kind} {year}", True, worked=(what, kind, year))
        for column, what in (("mi_f", "years"), ("mi_f", "factor"), ("qx_f", "rate"))
    ]
    rows = [line.split() for line in lines[2:] if not line.startswith(("...", "6 ..."))]
    for row in rows[:3]:
        where = f"{title}, row {' '.join(row)}"
        if len(row) != width + 2 or int(row[0]) != int(row[1]) + 3:
            raise UnreadableError(f"{where}: not {width} figures in the row of this age")
        for printed, text, form in zip(columns, row[2:], FIGURES):
            if not form.fullmatch(text):
                raise UnreadableError(f"{where}: {text!r} is not a figure")
            scale = 1000 if printed.worked is None and printed.column == "qx_f" else 1
            printed.add(int(row[1]), Decimal(text.replace(",", ".")) * scale, where)
    return columns[:width]
