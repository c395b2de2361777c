#pragma once

// The vocabulary in which the synthetic tables are stated, each as one short statement: a kind of
// decrement with its ages and base vectors, and the columns that the tables repeat. Synthetic
// tables exist to exercise every shape that a consumer accepts; no rate of them is from a
// publication.

#include "payload/record.hpp"

#include "synthetic/base_vectors.hpp"

namespace marlune::tables::synthetic {

// A decrement with the ages and the base vectors that all its derived tables share.
struct Decrement {
  TableType type;
  std::string_view key_m;
  std::string_view key_f;
  const BaseVector &base_m;
  const BaseVector &base_f;
  int start_age;
  int omega;
};

inline constexpr Decrement life{TableType::life, "qx_m", "qx_f", qx_life, qx_life, 0, 100};
inline constexpr Decrement disability{TableType::disability, "ix_m", "ix_f", ix_m, ix_f, 20, 65};
inline constexpr Decrement exit{TableType::exit, "ox_m", "ox_f", ox_m, ox_f, 0, 100};

// The same rate at every age below omega, then 0.0.
constexpr Rates constant(const Decrement &decrement, double rate) {
  return levels({{rate, decrement.omega - decrement.start_age}, {0.0, 1}});
}

// `young` below the age, `old` from it to omega, then 0.0.
constexpr Rates step_at(const Decrement &decrement, int age, double young, double old) {
  return levels({{young, age - decrement.start_age}, {old, decrement.omega - age}, {0.0, 1}});
}

// A year grid whose rate is the same at every age.
struct YearRate {
  int year;
  double rate;
};
constexpr Column constant_years(std::string_view key, const Decrement &decrement,
                                std::initializer_list<YearRate> rates) {
  Column grid = year_grid(key, {});
  for (const YearRate &of_year : rates) {
    grid.entries.push_back({of_year.year, constant(decrement, of_year.rate)});
  }
  return grid;
}

// The rates of the projected tables; DummySD_ProjectedGen alone has its own.
constexpr Column projected_m(const Decrement &decrement) {
  return constant_years(
      "mi_m", decrement,
      {{2021, 0.015}, {2022, 0.015}, {2023, 0.014}, {2024, 0.013}, {2025, 0.012}});
}
constexpr Column projected_f(const Decrement &decrement) {
  return constant_years("mi_f", decrement,
                        {{2021, 0.012}, {2022, 0.012}, {2023, 0.011}, {2024, 0.01}, {2025, 0.009}});
}

// The grid of the exponential tables by calendar year, for either sex.
constexpr Column falling_years(std::string_view key, const Decrement &decrement) {
  return constant_years(key, decrement, {{2004, 0.005}, {2014, 0.0035}, {2024, 0.002}});
}

// A duration grid whose rate is the same at every age.
constexpr Column constant_durations(std::string_view key, const Decrement &decrement,
                                    double duration_1, double duration_2, double ultimate) {
  return duration_grid(key, {{1, constant(decrement, duration_1)},
                             {2, constant(decrement, duration_2)},
                             {Label::ult(), constant(decrement, ultimate)}});
}

// The base rates at a discount: certain decrement stays certain; disability rates, which have no
// certain end, are rounded to seven places.
constexpr Rates discounted(const Decrement &decrement, const BaseVector &base, double factor) {
  return decrement.type == TableType::disability ? rounded(base, factor)
                                                 : scaled_below_certain(base, factor);
}

// 80 % of the base rates in the first policy year, 90 % in the second, then the base vector itself.
constexpr Column select(std::string_view key, const Decrement &decrement, const BaseVector &base) {
  return select_mapping(key, {{1, discounted(decrement, base, 0.8)},
                              {2, discounted(decrement, base, 0.9)},
                              {Label::ult(), shared(base)}});
}

constexpr Column aggregate_m(const Decrement &decrement) {
  return flat(decrement.key_m, shared(decrement.base_m));
}
constexpr Column aggregate_f(const Decrement &decrement) {
  return flat(decrement.key_f, shared(decrement.base_f));
}
constexpr Column select_m(const Decrement &decrement) {
  return select(decrement.key_m, decrement, decrement.base_m);
}
constexpr Column select_f(const Decrement &decrement) {
  return select(decrement.key_f, decrement, decrement.base_f);
}

// What all synthetic tables have in common; the name under which one is bound is its table_name.
constexpr Payload table(std::string_view name, KeyOrder order, const Decrement &decrement,
                        std::string_view description) {
  return {.attribute = name,
          .order = order,
          .table_name = name,
          .table_type = decrement.type,
          .omega = decrement.omega,
          .start_age = decrement.start_age,
          .description = description};
}

} // namespace marlune::tables::synthetic
