#pragma once

// The static select and the unisex synthetic tables, one of each for every decrement.

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"

#include "synthetic/vocabulary.hpp"

namespace marlune::tables::synthetic {

constexpr Payload select_ultimate(std::string_view name, const Decrement &decrement,
                                  std::string_view description) {
  Payload payload = table(name, key_order::select_before_generational, decrement, description);
  payload.select_period = 2;
  payload.data = {select_m(decrement), select_f(decrement)};
  return payload;
}

constexpr Payload unisex(std::string_view name, const Decrement &decrement,
                         std::string_view description) {
  Payload payload = table(name, key_order::sex_independent_first, decrement, description);
  payload.sex_independent = true;
  payload.data = {aggregate_m(decrement)};
  return payload;
}

inline constexpr Payload DummyLIFE_Select = select_ultimate(
    "DummyLIFE_Select", life,
    "Dummy select-ultimate life table (select_period=2, 1-based durations). Synthetic data, not "
    "suitable for production. For testing purposes only.");
static_assert(proved<DummyLIFE_Select>());

inline constexpr Payload DummyLIFE_Unisex = unisex(
    "DummyLIFE_Unisex", life,
    "Dummy unisex life table (sex_independent=True: same rates for male and female). Synthetic "
    "data, not suitable for production. For testing purposes only.");
static_assert(proved<DummyLIFE_Unisex>());

inline constexpr Payload DummySD_Select = select_ultimate(
    "DummySD_Select", disability,
    "Dummy select-ultimate disability table (select_period=2, ages 20-65). Synthetic data, not "
    "suitable for production. For testing purposes only.");
static_assert(proved<DummySD_Select>());

inline constexpr Payload DummySD_Unisex =
    unisex("DummySD_Unisex", disability,
           "Dummy unisex disability table (sex_independent=True; ages 20-65). Synthetic data, not "
           "suitable for production. For testing purposes only.");
static_assert(proved<DummySD_Unisex>());

inline constexpr Payload DummyEXIT_Select = select_ultimate(
    "DummyEXIT_Select", exit,
    "Dummy select-ultimate exit table (select_period=2, 1-based durations). Synthetic data, not "
    "suitable for production. For testing purposes only.");
static_assert(proved<DummyEXIT_Select>());

inline constexpr Payload DummyEXIT_Unisex = unisex(
    "DummyEXIT_Unisex", exit,
    "Dummy unisex exit table (sex_independent=True: same rates for male and female). Synthetic "
    "data, not suitable for production. For testing purposes only.");
static_assert(proved<DummyEXIT_Unisex>());

} // namespace marlune::tables::synthetic
