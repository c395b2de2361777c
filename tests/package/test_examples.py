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

import pytest

import marlune.tables.data_tables as module
from columns import lists_of
from marlune.tables.data_tables import REPO_TABLES
from tools import TOP, links


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


def dav_annuity(row, t1, t2):
    """ä of a male of 65 in 2026 at 1.25 % by the G(t) of the guideline of 2018, page 43."""
    value = 1.0
    data = module.DAV2004R_Agg_2o["data"]
    start, target = (data["MI_m"][year] for year in (2004, 2024))
    for x in reversed(range(65, 121)):
        t = 2026 + x - 65 - 1999
        over = (t - t1) * (t - t1 - 1) / 2 / (t2 - t1)
        weight = t if t <= t1 else t - over if t <= t2 else (t1 + t2 + 1) / 2
        q = row(x) * math.exp(-target[x] * t - weight * (start[x] - target[x]))
        value = 1 + (1 - q) * value / 1.0125
    return f"{value:.6f}"


def life():
    q, alive, value = per2020_annuity(65, 2026, 85)
    aggregate = module.DAV2004R_Agg_2o["data"]["qx_m"].__getitem__
    ultimate = module.DAV2004R_SelUlt_2o["data"]["qx_m"]["ult"]
    # The factors that the workbook multiplies the ultimate rates with in the first five years.
    factors = {65: 0.670538} | dict.fromkeys(range(66, 70), 0.876209)
    damped = {(t1, t2): dav_annuity(aggregate, t1, t2) for t1, t2 in ((5, 25), (5, 10), (10, 25))}
    assert list(damped.values()) == ["20.552025", "20.255604", "20.649683"]
    return ["PER2020, individual, first order: a female of 65 in 2026",
            f"q65 = {q:.9f}, 20p65 = {alive:.6f}", f"ä65 at 2 % = {value:.6f}",
            # Published in Formulae and Tables for Examinations.
            "AM92 at 4 %", "ä[40] = 20.009, ä40 = 20.005", "A[40] = 0.23041",
            # Published by the supervisor, the ages as the press reported them: 86.6 and 90.8.
            "CMF 2020", "q65 of CB-H in 2022 = 0.008526031",
            "CB-H-2020 HOMBRES: 65 in 2023, lives to 86.62",
            "RV-M-2020 MUJERES: 60 in 2023, lives to 90.80",
            "DAV 2004 R, second order: a male of 65 in 2026, ä65 at 1.25 %",
            *(f"T1 = {t1}, T2 = {t2}: {value}" for (t1, t2), value in damped.items()),
            "as the annuity starts: "
            + dav_annuity(lambda x: ultimate[x] * factors.get(x, 1), 5, 25)]  # fmt: skip


def arrays_and_frames():
    rates = sum(
        (table["omega"] - table["start_age"] + 1) * len(lists_of(column))
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


EXAMPLES = [life, arrays_and_frames, safe_copy, hand_over]


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
            for path, rates in lists_of(column):
                assert made.pop((key, *(path or [""]))).tolist() == rates, (name, key, path)
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


def test_figures_in_running_text_are_those_of_the_module():
    tables = REPO_TABLES.values()
    columns = [column for table in tables for column in table["data"].values()]
    lists = [rates for column in columns for _, rates in lists_of(column)]
    once = {id(each): each for each in lists}.values()
    floats = [rate for each in once for rate in each if isinstance(rate, float)]
    starts = sorted({table["start_age"] for table in tables})
    late = sum(table["start_age"] > 0 for table in tables)
    assert len(tables) / 3 < late < len(tables) / 2
    for document, figure in (
        ("export", f"each of the {sum(map(len, lists)):,} values"),
        (
            "performance",
            f"one object, also where rules compute them: {len(set(map(id, floats))):,}",
        ),
        ("reading", f"begin at {', '.join(map(str, starts[:-1]))} or {starts[-1]};"),
        ("reading", "more than a third of them"),
    ):
        assert figure in (TOP / "docs" / f"{document}.md").read_text("utf-8"), figure


def test_a_link_that_leads_nowhere_is_told(tmp_path, monkeypatch):
    monkeypatch.setattr(links, "TOP", tmp_path)
    document = tmp_path / "a.md"
    document.write_text(
        "# The Heads: `q`, ω\n[1](#the-heads-q-ω) [2](a.md#heads) [3](b.md) [4](https://x.y/z)\n"
        "```\n[5](c.md)\n# no heading\n```\n[6](#no-heading)\n",
        encoding="utf-8",
    )
    assert [line.split(" ")[-1] for line in links.dead_links(document)] == [
        "a.md#heads", "b.md", "#no-heading"
    ]  # fmt: skip
