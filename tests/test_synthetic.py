"""The synthetic tables: telling values of the rules that make them, and rounding."""

import math
import subprocess
from random import Random

import marlune.tables.data_tables as module
from compiler import compile_source
from snippets import run


def test_telling_computed_values():
    ages = {29: 0.00147, 30: 0.00168, 40: 0.003885, 50: 0.00735, 60: 0.014175, 65: 0.01995}
    assert {age: module._IX_M_BASE[age - 20] for age in ages} == ages
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
        7.5e-07, 1.5e-06, 3e-05, 7.500000000000001e-05, 0.00017999999999999998,
        0.000375, 0.000375, 0.0,
    ]  # fmt: skip


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


def test_rules_give_at_import_what_the_compiler_has_computed():
    """Replaced builtins bring the rules about, for every computed list; they make new floats."""
    replaced = """
        import builtins
        zip, round = builtins.zip, builtins.round
        builtins.zip, builtins.round = lambda *each: zip(*each), lambda *each: round(*each)
    """
    digest = """
        from tools.digest import digest_of
        import marlune.tables.data_tables as module
        print(*digest_of(module))
    """
    (known, few, _), (computed, many, _) = run(digest).split(), run(replaced + digest).split()
    assert computed == known
    assert int(many) - int(few) > 5_000


def test_rounding_of_the_compiler_agrees_with_the_builtin(tmp_path):
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
