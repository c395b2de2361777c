"""examples/life.py: figures that others have published, laws of every table, what is refused."""

import re
from itertools import pairwise
from math import exp

import pytest

import life
import marlune.tables.data_tables as module
from life import annuity_due, annuity_immediate, assurance, rate, rates, survival
from marlune.tables.data_tables import REPO_TABLES


def near(figure):
    return pytest.approx(figure, rel=1e-12, abs=1e-14)


# ---- published ----


def test_guide_to_per2020():
    """A. Fernández Morales, Universidad de Málaga 2021: females, individual, second order.

    Of the rates of the generation of 2000 its table 10 gives 0.0041 at 80, which is the rate with
    the factor of its table 9; the factors of table 10 itself give 0.00405, as here.
    """
    table = module.PER2020_Ind_2o

    def born(year, *ages, digits):
        return [round(rate(table, "f", age, year + age), digits) for age in ages]

    in_2025 = [round(rate(table, "f", age, 2025), 6) for age in range(3)]
    in_2030 = [round(rate(table, "f", age, 2030), 6) for age in range(3)]
    assert in_2025 + in_2030 == [0.001381, 0.000092, 0.000079, 0.001159, 0.000077, 0.000066]
    factors = [life.improvement(table, "f", age, 2000 + age, None) for age in (80, 81, 82)]
    assert [round(each, 6) for each in factors] == [0.169517, 0.174523, 0.182501]
    assert born(2000, 81, 82, digits=4) == [0.0048, 0.0058]
    assert born(1990, 80, 81, 82, digits=4) == [0.0053, 0.0062, 0.0074]


def test_dav_rates_are_those_of_the_workbook():
    """Male, from the sheet q_x_t_ of the DAV's workbook, cells K19, L19, K20, C19 and D19."""
    assert [
        rate(module.DAV2004R_SelUlt_1o, "m", 60, 2005, since=0),
        rate(module.DAV2004R_Agg_1o, "m", 60, 2005),
        rate(module.DAV2004R_SelUlt_1o, "m", 61, 2006, since=1),
        rate(module.DAV2004R_SelUlt_2o, "m", 60, 2005, since=0),
        rate(module.DAV2004R_Agg_2o, "m", 60, 2005),
    ] == pytest.approx([
        0.00417550984321742, 0.00456648546193578, 0.00583481766746386,
        0.00502583650141187, 0.00549650196464437,
    ], rel=1e-14, abs=0)  # fmt: skip


def test_reading_of_dav_that_documents_warn_of():
    """The trend of the year times the years since 1999: 19.93 instead of 20.55."""
    data = module.DAV2004R_Agg_2o["data"]
    trends = {age: data["MI_m"][min(1961 + age, 2024)][age] for age in range(65, 122)}
    q = [data["qx_m"][age] * exp(-trend * (age - 38)) for age, trend in trends.items()]
    assert f"{annuity_due(survival(q), 0.0125):.2f}" == "19.93"


# ---- every formula and shape, by hand ----


def test_formulas():
    """Of the others test_export.py compares what the exported tables say."""

    def held(table, key, age, *label):
        column = table["data"][key]
        return (column[label[0]] if label else column)[age - table["start_age"]]

    chile = module.CB_H_2020
    later = rate(chile, "m", 65, 2040) / rate(chile, "m", 65, 2036)
    assert later == near((1 - held(chile, "mi_m", 65, 2036)) ** 4)
    linear = module.DummySD_LinearGen
    own = held(linear, "ix_m", 60) * (1 - 16 * held(linear, "mi_m", 60))
    assert rate(linear, "m", 60, 2026, decrement="ix") == near(own)
    assert rate(linear, "m", 60, 200_000, decrement="ix") == 0
    gap = module.DummyEXIT_Gen2o
    own = 10 * held(gap, "mi_f", 40, 2004) + 6 * held(gap, "mi_f", 40, 2014)
    assert rate(gap, "f", 40, 2020, decrement="ox") == near(held(gap, "ox_f", 40) * exp(-own))
    each = module.DummyLIFE_SelectGen_d
    for since, label in enumerate((1, 2, "ult")):
        own = held(each, "qx_f", 40, label) * exp(-16 * held(each, "mi_f", 40, label))
        assert rate(each, "f", 40, 2026, since=since) == near(own)


def test_select_rates_go_by_the_age_reached():
    am92, column = module.AM92_AF92, module.AM92_AF92["data"]["qx_f"]
    q = rates(am92, "f", 40, selected=40)
    assert q == [column[0][23], column[1][24], *column["ult"][25:]]
    assert rates(am92, "f", 41, selected=40) == q[1:]
    assert rates(am92, "f", 42, selected=40) == rates(am92, "f", 42) == q[2:]
    selected, aggregate = module.DAV2004R_SelUlt_1o, module.DAV2004R_Agg_1o
    q = rates(selected, "f", 40, 2026, selected=65, before=aggregate)
    assert q[:25] == rates(aggregate, "f", 40, 2026)[:25]
    assert q[25:] == rates(selected, "f", 65, 2051, selected=65)
    assert q[30:] == rates(selected, "f", 40, 2026)[30:] != rates(aggregate, "f", 40, 2026)[30:]


# ---- laws ----


def lives():
    """One of each table and sex, as just selected where that is possible: name, sex and rates."""
    for name, table in REPO_TABLES.items():
        for sex in "mf":
            for decrement in ("qx", "ix", "ox"):
                if f"{decrement}_{sex}" in table["data"] or (
                    table.get("sex_independent") and f"{decrement}_m" in table["data"]
                ):
                    age = 60 if table["omega"] < 200 else 150
                    year = table.get("base_year") and table["base_year"] + 30
                    selected = age if "select" in table else None
                    q = rates(table, sex, age, year, selected=selected, decrement=decrement)
                    yield name, sex, q


def test_laws_of_every_table():
    met = 0
    for name, sex, q in lives():
        met += 1
        assert all(0 <= each <= 1 for each in q), name
        alive = survival(q)
        left, n, i, v, d = alive[-1], len(q), 0.03, 1 / 1.03, 0.03 / 1.03
        whole = annuity_due(alive, i)
        assert assurance(alive, i) == near(1 - d * whole - left * v**n), name
        assert annuity_immediate(alive, i) == near(whole - 1 + left * v**n), name
        for kind in (annuity_due, annuity_immediate, assurance):
            assert kind(alive, i, years=4) + kind(alive, i, deferred=4) == near(kind(alive, i))
        assert annuity_due(alive, i, 2, 1) == near(alive[1] * v + alive[2] * v**2)
        assert annuity_immediate(alive, i, 1, 1) == near(alive[2] * v**2)
        assert assurance(alive, i, 1, 1) == near(alive[1] * q[1] * v**2)
        assert life.endowment(alive, i, 4) == near(1 - d * annuity_due(alive, i, 4))
        assert life.pure_endowment(alive, i, n + 1) == 0
        values = [annuity_due(alive, each) for each in (-0.01, 0, 0.01, 0.05)]
        assert all(a > b for a, b in pairwise(values)), (name, sex)
        assert life.expectation(alive) == near(sum(alive[1:]) + (1 - left) / 2)
        other = survival(rates(module.GAM71, "m", 65))
        both, one = life.joint(alive, other), life.last_survivor(alive, other)
        assert all(a <= min(b, c) for a, b, c in zip(both, alive, other)), name
        assert all(a >= max(b, c) - 1e-15 for a, b, c in zip(one, alive, other)), name
        total = annuity_due([*alive, 0], i) + annuity_due([*other, 0], i)
        assert annuity_due([*both, 0], i) + annuity_due([*one, 0], i) == near(total), name
    assert met == sum(2 - name.endswith(("Sm", "Sf")) for name in REPO_TABLES) - 5


# ---- what is refused ----

PER, AM = module.PER2020_Ind_1o, module.AM92_AF92


@pytest.mark.parametrize(
    ("ask", "message"),
    [
        (lambda: rates(PER, "f", 120, 2026), "PER2020_Ind_1er.orden has ages 0 to 119, not 120"),
        (lambda: rates(module.GAM71, "f", 4), "GAM71 has ages 5 to 110, not 4"),
        (lambda: rates(PER, "f", -1, 2026), "has ages 0 to 119, not -1"),
        (lambda: rates(PER, "w", 65, 2026), 'sex is "m" or "f", not \'w\''),
        (lambda: rates(PER, "f", 65), "PER2020_Ind_1er.orden improves from 2012 on: name a year"),
        (lambda: rates(PER, "f", 65, 2011), "begins in 2012, 2011 is too early"),
        (lambda: rates(module.CB_H_2020, "f", 65, 2026), "HOMBRES has no qx_f, but qx_m, mi_m"),
        (lambda: rates(module.IASS90, "m", 40), "IASS-90 has no qx_m, but ix_m"),
        (lambda: rates(PER, "f", 65, 2026, selected=65), "no rates of 0 years since selection"),
        (lambda: rates(AM, "f", 40, selected=41), "selected at 41: before names the table"),
        (lambda: rates(AM, "f", 40, before=module.GAM71), "before what?"),
        (lambda: annuity_due([1.0, 0.0], 2), "interest is decimal, 0.02 for 2 %, not 2"),
        (lambda: assurance([1.0, 0.0], float("nan")), "not nan"),
        (lambda: annuity_due([1.0, 0.0], 0.02, -1), "no number of years: -1 after 0"),
        (lambda: life.pure_endowment([1.0], 0.02, -1), "no number of years: 1 after -1"),
        (lambda: rate(AM, "m", 40, since=-1), "no rates of -1 years since"),
        (lambda: life.damped(module.DAV2004R_Agg_2o, 25, 25), "falls from 25 to 25 years on"),
        (lambda: life.damped(module.DAV2004R_Agg_1o, 5, 25), "no trend of DAV 2004 R Agg"),
    ],
)
def test_what_no_table_says_or_makes_no_sense_is_refused(ask, message):
    with pytest.raises(ValueError, match=re.escape(message)):
        ask()
