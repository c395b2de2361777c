"""Laws that tie published tables together, and so find a wrong digit.

A law states for how many ages it held, so that it cannot pass because it met nothing.
"""

import math
from fractions import Fraction
from itertools import pairwise

import pytest

from columns import PUBLISHED, lists_of
from marlune.tables.data_tables import REPO_TABLES


def data(name):
    return REPO_TABLES[name]["data"]


def exact(rate):
    """The decimal number that a rate is written as."""
    return Fraction(repr(rate))


def hold(name, path, start_age, got, want, tolerance, cases):
    """The law `got == want` holds within a tolerance, for as many ages as stated."""
    wrong = [
        (name, path, start_age + index, left, right)
        for index, (left, right) in enumerate(zip(got, want, strict=True))
        if abs(exact(left) - right) > Fraction(tolerance)
    ]
    assert (wrong, len(got)) == ([], cases)


@pytest.mark.parametrize("sex", "fm")
@pytest.mark.parametrize(
    ("derived", "base", "factor", "cases"),
    [
        ("PASEM2020_Dec_2o", "PASEM2020_Gen_2o", "1.6", 100),
        ("PASEM2020_Rel_1o", "PASEM2020_Gen_2o", "1.101875", 109),
        ("PASEM2020_NoRel_1o", "PASEM2020_Gen_2o", "1.155", 108),
        ("PASEM2020_Dec_1o", "PASEM2020_Dec_2o", "1.101875", 108),
    ],
)
def test_pasem_tables_are_multiples_of_each_other(derived, base, factor, cases, sex):
    # Below the age from which the derived table is capped. Both are rounded to four decimals.
    key = f"qx_{sex}"
    want = [exact(rate) * Fraction(factor) for rate in data(base)[key][:cases]]
    hold(derived, key, 0, data(derived)[key][:cases], want, "0.00015", cases)


@pytest.mark.parametrize("order", ["1o", "2o"])
@pytest.mark.parametrize("sex", "fm")
def test_per_individual_rate_is_the_collective_one_of_the_age_before(sex, order):
    key = f"qx_{sex}"
    individual, collective = data(f"PER2020_Ind_{order}")[key], data(f"PER2020_Col_{order}")[key]
    hold(f"PER2020_Ind_{order}", key, 11, individual[11:86], map_exact(collective[10:85]), 0, 75)
    assert individual[:11] == collective[:11] and individual[97:] == collective[97:]
    assert all(young != old for young, old in zip(individual[11:86], collective[11:86]))


def map_exact(rates):
    return [exact(rate) for rate in rates]


@pytest.mark.parametrize("kind", ["Col", "Ind"])
@pytest.mark.parametrize("sex", "fm")
def test_per_first_order_is_second_order_less_a_loading_of_at_most_9_75_per_cent(sex, kind):
    """Its improvement exceeds that of second order by at most half a per cent."""
    key, name = f"qx_{sex}", f"PER2020_{kind}_1o"
    first, second = map_exact(data(name)[key]), map_exact(data(f"PER2020_{kind}_2o")[key])
    loadings = [round((1 - rate / base) * 10_000) for rate, base in zip(first, second)]
    want = [base * (10_000 - loading) / 10_000 for base, loading in zip(second, loadings)]
    hold(name, key, 0, data(name)[key][:119], want, 0, 119)
    assert loadings[0] == max(loadings) == 975 and first[119] == 1000
    first, second = (
        map_exact(data(f"PER2020_{kind}_{order}")[f"mi_{sex}"]) for order in ("1o", "2o")
    )
    margins = [high - low for high, low in zip(first, second)]
    assert margins[:9] == [Fraction("0.005")] * 9 and margins == sorted(margins, reverse=True)
    assert len(margins) == 119


@pytest.mark.parametrize("kind", ["Agg", "SelUlt"])
@pytest.mark.parametrize(("sex", "constant"), [("m", "0.843652"), ("f", "0.83506")])
def test_dav_first_order_is_a_constant_multiple_of_second_order(kind, sex, constant):
    key = f"qx_{sex}"
    columns = [data(f"DAV2004R_{kind}_{order}")[key] for order in ("1o", "2o")]
    got, base = ([*c["ult"]] if isinstance(c, dict) else c for c in columns)
    want = [exact(rate) * Fraction(constant) for rate in base[:121]]
    # Half a unit of the sixth decimal in either table, and of the constant's own.
    hold(f"DAV2004R_{kind}_1o", key, 0, got[:121], want, "0.00000146", 121)


@pytest.mark.parametrize("order", ["1o", "2o"])
@pytest.mark.parametrize("sex", "fm")
def test_dav_ultimate_rates_are_the_aggregate_ones_from_age_100(sex, order):
    ultimate = data(f"DAV2004R_SelUlt_{order}")[f"qx_{sex}"]["ult"]
    aggregate = data(f"DAV2004R_Agg_{order}")[f"qx_{sex}"]
    assert ultimate[100:] == aggregate[100:] and len(ultimate[100:]) == 22
    equal = [age for age in range(100) if ultimate[age] == aggregate[age]]
    assert equal == ([38] if (order, sex) == ("2o", "f") else [])


def annual(rate):
    """The annual reduction of mortality that a trend, a force, stands for."""
    return 1 - math.exp(-rate)


@pytest.mark.parametrize("sex", "mf")
def test_dav_trends_follow_from_the_start_trend(sex):
    """First order: 0.25 percentage points more a year. Target: three quarters of it.

    The male target trend is taken from a start trend lower by 0.3 points and has a floor.
    """
    start = data("DAV2004R_Agg_2o")[f"MI_{sex}"][2004][:121]
    first = data("DAV2004R_Agg_1o")[f"MI_{sex}"][:121]
    target = data("DAV2004R_Agg_2o")[f"MI_{sex}"][2024][:121]
    want = [annual(rate) + 0.0025 for rate in start]
    hold("DAV2004R_Agg_1o", f"MI_{sex}", 0, [*map(annual, first)], want, "1.1e-8", 121)
    lower, from_age = (0.003, 23) if sex == "m" else (0.0, 0)
    want = [max(0.75 * (annual(rate) - lower), 0.0075) for rate in start[from_age:]]
    got = [*map(annual, target[from_age:])]
    hold("DAV2004R_Agg_2o", f"MI_{sex} 2024", from_age, got, want, "1.1e-8", 121 - from_age)


@pytest.mark.parametrize(
    ("name", "sex", "first_age"),
    [("CB_H_2020", "m", 0), ("MI_H_2020", "m", 0), ("B_M_2020", "f", 0), ("MI_M_2020", "f", 0),
     ("RV_M_2020", "f", 20)],
)  # fmt: skip
def test_cmf_improvement_runs_out_above_90_and_converges_by_2036(name, sex, first_age):
    grid = data(name)[f"mi_{sex}"]
    at_90 = 90 - first_age
    for year, factors in grid.items():
        base = exact(factors[at_90])
        tapered = [Fraction(round(base * (15 - k) / 15 * 10**6), 10**6) for k in range(16)]
        want = tapered + [0] * 5
        hold(name, year, 90, factors[at_90:], want, 0, 21)
    assert grid[2036][: at_90 + 1] == [0.01] * (at_90 + 1)
    # Along the years a factor is a cubic, so that fourth differences are rounding alone: at most
    # half a millionth times 1 + 4 + 6 + 4 + 1.
    years = [[round(exact(factor) * 10**6) for factor in factors] for factors in grid.values()]
    checked = 0
    for age in range(at_90 + 1):
        series = [factors[age] for factors in years]
        for _ in range(4):
            series = [then - now for now, then in pairwise(series)]
        assert max(map(abs, series)) <= 8, (name, age + first_age, series)
        checked += len(series)
    assert checked == (at_90 + 1) * 12


def test_cmf_factors_are_those_of_the_sex():
    assert data("CB_H_2020")["mi_m"] == data("MI_H_2020")["mi_m"]
    assert data("B_M_2020")["mi_f"] == data("MI_M_2020")["mi_f"]
    annuities, life = data("RV_M_2020")["mi_f"], data("B_M_2020")["mi_f"]
    assert annuities == {year: factors[20:] for year, factors in life.items()}


@pytest.mark.parametrize("sex", "mf")
def test_am92_select_rates_rise_with_duration_and_end_in_the_ultimate_ones(sex):
    column = data("AM92_AF92")[f"qx_{sex}"]
    first, second, ultimate = column[0], column[1], column["ult"]
    rising = [first[i] < second[i] < ultimate[i] for i in range(91 - 17)]
    assert all(rising) and len(rising) == 74
    assert first[91 - 17 :] == ultimate[91 - 17 :] and second[92 - 17 :] == ultimate[92 - 17 :]


def gkm80(age):
    """1000 q, as the notes to the Society's table 34058 print it."""
    if age < 31:
        return 0.896 + 0.0122 * age
    if age < 50:
        return 0.6970 + 0.2638 * age - 0.01571 * age**2 + 2.517e-4 * age**3
    growth = 1.108 ** (age - 65)
    return (0.3790 + 26.84 * growth) / (1 + 0.03722 * growth)


def test_gkm_80_has_a_formula_and_gkf_80_is_that_of_men_seven_years_younger():
    for sex, first, younger, exceptions in (("m", 15, 0, []), ("f", 22, 7, [94])):
        rates = data("GKMF80")[f"qx_{sex}"][first - 15 : 117 - 15]
        far = [
            age
            for age, rate in enumerate(rates, first)
            if abs(1000 * rate - gkm80(age - younger)) > 0.0006
        ]
        assert far == exceptions and len(rates) == 117 - first
    assert (data("GKMF80")["qx_f"][94 - 15], data("GKMF80")["qx_m"][87 - 15]) == (
        0.189325,
        0.189343,
    )


ALTERED = (1, -6, 15, -20, 15, -6, 1)


def isolated_breaks(rates, first_age):
    """Ages whose rate alone stands out, and by how much: the sixth differences around it are those
    of one altered rate, but for a five-hundredth of their squares."""
    numbers = [float(rate) for rate in rates]
    unit = max(numbers) * 1e-9
    for _ in range(6):
        numbers = [after - before for before, after in pairwise(numbers)]
    for at in range(len(numbers) - 6):
        window = numbers[at : at + 7]
        size = sum(a * b for a, b in zip(ALTERED, window)) / sum(a * a for a in ALTERED)
        rest = sum((each - size * one) ** 2 for each, one in zip(window, ALTERED))
        if abs(size) > unit and rest < 0.002 * sum(each**2 for each in window):
            yield first_age + at + 6, size


def test_no_rate_of_a_published_column_stands_out_alone_but_the_two_declared():
    found, columns = [], 0
    for name in PUBLISHED:
        for key, column in data(name).items():
            for path, rates in lists_of(column):
                breaks = isolated_breaks(rates[:-1], REPO_TABLES[name]["start_age"])
                found += [(name, key, *path, age, round(size, 7)) for age, size in breaks]
                columns += 1
    assert found == [
        ("GRMF80", "qx_m", 102, -0.0089994), ("GKMF80", "qx_f", 94, -0.0000182)
    ] and columns == 258  # fmt: skip
    # One part in ten thousand where a column is smooth and has the decimals for it.
    for name, key, first in (
        ("GKMF80", "qx_m", 90), ("GRMF95", "qx_m", 99), ("MI_H_2020", "qx_m", 65)
    ):  # fmt: skip
        start_age = REPO_TABLES[name]["start_age"]
        for age in range(first, first + 20):
            rates = [*data(name)[key][:-1]]
            rates[age - start_age] = round(rates[age - start_age] * 1.0001, 9)
            assert [each for each, _ in isolated_breaks(rates, start_age)] == [age], (name, age)


def test_social_security_tables_agree_where_they_should():
    assert data("IASS90")["ix_m"] == data("SS90ABS")["ix_m"] != data("SS90TOT")["ix_m"]


def test_rates_at_old_ages_rise():
    """Mortality rises with age from 40 in every published table."""
    columns = [
        (name, key, *path, rates[40 - REPO_TABLES[name]["start_age"] : -1])
        for name in PUBLISHED
        for key, column in data(name).items()
        for path, rates in lists_of(column)
        if REPO_TABLES[name]["table_type"] == "life" and key[:2] == "qx"
    ]
    assert [where for *where, rates in columns if rates != sorted(rates)] == []
    assert sum(len(rates) - 2 for *_, rates in columns) > 3000
