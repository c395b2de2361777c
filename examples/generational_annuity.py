"""Survival and a life annuity-due with PER2020: a rate per mille in 2012 that improves every year.

q(x, t) = q(x, 2012) · exp(-λ(x) · (t - 2012)), for a life of age x in calendar year t.
"""

from math import exp

from marlune.tables.data_tables import PER2020_Ind_1o as TABLE


def death_rate(age: int, year: int) -> float:
    """q(x, t) of females as a probability. The table has it per mille, λ as a decimal."""
    index = age - TABLE["start_age"]
    base = TABLE["data"]["qx_f"][index] / TABLE["decrement_scale_factor"]
    return base * exp(-TABLE["data"]["mi_f"][index] * (year - TABLE["base_year"]))


def survival(age: int, year: int) -> list[float]:
    """tpx for t = 0, 1, … to omega: a year later the life is a year older."""
    alive = [1.0]
    for t in range(TABLE["omega"] - age):
        alive.append(alive[-1] * (1 - death_rate(age + t, year + t)))
    return alive


def annuity_due(age: int, year: int, interest: float) -> float:
    """äx: one unit a year in advance, as long as the life lives."""
    return sum(tpx * (1 + interest) ** -t for t, tpx in enumerate(survival(age, year)))


if __name__ == "__main__":
    print(f"female, 65 in 2026: q = {death_rate(65, 2026):.9f}")
    print(f"20p65               = {survival(65, 2026)[20]:.6f}")
    print(f"ä65 at 2 %          = {annuity_due(65, 2026, 0.02):.6f}")
