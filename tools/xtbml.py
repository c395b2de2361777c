"""The published tables in XTbML, the Society of Actuaries' exchange format for tables.

A file for each column, because readers take the tables of a file for the select and the ultimate
rates of one. Values are decimal, as readers take them whatever their unit: per mille is shifted in
the digits, so nothing is rounded. Readers take the first axis of select rates for the age at
selection, so the rate of the age reached x in year t of selection stands at age x - t + 1.
"""

import xml.etree.ElementTree as ElementTree
from collections.abc import Iterator
from decimal import Decimal
from fnmatch import fnmatchcase
from typing import Any

from marlune.tables import data_tables
from tools.markup import plain
from tools.provenance import register, warnings_of

TABLES: dict[str, Any] = {**data_tables.REPO_TABLES}
NATIONS = {
    "United States": 1, "Spain": 34, "Switzerland": 41, "United Kingdom": 44, "Germany": 49,
    "Chile": 56,
}  # fmt: skip
# As the Society classes its own tables.
CONTENTS = {
    "* mi_?": (22, "Projection Scale"),
    "* MI_?": (22, "Projection Scale"),
    "PEAI2007_* *": (2147483647, "Disability Incidence"),  # other than those it has numbers for
    "GK* *": (83, "Group Life"),
    "PASEM* *": (4, "Insured Lives Mortality"),
    "AM92_AF92 *": (4, "Insured Lives Mortality"),
    "*": (78, "Annuitant Mortality"),
}
LOST = (
    "grades", "tables with reconstructed ages", "improvement by calendar year", "synthetic tables",
)  # fmt: skip


def columns() -> Iterator[tuple[int, str, str, str | None]]:
    """Every column: its number, table and key, and why the format cannot hold it, or None."""
    for place, (name, payload) in enumerate(TABLES.items(), start=1):
        record = register()["tables"][name]
        for number, (key, column) in enumerate(payload["data"].items(), start=10 * place):
            reason = None
            if record["invented"]:
                reason = "synthetic: nothing in the format says so"
            elif any(each["reconstructed"] for each in record["columns"].values()):
                reason = "reconstructed ages: nothing in the format marks them"
            elif isinstance(column, dict) and "ult" not in column:
                reason = "by calendar year: readers take a second axis for select durations"
            yield number, name, key, reason


def left_out() -> Iterator[str]:
    """What is not in the files, a line for each reason."""
    by_reason: dict[str, dict[str, None]] = {}
    for _, name, key, reason in columns():
        if reason:
            whole = reason.startswith(("synthetic", "reconstructed"))
            by_reason.setdefault(reason, {})[name if whole else f"{name} {key}"] = None
    for reason, names in by_reason.items():
        shown = list(names) if len(names) < 10 or "synthetic" not in reason else ["Dummy*"]
        yield f"{reason} ({len(names)}): {', '.join(shown)}"
    for _, name, key, reason in columns():
        payload = TABLES[name]
        if reason is None and isinstance(payload["data"][key], dict):
            period, first, last = payload["select_period"], payload["start_age"], payload["omega"]
            outside = f"lives selected before {first} or after {last - period + 1}"
            yield f"{name} {key}: {period * (period - 1)} select rates of {outside}"
    yield "grades by age, and all of tables.csv but use, formula and warning"


def add(parent: ElementTree.Element, tag: str, text: object, **attributes: object) -> None:
    named = {key: str(value) for key, value in attributes.items()}
    ElementTree.SubElement(parent, tag, named).text = str(text)


def axis(metadata: ElementTree.Element, name: str, scale: int, first: int, last: int) -> None:
    definition = ElementTree.SubElement(metadata, "AxisDef", id=name)
    add(definition, "ScaleType", {3: "Age", 2: "Ordinal Date"}[scale], tc=scale)
    add(definition, "AxisName", name)
    add(definition, "MinScaleValue", first)
    add(definition, "MaxScaleValue", last)
    add(definition, "Increment", 1)


def text_of(value: float, scale: int) -> str:
    """The digits of a rate as a decimal."""
    return f"{Decimal(repr(value)) / scale:f}"


def table_element(root: ElementTree.Element, nation: str, about: str) -> tuple[Any, Any]:
    table = ElementTree.SubElement(root, "Table")
    metadata = ElementTree.SubElement(table, "MetaData")
    add(metadata, "ScalingFactor", 0)
    add(metadata, "DataType", "Floating Point", tc=2)
    add(metadata, "Nation", nation, tc=NATIONS[nation])
    add(metadata, "TableDescription", about)
    return metadata, ElementTree.SubElement(table, "Values")


def file_of(number: int, name: str, key: str, version: str) -> bytes:
    """A column as a file of its own."""
    payload, record = TABLES[name], register()["tables"][name]
    family = register()["families"][record["family"]]
    improving, first, last = key[0] in "mM", payload["start_age"], payload["omega"]
    scale = 1 if improving else payload["decrement_scale_factor"]
    code, content = next(
        of for pattern, of in CONTENTS.items() if fnmatchcase(f"{name} {key}", pattern)
    )
    about = f"{name} {key}: {payload['table_name']}. For: {plain(record['use']['text'])}."
    if "select" in payload and not improving:
        about += " Select rates: the first axis is the age at selection, not the age reached."
    if warning := warnings_of(name):
        about += f" WARNING: {plain(warning)}."
    if record["projection"]:
        about += f" Base year {payload['base_year']}: {plain(record['projection'])}."
    root = ElementTree.Element("XTbML")
    classed = ElementTree.SubElement(root, "ContentClassification")
    add(classed, "TableIdentity", number)
    add(classed, "ProviderDomain", register()["module"])
    add(classed, "ProviderName", family["issuer"].replace("`", ""))
    add(classed, "TableReference", plain(family["publication"]))
    add(classed, "ContentType", content, tc=code)
    add(classed, "TableName", f"{payload['table_name']} {key}")
    add(classed, "TableDescription", about)
    add(classed, "Comments", f"{register()['module']} {version}; doubts: see tables.csv.")
    column = payload["data"][key]
    for word in ("Aggregate" if isinstance(column, list) else "Select", content, family["country"]):
        add(classed, "KeyWord", word)
    if isinstance(column, dict):
        *durations, _ = column
        metadata, values = table_element(root, family["country"], about)
        latest = last - len(durations) + 1
        axis(metadata, "Age", 3, first, latest)
        axis(metadata, "Duration", 2, 1, len(durations))
        for age in range(first, latest + 1):
            of_age = ElementTree.SubElement(
                ElementTree.SubElement(values, "Axis", t=str(age)), "Axis"
            )
            for year, duration in enumerate(durations):
                rate = column[duration][age + year - first]
                add(of_age, "Y", text_of(rate, scale), t=year + 1)
    metadata, values = table_element(root, family["country"], about)
    axis(metadata, "Age", 3, first, last)
    by_age = ElementTree.SubElement(values, "Axis")
    for age, rate in enumerate(column["ult"] if isinstance(column, dict) else column, start=first):
        add(by_age, "Y", text_of(rate, scale), t=age)
    ElementTree.indent(root)
    return bytes(ElementTree.tostring(root, "utf-8", xml_declaration=True)) + b"\n"


def files(version: str) -> Iterator[tuple[str, bytes]]:
    """The name and the content of every file."""
    for number, name, key, reason in columns():
        if reason is None:
            yield f"{name}.{key}.xml", file_of(number, name, key, version)
