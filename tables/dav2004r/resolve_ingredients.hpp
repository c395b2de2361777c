#pragma once

#include "dav2004r/columns.hpp"
#include "dav2004r/ingredients.hpp"
#include "payload/description_to_recipe.hpp"

namespace marlune::tables::dav2004r {

constexpr std::array<Index, select_period> resolve_factors(const SelectFactors &factors,
                                                           Constants &constants) {
  std::array<Index, select_period> by_duration{};
  by_duration.fill(constants.add(factors.durations_2_to_5));
  by_duration[0] = constants.add(factors.duration_1);
  return by_duration;
}

constexpr Index resolve_years(Constants &constants) {
  const Index first = constants.add(first_year);
  for (int year = first_year + 1; year <= last_year; ++year) {
    invariants::require(constants.add(year) == first + (year - first_year),
                        "the constants of the years do not follow each other");
  }
  return first;
}

constexpr Ingredients resolve_ingredients(Cookbook &cookbook) {
  Constants &constants = cookbook.constants;
  const auto list = [&](Literals column) { return cookbook.add(literal(column)); };
  Ingredients found{
      .first_year = resolve_years(constants),
      .durations = {},
      .ult = constants.add("ult"),
      .blending = constants.add("_dav_mi_linear"),
      .agg_1o = constants.add("Agg_1o"),
      .agg_2o = constants.add("Agg_2o"),
      .sel_ult_1o = constants.add("SelUlt_1o"),
      .sel_ult_2o = constants.add("SelUlt_2o"),
      // The capitals of MI_m and MI_f are part of the layout.
      .m = {.qx = constants.add("qx_m"),
            .mi = constants.add("MI_m"),
            .agg_1o = list(qx_agg_1o_m),
            .agg_2o = list(qx_agg_2o_m),
            .ult_1o = list(qx_ult_1o_m),
            .ult_2o = list(qx_ult_2o_m),
            .trend_1o = list(mi_trend_1o_m),
            .start_2o = list(mi_start_2o_m),
            .target_2o = list(mi_target_2o_m),
            .factors = resolve_factors(select_factors_m, constants)},
      .f = {.qx = constants.add("qx_f"),
            .mi = constants.add("MI_f"),
            .agg_1o = list(qx_agg_1o_f),
            .agg_2o = list(qx_agg_2o_f),
            .ult_1o = list(qx_ult_1o_f),
            .ult_2o = list(qx_ult_2o_f),
            .trend_1o = list(mi_trend_1o_f),
            .start_2o = list(mi_start_2o_f),
            .target_2o = list(mi_target_2o_f),
            .factors = resolve_factors(select_factors_f, constants)},
  };
  for (std::size_t index = 0; index < found.durations.size(); ++index) {
    found.durations[index] = constants.add(static_cast<int>(index) + 1);
  }
  return found;
}

} // namespace marlune::tables::dav2004r
