#pragma once

#include "dav2004r/operands.hpp"
#include "dav2004r/rules.hpp"
#include "payload/plan_builder.hpp"

namespace marlune::tables::dav2004r {

constexpr Index resolve_years(ConstantPool &constants) {
  const Index first = constants.add(first_year);
  for (int year = first_year + 1; year <= last_year; ++year) {
    invariants::require(constants.add(year) == first + (year - first_year),
                        "the constants of the years do not follow each other");
  }
  return first;
}

// The published columns of one sex.
struct SexColumns {
  Literals agg_1o, agg_2o, ult_1o, ult_2o, trend_1o, start_2o, target_2o;
};

constexpr SexOperands resolve_sex(std::string_view qx, std::string_view mi,
                                  const SexColumns &columns, const SelectFactors &factors,
                                  PlanBuilder &builder) {
  const auto list = [&](Literals column) { return builder.add(literal(column)); };
  SexOperands found{
      .qx = builder.constants.add(qx),
      .mi = builder.constants.add(mi),
      .agg_1o = list(columns.agg_1o),
      .agg_2o = list(columns.agg_2o),
      .ult_1o = list(columns.ult_1o),
      .ult_2o = list(columns.ult_2o),
      .trend_1o = list(columns.trend_1o),
      .start_2o = list(columns.start_2o),
      .target_2o = list(columns.target_2o),
      .select_1o = {},
      .select_2o = {},
      .blended = {},
      .factors = {},
  };
  for (std::size_t index = 0; index < select_period; ++index) {
    const double factor = index == 0 ? factors.duration_1 : factors.durations_2_to_5;
    found.factors[index] = builder.constants.add(factor);
    found.select_1o[index] = builder.add(selected(columns.ult_1o, factor));
    found.select_2o[index] = builder.add(selected(columns.ult_2o, factor));
  }
  for (std::size_t index = 0; index < found.blended.size(); ++index) {
    const int year = first_year + 1 + static_cast<int>(index);
    found.blended[index] = builder.add(blended(columns.start_2o, columns.target_2o, year));
  }
  return found;
}

constexpr Operands resolve_operands(PlanBuilder &builder) {
  ConstantPool &constants = builder.constants;
  Operands found{
      .first_year = resolve_years(constants),
      .durations = {},
      .ult = constants.add("ult"),
      .blending = constants.add("_dav_mi_linear"),
      .agg_1o = constants.add("Agg_1o"),
      .agg_2o = constants.add("Agg_2o"),
      .sel_ult_1o = constants.add("SelUlt_1o"),
      .sel_ult_2o = constants.add("SelUlt_2o"),
      // The capitals of MI_m and MI_f are part of the layout.
      .m = resolve_sex("qx_m", "MI_m",
                       {qx_agg_1o_m, qx_agg_2o_m, qx_ult_1o_m, qx_ult_2o_m, mi_trend_1o_m,
                        mi_start_2o_m, mi_target_2o_m},
                       select_factors_m, builder),
      .f = resolve_sex("qx_f", "MI_f",
                       {qx_agg_1o_f, qx_agg_2o_f, qx_ult_1o_f, qx_ult_2o_f, mi_trend_1o_f,
                        mi_start_2o_f, mi_target_2o_f},
                       select_factors_f, builder),
  };
  for (std::size_t index = 0; index < found.durations.size(); ++index) {
    found.durations[index] = constants.add(static_cast<int>(index) + 1);
  }
  return found;
}

} // namespace marlune::tables::dav2004r
