// Breaks every rule that payload descriptions are proved by, one after the other, and prints for each
// break a part of the sentence that should answer it, a tab, and the answer.

#include "dav2004r/columns.hpp"
#include "inventory.hpp"
#include "payload/decimals.hpp"
#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"

#include <cmath>
#include <cstdio>
#include <iterator>
#include <list>
#include <vector>

namespace {

using namespace marlune::tables;
using Columns = Bounded<Column, 4>;

Rates ages(Number at_65, Number at_66, Number at_67, Number at_68) {
  return levels({{at_65, 1}, {at_66, 1}, {at_67, 1}, {at_68, 1}});
}
const Rates first = ages(0.1, 0.2, 0.4, 1.0), second = ages(0.2, 0.3, 0.5, 1.0);
const Rates ultimate = ages(0.3, 0.4, 0.6, 1.0), trend = ages(0.1, 0.01, 0.0, 0.0);
constexpr std::string_view two[] = {"A", "B"}, other[] = {"A", "C"}, twice[] = {"A", "A"};
constexpr Number half[] = {0.00000005};
constexpr Number wrong[] = {-3.0, 5.0};
const Column qx_m = flat("qx_m", ultimate), mi_m = flat("mi_m", trend);
const Column by_select =
    select_mapping("qx_m", {{1, first}, {2, second}, {Label::ult(), ultimate}});
const Column grid = year_grid("mi_m", {{2020, trend}, {2021, trend}});

// Three tables that keep every rule: select and generational, aggregate and generational, static.
Payload selected() {
  return {.attribute = "T",
          .order = key_order::formula_first_select,
          .table_name = "T",
          .base_year = 2020,
          .formula = Formula::exponential,
          .select_period = 2,
          .omega = 68,
          .start_age = 65,
          .description = "A table",
          .data = {by_select, grid}};
}
Payload aggregate() {
  Payload table = selected();
  table.order = key_order::formula_first;
  table.select_period.reset();
  table.data = {qx_m, grid};
  return table;
}
Payload fixed() {
  Payload table = aggregate();
  table.order = key_order::static_table;
  table.base_year.reset();
  table.formula.reset();
  table.data = {qx_m};
  return table;
}

void must_hold(const auto &description) {
  const auto proof = proof_of(description);
  invariants::require(proof.holds(), proof.broken());
}

template <Payload make(), class Change> void expect(const char *rule, Change change) {
  Payload table = make();
  const char *answer = "";
  try {
    must_hold(table);
    change(table);
    must_hold(table);
  } catch (const char *sentence) {
    answer = sentence;
  }
  std::printf("%s\t%s\n", rule, answer);
}
#define BREAK(rule, table, ...)                                                                    \
  expect<table>(rule, []([[maybe_unused]] Payload &t) { __VA_ARGS__; })

Columns qx(Number at_65, Number at_66, Number at_67, Number at_68) {
  return {flat("qx_m", ages(at_65, at_66, at_67, at_68))};
}
Columns mi(Number at_65, Number at_66, Number at_67, Number at_68) {
  return {qx_m, flat("mi_m", ages(at_65, at_66, at_67, at_68))};
}
Columns durations(Label one, Label two, Label last) {
  return {select_mapping("qx_m", {{one, first}, {two, second}, {last, ultimate}}), grid};
}
Columns second_duration(Number at_65, Number at_66, Number at_67, Number at_68) {
  const Rates rates = ages(at_65, at_66, at_67, at_68);
  return {select_mapping("qx_m", {{1, first}, {2, rates}, {Label::ult(), ultimate}}), grid};
}
const Column no_ult = duration_grid("mi_m", {{1, trend}, {2, trend}, {3, trend}});

// A column of DAV 2004 R, cut and with another rate at the age of 60.
bool dav(std::size_t length, Number at_60) {
  std::vector<Number> column(std::begin(dav2004r::qx_agg_1o_m), std::end(dav2004r::qx_agg_1o_m));
  column[60] = at_60;
  return dav2004r::closes_with(Literals(column).first(length), 1);
}

// The keys of a static table without some, then others.
KeyOrder keys(std::optional<Key> without, std::vector<Key> more = {}) {
  static std::list<std::vector<Key>> orders; // a description holds no keys of its own
  orders.push_back(std::move(more));
  std::ranges::copy_if(key_order::static_table, std::back_inserter(orders.back()),
                       [=](Key each) { return each != without; });
  return orders.back();
}

} // namespace

int main() {
  BREAK("a metadata key stands twice", fixed, t.order = keys({}, {Key::omega}));
  BREAK("that every table has is missing", fixed, t.order = keys(Key::omega));
  BREAK("a name or the description is empty", fixed, t.attribute = "");
  BREAK("a name or the description is empty", fixed, t.table_name = "");
  BREAK("a name or the description is empty", fixed, t.description = "");
  BREAK("without base year", aggregate, t.deviations.base_year_none_and_no_mi_scale_factor = true);
  BREAK("or improvement rates without a base year", aggregate, t.base_year.reset());
  BREAK("a base year without improvement rates", fixed, t.base_year = 2020);
  BREAK("on base_year", fixed, t.order = key_order::static_with_base_year);
  BREAK("on base_year", aggregate, t.order = key_order::static_table);
  BREAK("on mi_scale_factor", fixed, t.order = keys(Key::mi_scale_factor));
  BREAK("on generational_formula_type", fixed,
        t.order = keys({}, {Key::generational_formula_type}));
  BREAK("on select and", fixed, t.order = keys({}, {Key::select}));
  BREAK("on select and", fixed, t.order = keys({}, {Key::select_period}));
  BREAK("on sex_independent", fixed, t.order = key_order::sex_independent_first);
  BREAK("on sex_independent", fixed, t.sex_independent = true);
  BREAK("start_age is not an age below omega", fixed, t.start_age = -1);
  BREAK("start_age is not an age below omega", fixed, t.start_age = 68);

  BREAK("has columns of its own or", fixed, t.data = {});
  BREAK("has columns of its own or", fixed, t.data_source = DataSource{"a", "b"});
  BREAK("a column key is not", fixed, t.data = {flat("qx_x", ultimate)});
  BREAK("a column key is not", fixed, t.data = {flat("qx_mm", ultimate)});
  BREAK("two columns have the same key", fixed, t.data = (Columns{qx_m, qx_m}));
  BREAK("table type does not have", fixed, t.data = {flat("ix_m", ultimate)});
  BREAK("in a table that is not generational", fixed, t.data = (Columns{qx_m, mi_m}));
  BREAK("without their decrement", aggregate, t.data.push_back(flat("mi_f", trend)));
  BREAK("without its improvement", aggregate, t.data.push_back(flat("qx_f", ultimate)));
  BREAK("a female column", fixed, t.order = key_order::sex_independent_first;
        t.sex_independent = true; t.data = {flat("qx_f", ultimate)});

  BREAK("length of a decrement column", fixed, t.omega = 69);
  BREAK("covers no age", fixed, t.data = {flat("qx_m", levels({{0.5, 3}, {0.5, 0}, {1.0, 1}}))});
  BREAK("an int before the last age", fixed, t.data = qx(0, 0.4, 0.6, 1.0));
  BREAK("not a number between 0 and", fixed, t.data = qx(-0.1, 0.4, 0.6, 1.0));
  BREAK("not a number between 0 and", fixed, t.data = qx(0.3, NAN, 0.6, 1.0));
  BREAK("not a number between 0 and", fixed, t.data = qx(0.3, 0.4, 1.1, 1.0));
  BREAK("stands below omega", fixed, t.data = qx(0.3, 0.4, 1.0, 1.0));
  BREAK("stands below omega", fixed, t.deviations.male_certain_from = 67);
  BREAK("stands out from those", fixed, t.data = qx(0.3, 0.8, 0.6, 1.0));
  BREAK("stands out from those", fixed, t.data = qx(0.3, 0.2, 0.6, 1.0));
  BREAK("stands out from those", aggregate, t.data = mi(0.001, 0.01, 0.0, 0.0));
  BREAK("the certain decrement, as a float", fixed, t.data = qx(0.3, 0.4, 0.6, 1));
  BREAK("the certain decrement, as a float", fixed, t.data = qx(0.3, 0.4, 0.6, 0.9));
  BREAK("the certain decrement, as a float", fixed, t.unit = Unit::per_mille);
  BREAK("declares as its deviation", fixed, t.deviations.last_decrement = 0.9);
  BREAK("declares as its deviation", fixed, t.deviations.last_decrement = 1);
  BREAK("ordinary rate", fixed, t.table_type = TableType::disability;
        t.data = {flat("ix_m", ultimate)});
  BREAK("ordinary rate", fixed, t.table_type = TableType::disability;
        t.data = {flat("ix_m", trend)});

  BREAK("length of an improvement column", aggregate,
        t.data = (Columns{qx_m, flat("mi_m", levels({{0.0, 5}}))}));
  BREAK("an int in an improvement column", aggregate, t.data = mi(0.01, 0, 0.0, 0.0));
  BREAK("an int in an improvement column", aggregate, t.data = mi(0.01, 0.0, 0.0, 0));
  BREAK("a decimal from 0 to 0.1", aggregate, t.data = mi(0.11, 0.0, 0.0, 0.0));
  BREAK("a decimal from 0 to 0.1", aggregate, t.data = mi(0.01, -0.01, 0.0, 0.0));
  BREAK("does not end in 0.0", aggregate, t.data = mi(0.01, 0.01, 0.01, 0.01));

  BREAK("an aggregate table is not flat", aggregate, t.data = (Columns{by_select, grid}));
  BREAK("is not a select mapping", selected, t.data = (Columns{qx_m, grid}));
  BREAK("an improvement column is a select mapping", selected,
        t.data = (Columns{by_select, select_mapping("mi_m", {{1, trend}})}));
  BREAK("the years of a grid do not ascend", aggregate,
        t.data = (Columns{qx_m, year_grid("mi_m", {{2021, trend}, {2021, trend}})}));
  BREAK("in a column without durations", aggregate,
        t.data = (Columns{qx_m, year_grid("mi_m", {{Label::ult(), trend}})}));
  BREAK("discrete improvement column is not flat", aggregate, t.formula = Formula::linear);
  BREAK("discrete improvement column is not flat", aggregate, t.formula = Formula::discrete);
  BREAK("without a year for every rate", aggregate, t.formula = Formula::projected;
        t.data = (Columns{qx_m, mi_m}));

  BREAK("is not the select period", selected, t.select_period = 3);
  BREAK("neither 0 nor 1", selected, t.data = durations(2, 3, 4));
  BREAK("do not ascend by one", selected, t.data = durations(1, 3, Label::ult()));
  BREAK("do not ascend by one", selected, t.data = durations(Label::ult(), 1, Label::ult()));
  BREAK("do not end in", selected, t.data = durations(0, 1, 2));
  BREAK("do not end in", selected, t.data = (Columns{by_select, no_ult}));
  BREAK("in a table that is not select", aggregate, t.data = (Columns{qx_m, no_ult}));
  BREAK("is not below the ultimate", selected, t.data = second_duration(0.2, 0.5, 0.6, 1.0));
  BREAK("nor that rate from there on", selected, t.data = second_duration(0.3, 0.3, 0.6, 1.0));

  BREAK("does not cover the ages 0 to 121", fixed, dav(121, 0.5));
  BREAK("is not a float between 0 and 1", fixed, dav(122, 0));
  BREAK("is not a float between 0 and 1", fixed, dav(122, 1.0));
  BREAK("is not a float between 0 and 1", fixed, dav(122, 0.0));
  BREAK("stands out from those", fixed, dav(122, 0.5));

  BREAK("length of a decrement column", fixed,
        must_hold(BaseVector{"_M", TableType::life, 0, 1, {}}));
  BREAK("a number between 0 and", fixed, must_hold(BaseVector{"_M", TableType::life, 0, 1, wrong}));
  BREAK("that the inventory does not list", fixed, must_hold(Lists{Names(two).first(1), two}));
  BREAK("that the body does not bind", fixed, must_hold(Lists{two, other}));
  BREAK("binds two tables under", fixed, must_hold(Lists{two, twice}));
  BREAK("lists a table twice", fixed, must_hold(Lists{twice, two}));

  // What a description cannot come to as long as the rest holds, and what rules are computed with.
  BREAK("enumeration does not have", fixed, Rates odd; odd.origin = Rates::Origin{99};
        values_of(odd));
  BREAK("can round", fixed, BaseVector base{.rates = half}; values_of(rounded(base, 1.0)));
  BREAK("more decimals than", fixed, count_of(0.125, 2));
  BREAK("more digits than", fixed, decimal((std::int64_t{1} << 53) + 1, 0));
  BREAK("more digits than", fixed, decimal(1, 16));
  BREAK("has room for", fixed, t.data = (Columns{qx_m, qx_m, qx_m, qx_m, qx_m}));
  BREAK("has room for", fixed, Columns(&qx_m, 5));
}
