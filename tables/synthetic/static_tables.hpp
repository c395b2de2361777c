#pragma once

// The seven static synthetic tables. They are bound before the base vectors and hold lists of their
// own, also where the values are those of a base vector: a change to one of them reaches no other
// table.

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"

#include "synthetic/vocabulary.hpp"

namespace marlune::tables::synthetic {

constexpr Payload own_lists(std::string_view name, const Decrement &decrement,
                            std::string_view description, const Bounded<Column, 4> &data) {
  Payload payload = table(name, key_order::static_table, decrement, description);
  payload.data = data;
  return payload;
}

// The two generational tables among them name their base year and formula after the ages.
constexpr Payload own_lists_gen(std::string_view name, const Decrement &decrement, int base_year,
                                std::string_view description, const Bounded<Column, 4> &data) {
  Payload payload = table(name, key_order::base_year_and_formula_last, decrement, description);
  payload.base_year = base_year;
  payload.formula = Formula::exponential;
  payload.data = data;
  return payload;
}

inline constexpr Payload DummySD2015 = own_lists(
    "DummySD2015", disability,
    "Tabla de invalidez dummy para pruebas basada en datos públicos de Suiza (Swiss Disability "
    "Table, Swiss Re 2015, valores aproximados). Usada únicamente para demostraciones y pruebas "
    "de sistemas actuariales.",
    {flat("ix_m", literal(disability_rates_m)), flat("ix_f", literal(disability_rates_f))});
static_assert(proved<DummySD2015>());

// Forces of improvement: −ln(1 − 0.005) at ages 20 to 39, −ln(1 − 0.002) at 40 to 54, none from 55.
inline constexpr Rates DummySD2015Gen_mi =
    levels({{0.005012541823544286, 20}, {0.0020020026706730793, 15}, {0.0, 11}});
inline constexpr Payload DummySD2015Gen = own_lists_gen(
    "DummySD2015Gen", disability, 2005,
    "Tabla dummy de invalidez generacional (sexos m, f sin unisex) basada en Swiss Disability "
    "Table. Incluye mejoras generacionales (mx) decrecientes con la edad. Base year: 2005. Solo "
    "para pruebas y demostración.",
    {flat("ix_m", literal(disability_rates_m)), flat("ix_f", literal(disability_rates_f)),
     flat("mi_m", DummySD2015Gen_mi), flat("mi_f", DummySD2015Gen_mi)});
static_assert(proved<DummySD2015Gen>());

inline constexpr Payload DummyEXIT =
    own_lists("DummyEXIT", exit,
              "Dummy non-generational exit table (sexes m, f sin unisex) ages 0..100. Static exit "
              "probabilities, no generational improvements. For testing purposes.",
              {flat("ox_m", literal(decade_rates)), flat("ox_f", literal(decade_rates_f))});
static_assert(proved<DummyEXIT>());

// 0.005 to age 60, 0.002 from 61 to 80, none from 81.
inline constexpr Rates DummyEXIT_Gen_mi = levels({{0.005, 61}, {0.002, 20}, {0.0, 20}});
inline constexpr Payload DummyEXIT_Gen = own_lists_gen(
    "DummyEXIT_Gen", exit, 2015,
    "Generational exit table (m, f without unisex) ages 0..100. Improvement rates (mx): 0.005 "
    "(<=60), 0.002 (61-80), 0.0 (>80). Base year 2015. Multiplicative generational formula "
    "(per2020_exponential) and clipping to [0,1] ensure no negative probabilities.",
    {flat("ox_m", literal(decade_rates)), flat("ox_f", literal(decade_rates_f)),
     flat("mi_m", DummyEXIT_Gen_mi), flat("mi_f", DummyEXIT_Gen_mi)});
static_assert(proved<DummyEXIT_Gen>());

// No mortality up to age 199: life contingencies reduce to financial mathematics.
inline constexpr Decrement immortal{TableType::life, "qx_m", "qx_f", qx_life, qx_life, 0, 200};
inline constexpr Rates Dummy_qx0_qx = levels({{0.0, 200}, {1.0, 1}});
inline constexpr Payload Dummy_qx0 = own_lists(
    "Dummy_qx0", immortal,
    "Dummy table with qx=0 for ages 0..199 and qx=1 at omega=200. Used to verify that actuarial "
    "annuities equal financial annuities when mortality is zero. omega=200 ensures n<=119 never "
    "reaches omega.",
    {flat("qx_m", Dummy_qx0_qx), flat("qx_f", Dummy_qx0_qx)});
static_assert(proved<Dummy_qx0>());

// One sex each; the female table carries the male rates, by design.
inline constexpr Payload DummyLIFE_1Sm = own_lists(
    "DummyLIFE_1Sm", life,
    "Dummy non-generational life table (sex m) ages 0..100. Static life probabilities, no "
    "generational improvements. For testing purposes.",
    {flat("qx_m", literal(decade_rates))});
static_assert(proved<DummyLIFE_1Sm>());

inline constexpr Payload DummyLIFE_1Sf = own_lists(
    "DummyLIFE_1Sf", life,
    "Dummy non-generational life table (sex f) ages 0..100. Static life probabilities, no "
    "generational improvements. For testing purposes.",
    {flat("qx_f", literal(decade_rates))});
static_assert(proved<DummyLIFE_1Sf>());

} // namespace marlune::tables::synthetic
