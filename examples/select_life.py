"""A select life with AM92: two years of lighter mortality after selection, then the ultimate rates.

The durations are 0 and 1; every list goes by attained age. A life selected at 40 dies at rates
q[40] = duration 0 at 40, q[40]+1 = duration 1 at 41, then q42 = ultimate at 42.
"""

from marlune.tables.data_tables import AM92_AF92 as TABLE


def death_rate(selected_at: int, years: int) -> float:
    """q[x]+t of males, a decimal."""
    rates = TABLE["data"]["qx_m"]
    column = rates[years] if years < TABLE["select_period"] else rates["ult"]
    return column[selected_at + years - TABLE["start_age"]]


def ultimate_rate(age: int) -> float:
    return TABLE["data"]["qx_m"]["ult"][age - TABLE["start_age"]]


def annuity_due(rates: list[float], interest: float) -> float:
    """ä from the rates of the years to come."""
    value, tpx = 0.0, 1.0
    for t, rate in enumerate(rates):
        value += tpx * (1 + interest) ** -t
        tpx *= 1 - rate
    return value


if __name__ == "__main__":
    years = range(TABLE["omega"] - 40 + 1)
    select = [death_rate(40, t) for t in years]
    ultimate = [ultimate_rate(40 + t) for t in years]
    print("q[40], q[40]+1, q42 =", *select[:3])
    print(f"ä[40] at 4 % = {annuity_due(select, 0.04):.3f}")
    print(f"ä40 at 4 %   = {annuity_due(ultimate, 0.04):.3f}")
