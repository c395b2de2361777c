"""Projected rates with the tables of the Chilean supervisor: improvement by calendar year and age.

q(x, t) = q(x, 2020) · (1 - AA(x, 2021)) · … · (1 - AA(x, t)). From 2036 on the factors stay as they
are, says the supervisor. His worked example is a male of 65 in 2022, CB-H-2020: 0.008526031. For
2023 he announced that a male of 65 would reach 86.6 years and a female of 60 would reach 90.8.
"""

from collections.abc import Callable

from marlune.tables.data_tables import CB_H_2020, RV_M_2020


def projected(base: float, factors: dict[int, list[float]], index: int, year: int) -> float:
    """A rate of 2020 in a later year; the last list serves all years after its own."""
    for each in range(2021, year + 1):
        base *= 1 - factors[min(each, 2036)][index]
    return base


def male(age: int, year: int) -> float:
    """q(x, t) of male old-age pensioners."""
    data, index = CB_H_2020["data"], age - CB_H_2020["start_age"]
    return projected(data["qx_m"][index], data["mi_m"], index, year)


def female(age: int, year: int) -> float:
    """q(x, t) of female old-age pensioners; the table starts at 20."""
    data, index = RV_M_2020["data"], age - RV_M_2020["start_age"]
    return projected(data["qx_f"][index], data["mi_f"], index, year)


def survival(rate: Callable[[int, int], float], age: int, year: int) -> list[float]:
    """tpx for t = 0, 1, … to the age of 110: as the year goes on, so does the age."""
    alive = [1.0]
    for t in range(110 - age):
        alive.append(alive[-1] * (1 - rate(age + t, year + t)))
    return alive


def reached(rate: Callable[[int, int], float], age: int, year: int) -> float:
    """The age that a life of this age reaches on average, with half a year in the year of death."""
    return age + sum(survival(rate, age, year)) - 0.5


def annuity_due(rate: Callable[[int, int], float], age: int, year: int, interest: float) -> float:
    """äx: one unit a year in advance, as long as the life lives."""
    alive = survival(rate, age, year)
    return sum(tpx * (1 + interest) ** -t for t, tpx in enumerate(alive))


if __name__ == "__main__":
    print(f"q(65, 2020) = {male(65, 2020)}")
    print(f"q(65, 2022) = {male(65, 2022):.9f}")
    print(f"male of 65 in 2023: {reached(male, 65, 2023):.2f}")
    print(f"female of 60 in 2023: {reached(female, 60, 2023):.2f}")
    print(f"ä65 in 2023 at 3 % = {annuity_due(male, 65, 2023, 0.03):.6f}")
