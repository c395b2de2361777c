"""The Society of Actuaries' tables as XTbML, one file for each table number."""

import re
from collections.abc import Iterator
from typing import Any
from xml.etree.ElementTree import Element

from tools.verify.printed import Printed, UnreadableError, age_of, figure_of

SERIES = "92 Series Mortality Tables for Assured Lives, Annuitants and Pensioners"
# By number: table, column, the name that is printed, and how the descriptions begin.
COLUMNS = {
    "817": (
        "GAM71", "qx_f", "1971 GAM - Female",
        "1971 Group Annuity Mortality (GAM) Table – Female",
    ),
    "818": ("GAM71", "qx_m", "1971 GAM - Male", "1971 Group Annuity Mortality (GAM) Table – Male"),
    "825": (
        "GAM83", "qx_f", "1983 GAM Table - Female",
        "1983 Group Annuity Mortality (GAM) Table – Female. Formerly Table 18-B",
    ),
    "826": (
        "GAM83", "qx_m", "1983 GAM Table - Male",
        "1983 Group Annuity Mortality (GAM) Table – Male. Formerly Table 18-A",
    ),
    "834": (
        "GAM94_AA", "qx_f", "1994 GAM Static – Female, ANB",
        "1994 Group Annuitant Mortality (GAM) Static – Female. Basis: Age Nearest Birthday",
    ),
    "835": (
        "GAM94_AA", "qx_m", "1994 GAM Static – Male, ANB",
        "1994 Group Annuitant Mortality (GAM) Static – Male. Basis: Age Nearest Birthday",
    ),
    "923": (
        "GAM94_AA", "mi_f", "1994 Mortality Improvement Projection Scale AA - Female",
        "1994 Mortality Improvement Projection Scale AA - Female",
    ),
    "924": (
        "GAM94_AA", "mi_m", "1994 Mortality Improvement Projection Scale AA - Male",
        "1994 Mortality Improvement Projection Scale AA - Male",
    ),
    "34057": ("GRMF80", "qx_f", "GRF_80", "1980 Gruppen Renten (Group Annuity Mortality) – Female"),
    "34058": ("GRMF80", "qx_m", "GRM_80", "1980 Gruppen Renten (Group Annuity Mortality) – Male"),
    "34059": ("GRMF95", "qx_f", "GRF_95", "1995 Gruppen Renten (Group Annuity Mortality) – Female"),
    "34060": ("GRMF95", "qx_m", "GRM_95", "1995 Gruppen Renten (Group Annuity Mortality) – Male"),
    "34065": ("GKMF80", "qx_f", "GKF_80", "Gruppen Kapital 1980 - Frauen (Females)"),
    "34066": ("GKMF80", "qx_m", "GKM_80", "Gruppen Kapital 1980 - Männer (Males)"),
    "34067": ("GKMF95", "qx_f", "GKF_95", "Gruppen Kapital 1995 - Frauen (Females)"),
    "34068": ("GKMF95", "qx_m", "GKM_95", "Gruppen Kapital 1995 - Männer (Males)"),
    "2360": ("AM92_AF92", "qx_m", "AM92", "Assured Lives - Male 1991-94 (AM92)"),
    "2361": ("AM92_AF92", "qx_f", SERIES, f"{SERIES}-Permanent Assurances, females, combined"),
    "2513": (
        "AM92_AF92", "qx_m.ult", "AM92 Ultimate Rates with Extension to Juvenile Ages",
        "Assured Lives - Male 1991-94 Ultimate Rates with Extension to Juvenile Ages",
    ),
    "2514": (
        "AM92_AF92", "qx_f.ult", "AF92 Ultimate Rates with Extension to Juvenile Ages",
        "Assured Lives - Female 1991-94 Ultimate Rates with Extension to Juvenile Ages",
    ),
}  # fmt: skip
# How descriptions go on.
TAIL = (
    r"(\.?( (Minimum|Maximum) (Select |Ultimate )?Age: \d+\.?)*"
    r"| - AF92 two years select: values of q\[x-t\]\+t)"
)
KINDS = {"Annuitant Mortality", "Group Life", "Insured Lives Mortality"}
SELECT_AND_ULTIMATE = ("2360", "2361")


def identify(form: str, content: Any, _file_name: str) -> str | None:
    number = content.findtext("ContentClassification/TableIdentity") if form == "xml" else None
    return f"t{number}.xml" if number in COLUMNS else None


def read(_name: str, root: Element) -> Iterator[Printed]:
    number = root.findtext("ContentClassification/TableIdentity", "")
    table, column, *_ = COLUMNS[number]
    place = f"SOA table {number}"
    expect_titles(root, number, place)
    inside = root.findall("Table/Values/Axis/Y") + root.findall("Table/Values/Axis/Axis/Y")
    stray = [each for each in root.iter() if (each.tail or "").strip()]
    stray += set(root.iter("Y")) - set(inside)
    stray += [each for each in inside if len(each)]
    stray += [each for each in root.iterfind("Table/Values//Axis") if (each.text or "").strip()]
    if stray:
        raise UnreadableError(f"{place}: there is more about a {stray[0].tag} than a figure")
    for values in root.findall("Table"):
        scale = values.findtext("MetaData/ScalingFactor")
        if scale != "0":
            raise UnreadableError(f"{place}: the scaling factor is {scale}, not 0")
        by_age = values.findall("Values/Axis/Axis")
        if not by_age:
            key = f"{column}.ult" if number in SELECT_AND_ULTIMATE else column
            ultimate = Printed(table, key, place)
            for rate in values.iterfind("Values/Axis/Y"):
                age = age_of(rate.get("t", ""), place)
                ultimate.add(age, figure_of(rate.text or "", f"{place}, age {age}"), place)
            durations = [("Duration", "3", "3")] if key != column else []
            expect_axes(values, [ultimate], durations, place)
            yield ultimate
            continue
        select = [Printed(table, f"{column}.{duration}", place) for duration in (0, 1)]
        for axis in values.findall("Values/Axis"):
            age = age_of(axis.get("t", ""), place)
            for rate in axis.iterfind("Axis/Y"):
                where = f"{place}, age {age}, duration {rate.get('t')}"
                duration = rate.get("t", "")
                if duration not in ("1", "2"):  # the module counts from 0, as the CMI does
                    raise UnreadableError(f"{where}: there are durations 1 and 2 only")
                if rate.text:
                    select[int(duration) - 1].add(age, figure_of(rate.text, where), where)
        expect_axes(values, select, [("Duration", "1", "2")], place)
        yield from select


def expect_titles(root: Element, number: str, place: str) -> None:
    """Refuses a table whose name, descriptions or kind are not those of its number."""
    _, column, name, about = COLUMNS[number]
    found, first, kind = (
        " ".join(root.findtext(f"ContentClassification/{each}", "").split())
        for each in ("TableName", "TableDescription", "ContentType")
    )
    inside = [each.findtext("MetaData/TableDescription", "") for each in root.findall("Table")]
    # The file of AF92 has its name for a description.
    described = [each for each in [first, *inside] if each != name or name != SERIES]
    form = re.compile(re.escape(about) + TAIL)
    strange = [each for each in described if not form.fullmatch(" ".join(each.split()))]
    if found != name or strange:
        found = strange[0] if strange else found
        raise UnreadableError(f"{place}: is {found!r}, not {name}: {about}")
    if kind not in ({"Projection Scale"} if column.startswith("mi") else KINDS):
        raise UnreadableError(f"{place}: the kind of its values is {kind!r}")


def expect_axes(
    values: Element, printed: list[Printed], durations: list[tuple[str, str, str]], place: str
) -> None:
    """Refuses values that have other axes than their head says: ages, and durations."""
    ages = [age for each in printed for age in each.figures]
    expected = [("Age", str(min(ages)), str(max(ages))), *durations]
    names = ("AxisName", "MinScaleValue", "MaxScaleValue")
    found = [tuple(map(axis.findtext, names)) for axis in values.iterfind("MetaData/AxisDef")]
    if found != expected:
        raise UnreadableError(f"{place}: its axes should be {expected} and are {found}")
