# ./dev adds: arrays
"""Examples and documents say what is so: their numbers, computed here another way or published."""

import contextlib
import copy
import io
import math
import re
import runpy
import subprocess
import sys
from decimal import Decimal
from fractions import Fraction
from pathlib import Path

import pytest

import marlune.tables.data_tables as module
from marlune.tables.data_tables import REPO_TABLES

TOP = Path(__file__).resolve().parents[2]


def per2020_annuity(age, year, last):
    """q, survival to the age `last`, and ä at 2 % from omega backwards, in decimal arithmetic."""
    rates, trends = (module.PER2020_Ind_1o["data"][key] for key in ("qx_f", "mi_f"))
    q = [
        Decimal(repr(rates[x])) / 1000 * (-Decimal(repr(trends[x])) * (year - age + x - 2012)).exp()
        for x in range(120)
    ]
    value = alive = Decimal(1)
    for x in reversed(range(age, 119)):
        value = 1 + (1 - q[x]) * value / Decimal("1.02")
    for x in range(age, last):
        alive *= 1 - q[x]
    return q[age], alive, value


def am92_annuity(rates):
    value = Fraction(1)
    for rate in reversed(rates[:-1]):
        value = 1 + (1 - Fraction(repr(rate))) * value / Fraction("1.04")
    return value


def cmf_survival(table, sex, age, interest=0):
    """The years lived from 2023 on, each counted whole at its start and discounted."""
    first, last = table["start_age"], table["omega"]
    value = Fraction(1)
    for x in reversed(range(age, last)):
        rate = Fraction(repr(table["data"][f"qx_{sex}"][x - first]))
        for year in range(2021, 2023 + x - age + 1):
            factors = table["data"][f"mi_{sex}"][year if year < 2036 else 2036]
            rate -= rate * Fraction(repr(factors[x - first]))
        value = 1 + (1 - rate) * value / (1 + interest)
    return value


def dav_annuity(row):
    """ä of a male of 65 in 2026 at 1.25 % by the formula of the workbook, T1 = 5, T2 = 25."""
    t1, t2, value = 5, 25, 1.0
    data = module.DAV2004R_Agg_2o["data"]
    start, target = (data["MI_m"][year] for year in (2004, 2024))
    for x in reversed(range(65, 121)):
        t = 2026 + x - 65 - 1999
        over = (t - t1) * (t - t1 - 1) / 2 / (t2 - t1)
        weight = t if t <= t1 else t - over if t <= t2 else (t1 + t2 + 1) / 2
        q = row(x) * math.exp(-target[x] * t - weight * (start[x] - target[x]))
        value = 1 + (1 - q) * value / 1.0125
    return value


def generational_annuity():
    q, alive, value = per2020_annuity(65, 2026, 85)
    return [f"female, 65 in 2026: q = {q:.9f}", f"20p65 = {alive:.6f}", f"ä65 at 2 % = {value:.6f}"]


def select_life():
    # Published in Formulae and Tables for Examinations, AM92 at 4 %: 20.009 and 20.005.
    column = module.AM92_AF92["data"]["qx_m"]
    ultimate = column["ult"][40 - 17 :]
    select = [column[0][40 - 17], column[1][41 - 17], *ultimate[2:]]
    assert f"{float(am92_annuity(select)):.3f}" == "20.009"
    assert f"{float(am92_annuity(ultimate)):.3f}" == "20.005"
    return ["q[40], q[40]+1, q42 = 0.000788 0.000962 0.001104", "ä[40] at 4 % = 20.009",
            "ä40 at 4 % = 20.005"]  # fmt: skip


def projected_life():
    # Published by the supervisor, as the press reported it: 0.008526031; 86.6 and 90.8 years.
    male, female = module.CB_H_2020, module.RV_M_2020
    ages = [65 + cmf_survival(male, "m", 65) - 0.5, 60 + cmf_survival(female, "f", 60) - 0.5]
    assert [f"{float(age):.1f}" for age in ages] == ["86.6", "90.8"]
    annuity = cmf_survival(male, "m", 65, Fraction("0.03"))
    return ["q(65, 2020) = 0.00887369", "q(65, 2022) = 0.008526031",
            "male of 65 in 2023: 86.62", "female of 60 in 2023: 90.80",
            f"ä65 in 2023 at 3 % = {float(annuity):.6f}"]  # fmt: skip


def annuity_by_trend():
    rates = module.DAV2004R_SelUlt_2o["data"]["qx_m"]
    aggregate = dav_annuity(module.DAV2004R_Agg_2o["data"]["qx_m"].__getitem__)
    # The factors that the workbook multiplies the ultimate rates with in the first five years.
    factors = {65: 0.670538} | dict.fromkeys(range(66, 70), 0.876209)
    select = dav_annuity(lambda x: rates["ult"][x] * factors.get(x, 1))
    assert f"{aggregate:.2f}" == "20.55"
    return ["male of 60 in 2005, first order: 0.004566485",
            "male of 60 in 2005, second order: 0.005496502",
            f"ä65 at 1.25 %, aggregate = {aggregate:.6f}",
            f"ä65 at 1.25 %, select = {select:.6f}"]  # fmt: skip


def arrays_and_frames():
    rates = sum(
        (table["omega"] - table["start_age"] + 1) * (1 if isinstance(column, list) else len(column))
        for table in REPO_TABLES.values()
        for column in table["data"].values()
    )
    # Durations 1 to 5 and ultimate, years 2004 to 2024, ages 0 to 121; rates as published.
    return ["qx_m by duration and age: (6, 122)", "MI_m by year and age: (21, 122)",
            "q of an ultimate male of 65: 0.012699", "his trend in 2024: 0.01517508",
            f"{len(REPO_TABLES)} tables have {rates} rates"]  # fmt: skip


def safe_copy():
    # 0.012703 is published; times 1.1.
    return ["PASEM2010, males plus 10 % - q65 = 0.0139733", "PASEM2010 - q65 = 0.012703"]


def hand_over():
    return ["PER2020_Ind_1er.orden to 119: qx_f, mi_f, qx_m, mi_m; 8 others",
            "92 Series Combined (AM92 & AF92) Select-Ultimate Mortality Table to 120:"
            " qx_m, qx_f; 8 others", "still there: True"]  # fmt: skip


EXAMPLES = [generational_annuity, select_life, projected_life, annuity_by_trend,
            arrays_and_frames, safe_copy, hand_over]  # fmt: skip


@pytest.mark.parametrize("expected", EXAMPLES)
def test_example_prints_the_right_numbers(expected):
    example = TOP / "examples" / f"{expected.__name__}.py"
    done = subprocess.run([sys.executable, example], capture_output=True, text=True, check=False)
    assert [" ".join(line.split()) for line in done.stdout.splitlines()] == expected(), done.stderr


def test_dav_rates_are_those_of_the_workbook():
    """Male, from the sheet q_x_t_ of the DAV's workbook, cells K19, L19, K20, C19 and D19."""
    example = runpy.run_path(str(TOP / "examples" / "annuity_by_trend.py"))
    first = module.DAV2004R_SelUlt_1o["data"]
    of_60, of_61 = (math.exp(-first["MI_m"][x] * (x - 54)) for x in (60, 61))
    assert [
        first["qx_m"][1][60] * of_60, example["first_order"](60, 2005),
        first["qx_m"][2][61] * of_61,
        example["select"](60, 2005, 1), example["aggregate"](60, 2005),
    ] == pytest.approx([
        0.00417550984321742, 0.00456648546193578, 0.00583481766746386,
        0.00502583650141187, 0.00549650196464437,
    ], rel=1e-14, abs=0)  # fmt: skip


def test_every_example_is_tested():
    assert {path.stem for path in TOP.glob("examples/*.py")} == {each.__name__ for each in EXAMPLES}


def test_frames_hold_every_rate_at_its_age():
    frame = runpy.run_path(str(TOP / "examples" / "arrays_and_frames.py"))["frame"]
    for name, table in REPO_TABLES.items():
        made = frame(table)
        assert made.index[[0, -1]].tolist() == [table["start_age"], table["omega"]], name
        for key, column in table["data"].items():
            lists = {"": column} if isinstance(column, list) else column
            for label, rates in lists.items():
                assert made.pop((key, label)).tolist() == rates, (name, key, label)
        assert made.empty, name


def test_safe_copy_leaves_the_module_as_it_was():
    before = copy.deepcopy(REPO_TABLES)
    made = runpy.run_path(str(TOP / "examples" / "safe_copy.py"))
    assert before == REPO_TABLES
    assert made["own"]["data"] is made["data"] != before["PASEM2010"]["data"]


DOCUMENTS = [
    "README.md",
    *(f"docs/{name}.md" for name in ("package", "provenance", "reading", "types")),
]


@pytest.mark.parametrize("document", DOCUMENTS)
def test_code_in_documents_prints_what_it_says(document):
    """Each print of a block has its output behind it, as a comment."""
    text = (TOP / document).read_text(encoding="utf-8")
    blocks = re.findall(r"^```python\n(.*?)^```", text, re.M | re.S)
    printed, given = io.StringIO(), []
    names = {"TableBuilder": lambda *data, **payload: given.append((*data, payload))}
    with contextlib.redirect_stdout(printed):
        for block in blocks:
            exec(block, names)
    promised = re.findall(r"^ *print\(.*\)  # (.*)$", "".join(blocks), re.M)
    assert printed.getvalue().splitlines() == promised and len(promised) >= 2
    if document == "README.md":
        synthetic = [name for name in REPO_TABLES if name.startswith("Dummy")]
        counts = [len(REPO_TABLES), len(REPO_TABLES) - len(synthetic), len(synthetic)]
        told = re.findall(r"(\d+) (?:actuarial|tables are published|are synthetic)", text)
        assert told == list(map(str, counts))
        assert promised[0] == f"{per2020_annuity(65, 2026, 65)[2]:.6f}"
        ((data, payload),) = given
        assert data is module.PER2020_Ind_1o["data"] and "data" not in payload
        assert list(module.PER2020_Ind_1o) == [*payload, "data"]
