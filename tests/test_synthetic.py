"""The synthetic tables, compared with the rules that make them."""

import math
import subprocess
from random import Random

import pytest
from columns import SYNTHETIC, differences
from compiler import compile_source
from fresh import run

import marlune.tables.data_tables as module
from marlune.tables.data_tables import REPO_TABLES

DECADES = [20, 10, 10, 10, 10, 10, 10, 10, 10, 1]
LIFE = [0.0005, 0.001, 0.002, 0.004, 0.008, 0.02, 0.05, 0.12, 0.25, 1.0]
FEMALE_EXIT = [0.0004, 0.0008, 0.0015, 0.003, 0.006, 0.015, 0.04, 0.1, 0.22, 1.0]


def steps(rates, ages):
    return [rate for rate, count in zip(rates, ages) for _ in range(count)]


def disability(loading):
    """Loading times a rate that is piecewise linear in age, in hundred-millionths, exactly."""
    pieces = ((50, 1, 10), (16, 2, 10), (37, 3, 10), (70, 6, 10), (135, 11, 6))
    base = []
    for first, step, ages in pieces:
        scale = 10 if first == 50 else 100
        base += [first * scale + step * 100 * year for year in range(ages)]
    return [loading * rate / 10**8 for rate in base]


BASE = {
    "_QX_LIFE": steps(LIFE, DECADES),
    "_OX_M_BASE": steps(LIFE, DECADES),
    "_OX_F_BASE": steps(FEMALE_EXIT, DECADES),
    "_IX_M_BASE": disability(105),
    "_IX_F_BASE": disability(95),
}
BASES = {"LIFE": ("_QX_LIFE", "_QX_LIFE"), "SD": ("_IX_M_BASE", "_IX_F_BASE"),
         "EXIT": ("_OX_M_BASE", "_OX_F_BASE")}  # fmt: skip
SYMBOL = {"LIFE": "qx", "SD": "ix", "EXIT": "ox"}
BELOW_OMEGA = {"LIFE": 100, "SD": 45, "EXIT": 100}
YOUNG = {"LIFE": 80, "SD": 35, "EXIT": 80}


def kind_of(name):
    return name.removeprefix("Dummy").split("_")[0]


def discounted(kind, rates, factor):
    if kind == "SD":
        return [round(rate * factor, 7) for rate in rates]
    return [rate * factor if rate < 1.0 else 1.0 for rate in rates]


def decrements(name):
    kind = kind_of(name)
    columns = {}
    for sex, base in zip("mf", BASES[kind]):
        column = BASE[base]
        if "Select" in name:
            column = {1: discounted(kind, column, 0.8), 2: discounted(kind, column, 0.9),
                      "ult": column}  # fmt: skip
        columns[f"{SYMBOL[kind]}_{sex}"] = column
    if "Unisex" in name:
        del columns[f"{SYMBOL[kind]}_f"]
    return columns


PROJECTED = ((0.015, 0.015, 0.014, 0.013, 0.012), (0.012, 0.012, 0.011, 0.01, 0.009))
PROJECTED_SD = ((0.01, 0.01, 0.009, 0.008, 0.007), (0.008, 0.008, 0.007, 0.006, 0.006))


def improvement(name):
    kind = kind_of(name)
    ages = BELOW_OMEGA[kind]

    def constant(rate):
        return [rate] * ages + [0.0]

    def step(young, old):
        return [young] * YOUNG[kind] + [old] * (ages - YOUNG[kind]) + [0.0]

    if name.endswith("_LinearGen"):
        if kind == "LIFE":
            return 2 * ([rate * 0.0015 for rate in BASE["_QX_LIFE"][:100]] + [0.0],)
        return 2 * (step(0.0, 1e-05 if kind == "SD" else 0.0001),)
    if name.endswith("_DiscreteGen"):
        return 2 * (step(0.005, 0.002),)
    if name.endswith(("_ProjectedGen", "_c")):
        rates = PROJECTED_SD if name == "DummySD_ProjectedGen" else PROJECTED
        return tuple(dict(zip(range(2021, 2026), map(constant, sex))) for sex in rates)
    if name.endswith(("_Gen2o", "_b")):
        return 2 * ({2004: constant(0.005), 2014: constant(0.0035), 2024: constant(0.002)},)
    if name.endswith("_a"):
        return 2 * (constant(0.005),)
    if name.endswith("_d"):
        return tuple(
            dict(zip((1, 2, "ult"), map(constant, sex)))
            for sex in ((0.008, 0.006, 0.004), (0.007, 0.005, 0.003))
        )
    return ()


DERIVED = SYNTHETIC[7:]
BASE_YEAR = {"DummyLIFE_LinearGen": 1901} | {
    name: 2004 if name.endswith(("_Gen2o", "_b")) else 2020 if name.endswith(("dGen", "_c")) else 2010
    for name in DERIVED
    if name != "DummyLIFE_LinearGen" and "Gen" in name
}


def test_base_vectors():
    for name, want in BASE.items():
        assert not differences(name, (), 0, getattr(module, name), want)
    ages = {29: 0.00147, 30: 0.00168, 40: 0.003885, 50: 0.00735, 60: 0.014175, 65: 0.01995}
    assert {age: module._IX_M_BASE[age - 20] for age in ages} == ages
    assert module._IX_F_BASE[:3] == [0.000475, 0.00057, 0.000665]


@pytest.mark.parametrize("name", DERIVED)
def test_derived_table_follows_its_rule(name):
    assert len(DERIVED) == 27
    table = REPO_TABLES[name]
    want = decrements(name) | dict(zip(("mi_m", "mi_f"), improvement(name)))
    assert table["data"] == want
    kind = kind_of(name)
    assert (table["start_age"], table["omega"]) == ((20, 65) if kind == "SD" else (0, 100))
    assert table.get("base_year") == BASE_YEAR.get(name)
    assert table["generational"] == ("mi_m" in want)


def test_static_tables():
    data = {name: REPO_TABLES[name]["data"] for name in SYNTHETIC[:7]}
    mi_sd = steps((0.005012541823544286, 0.0020020026706730793, 0.0), (20, 15, 11))
    mi_exit = steps((0.005, 0.002, 0.0), (61, 20, 20))
    sd = {"ix_m": BASE["_IX_M_BASE"], "ix_f": BASE["_IX_F_BASE"]}
    exits = {"ox_m": BASE["_OX_M_BASE"], "ox_f": BASE["_OX_F_BASE"]}
    assert data == {
        "DummySD2015": sd,
        "DummySD2015Gen": sd | {"mi_m": mi_sd, "mi_f": mi_sd},
        "DummyEXIT": exits,
        "DummyEXIT_Gen": exits | {"mi_m": mi_exit, "mi_f": mi_exit},
        "Dummy_qx0": {"qx_m": [0.0] * 200 + [1.0], "qx_f": [0.0] * 200 + [1.0]},
        "DummyLIFE_1Sm": {"qx_m": BASE["_QX_LIFE"]},
        "DummyLIFE_1Sf": {"qx_f": BASE["_QX_LIFE"]},
    }
    years = [REPO_TABLES[name].get("base_year") for name in data]
    assert years == [None, 2005, None, 2015, None, None, None]
    assert module.Dummy_qx0["omega"] == 200


def test_telling_computed_values():
    life, exits = module.DummyLIFE_Select["data"], module.DummyEXIT_Select["data"]
    disabled = module.DummySD_Select["data"]
    assert (life["qx_m"][1][0], life["qx_m"][2][0]) == (0.0004, 0.00045000000000000004)
    assert (life["qx_m"][1][90], life["qx_m"][2][90]) == (0.2, 0.225)
    assert exits["ox_f"][1][90] == 0.17600000000000002
    assert (disabled["ix_m"][1][0], disabled["ix_m"][2][0]) == (0.00042, 0.0004725)
    ends = [disabled[key][duration][-1] for key in ("ix_m", "ix_f") for duration in (1, 2)]
    assert ends == [0.01596, 0.017955, 0.01444, 0.016245]
    linear = module.DummyLIFE_LinearGen["data"]["mi_m"]
    assert [linear[age] for age in (0, 20, 60, 70, 80, 90, 99, 100)] == [
        7.5e-07, 1.5e-06, 3e-05, 7.500000000000001e-05, 0.00017999999999999998, 0.000375, 0.000375, 0.0
    ]  # fmt: skip


def test_descriptions():
    import hashlib

    texts = "\n".join(REPO_TABLES[name]["description"] for name in SYNTHETIC)
    assert hashlib.sha256(texts.encode()).hexdigest() == (
        "5ead229171143afb600b40bbd0b192034b27c9d5f61cdbdbc6a37ee977d1f4e8"
    )


def test_rounding_is_that_of_the_builtin_of_the_import():
    """A replaced round is called for every disability rate, in order, with seven places."""
    run("""
        import builtins
        calls = []
        def round(rate, places):
            calls.append((rate, places))
            return len(calls)
        builtins.round = round
        import marlune.tables.data_tables as module
        assert module.DummySD_Select["data"]["ix_m"][1] == list(range(1, 47))
        assert module.DummySD_SelectGen_d["data"]["ix_f"][2][-1] == 920 == len(calls)
        assert {places for _, places in calls} == {7}
        assert [rate for rate, _ in calls[46:92]] == [rate * 0.9 for rate in module._IX_M_BASE]
        assert module.DummyEXIT_Select["data"]["ox_m"][1][0] == 0.0004
    """)


def test_short_way_of_rounding_agrees_with_the_builtin(tmp_path):
    """Over random rates and over halves of the seventh place, where it has to give no answer."""
    random = Random(7)
    rates = [random.random() for _ in range(20_000)]
    rates += [(random.randrange(10**7) + 0.5) / 1e7 for _ in range(20_000)]
    rates += [random.randrange(2**24) / 2**24 for _ in range(20_000)]
    rates += [0.0, -0.0, -0.25, 1.0, 1.25, 1e300, math.inf, math.nan, 5e-324]
    program = tmp_path / "rounding"
    source = r"""
        #include "payload/rounding.hpp"
        #include <cstdio>
        int main() {
          for (double rate; std::scanf("%la", &rate) == 1;) {
            const auto rounded = marlune::tables::round_clear_cut(rate);
            rounded ? std::printf("%a\n", *rounded) : std::printf("none\n");
          }
        }
    """
    compiles, errors = compile_source(source, "-O2", "-ffp-contract=off", "-o", str(program))
    assert compiles, errors
    printed = "\n".join(rate.hex() for rate in rates)
    answers = subprocess.run(program, input=printed, capture_output=True, text=True, check=True)
    lines = answers.stdout.split()
    assert len(lines) == len(rates)
    answered = [(rate, float.fromhex(line)) for rate, line in zip(rates, lines) if line != "none"]
    assert [rate for rate, got in answered if got.hex() != round(rate, 7).hex()] == []
    assert len(answered) > 40_000 and lines.count("none") > 20_000
    assert lines[-7:-5] == ["none", "0x1p+0"] and lines[-5:-1] == ["none"] * 4
