"""A life with any table of the catalogue: its rates year by year, and what follows from them.

    q = rates(PER2020_Ind_1o, "f", 65, 2026)  # a female of 65 in 2026: her rates from then on
    alive = survival(q)  # the chance to be there after 0, 1, 2 … years
    print(annuity_due(alive, 0.02))  # one unit a year in advance, for life: 22.503445

Ages and calendar years are whole numbers. Rates, chances and interest are decimal, interest by the
year: 0.02 is 2 %. One unit is paid, at the start of a year or at its end. Everything reaches as far
as the table: where some are left after omega, as in tables of disability, what comes later does not
count. A wrong age, year, sex, decrement or interest is a ValueError. Each function says where its
conventions come from; docs/reading.md explains them.
"""

from __future__ import annotations

from itertools import pairwise, zip_longest
from math import exp, fsum, prod
from typing import TYPE_CHECKING, Any

from marlune.tables.data_tables import (
    AM92_AF92,
    CB_H_2020,
    RV_M_2020,
    DAV2004R_Agg_2o,
    DAV2004R_SelUlt_2o,
    PER2020_Ind_1o,
)

if TYPE_CHECKING:  # exists for checkers only
    from collections.abc import Iterable, Sequence

    from marlune.tables.data_tables import ColumnName, TablePayload

    # By select duration and "ult", or by calendar year.
    type Lists = dict[Any, list[float]]


# ---- rates ----


def lists_of(table: TablePayload, key: str) -> Lists:
    """The lists of a column, each by age from `start_age` on; a flat column is its own "ult"."""
    columns = {str(name): column for name, column in table["data"].items()}
    if key not in columns:
        raise ValueError(f"{table['table_name']} has no {key}, but {', '.join(columns)}")
    column = columns[key]
    return {"ult": column} if isinstance(column, list) else {**column}


def in_force(lists: Lists, year: int, duration: int | None) -> list[float]:
    """The list of a duration or of a year.

    A year without a list has the last one before it: so says the Chilean supervisor of 2036 and
    later, the DAV of 2024 and later. The first list also holds before its year, says the DAV.
    """
    if "ult" in lists:
        return lists.get(duration, lists["ult"])
    return lists[max((each for each in lists if each <= year), default=min(lists))]


def improvement(table: TablePayload, sex: str, age: int, year: int, duration: int | None) -> float:
    """By what a rate of the base year is multiplied in a calendar year.

    exponential: exp(-(sum of the trends of the years from the base year to the year before)), so
        exp(-trend * (year - base year)) where all are equal (BOE-A-2020-17154, annex 1.1; DAV 2004
        R, first order). A trend leads from its year to the next (DAV 2004 R, second order:
        guideline of 2018, page 43).
    discrete, projected: the product of 1 - factor over the years after the base year up to this.
        A factor leads to its year from the year before (GAM 94 with Scale AA; NCG 306 and 495,
        where the supervisor's workbook has an example).
    linear: 1 - the sum of the rates, not below 0. Synthetic tables alone name it; no text spells it
        out.

    ValueError for years before the base year, of which no publication speaks.
    """
    base, formula = table.get("base_year"), table.get("generational_formula_type")
    if base is None or year < base:
        raise ValueError(f"{table['table_name']} begins in {base}, {year} is too early")
    lists = lists_of(table, f"{'MI' if 'MI_m' in table['data'] else 'mi'}_{sex}")
    first, index = base + (formula != "exponential_improvement"), age - table["start_age"]
    steps = [in_force(lists, first + t, duration)[index] for t in range(year - base)]
    if formula == "exponential_improvement":
        return exp(-fsum(steps))
    if formula == "linear_improvement":
        return max(0.0, 1 - fsum(steps))
    return prod(1 - step for step in steps)


def rate(
    table: TablePayload, sex: str, age: int, year: int | None = None, *,
    since: int | None = None, decrement: str = "qx",
) -> float:  # fmt: skip
    """The rate of an age, decimal; in a calendar year, where the table improves.

    `sex` is "m" or "f", `decrement` "qx" (death), "ix" (disability) or "ox" (exit). `since` is the
    number of whole years since selection, 0 in the first; without it and after the select durations
    the rate is the ultimate one. Select rates go by the age reached (AM92: the workbook of the CMI
    heads them q[x-t]+t; DAV 2004 R: its workbook; synthetic tables: not stated).
    """
    name, first, last = table["table_name"], table["start_age"], table["omega"]
    if not first <= age <= last:
        raise ValueError(f"{name} has ages {first} to {last}, not {age}")
    if sex not in ("m", "f"):
        raise ValueError(f'sex is "m" or "f", not {sex!r}')
    sex = "m" if table.get("sex_independent") else sex
    lists = lists_of(table, f"{decrement}_{sex}")
    duration = None
    if since is not None:
        if since < 0 or "select" not in table:
            raise ValueError(f"{name} has no rates of {since} years since selection")
        duration = since + min(label for label in lists if label != "ult")
    q = in_force(lists, 0, duration)[age - first] / table["decrement_scale_factor"]
    if not table["generational"]:
        return q
    if year is None:
        raise ValueError(f"{name} improves from {table.get('base_year')} on: name a year")
    return q * improvement(table, sex, age, year, duration)


def rates(
    table: TablePayload, sex: str, age: int, year: int | None = None, *,
    selected: int | None = None, before: TablePayload | None = None, decrement: str = "qx",
) -> list[float]:  # fmt: skip
    """The rates of a life of this age in this calendar year, decimal, until omega.

    Next year it is a year older: rates of (age, year), (age + 1, year + 1) and so on. `selected` is
    the age at which it was selected or will be; without it, long ago. `before` is the table that
    holds until then. In DAV 2004 R the annuity starts then, and before it the aggregate table of
    the same order holds (its workbook).
    """
    if selected is None and before is not None:
        raise ValueError("before what? Name the age selected as well")
    if selected is not None and selected > age and before is None:
        raise ValueError(f"selected at {selected}: before names the table that holds until then")
    q: list[float] = []
    for each in range(age, max(age, table["omega"]) + 1):
        then = None if year is None else year + each - age
        if selected is not None and before is not None and each < selected:
            q.append(rate(before, sex, each, then, decrement=decrement))
        else:
            since = None if selected is None else each - selected
            q.append(rate(table, sex, each, then, since=since, decrement=decrement))
    return q


def damped(table: TablePayload, t1: int, t2: int) -> TablePayload:
    """DAV 2004 R, second order, with other years in which the trend falls than the module has.

    From the start trend in 1999 + t1 linearly to the target trend in 1999 + t2: the G(t) of the
    guideline of 2018, page 43. The module has 5 and 25, the workbook is kept with 5 and 10.
    """
    data = dict(table["data"])
    keys: tuple[ColumnName, ColumnName] = ("MI_m", "MI_f")
    for key in keys:
        lists = lists_of(table, key)
        if 2024 not in lists or not 0 <= t1 < t2:
            raise ValueError(f"no trend of {table['table_name']} falls from {t1} to {t2} years on")
        data[key] = {
            1999 + t: [a + (b - a) * (t - t1) / (t2 - t1) for a, b in zip(lists[2004], lists[2024])]
            for t in range(t1, t2 + 1)
        }
    return {**table, "data": data}


# ---- survival: the chance to be there after 0, 1, 2 … years ----


def survival(q: Iterable[float]) -> list[float]:
    """tpx for t = 0, 1, … to the end of the last year that has a rate."""
    alive = [1.0]
    for each in q:
        alive.append(alive[-1] * (1 - each))
    return alive


def joint(one: Sequence[float], other: Sequence[float]) -> list[float]:
    """While both live, who die independently of each other."""
    return [a * b for a, b in zip(one, other)]


def last_survivor(one: Sequence[float], other: Sequence[float]) -> list[float]:
    """While one of both lives, who die independently of each other."""
    return [a + b * (1 - a) for a, b in zip_longest(one, other, fillvalue=0.0)]


def expectation(alive: Sequence[float]) -> float:
    """Years still to come, half a year of them in the year of death: the complete expectation."""
    return fsum((a + b) / 2 for a, b in pairwise(alive))


# ---- values on the day from which survival counts ----


def value(
    amounts: list[float], at: int, interest: float, years: int | None, deferred: int
) -> float:
    """Of amounts paid at the times at, at + 1, …: for some years or all, after those deferred."""
    if not -1 < interest < 1:
        raise ValueError(f"interest is decimal, 0.02 for 2 %, not {interest}")
    if deferred < 0 or (years is not None and years < 0):
        raise ValueError(f"no number of years: {years} after {deferred}")
    end = len(amounts) if years is None else deferred + years
    return fsum(
        amount * (1 + interest) ** -(t + at)
        for t, amount in enumerate(amounts[:end])
        if t >= deferred
    )


def annuity_due(
    alive: Sequence[float], interest: float, years: int | None = None, deferred: int = 0
) -> float:
    """One a year at the start of each: for life, or for some years; after the years deferred."""
    return value([*alive[:-1]], 0, interest, years, deferred)


def annuity_immediate(
    alive: Sequence[float], interest: float, years: int | None = None, deferred: int = 0
) -> float:
    """One a year at the end of each: for life, or for some years; after the years deferred."""
    return value([*alive[1:]], 1, interest, years, deferred)


def assurance(
    alive: Sequence[float], interest: float, years: int | None = None, deferred: int = 0
) -> float:
    """One at the end of the year of death: whole life, or within a term; after years deferred."""
    return value([a - b for a, b in pairwise(alive)], 1, interest, years, deferred)


def pure_endowment(alive: Sequence[float], interest: float, years: int) -> float:
    """One after some years, to who is there then."""
    return value([*alive], 0, interest, 1, years)


def endowment(alive: Sequence[float], interest: float, years: int) -> float:
    """One at the end of the year of death within a term, or at its end."""
    return assurance(alive, interest, years) + pure_endowment(alive, interest, years)


if __name__ == "__main__":
    her = survival(rates(PER2020_Ind_1o, "f", 65, 2026))
    print("PER2020, individual, first order: a female of 65 in 2026")
    print(f"    q65 = {rate(PER2020_Ind_1o, 'f', 65, 2026):.9f}, 20p65 = {her[20]:.6f}")
    print(f"    ä65 at 2 % = {annuity_due(her, 0.02):.6f}")
    assured = survival(rates(AM92_AF92, "m", 40, selected=40))
    longer = survival(rates(AM92_AF92, "m", 40, selected=38))
    print("AM92 at 4 %")
    print(f"    ä[40] = {annuity_due(assured, 0.04):.3f}, ä40 = {annuity_due(longer, 0.04):.3f}")
    print(f"    A[40] = {assurance(assured, 0.04):.5f}")
    print("CMF 2020")
    print(f"    q65 of CB-H in 2022 = {rate(CB_H_2020, 'm', 65, 2022):.9f}")
    for table, sex, age in ((CB_H_2020, "m", 65), (RV_M_2020, "f", 60)):
        reached = age + expectation(survival(rates(table, sex, age, 2023)))
        print(f"    {table['table_name']}: {age} in 2023, lives to {reached:.2f}")
    print("DAV 2004 R, second order: a male of 65 in 2026, ä65 at 1.25 %")
    for t1, t2 in ((5, 25), (5, 10), (10, 25)):
        alive = survival(rates(damped(DAV2004R_Agg_2o, t1, t2), "m", 65, 2026))
        print(f"    T1 = {t1}, T2 = {t2}: {annuity_due(alive, 0.0125):.6f}")
    selected = survival(rates(DAV2004R_SelUlt_2o, "m", 65, 2026, selected=65))
    print(f"    as the annuity starts: {annuity_due(selected, 0.0125):.6f}")
