#pragma once

// The select-generational synthetic tables, by the way in which improvement is attached to select
// durations: (a) one list for all durations, (b) a year grid, (c) a year grid for the projected
// formula, (d) a list for every duration. There is no life table for (a) and (b).

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"

#include "synthetic/vocabulary.hpp"

namespace marlune::tables::synthetic {

constexpr Payload select_generational(std::string_view name, const Decrement &decrement,
                                      Formula formula, int base_year, std::string_view description,
                                      const Column &mi_m, const Column &mi_f) {
  Payload payload = table(name, key_order::formula_first_select, decrement, description);
  payload.formula = formula;
  payload.select_period = 2;
  payload.base_year = base_year;
  payload.data = {select_m(decrement), select_f(decrement), mi_m, mi_f};
  return payload;
}

inline constexpr Payload DummySD_SelectGen_a = select_generational(
    "DummySD_SelectGen_a", disability, Formula::exponential, 2010,
    "Dummy select-ultimate generational disability table — Gen (a) constant exponential "
    "improvement (select_period=2, ages 20-65). MI applied uniformly to all select durations. "
    "Synthetic data, not suitable for production. For testing purposes only.",
    flat("mi_m", constant(disability, 0.005)), flat("mi_f", constant(disability, 0.005)));
static_assert(proved<DummySD_SelectGen_a>());

inline constexpr Payload DummyEXIT_SelectGen_a = select_generational(
    "DummyEXIT_SelectGen_a", exit, Formula::exponential, 2010,
    "Dummy select-ultimate generational exit table — Gen (a) constant exponential improvement "
    "(select_period=2, ages 0-100). MI applied uniformly to all select durations. Synthetic "
    "data, not suitable for production. For testing purposes only.",
    flat("mi_m", constant(exit, 0.005)), flat("mi_f", constant(exit, 0.005)));
static_assert(proved<DummyEXIT_SelectGen_a>());

inline constexpr Payload DummySD_SelectGen_b = select_generational(
    "DummySD_SelectGen_b", disability, Formula::exponential, 2004,
    "Dummy select-ultimate generational disability table — Gen (b) year-indexed exponential "
    "improvement (select_period=2, ages 20-65). Year-indexed MI applied uniformly to all select "
    "durations. Synthetic data, not suitable for production. For testing purposes only.",
    falling_years("mi_m", disability), falling_years("mi_f", disability));
static_assert(proved<DummySD_SelectGen_b>());

inline constexpr Payload DummyEXIT_SelectGen_b = select_generational(
    "DummyEXIT_SelectGen_b", exit, Formula::exponential, 2004,
    "Dummy select-ultimate generational exit table — Gen (b) year-indexed exponential "
    "improvement (select_period=2, ages 0-100). Year-indexed MI applied uniformly to all select "
    "durations. Synthetic data, not suitable for production. For testing purposes only.",
    falling_years("mi_m", exit), falling_years("mi_f", exit));
static_assert(proved<DummyEXIT_SelectGen_b>());

// The disability table has the rates of the two others here, unlike DummySD_ProjectedGen.
inline constexpr Payload DummyLIFE_SelectGen_c = select_generational(
    "DummyLIFE_SelectGen_c", life, Formula::projected, 2020,
    "Dummy select-ultimate generational life table — Gen (c) year-indexed cumulative product "
    "projection (select_period=2, ages 0-100). MI applied uniformly to all select durations via "
    "projected_improvement formula. Synthetic data, not suitable for production. For testing "
    "purposes only.",
    projected_m(life), projected_f(life));
static_assert(proved<DummyLIFE_SelectGen_c>());

inline constexpr Payload DummySD_SelectGen_c = select_generational(
    "DummySD_SelectGen_c", disability, Formula::projected, 2020,
    "Dummy select-ultimate generational disability table — Gen (c) year-indexed cumulative "
    "product projection (select_period=2, ages 20-65). MI applied uniformly to all select "
    "durations via projected_improvement formula. Synthetic data, not suitable for production. "
    "For testing purposes only.",
    projected_m(disability), projected_f(disability));
static_assert(proved<DummySD_SelectGen_c>());

inline constexpr Payload DummyEXIT_SelectGen_c = select_generational(
    "DummyEXIT_SelectGen_c", exit, Formula::projected, 2020,
    "Dummy select-ultimate generational exit table — Gen (c) year-indexed cumulative product "
    "projection (select_period=2, ages 0-100). MI applied uniformly to all select durations via "
    "projected_improvement formula. Synthetic data, not suitable for production. For testing "
    "purposes only.",
    projected_m(exit), projected_f(exit));
static_assert(proved<DummyEXIT_SelectGen_c>());

inline constexpr Payload DummyLIFE_SelectGen_d = select_generational(
    "DummyLIFE_SelectGen_d", life, Formula::exponential, 2010,
    "Dummy select-ultimate generational life table — Gen (d) per-duration independent MI vectors "
    "(select_period=2, ages 0-100). Each select duration carries its own improvement vector; "
    "exponential_improvement formula applied independently per duration. Synthetic data, not "
    "suitable for production. For testing purposes only.",
    constant_durations("mi_m", life, 0.008, 0.006, 0.004),
    constant_durations("mi_f", life, 0.007, 0.005, 0.003));
static_assert(proved<DummyLIFE_SelectGen_d>());

inline constexpr Payload DummySD_SelectGen_d = select_generational(
    "DummySD_SelectGen_d", disability, Formula::exponential, 2010,
    "Dummy select-ultimate generational disability table — Gen (d) per-duration independent MI "
    "vectors (select_period=2, ages 20-65). Each select duration carries its own improvement "
    "vector; exponential_improvement formula applied independently per duration. Synthetic data, "
    "not suitable for production. For testing purposes only.",
    constant_durations("mi_m", disability, 0.008, 0.006, 0.004),
    constant_durations("mi_f", disability, 0.007, 0.005, 0.003));
static_assert(proved<DummySD_SelectGen_d>());

inline constexpr Payload DummyEXIT_SelectGen_d = select_generational(
    "DummyEXIT_SelectGen_d", exit, Formula::exponential, 2010,
    "Dummy select-ultimate generational exit table — Gen (d) per-duration independent MI vectors "
    "(select_period=2, ages 0-100). Each select duration carries its own improvement vector; "
    "exponential_improvement formula applied independently per duration. Synthetic data, not "
    "suitable for production. For testing purposes only.",
    constant_durations("mi_m", exit, 0.008, 0.006, 0.004),
    constant_durations("mi_f", exit, 0.007, 0.005, 0.003));
static_assert(proved<DummyEXIT_SelectGen_d>());

} // namespace marlune::tables::synthetic
