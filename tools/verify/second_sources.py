"""Copies of other authors: GAM 71 as text and from R; PEAIM/F-2007, PASEM 2010, GKM/F and GRM/F."""

from typing import Any

from tools.verify.printed import (
    Printed,
    UnreadableError,
    age_of,
    figure_of,
    number_of,
    whole_age,
)

PER_MILLE = "GXMF_80_95.csv"
# Each by its head: name of the document, and the columns of its cells.
TEXTS = {
    "Edad,Hombre qx,Mujer qx": ("PASEM2010.csv", "PASEM2010 qx_m, PASEM2010 qx_f"),
    "Edad,ix ind Hombre,iy ind Mujer,ix col Hombre,iy col Mujer": (
        "PEAIMF2007.csv",
        "PEAI2007_IAP_Ind ix_m, PEAI2007_IAP_Ind ix_f, "
        "PEAI2007_IAP_Col ix_m, PEAI2007_IAP_Col ix_f",
    ),
    "edad,GKF_95,GKM_95,GRF_95,GRM_95,GKF_80,GKM_80,GRF_80,GRM_80": (
        PER_MILLE,
        "GKMF95 qx_f, GKMF95 qx_m, GRMF95 qx_f, GRMF95 qx_m, "
        "GKMF80 qx_f, GKMF80 qx_m, GRMF80 qx_f, GRMF80 qx_m",
    ),
}
GAM = {"gam_71_male.csv": "qx_m", "gam_71_female.csv": "qx_f"}  # told apart by name only
FRAMES = {"GAM71M": "qx_m", "GAM71F": "qx_f"}


def identify(form: str, content: Any, file_name: str) -> str | None:
    if form == "rda":
        return next((f"{frame}.rda" for frame in FRAMES if frame in content), None)
    if form != "csv" or not content:
        return None
    if content[0] == ["age", "qx"] and file_name in GAM:
        return file_name
    return TEXTS.get(",".join(content[0]), (None,))[0]


def read(name: str, content: Any) -> list[Printed]:
    if isinstance(content, dict):
        return [frame(content, name.removesuffix(".rda"))]
    columns = f"GAM71 {GAM[name]}" if name in GAM else TEXTS[",".join(content[0])][1]
    pairs = map(str.split, columns.split(", "))
    printed = [Printed(table, key, "second source") for table, key in pairs]
    for number, row in enumerate(content[1:], 2):
        age = age_of(row[0], f"line {number}")
        if len(row) != len(printed) + 1:
            raise UnreadableError(f"line {number}: {len(row) - 1} figures, not {len(printed)}")
        for column, text in zip(printed, row[1:]):
            figure = figure_of(text, f"line {number}")
            column.add(age, figure / 1000 if name == PER_MILLE else figure, f"line {number}")
    return printed


def frame(frames: dict[str, Any], name: str) -> Printed:
    """A life table in R: ages x, rates q."""
    printed = Printed("GAM71", FRAMES[name], "second source")
    for age, rate in zip(frames[name]["x"], frames[name]["q"]):
        where = f"age {age}"
        printed.add(whole_age(float(age), where), number_of(float(rate), where), where)
    return printed
