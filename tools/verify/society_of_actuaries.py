"""The Society of Actuaries' tables as XTbML, one file for each table number."""

from tools.verify.printed import Printed, UnreadableError, age_of, figure_of

COLUMNS = {
    "817": ("GAM71", "qx_f"),
    "818": ("GAM71", "qx_m"),
    "825": ("GAM83", "qx_f"),
    "826": ("GAM83", "qx_m"),
    "834": ("GAM94_AA", "qx_f"),
    "835": ("GAM94_AA", "qx_m"),
    "923": ("GAM94_AA", "mi_f"),
    "924": ("GAM94_AA", "mi_m"),
    "34057": ("GRMF80", "qx_f"),
    "34058": ("GRMF80", "qx_m"),
    "34059": ("GRMF95", "qx_f"),
    "34060": ("GRMF95", "qx_m"),
    "34065": ("GKMF80", "qx_f"),
    "34066": ("GKMF80", "qx_m"),
    "34067": ("GKMF95", "qx_f"),
    "34068": ("GKMF95", "qx_m"),
    "2360": ("AM92_AF92", "qx_m"),
    "2361": ("AM92_AF92", "qx_f"),
    "2513": ("AM92_AF92", "qx_m.ult"),
    "2514": ("AM92_AF92", "qx_f.ult"),
}
SELECT_AND_ULTIMATE = ("2360", "2361")


def identify(form, content, _file_name):
    number = content.findtext("ContentClassification/TableIdentity") if form == "xml" else None
    return f"t{number}.xml" if number in COLUMNS else None


def read(_name, root):
    number = root.findtext("ContentClassification/TableIdentity")
    table, column = COLUMNS[number]
    place = f"SOA table {number}"
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
            yield ultimate
            continue
        select = [Printed(table, f"{column}.{duration}", place) for duration in (0, 1)]
        for axis in values.findall("Values/Axis"):
            age = age_of(axis.get("t", ""), place)
            for rate in axis.iterfind("Axis/Y"):
                where = f"{place}, age {age}, duration {rate.get('t')}"
                if rate.get("t") not in ("1", "2"):  # the module counts from 0, as the CMI does
                    raise UnreadableError(f"{where}: there are durations 1 and 2 only")
                if rate.text:
                    select[int(rate.get("t")) - 1].add(age, figure_of(rate.text, where), where)
        yield from select
