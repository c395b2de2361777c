"""Two Spanish studies: PASEM 2010, which lists GKM and GKF 95 beside it, and PEAIM/F-2007."""

import re
from decimal import Decimal
from typing import Any

from tools.verify.formats import read_columns, text_of
from tools.verify.printed import Pages, Printed, Sheets, UnreadableError

PASEM = "PASEM2010-study.pdf"
PASEM_TITLE = "Anexo – Tablas finales PASEM 2010 Hombres y PASEM 2010 Mujeres."
PASEM_HEAD = ["Edad", "Hombre", "qx", "Mujer", "qx", "GKM95", "GKF95"]
PASEM_COLUMNS = (
    ("PASEM2010", "qx_m"), ("PASEM2010", "qx_f"), ("GKMF95", "qx_m"), ("GKMF95", "qx_f"),
)  # fmt: skip
PASEM_FIGURE = re.compile(r"[01],\d{6}")

# The head of each workbook, run together: in one of them it is cut up anyhow.
PEAI = {
    "Edadix(Hombres)iy(Mujeres)": ("PEAIMF-2007G(colect).xlsx", "PEAI2007_IAP_Col"),
    "Edadi_hombrei_mujeres": ("PEAIMF-2007I(indiv).xlsx", "PEAI2007_IAP_Ind"),
}


def identify(form: str, content: Any, _file_name: str) -> str | None:
    if form == "pdf" and any(line.split() == PASEM_HEAD for page in content for line in page):
        return PASEM
    if form == "workbook" and list(content) == ["Sheet1"]:
        return PEAI.get(peai_head(content), (None,))[0]
    return None


def read(_name: str, content: Any) -> list[Printed]:
    return peai(content) if isinstance(content, dict) else pasem(content)


def pasem(pages: Pages) -> list[Printed]:
    """Only the first page of the annex has a head; no other line of the study is like its rows."""
    if not any(line.strip(" \t0123456789") == PASEM_TITLE for page in pages for line in page):
        raise UnreadableError(f"its annex has not the title {PASEM_TITLE!r}")
    columns = [Printed(*column, "annex") for column in PASEM_COLUMNS]
    for number, page in enumerate(pages, 1):
        for line in page:
            age, *figures = line.split() or [""]
            if not age.isdigit() or not any(map(PASEM_FIGURE.fullmatch, figures)):
                continue
            where = f"page {number}, age {age}"
            for text in figures:
                if not PASEM_FIGURE.fullmatch(text):
                    raise UnreadableError(f"{where}: {text!r} is not a figure")
            if len(figures) not in (2, 4):  # at 120 only PASEM 2010 goes on
                raise UnreadableError(f"{where}: {len(figures)} figures, not 4")
            for printed, text in zip(columns, figures):
                printed.add(int(age), Decimal(text.replace(",", ".")), where)
    return columns


def peai_head(sheets: Sheets) -> str:
    return "".join(map(text_of, sheets["Sheet1"][0])).replace(" ", "")


def peai(sheets: Sheets) -> list[Printed]:
    _, table = PEAI[peai_head(sheets)]
    columns = {1: Printed(table, "ix_m", "sheet"), 2: Printed(table, "ix_f", "sheet")}
    return read_columns(sheets, "Sheet1", 1, 0, columns)
