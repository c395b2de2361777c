"""An annuity with DAV 2004 R: rates of 1999, trends by calendar year, selection at the start.

The trend of a year is the force by which the rate of an age falls from that year to the next:

    q(x, t) = q(x, 1999) · exp(-(MI(x, 1999) + MI(x, 2000) + … + MI(x, t - 1)))

Before 2004 the trend is that of 2004, from 2024 on that of 2024. In first order the trend is the
same in all years, so that the sum is MI(x) · (t - 1999). In second order it is not: the trend of
year t times the years since 1999 forgets that the trend was stronger before, and the annuity comes
out too low by 0.62, three per cent.

Select rates go by attained age: duration 1 in the first year of the annuity, 2 to 5 in the next
four, then the ultimate rates. Before the annuity starts, the aggregate table holds.
"""

from math import exp

from marlune.tables.data_tables import DAV2004R_Agg_1o, DAV2004R_Agg_2o, DAV2004R_SelUlt_2o


def first_order(age: int, year: int) -> float:
    """q(x, t) of males, aggregate, with loadings."""
    data = DAV2004R_Agg_1o["data"]
    return data["qx_m"][age] * exp(-data["MI_m"][age] * (year - 1999))


def reduction(age: int, year: int) -> float:
    """What the trends of the second order have taken off a rate of 1999, males."""
    trends = DAV2004R_Agg_2o["data"]["MI_m"]
    years = range(1999, year)
    return exp(-sum(trends[min(max(each, 2004), 2024)][age] for each in years))


def aggregate(age: int, year: int) -> float:
    """q(x, t) of males, aggregate, best estimate."""
    return DAV2004R_Agg_2o["data"]["qx_m"][age] * reduction(age, year)


def select(age: int, year: int, duration: int) -> float:
    """The same in a year of the annuity, the first of which is 1."""
    rates = DAV2004R_SelUlt_2o["data"]["qx_m"]
    selected = duration <= DAV2004R_SelUlt_2o["select_period"]
    return (rates[duration] if selected else rates["ult"])[age] * reduction(age, year)


def annuity_due(rates: list[float], interest: float) -> float:
    """ä from the rates of the years to come."""
    value, tpx = 0.0, 1.0
    for t, rate in enumerate(rates):
        value += tpx * (1 + interest) ** -t
        tpx *= 1 - rate
    return value


if __name__ == "__main__":
    ages = range(65, DAV2004R_Agg_2o["omega"] + 1)
    print(f"male of 60 in 2005, first order:  {first_order(60, 2005):.9f}")
    print(f"male of 60 in 2005, second order: {aggregate(60, 2005):.9f}")
    by_age = [aggregate(age, 2026 + age - 65) for age in ages]
    print(f"ä65 at 1.25 %, aggregate = {annuity_due(by_age, 0.0125):.6f}")
    # At 121 a numbered duration holds the bare factor, but nobody is selected at that age.
    selected = [select(age, 2026 + age - 65, age - 65 + 1) for age in ages]
    print(f"ä65 at 1.25 %, select    = {annuity_due(selected, 0.0125):.6f}")
