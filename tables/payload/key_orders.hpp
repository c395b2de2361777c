#pragma once

// The twelve orders in which payloads hold their metadata keys. The order is observable and part of
// the contract; the families differ on purpose. "data" follows the last key in every payload.

#include "payload/record.hpp"

namespace marlune::tables::key_order {

// clang-format off

// PASEM, PEAI, Swiss and the static synthetic tables.
inline constexpr Key static_table[] = {
    Key::table_name, Key::table_type, Key::generational, Key::decrement_scale_factor,
    Key::mi_scale_factor, Key::omega, Key::start_age, Key::description};

// Social Security 1990.
inline constexpr Key sex_independent_after_ages[] = {
    Key::table_name, Key::table_type, Key::generational, Key::decrement_scale_factor,
    Key::mi_scale_factor, Key::omega, Key::start_age, Key::sex_independent, Key::description};

// The synthetic unisex tables.
inline constexpr Key sex_independent_first[] = {
    Key::table_name, Key::table_type, Key::sex_independent, Key::generational,
    Key::decrement_scale_factor, Key::mi_scale_factor, Key::omega, Key::start_age,
    Key::description};

// GAM71 and GAM83: a base year that is None, no mi_scale_factor.
inline constexpr Key static_with_base_year[] = {
    Key::table_name, Key::table_type, Key::base_year, Key::generational,
    Key::decrement_scale_factor, Key::omega, Key::start_age, Key::description};

// AM92/AF92.
inline constexpr Key select_after_generational[] = {
    Key::table_name, Key::table_type, Key::generational, Key::select, Key::select_period,
    Key::decrement_scale_factor, Key::mi_scale_factor, Key::omega, Key::start_age,
    Key::description};

// The synthetic static select tables.
inline constexpr Key select_before_generational[] = {
    Key::table_name, Key::table_type, Key::select, Key::select_period, Key::generational,
    Key::decrement_scale_factor, Key::mi_scale_factor, Key::omega, Key::start_age,
    Key::description};

// PER2020, DAV 2004 R aggregate, GAM94.
inline constexpr Key generational[] = {
    Key::table_name, Key::table_type, Key::base_year, Key::generational,
    Key::decrement_scale_factor, Key::mi_scale_factor, Key::omega, Key::start_age,
    Key::generational_formula_type, Key::description};

// DAV 2004 R select-ultimate.
inline constexpr Key generational_select[] = {
    Key::table_name, Key::table_type, Key::base_year, Key::generational, Key::select,
    Key::select_period, Key::decrement_scale_factor, Key::mi_scale_factor, Key::omega,
    Key::start_age, Key::generational_formula_type, Key::description};

// CMF 2020: the only order with start_age before omega.
inline constexpr Key formula_first_start_age_before_omega[] = {
    Key::table_name, Key::table_type, Key::generational, Key::generational_formula_type,
    Key::base_year, Key::decrement_scale_factor, Key::mi_scale_factor, Key::start_age,
    Key::omega, Key::description};

// DummySD2015Gen and DummyEXIT_Gen.
inline constexpr Key base_year_and_formula_last[] = {
    Key::table_name, Key::table_type, Key::generational, Key::decrement_scale_factor,
    Key::mi_scale_factor, Key::omega, Key::start_age, Key::base_year,
    Key::generational_formula_type, Key::description};

// The synthetic LinearGen, DiscreteGen, ProjectedGen and Gen2o tables.
inline constexpr Key formula_first[] = {
    Key::table_name, Key::table_type, Key::generational, Key::generational_formula_type,
    Key::base_year, Key::decrement_scale_factor, Key::mi_scale_factor, Key::omega,
    Key::start_age, Key::description};

// The synthetic SelectGen tables.
inline constexpr Key formula_first_select[] = {
    Key::table_name, Key::table_type, Key::generational, Key::generational_formula_type,
    Key::select, Key::select_period, Key::base_year, Key::decrement_scale_factor,
    Key::mi_scale_factor, Key::omega, Key::start_age, Key::description};

// clang-format on

} // namespace marlune::tables::key_order
