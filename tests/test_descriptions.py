"""The rules of payload descriptions are proved by the compiler: what breaks one does not compile."""

import pytest
from compiler import compile_source

# A select-generational table that keeps every rule, built up so that each case changes one thing.
TABLE = """
#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"
namespace marlune::tables {
constexpr Number first[] = {0.1, 0.2, 0.4, 1.0};
constexpr Number second[] = {0.2, 0.3, 0.5, 1.0};
constexpr Number ultimate[] = {0.3, 0.4, 0.6, 1.0};
constexpr Number trend[] = {0.02, 0.01, 0.0, 0.0};
constexpr Payload table = [] {
  Payload payload{
    .attribute = "Table",
    .order = key_order::formula_first_select,
    .table_name = "Table",
    .base_year = 2020,
    .formula = Formula::exponential,
    .select_period = 2,
    .omega = 68,
    .start_age = 65,
    .description = "A table",
    .data = {
      select_mapping("qx_m", {{1, literal(first)}, {2, literal(second)},
                              {Label::ult(), literal(ultimate)}}),
      year_grid("mi_m", {{2020, literal(trend)}, {2021, levels({{0.01, 3}, {0.0, 1}})}})},
  };
  return payload;
}();
static_assert(proved(table));
}
"""

BAD = {
    "the length of a decrement column is not omega - start_age + 1": (".omega = 68", ".omega = 69"),
    "a decrement rate is not a number between 0 and the certain decrement": ("0.5,", "-0.5,"),
    "the certain decrement stands below omega": ("0.3, 0.4, 0.6", "0.3, 0.4, 1.0"),
    "does not end in the certain decrement, as a float": ("0.6, 1.0}", "0.6, 1}"),
    "an int before the last age of a decrement column": ("{0.1, 0.2", "{0, 0.2"),
    "the length of an improvement column is not omega - start_age + 1": ("{0.01, 3}", "{0.01, 2}"),
    "an improvement column does not end in 0.0": ("0.0, 0.0}", "0.0, 0.01}"),
    "an improvement rate is not a decimal from 0 to 0.1": ("0.02,", "20.0,"),
    "an int in an improvement column": ("0.0, 0.0}", "0.0, 0}"),
    "a level of rates covers no age": ("{0.01, 3}", "{0.01, 3}, {0.01, 0}"),
    "the years of a grid do not ascend": ("{2021, levels", "{2020, levels"),
    "select durations do not ascend by one": ("{2, literal", "{3, literal"),
    "select durations do not end in": ("{Label::ult(), literal", "{3, literal"),
    "the first select duration is neither 0 nor 1": ("{1, literal", "{2, literal"),
    "the number of numbered durations is not the select period": ("select_period = 2", "select_period = 3"),
    "a select rate is not below the ultimate rate of its age": ("0.2, 0.3, 0.5", "0.2, 0.4, 0.5"),
    "a decrement column of an aggregate table is not flat": (
        ".order = key_order::formula_first_select", ".order = key_order::formula_first"
    ),
    "a base year without improvement rates": (".formula = Formula::exponential,", ""),
    "or improvement rates without a base year": (".base_year = 2020,", ""),
    "the key order and the table disagree on mi_scale_factor": (
        "key_order::formula_first_select", "key_order::static_with_base_year"
    ),
    "the key order and the table disagree on select and select_period": (
        "key_order::formula_first_select", "key_order::formula_first"
    ),
    "the key order and the table disagree on sex_independent": (
        ".select_period = 2,", ".select_period = 2, .sex_independent = true,"
    ),
    "the key order and the table disagree on base_year": (
        "key_order::formula_first_select", "key_order::select_after_generational"
    ),
    "a linear or discrete improvement column is not flat": ("Formula::exponential", "Formula::linear"),
    "projected improvement without a year for every rate": (
        'year_grid("mi_m", {{2020, literal(trend)}, {2021, levels({{0.01, 3}, {0.0, 1}})}})',
        'flat("mi_m", literal(trend))',
    ),
    "a decrement of a generational table without its improvement rates": ('"mi_m"', '"mi_f"'),
    "a column that the table type does not have": ('"qx_m"', '"ix_m"'),
    "two columns have the same key": ('year_grid("mi_m"', 'year_grid("qx_m"'),
    "an improvement column is a select mapping": ('year_grid("mi_m"', 'select_mapping("mi_m"'),
    "a name or the description is empty": ('"A table"', '""'),
    "start_age is not an age below omega": (".start_age = 65", ".start_age = -1"),
}  # fmt: skip


def test_table_that_keeps_the_rules_compiles():
    compiles, errors = compile_source(TABLE, "-fsyntax-only")
    assert compiles, errors


@pytest.mark.parametrize("sentence", BAD)
def test_table_that_breaks_a_rule_does_not_compile(sentence):
    good, bad = BAD[sentence]
    source = TABLE.replace(good, bad, 1)
    assert source != TABLE
    if "projected" in sentence:
        source = source.replace("Formula::exponential", "Formula::projected")
    if sentence.endswith("is not flat") and "aggregate" in sentence:
        source = source.replace(".select_period = 2,", "")
    compiles, errors = compile_source(source, "-fsyntax-only")
    assert not compiles
    assert sentence in errors, errors

