#pragma once

// What holds for every payload. A table states `static_assert(proved<TABLE>())` beside its data; when
// a rule is broken the compiler stops and prints its sentence, the column and the place in it.

#include "payload/proof.hpp"
#include "payload/rate_values.hpp"

#include <algorithm>

namespace marlune::tables::invariants {

constexpr Place place_of(const Column &column, const Entry &entry) {
  return column.shape == Shape::flat ? Place{column.key} : Place{column.key, entry.label};
}

constexpr bool has(KeyOrder order, Key key) { return std::ranges::count(order, key) == 1; }

constexpr int ages_of(const Payload &table) { return table.omega - table.start_age + 1; }

constexpr double certain(const Payload &table) { return static_cast<int>(table.unit); }

constexpr bool within(double value, double low, double high) {
  // False for every comparison with a NaN.
  return value >= low && value <= high;
}

constexpr bool covers_ages(const RateValues &rates, const Payload &table) {
  return static_cast<int>(rates.size()) == ages_of(table);
}

// The largest step of a published column up and down again, or down and up, is one by 14 %.
constexpr void prove_steps(Proof &proof, int start_age, Place place, const RateValues &rates) {
  constexpr double largest = 1.25;
  for (std::size_t index = 1; index + 1 < rates.size(); ++index) {
    const auto [low, high] = std::minmax({rates[index - 1].value, rates[index + 1].value});
    place.age = start_age + static_cast<int>(index);
    proof.require(rates[index].value <= largest * high && low <= largest * rates[index].value,
                  "a rate stands out from those of the ages before and after it", place);
  }
}

constexpr void prove_decrement_rates(Proof &proof, const Payload &table, Place place,
                                     const RateValues &rates) {
  if (!proof.require(covers_ages(rates, table),
                     "the length of a decrement column is not omega - start_age + 1", place)) {
    return;
  }
  const bool male = place.column.back() == 'm';
  for (place.age = table.start_age; place.age < table.omega; ++place.age) {
    const Number &rate = rates[static_cast<std::size_t>(place.age - table.start_age)];
    proof.require(!rate.integer, "an int before the last age of a decrement column", place);
    proof.require(within(rate.value, 0.0, certain(table)),
                  "a decrement rate is not a number between 0 and the certain decrement", place);
    const bool filled_up = male && table.deviations.male_certain_from &&
                           place.age >= *table.deviations.male_certain_from;
    proof.require((rate.value == certain(table)) == filled_up,
                  "the certain decrement stands below omega, where the table does not declare it",
                  place);
  }
  const Number &last = rates.back();
  if (table.deviations.last_decrement) {
    proof.require(last == *table.deviations.last_decrement,
                  "the last decrement is not the one that the table declares as its deviation",
                  place);
  } else if (table.table_type == TableType::disability) {
    proof.require(!last.integer && last.value > 0.0 && last.value < certain(table),
                  "a disability column does not end in an ordinary rate", place);
  } else {
    proof.require(last == Number(certain(table)),
                  "a life or exit column does not end in the certain decrement, as a float", place);
  }
  prove_steps(proof, table.start_age, place, rates);
}

constexpr void prove_improvement_rates(Proof &proof, const Payload &table, Place place,
                                       const RateValues &rates) {
  if (!proof.require(covers_ages(rates, table),
                     "the length of an improvement column is not omega - start_age + 1", place)) {
    return;
  }
  place.age = table.start_age;
  for (const Number &rate : rates) {
    proof.require(!rate.integer, "an int in an improvement column", place);
    proof.require(within(rate.value, 0.0, 0.1),
                  "an improvement rate is not a decimal from 0 to 0.1", place);
    ++place.age;
  }
  place.age = table.omega;
  proof.require(rates.back().value == 0.0, "an improvement column does not end in 0.0", place);
  prove_steps(proof, table.start_age, place, rates);
}

// Numbered durations ascending by one from 0 or 1, then "ult".
constexpr void prove_durations(Proof &proof, const Payload &table, const Column &column) {
  if (!proof.require(table.select_period.has_value(),
                     "select durations in a table that is not select")) {
    return;
  }
  const auto numbered = static_cast<std::size_t>(*table.select_period);
  if (!proof.require(column.entries.size() == numbered + 1,
                     "the number of numbered durations is not the select period",
                     Place{column.key})) {
    return;
  }
  const int first = column.entries[0].label.number;
  proof.require(first == 0 || first == 1, "the first select duration is neither 0 nor 1",
                Place{column.key});
  for (std::size_t index = 0; index < numbered; ++index) {
    proof.require(column.entries[index].label == Label(first + static_cast<int>(index)),
                  "select durations do not ascend by one",
                  Place{column.key, column.entries[index].label});
  }
  proof.require(column.entries.back().label == Label::ult(),
                "select durations do not end in \"ult\"", Place{column.key});
}

// Those just selected have a lower rate than those selected long ago; where no select rate is known
// up to omega, the ultimate one stands for it.
constexpr void prove_select_rates(Proof &proof, const Payload &table, const Column &column) {
  const RateValues ultimate = values_of(column.entries.back().rates);
  for (std::size_t duration = 0; duration + 1 < column.entries.size(); ++duration) {
    const Entry &entry = column.entries[duration];
    const RateValues select = values_of(entry.rates);
    bool completed = false;
    for (std::size_t index = 0; index + 1 < select.size(); ++index) {
      const double select_rate = select[index].value;
      const double ultimate_rate = ultimate[index].value;
      completed = completed || select_rate == ultimate_rate;
      proof.require(
          completed ? select_rate == ultimate_rate : select_rate < ultimate_rate,
          "a select rate is not below the ultimate rate of its age, nor that rate from there on",
          Place{column.key, entry.label, table.start_age + static_cast<int>(index)});
    }
  }
}

constexpr void prove_decrement(Proof &proof, const Payload &table, const Column &column) {
  if (table.select_period) {
    if (!proof.require(column.shape == Shape::select_mapping,
                       "a decrement column of a select table is not a select mapping",
                       Place{column.key})) {
      return;
    }
    prove_durations(proof, table, column);
  } else {
    if (!proof.require(column.shape == Shape::flat,
                       "a decrement column of an aggregate table is not flat", Place{column.key})) {
      return;
    }
  }
  for (const Entry &entry : column.entries) {
    prove_decrement_rates(proof, table, place_of(column, entry), values_of(entry.rates));
  }
  if (table.select_period) {
    prove_select_rates(proof, table, column);
  }
}

constexpr void prove_improvement(Proof &proof, const Payload &table, const Column &column) {
  if (!proof.require(table.formula.has_value(),
                     "improvement rates in a table that is not generational", Place{column.key})) {
    return;
  }
  switch (column.shape) {
  case Shape::flat:
    break;
  case Shape::year_grid:
    for (std::size_t year = 1; year < column.entries.size(); ++year) {
      proof.require(column.entries[year - 1].label.number < column.entries[year].label.number,
                    "the years of a grid do not ascend",
                    Place{column.key, column.entries[year].label});
    }
    break;
  case Shape::duration_grid:
    prove_durations(proof, table, column);
    break;
  case Shape::select_mapping:
    proof.require(false, "an improvement column is a select mapping", Place{column.key});
    return;
  }
  proof.require(*table.formula != Formula::projected || column.shape == Shape::year_grid,
                "projected improvement without a year for every rate", Place{column.key});
  proof.require(column.shape == Shape::flat || *table.formula == Formula::projected ||
                    *table.formula == Formula::exponential,
                "a linear or discrete improvement column is not flat", Place{column.key});
  for (const Entry &entry : column.entries) {
    proof.require(!entry.label.ultimate || column.shape == Shape::duration_grid,
                  "\"ult\" in a column without durations", Place{column.key});
    prove_improvement_rates(proof, table, place_of(column, entry), values_of(entry.rates));
  }
}

constexpr bool has_column(const Payload &table, std::string_view prefix, char sex) {
  return std::ranges::any_of(table.data, [&](const Column &column) {
    return column.key.starts_with(prefix) && column.key.back() == sex;
  });
}

constexpr std::string_view decrement_prefix(TableType type) {
  constexpr std::array<std::string_view, 3> prefixes{"qx_", "ix_", "ox_"};
  return prefixes[static_cast<std::size_t>(type)];
}

constexpr void prove_columns(Proof &proof, const Payload &table) {
  const std::string_view decrement = decrement_prefix(table.table_type);
  for (const Column &column : table.data) {
    if (!proof.require(column.key.size() == 4 && (column.key[3] == 'm' || column.key[3] == 'f'),
                       "a column key is not a symbol, an underscore and a sex")) {
      continue;
    }
    proof.require(std::ranges::count(table.data, column.key, &Column::key) == 1,
                  "two columns have the same key", Place{column.key});
    const char sex = column.key[3];
    if (column.key.starts_with("mi_")) {
      proof.require(has_column(table, decrement, sex), "improvement rates without their decrement",
                    Place{column.key});
      prove_improvement(proof, table, column);
      continue;
    }
    if (!proof.require(column.key.starts_with(decrement),
                       "a column that the table type does not have", Place{column.key})) {
      continue;
    }
    proof.require(!table.sex_independent || sex == 'm',
                  "a female column in a sex-independent table", Place{column.key});
    proof.require(!table.formula || has_column(table, "mi_", sex),
                  "a decrement of a generational table without its improvement rates",
                  Place{column.key});
    prove_decrement(proof, table, column);
  }
}

constexpr void prove_metadata(Proof &proof, const Payload &table) {
  for (const Key key : table.order) {
    proof.require(has(table.order, key), "a metadata key stands twice");
  }
  for (const Key key :
       {Key::table_name, Key::table_type, Key::generational, Key::decrement_scale_factor,
        Key::omega, Key::start_age, Key::description}) {
    proof.require(has(table.order, key), "a metadata key that every table has is missing");
  }
  proof.require(!table.attribute.empty() && !table.table_name.empty() && !table.description.empty(),
                "a name or the description is empty");
  const bool generational = table.formula.has_value();
  const bool odd = table.deviations.base_year_none_and_no_mi_scale_factor;
  proof.require(!(odd && generational), "a generational table without base year");
  proof.require(table.base_year.has_value() == generational,
                "a base year without improvement rates, or improvement rates without a base year");
  proof.require(has(table.order, Key::base_year) == (generational || odd),
                "the key order and the table disagree on base_year");
  proof.require(has(table.order, Key::mi_scale_factor) != odd,
                "the key order and the table disagree on mi_scale_factor");
  proof.require(has(table.order, Key::generational_formula_type) == generational,
                "the key order and the table disagree on generational_formula_type");
  proof.require(has(table.order, Key::select) == table.select_period.has_value() &&
                    has(table.order, Key::select_period) == table.select_period.has_value(),
                "the key order and the table disagree on select and select_period");
  proof.require(has(table.order, Key::sex_independent) == table.sex_independent,
                "the key order and the table disagree on sex_independent");
  proof.require(0 <= table.start_age && table.start_age < table.omega,
                "start_age is not an age below omega");
}

constexpr void prove(Proof &proof, const Payload &table) {
  prove_metadata(proof, table);
  proof.require(table.data.empty() == table.data_source.has_value(),
                "a table has columns of its own or takes its data from elsewhere, not both");
  if (!table.data_source) {
    prove_columns(proof, table);
  }
}

// As the decrement column that it is in tables.
constexpr void prove(Proof &proof, const BaseVector &vector) {
  prove_decrement_rates(proof,
                        {.attribute = vector.name,
                         .table_type = vector.table_type,
                         .omega = vector.omega,
                         .start_age = vector.start_age},
                        Place{vector.name}, values_of(vector.rates));
}

} // namespace marlune::tables::invariants
