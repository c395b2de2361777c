#pragma once

// The generational synthetic tables over the base vectors: for every decrement one with linear, one
// with discrete and one with projected improvement, and two with exponential improvement by
// calendar year (Gen2o). Every improvement list and grid is new; the decrement columns are the base
// vectors' lists.

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"

#include "synthetic/vocabulary.hpp"

namespace marlune::tables::synthetic {

constexpr Payload generational(std::string_view name, const Decrement &decrement, Formula formula,
                               int base_year, std::string_view description, const Column &mi_m,
                               const Column &mi_f) {
  Payload payload = table(name, key_order::formula_first, decrement, description);
  payload.formula = formula;
  payload.base_year = base_year;
  payload.data = {aggregate_m(decrement), aggregate_f(decrement), mi_m, mi_f};
  return payload;
}

// The same improvement, by age, for both sexes, in two lists.
constexpr Payload generational(std::string_view name, const Decrement &decrement, Formula formula,
                               int base_year, std::string_view description, const Rates &mi) {
  return generational(name, decrement, formula, base_year, description, flat("mi_m", mi),
                      flat("mi_f", mi));
}

// The base year 1901 is meant: far from that of the other linear tables.
inline constexpr Payload DummyLIFE_LinearGen = generational(
    "DummyLIFE_LinearGen", life, Formula::linear, 1901,
    "Dummy generational life table with linear improvement. Synthetic data, not suitable for "
    "production. For testing purposes only.",
    proportional(qx_life, 0.0015));
static_assert(proved<DummyLIFE_LinearGen>());

inline constexpr Payload DummyLIFE_DiscreteGen = generational(
    "DummyLIFE_DiscreteGen", life, Formula::discrete, 2010,
    "Dummy generational life table with discrete improvement. Synthetic data, not suitable for "
    "production. For testing purposes only.",
    step_at(life, 80, 0.005, 0.002));
static_assert(proved<DummyLIFE_DiscreteGen>());

inline constexpr Payload DummyLIFE_ProjectedGen = generational(
    "DummyLIFE_ProjectedGen", life, Formula::projected, 2020,
    "Dummy generational life table with projected improvement (period projection). Synthetic "
    "data, not suitable for production. For testing purposes only.",
    projected_m(life), projected_f(life));
static_assert(proved<DummyLIFE_ProjectedGen>());

inline constexpr Payload DummySD_LinearGen = generational(
    "DummySD_LinearGen", disability, Formula::linear, 2010,
    "Dummy generational disability table with linear improvement (ages 20-65). Synthetic data, "
    "not suitable for production. For testing purposes only.",
    step_at(disability, 55, 0.0, 1e-05));
static_assert(proved<DummySD_LinearGen>());

inline constexpr Payload DummySD_DiscreteGen = generational(
    "DummySD_DiscreteGen", disability, Formula::discrete, 2010,
    "Dummy generational disability table with discrete improvement (ages 20-65). Synthetic data, "
    "not suitable for production. For testing purposes only.",
    step_at(disability, 55, 0.005, 0.002));
static_assert(proved<DummySD_DiscreteGen>());

inline constexpr Payload DummySD_ProjectedGen = generational(
    "DummySD_ProjectedGen", disability, Formula::projected, 2020,
    "Dummy generational disability table with projected improvement (ages 20-65). Synthetic "
    "data, not suitable for production. For testing purposes only.",
    constant_years("mi_m", disability,
                   {{2021, 0.01}, {2022, 0.01}, {2023, 0.009}, {2024, 0.008}, {2025, 0.007}}),
    constant_years("mi_f", disability,
                   {{2021, 0.008}, {2022, 0.008}, {2023, 0.007}, {2024, 0.006}, {2025, 0.006}}));
static_assert(proved<DummySD_ProjectedGen>());

inline constexpr Payload DummyEXIT_LinearGen = generational(
    "DummyEXIT_LinearGen", exit, Formula::linear, 2010,
    "Dummy generational exit table with linear improvement. Synthetic data, not suitable for "
    "production. For testing purposes only.",
    step_at(exit, 80, 0.0, 0.0001));
static_assert(proved<DummyEXIT_LinearGen>());

inline constexpr Payload DummyEXIT_DiscreteGen = generational(
    "DummyEXIT_DiscreteGen", exit, Formula::discrete, 2010,
    "Dummy generational exit table with discrete improvement. Synthetic data, not suitable for "
    "production. For testing purposes only.",
    step_at(exit, 80, 0.005, 0.002));
static_assert(proved<DummyEXIT_DiscreteGen>());

inline constexpr Payload DummyEXIT_ProjectedGen = generational(
    "DummyEXIT_ProjectedGen", exit, Formula::projected, 2020,
    "Dummy generational exit table with projected improvement (period projection). Synthetic "
    "data, not suitable for production. For testing purposes only.",
    projected_m(exit), projected_f(exit));
static_assert(proved<DummyEXIT_ProjectedGen>());

inline constexpr Payload DummySD_Gen2o = generational(
    "DummySD_Gen2o", disability, Formula::exponential, 2004,
    "Dummy generational disability table with year-indexed exponential improvement (Gen b, ages "
    "20-65). MI grid spans 2004-2024 with a linear decrease from 0.005 to 0.002. Synthetic data, "
    "not suitable for production. For testing purposes only.",
    falling_years("mi_m", disability), falling_years("mi_f", disability));
static_assert(proved<DummySD_Gen2o>());

inline constexpr Payload DummyEXIT_Gen2o = generational(
    "DummyEXIT_Gen2o", exit, Formula::exponential, 2004,
    "Dummy generational exit table with year-indexed exponential improvement (Gen b, ages "
    "0-100). MI grid spans 2004-2024 with a linear decrease from 0.005 to 0.002. Synthetic data, "
    "not suitable for production. For testing purposes only.",
    falling_years("mi_m", exit), falling_years("mi_f", exit));
static_assert(proved<DummyEXIT_Gen2o>());

} // namespace marlune::tables::synthetic
