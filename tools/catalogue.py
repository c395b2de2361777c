"""Print the catalogue: a line for each table, then how a table is handed to a consumer.

--check   compare the tables of docs/catalogue.md with the module instead; silent where they agree
--write   write them, between the comments that name them
"""

import re
import sys
from difflib import unified_diff
from pathlib import Path

from marlune.tables.data_tables import REPO_TABLES, PER2020_Ind_1o

DOCUMENT = Path(__file__).resolve().parent.parent / "docs" / "catalogue.md"
HEAD = ("name", "published name", "type", "ages", "base", "unit", "columns", "shape", "formula")

# What each table is for, as its description says; of synthetic ones the end of the name may do.
PURPOSES = {
    "PER2020_Col_2o": "survival insurance, group: reserves",
    "PER2020_Col_1o": "survival insurance, group: premiums and reserves",
    "PER2020_Ind_2o": "survival insurance, individual: reserves",
    "PER2020_Ind_1o": "survival insurance, individual, new business: premiums",
    "PASEM2020_Gen_2o": "term life, without funeral: reserves",
    "PASEM2020_Dec_2o": "funeral: reserves",
    "PASEM2020_Rel_1o": "term life related to other operations, such as mortgages: premiums",
    "PASEM2020_NoRel_1o": "other term life: premiums",
    "PASEM2020_Dec_1o": "funeral: premiums and reserves",
    "PEAI2007_IAP_Ind": "entry into absolute permanent disability, individual",
    "PEAI2007_IAP_Col": "entry into absolute permanent disability, group",
    "PASEM2010": "group life: premiums and reserves",
    "DAV2004R_Agg_2o": "annuities, without select effects: best estimate",
    "DAV2004R_Agg_1o": "annuities, without select effects: premiums and reserves",
    "DAV2004R_SelUlt_2o": "annuities, by select duration: best estimate",
    "DAV2004R_SelUlt_1o": "annuities, by select duration: premiums",
    "GAM71": "group annuities, experience of 1964 to 1968",
    "GAM83": "group annuities, experience of 1976 to 1980",
    "GAM94_AA": "group annuities, improving by Scale AA",
    "GRMF80": "group annuities, experience of 1971 to 1975",
    "GRMF95": "group annuities, experience of 1986 to 1990",
    "GKMF80": "group life, experience of 1971 to 1975",
    "GKMF95": "group life, experience of 1986 to 1990",
    "IASS90": "deaths of invalids, Social Security 1990",
    "SS90TOT": "deaths in the Social Security population, 1990",
    "SS90ABS": "deaths from accidents and occupational disease, Social Security 1990",
    "CB_H_2020": "collective life, males: premiums and reserves",
    "MI_H_2020": "death or disability, males: individual life and disability",
    "RV_M_2020": "life annuities, females: immediate and deferred",
    "B_M_2020": "collective life, females: premiums and reserves",
    "MI_M_2020": "death or disability, females: individual life and disability",
    "AM92_AF92": "permanent assurances, experience of 1991 to 1994",
    "DummySD2015": "static rates of disability",
    "DummyEXIT": "static rates of exit",
    "Dummy_qx0": "nobody dies before 200: an annuity equals the annuity-certain",
    "1Sm": "one sex only, males",
    "1Sf": "one sex only, females",
    "DummySD2015Gen": "exponential improvement",
    "Gen": "exponential improvement",
    "Gen2o": "exponential improvement by calendar year",
    "LinearGen": "linear improvement",
    "DiscreteGen": "discrete improvement",
    "ProjectedGen": "projected improvement by calendar year",
    "Select": "select durations",
    "Unisex": "one column for both sexes",
    "SelectGen_a": "select durations, one improvement for all",
    "SelectGen_b": "select durations, exponential improvement by calendar year",
    "SelectGen_c": "select durations, projected improvement by calendar year",
    "SelectGen_d": "select durations, each with its own improvement",
}
RECONSTRUCTED = "ages 21 to 62 are reconstructed, not published"


def purpose_of(name):
    purpose = PURPOSES.get(name) or PURPOSES.get(name.partition("_")[2])
    if purpose is None:
        sys.exit(f"PURPOSES in tools/catalogue.py does not say what {name} is for")
    return f"{purpose}; **{RECONSTRUCTED}**" if is_reconstructed(name) else purpose


def is_reconstructed(name):
    return name in ("IASS90", "SS90TOT", "SS90ABS")


def shape_of(column):
    if isinstance(column, list):
        return "flat"
    keys = list(column)
    if keys[-1] == "ult":
        return f"durations {keys[0]}-{keys[-2]}, ult"
    return f"years {keys[0]}-{keys[-1]} ({len(keys)})"


def line(name, payload):
    columns = payload["data"]
    shapes = {shape_of(column): None for column in columns.values()}
    return (
        name,
        payload["table_name"],
        payload["table_type"],
        f"{payload['start_age']}-{payload['omega']}",
        str(payload.get("base_year") or "-"),
        "per mille" if payload["decrement_scale_factor"] == 1000 else "decimal",
        " ".join(columns),
        "; ".join(shapes),
        payload.get("generational_formula_type", "-"),
    )


def print_catalogue():
    lines = [HEAD] + [line(name, payload) for name, payload in REPO_TABLES.items()]
    widths = [max(map(len, column)) for column in zip(*lines)]
    for row in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
    print("\nWarning:", *filter(is_reconstructed, REPO_TABLES), "-", RECONSTRUCTED + ".")


def print_documented_use():
    payload = dict(PER2020_Ind_1o)
    data = payload.pop("data")
    print('\nThe documented use: copy the payload, take "data" out of the copy, pass on the rest.')
    print("TableBuilder(")
    print("    {" + ", ".join(f"{key!r}: {len(rates)} rates" for key, rates in data.items()) + "},")
    for key, value in payload.items():
        print(f"    {key}={value!r},")
    print(")")


def markdown(head, rows):
    """A table; the first cell of each row is code."""
    rows = [head, *((f"`{name}`", *cells) for name, *cells in rows)]
    widths = [max(map(len, column)) for column in zip(*rows)]
    lines = [
        "| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"
        for row in rows
    ]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return "\n".join(lines)


def tables_of_document():
    """The tables of the document, by the name in the comment before each."""
    for kind in ("published", "synthetic"):
        rows = [
            (purpose_of(name), line(name, payload))
            for name, payload in REPO_TABLES.items()
            if name.startswith("Dummy") == (kind == "synthetic")
        ]
        cells = 2 if kind == "synthetic" else 3  # synthetic tables have no other name
        uses = [(name, purpose, published)[:cells] for purpose, (name, published, *_) in rows]
        yield f"{kind}: purpose", markdown(("name", "for", "published name")[:cells], uses)
        facts = [(name, *facts) for _, (name, _, *facts) in rows]
        yield f"{kind}: facts", markdown(("name", *HEAD[2:]), facts)


def main(option):
    if option is None:
        print_catalogue()
        print_documented_use()
        return
    document = DOCUMENT.read_text(encoding="utf-8")
    written = document
    for name, table in tables_of_document():
        begin, end = f"<!-- {name} -->\n\n", "\n\n<!-- end -->"
        before, rest = written.split(begin)
        written = before + begin + table + end + rest.partition(end)[2]
    if option == "--write":
        DOCUMENT.write_text(written, encoding="utf-8")
    elif document != written:
        lines = (text.splitlines() for text in (document, written))
        sys.exit("\n".join(unified_diff(*lines, DOCUMENT.name, "the module", n=0, lineterm="")))


if __name__ == "__main__":
    if len(sys.argv) > 2 or set(sys.argv[1:]) - {"--check", "--write"}:
        sys.exit(__doc__)
    main(*(sys.argv[1:] or [None]))
