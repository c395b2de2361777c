"""Projected rates with CB-H-2020 of the Chilean supervisor: improvement by calendar year and age.

q(x, t) = q(x, 2020) · (1 - AA(x, 2021)) · … · (1 - AA(x, t)). The supervisor's own worked example
is a male of 65 in 2022: 0.008526031.
"""

from math import prod

from marlune.tables.data_tables import CB_H_2020 as TABLE


def death_rate(age: int, year: int) -> float:
    """q(x, t) of males, a decimal. KeyError after the last year of the grid, 2036."""
    index = age - TABLE["start_age"]
    factors = TABLE["data"]["mi_m"]
    years = range(TABLE["base_year"] + 1, year + 1)
    return TABLE["data"]["qx_m"][index] * prod(1 - factors[each][index] for each in years)


if __name__ == "__main__":
    print(f"q(65, 2020) = {death_rate(65, 2020)}")
    print(f"q(65, 2022) = {death_rate(65, 2022):.9f}")
    # The cohort that is 65 in 2022: as the year goes on, so does the age.
    survival = prod(1 - death_rate(65 + t, 2022 + t) for t in range(10))
    print(f"10p65 from 2022 = {survival:.6f}")
