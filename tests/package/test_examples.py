# ./dev adds: arrays
"""Examples and documents say what is so: their numbers, computed here another way or published."""

import contextlib
import copy
import io
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


def cmf_rate(age, year):
    rate = Fraction(repr(module.CB_H_2020["data"]["qx_m"][age]))
    for each in range(2021, year + 1):
        rate -= rate * Fraction(repr(module.CB_H_2020["data"]["mi_m"][each][age]))
    return rate


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
    # The supervisor's own figures for 65 in 2020 and 2022.
    alive = Fraction(1)
    for t in range(10):
        alive *= 1 - cmf_rate(65 + t, 2022 + t)
    return ["q(65, 2020) = 0.00887369", "q(65, 2022) = 0.008526031",
            f"10p65 from 2022 = {float(alive):.6f}"]  # fmt: skip


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


EXAMPLES = [generational_annuity, select_life, projected_life, arrays_and_frames, safe_copy]


@pytest.mark.parametrize("expected", EXAMPLES)
def test_example_prints_the_right_numbers(expected):
    example = TOP / "examples" / f"{expected.__name__}.py"
    done = subprocess.run([sys.executable, example], capture_output=True, text=True, check=False)
    assert [" ".join(line.split()) for line in done.stdout.splitlines()] == expected(), done.stderr


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
    assert REPO_TABLES == before
    assert made["own"]["data"] is made["data"] != before["PASEM2010"]["data"]


@pytest.mark.parametrize("document", ["README.md", "docs/catalogue.md", "docs/provenance.md", "docs/types.md"])
def test_code_in_documents_prints_what_it_says(document):
    """Each print of a block has its output behind it, as a comment."""
    blocks = re.findall(r"^```python\n(.*?)^```", (TOP / document).read_text(), re.M | re.S)
    printed, given = io.StringIO(), []
    names = {"TableBuilder": lambda *data, **payload: given.append((*data, payload))}
    with contextlib.redirect_stdout(printed):
        for block in blocks:
            exec(block, names)
    promised = re.findall(r"^ *print\(.*\)  # (.*)$", "".join(blocks), re.M)
    assert printed.getvalue().splitlines() == promised and len(promised) >= 2
    if document == "README.md":
        assert promised[0] == f"{per2020_annuity(65, 2026, 65)[2]:.6f}"
        ((data, payload),) = given
        assert data is module.PER2020_Ind_1o["data"] and "data" not in payload
        assert list(module.PER2020_Ind_1o) == [*payload, "data"]
