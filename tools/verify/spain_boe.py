"""The Spanish gazette BOE-A-2020-17154: PER2020 and PASEM2020, annexes 1.1 to 2.4."""

import re
from collections.abc import Iterator
from decimal import Decimal
from itertools import product
from typing import Any

from tools.verify.printed import Pages, Printed, UnreadableError

type Key = tuple[str, str]  # a table, the key of a column

NAME = "BOE-A-2020-17154.pdf"

HEAD = re.compile(r"Anexo\s+\d\.\d\.?\s+(?:PER2020_(?:Col|Ind)|PASEM2020)_")
FIGURE = re.compile(r"(\d+|\d{1,3}(\.\d{3})+),\d+")
DEATHS, RATE = "qx base 2019 en tanto por mil", "qx base 2012 en tanto por mil"
LAMBDA = "λ = factor de mejora"
LOADED = ("Recargo técnico qx base", RATE, "Recargo técnico factor de mejora", LAMBDA)
KEYS = dict(zip((DEATHS, *LOADED), ("qx", "loading of qx", "qx", "loading of mi", "mi")))
# What stands above the figures of a page: the names of the annexes, their numbers and tables, the
# heads of the columns of either sex.
HEADINGS = (
    ("Anexo 1.1 PER2020_Col_2ndo.orden Anexo 1.1 PER2020_Ind_2ndo.orden",
     (("1.1", "PER2020_Col_2o"), ("1.1", "PER2020_Ind_2o")), (RATE, LAMBDA)),
    ("Anexo 1.2 PASEM2020_General_2ndo.orden Anexo 1.3 PASEM2020_Decesos_2ndo.orden",
     (("1.2", "PASEM2020_Gen_2o"), ("1.3", "PASEM2020_Dec_2o")), (DEATHS,)),
    ("Anexo 2.1 PER2020_Col_1er.orden", (("2.1", "PER2020_Col_1o"),), LOADED),
    ("Anexo 2.1 PER2020_Ind_1er.orden", (("2.1", "PER2020_Ind_1o"),), LOADED),
    ("Anexo 2.2. PASEM2020_Rel_1er. Anexo 2.3. PASEM2020_NoRel_1er. Anexo 2.4. PASEM2020_ "
     "orden orden Decesos_1er.orden",
     (("2.2", "PASEM2020_Rel_1o"), ("2.3", "PASEM2020_NoRel_1o"), ("2.4", "PASEM2020_Dec_1o")),
     (DEATHS,)),
)  # fmt: skip
SEXES = {"Mujeres": "f", "Hombres": "m"}
# Of a heading cut up into lines, the words that have to come in this order.
DECIDING = re.compile(r".*[_\dλ].*|Mujeres|Hombres")
BESIDE = re.compile(r"cve: BOE-A-2020-17154|Verificable en https://www.boe.es|")  # the margin


def identify(form: str, pages: Any, _file_name: str) -> str | None:
    found = form == "pdf" and any(HEAD.search(line) for page in pages for line in page)
    return NAME if found else None


def read(_name: str, pages: Pages) -> Iterator[Printed]:
    columns: dict[Key, Printed] = {}
    heading: list[tuple[Key, str]]
    words: list[str]
    for number, page in enumerate(pages, 1):
        heading, words = [], []  # every page repeats the heads of its columns
        for line in page:
            if HEAD.search(line):
                heading, words = [], line.split()
                continue
            age, *figures = line.split() or [""]
            if not (figures and age.isdigit() and len(age) <= 3):
                if words and not BESIDE.fullmatch(line.strip()):
                    words += line.split()
                continue
            if words:
                heading, words = columns_of(words, number), []
            if not heading:
                continue
            where = f"page {number}, age {age}"
            if len(figures) != len(heading):
                raise UnreadableError(f"{where}: {len(figures)} figures, not {len(heading)}")
            for (key, place), text in zip(heading, figures):
                printed = columns.setdefault(key, Printed(*key, place))
                percent = "%" if key[1].startswith("loading of qx") else ""
                printed.add(int(age), spanish(text, percent, f"{where}, {' '.join(key)}"), where)
    yield from (printed for (_, column), printed in columns.items() if "loading" not in column)
    yield from first_order(columns)


def columns_of(words: list[str], page: int) -> list[tuple[Key, str]]:
    """The columns that a heading announces."""
    for names, tables, heads in HEADINGS:
        cells = [*names.split(), *[*SEXES] * len(tables)]
        cells += [word for head in (*heads, *heads) * len(tables) for word in head.split()]
        in_order = [list(filter(DECIDING.fullmatch, each)) for each in (words, cells)]
        if sorted(words) == sorted([*cells, "Edad"]) and in_order[0] == in_order[1]:
            columns = product(tables, SEXES.values(), heads)
            return [((t, f"{KEYS[head]}_{sex}"), f"annex {n}") for (n, t), sex, head in columns]
    raise UnreadableError(f"page {page}: the heading is not known: {' '.join(words)}")


def spanish(text: str, percent: str, where: str) -> Decimal:
    figure = text.removesuffix(percent)
    if not (FIGURE.fullmatch(figure) and text.endswith(percent)):
        raise UnreadableError(f"{where}: {text!r} is not a figure")
    return Decimal(figure.replace(".", "").replace(",", "."))


def first_order(columns: dict[Key, Printed]) -> Iterator[Printed]:
    """First order from second order and the loadings, which rates lose and improvement gains."""
    for (table, column), printed in columns.items():
        loaded = column.removeprefix("loading of ")
        base = columns.get((table.replace("1o", "2o"), loaded))
        if loaded == column or not base:
            continue
        loadings = printed.figures
        ages = sorted(loadings.keys() & base.figures.keys())
        if loaded.startswith("qx"):
            place = "annex 1.1 less the loading of annex 2.1"
            figures = {age: base.figures[age] * (100 - loadings[age]) / 100 for age in ages}
        else:
            place = "annex 1.1 plus the loading of annex 2.1"
            figures = {age: base.figures[age] + loadings[age] for age in ages}
        yield Printed(table, loaded, place, computed=True, figures=figures)
