#pragma once

// The payload record: how a table of the module is described. A description is a constexpr value
// that exists for the compiler only: it is proved (payload/invariants.hpp), then resolved into a
// plan (payload/plan_builder.hpp), from which the import makes the interpreter's objects
// (payload/object_maker.hpp).

#include "payload/bounded.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace marlune::tables {

// A number as it is written in a table: 1.0 becomes a float of the interpreter, 1 an int.
struct Number {
  double value = 0.0;
  bool integer = false;

  constexpr Number() = default;
  // Implicit, so that a column reads like the printed page.
  constexpr Number(double written) : value(written) {}
  constexpr Number(int written) : value(written), integer(true) {}

  constexpr bool operator==(const Number &) const = default;
};

using Literals = std::span<const Number>;

enum class TableType : std::uint8_t { life, disability, exit };

// A list that the module binds under a name of its own and that many tables hold as a column. Its
// rates are decimal.
struct BaseVector {
  std::string_view name;
  TableType table_type = TableType::life;
  int start_age = 0;
  int omega = 0;
  Literals rates;
};

// One rate for a number of ages in a row.
struct Level {
  Number rate;
  int ages = 0;
};

// How one list of rates, one entry per age, comes about.
struct Rates {
  enum class Origin : std::uint8_t {
    literal,              // a new list of the printed values
    levels,               // a new list of constant stretches
    shared,               // the list bound under the base vector's name: passed on, not copied
    scaled_below_certain, // a new list: base rate × factor, but 1.0 where the base rate is 1.0 or more
    rounded,              // a new list: round(base rate × factor, 7)
    proportional,         // a new list: base rate × factor below omega, then 0.0
  };

  Origin origin = Origin::literal;
  Literals literals{};
  Bounded<Level, 4> levels{};
  const BaseVector *base = nullptr;
  double factor = 1.0;
};

constexpr Rates literal(Literals literals) {
  return {.origin = Rates::Origin::literal, .literals = literals};
}
constexpr Rates levels(std::initializer_list<Level> levels) {
  return {.origin = Rates::Origin::levels, .levels = levels};
}
constexpr Rates shared(const BaseVector &base) {
  return {.origin = Rates::Origin::shared, .base = &base};
}
constexpr Rates scaled_below_certain(const BaseVector &base, double factor) {
  return {.origin = Rates::Origin::scaled_below_certain, .base = &base, .factor = factor};
}
constexpr Rates rounded(const BaseVector &base, double factor) {
  return {.origin = Rates::Origin::rounded, .base = &base, .factor = factor};
}
constexpr Rates proportional(const BaseVector &base, double factor) {
  return {.origin = Rates::Origin::proportional, .base = &base, .factor = factor};
}

// The key of one list inside a column: a select duration, a calendar year, or "ult".
struct Label {
  int number = 0;
  bool ultimate = false;

  constexpr Label() = default;
  constexpr Label(int duration_or_year) : number(duration_or_year) {}
  constexpr bool operator==(const Label &) const = default;

  static constexpr Label ult() {
    Label label;
    label.ultimate = true;
    return label;
  }
};

struct Entry {
  Label label;
  Rates rates;
};

enum class Shape : std::uint8_t {
  flat,           // one list
  select_mapping, // dict: select durations ascending, then "ult"; decrements only
  year_grid,      // dict: calendar years ascending; improvement rates only
  duration_grid,  // dict with the keys of the select mapping; improvement rates only
};

struct Column {
  std::string_view key;
  Shape shape = Shape::flat;
  Bounded<Entry, 16> entries{};
};

constexpr Column flat(std::string_view key, const Rates &rates) {
  return {.key = key, .shape = Shape::flat, .entries = {Entry{Label{}, rates}}};
}
constexpr Column select_mapping(std::string_view key, std::initializer_list<Entry> entries) {
  return {.key = key, .shape = Shape::select_mapping, .entries = entries};
}
constexpr Column year_grid(std::string_view key, std::initializer_list<Entry> entries) {
  return {.key = key, .shape = Shape::year_grid, .entries = entries};
}
constexpr Column duration_grid(std::string_view key, std::initializer_list<Entry> entries) {
  return {.key = key, .shape = Shape::duration_grid, .entries = entries};
}

enum class Formula : std::uint8_t { exponential, linear, discrete, projected };

// The unit of the decrement columns; improvement rates are always decimals.
enum class Unit : int { decimal = 1, per_mille = 1000 };

constexpr std::string_view text_of(TableType type) {
  constexpr std::array<std::string_view, 3> texts{"life", "disability", "exit"};
  return texts[static_cast<std::size_t>(type)];
}
constexpr std::string_view text_of(Formula formula) {
  constexpr std::array<std::string_view, 4> texts{"exponential_improvement", "linear_improvement",
                                                  "discrete_improvement", "projected_improvement"};
  return texts[static_cast<std::size_t>(formula)];
}

// The metadata keys of a payload; "data" is not among them because it always comes last.
enum class Key : std::uint8_t {
  table_name,
  table_type,
  base_year,
  generational,
  select,
  select_period,
  sex_independent,
  decrement_scale_factor,
  mi_scale_factor,
  omega,
  start_age,
  generational_formula_type,
  description,
};

constexpr std::string_view text_of(Key key) {
  constexpr std::array<std::string_view, 13> texts{
      "table_name",      "table_type",    "base_year",       "generational",
      "select",          "select_period", "sex_independent", "decrement_scale_factor",
      "mi_scale_factor", "omega",         "start_age",       "generational_formula_type",
      "description"};
  return texts[static_cast<std::size_t>(key)];
}

using KeyOrder = std::span<const Key>;

// A dict that the module has bound earlier and that a payload takes its "data" from.
struct DataSource {
  std::string_view attribute;
  std::string_view key;
};

// Where a published table deviates from the rules that hold for all others. Each deviation is declared
// by the one table that has it; the rules themselves know no table.
struct Deviations {
  // What both decrement columns hold at omega in place of the certain decrement as a float.
  std::optional<Number> last_decrement{};
  // The age from which the male column is filled up with the certain decrement.
  std::optional<int> male_certain_from{};
  // "base_year" is there and None, and "mi_scale_factor" is not there at all.
  bool base_year_none_and_no_mi_scale_factor = false;
};

// One table. Presence of a key in the payload is what its key order says; `generational`,
// `mi_scale_factor` and "data" follow from the rest.
struct Payload {
  std::string_view attribute{}; // the name under which the module binds the payload
  KeyOrder order{};
  std::string_view table_name{};
  TableType table_type = TableType::life;
  std::optional<int> base_year{};
  std::optional<Formula> formula{}; // generational tables only
  std::optional<int> select_period{};
  bool sex_independent = false;
  Unit unit = Unit::decimal;
  int omega = 0;
  int start_age = 0;
  std::string_view description{};
  Bounded<Column, 4> data{};
  std::optional<DataSource> data_source{}; // in place of `data`
  Deviations deviations{};
};

} // namespace marlune::tables
