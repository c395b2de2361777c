"""The Spanish gazette BOE-A-2020-17154: PER2020 and PASEM2020, annexes 1.1 to 2.4."""

import re
from decimal import Decimal

from tools.verify.printed import Printed, UnreadableError

NAME = "BOE-A-2020-17154.pdf"

HEAD = re.compile(r"Anexo\s+(\d\.\d)\.?\s+(PER2020_(?:Col|Ind)|PASEM2020)_")
FIGURE = re.compile(r"(\d+|\d{1,3}(\.\d{3})+),\d+")
RATES = ("qx_f", "mi_f", "qx_m", "mi_m")
LOADED = tuple(column for sex in "fm" for column in (
    f"loading of qx_{sex}", f"qx_{sex}", f"loading of mi_{sex}", f"mi_{sex}",
))  # fmt: skip
ANNEXES = {
    ("1.1", "PER2020_Col"): ("PER2020_Col_2o", RATES),
    ("1.1", "PER2020_Ind"): ("PER2020_Ind_2o", RATES),
    ("1.2", "PASEM2020"): ("PASEM2020_Gen_2o", ("qx_f", "qx_m")),
    ("1.3", "PASEM2020"): ("PASEM2020_Dec_2o", ("qx_f", "qx_m")),
    ("2.1", "PER2020_Col"): ("PER2020_Col_1o", LOADED),
    ("2.1", "PER2020_Ind"): ("PER2020_Ind_1o", LOADED),
    ("2.2", "PASEM2020"): ("PASEM2020_Rel_1o", ("qx_f", "qx_m")),
    ("2.3", "PASEM2020"): ("PASEM2020_NoRel_1o", ("qx_f", "qx_m")),
    ("2.4", "PASEM2020"): ("PASEM2020_Dec_1o", ("qx_f", "qx_m")),
}


def identify(form, pages, _file_name):
    found = form == "pdf" and any(HEAD.search(line) for page in pages for line in page)
    return NAME if found else None


def read(_name, pages):
    columns = {}
    for number, page in enumerate(pages, 1):
        heading = []  # every page repeats the heads of its columns
        for line in page:
            if heads := HEAD.findall(line):
                heading = [column for head in heads for column in columns_of(head, number)]
                continue
            age, *figures = line.split() or [""]
            if not (heading and figures and age.isdigit() and len(age) <= 3):
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


def columns_of(head, page):
    if head not in ANNEXES:
        raise UnreadableError(f"page {page}: annex {' '.join(head)} is not known")
    table, columns = ANNEXES[head]
    return [((table, column), f"annex {head[0]}") for column in columns]


def spanish(text, percent, where):
    figure = text.removesuffix(percent)
    if not (FIGURE.fullmatch(figure) and text.endswith(percent)):
        raise UnreadableError(f"{where}: {text!r} is not a figure")
    return Decimal(figure.replace(".", "").replace(",", "."))


def first_order(columns):
    """First order from second order and the loadings, which rates lose and improvement gains."""
    for key in columns:
        table, loaded = key[0], key[1].removeprefix("loading of ")
        base = columns.get((table.replace("1o", "2o"), loaded))
        if loaded == key[1] or not base:
            continue
        loadings = columns[key].figures
        ages = sorted(loadings.keys() & base.figures.keys())
        if loaded.startswith("qx"):
            place = "annex 1.1 less the loading of annex 2.1"
            figures = {age: base.figures[age] * (100 - loadings[age]) / 100 for age in ages}
        else:
            place = "annex 1.1 plus the loading of annex 2.1"
            figures = {age: base.figures[age] + loadings[age] for age in ages}
        yield Printed(table, loaded, place, computed=True, figures=figures)
