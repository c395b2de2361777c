"""Payload descriptions are proved by the compiler: each rule, and that it stops the compiler."""

import re
import subprocess
from pathlib import Path

from compiler import SOURCE, compile_source

RULES = Path(__file__).with_name("rules.cpp").read_text(encoding="utf-8")


def test_every_rule_answers_what_breaks_it(tmp_path):
    program = tmp_path / "rules"
    compiles, errors = compile_source(RULES, "-o", str(program))
    assert compiles, errors
    printed = subprocess.run(program, capture_output=True, text=True, check=True).stdout
    answers = [line.split("\t") for line in printed.splitlines()]
    assert [pair for pair in answers if pair[0] not in pair[1]] == []
    proved = "invariants rate_values rounding decimals bounded".split()
    names = ["inventory.hpp", "dav2004r/columns.hpp", *map("payload/{}.hpp".format, proved)]
    headers = [SOURCE / name for name in names]
    proofs = "".join(path.read_text(encoding="utf-8") for path in headers)
    sentences = re.findall(r'(?:throw|,)\s+((?:"(?:\\.|[^"\\])*"\s*)+)(?:,|\)?;|\)\) \{)', proofs)
    written = {"".join(re.findall(r'"((?:\\.|[^"\\])*)"', each)) for each in sentences}
    written = {sentence for sentence in written if " " in sentence}
    assert {sentence.replace('"', r"\"") for _, sentence in answers} == written


def test_table_that_breaks_a_rule_does_not_compile():
    """The compiler says which rule, of which column, in which year or duration, at which age."""
    for rate, answers in (
        ("0.02", ()),
        ("0.2", ("not a decimal from 0 to 0.1: mi_f, 2021, age 66",)),
        ("0.04", ("ages before and after it: mi_f, 2021, age 66",)),
    ):
        compiles, errors = compile_source(
            f"""
            #include "payload/invariants.hpp"
            #include "payload/key_orders.hpp"
            namespace marlune::tables {{
            constexpr Number trend[] = {{0.03, {rate}, 0.01, 0.0}};
            constexpr Payload table{{
                .attribute = "T", .order = key_order::formula_first, .table_name = "T",
                .base_year = 2020, .formula = Formula::projected, .omega = 68, .start_age = 65,
                .description = "A table",
                .data = {{flat("qx_f", levels({{{{0.5, 3}}, {{1.0, 1}}}})),
                         year_grid("mi_f", {{{{2021, literal(trend)}}}})}}}};
            static_assert(proved<table>());
            }}""",
            "-fsyntax-only",
        )
        assert compiles == (not answers), errors
        assert all(answer in errors for answer in answers), errors
