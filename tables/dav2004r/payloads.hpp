#pragma once

// The four DAV 2004 R payloads: annuitant mortality of 1999, generational. Their "data" is what
// `_build_dav2004r_data` has built, bound as `_DAV2004R_DATA`: the very dict, not a copy. The
// hyphens inside words of the descriptions are non-breaking (U+2011).

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"
#include "payload/record.hpp"

#include "dav2004r/columns.hpp"

namespace marlune::tables::dav2004r {

inline constexpr Payload DAV2004R_Agg_2o{
    .attribute = "DAV2004R_Agg_2o",
    .order = key_order::generational,
    .table_name = "DAV 2004 R Aggregattafel, 2. Ordnung",
    .table_type = TableType::life,
    .base_year = 1999,
    .formula = Formula::exponential,
    .omega = omega,
    .start_age = 0,
    .description =
        "Second‑order aggregate annuitant mortality table under DAV 2004 R with base year 1999 "
        "and terminal age ω = 121. It provides best‑estimate mortality rates by age and sex in "
        "the aggregate (non‑select) setting, reflecting combined pre‑ and post‑selection "
        "mortality without explicit select adjustments. Mortality improvements are incorporated "
        "through age‑specific annual mx under the simplified generational approach permitted by "
        "the applicable standard. qx and mx are expressed in decimal form (not scaled). Typical "
        "uses include best‑estimate valuation, stochastic and deterministic longevity "
        "projections, asset‑liability modelling, and experience studies where explicit selection "
        "modelling is unnecessary or external to the analysis.",
    .data_source = DataSource{.attribute = "_DAV2004R_DATA", .key = "Agg_2o"},
};
static_assert(proved<DAV2004R_Agg_2o>());

inline constexpr Payload DAV2004R_Agg_1o{
    .attribute = "DAV2004R_Agg_1o",
    .order = key_order::generational,
    .table_name = "DAV 2004 R Aggregattafel, 1. Ordnung",
    .table_type = TableType::life,
    .base_year = 1999,
    .formula = Formula::exponential,
    .omega = omega,
    .start_age = 0,
    .description =
        "First‑order aggregate annuitant mortality table under DAV 2004 R with base year 1999 "
        "and terminal age ω = 121. It provides prudential mortality rates by age and sex in the "
        "aggregate (non‑select) setting, reflecting combined pre‑ and post‑selection mortality "
        "without explicit select adjustments. Mortality improvements are incorporated through "
        "age‑specific annual mx under the simplified generational approach permitted by the "
        "applicable standard. qx and mx are expressed in decimal form (not scaled). Typical uses "
        "include pricing, tariff construction, reserving, and conservative technical "
        "calculations where selection effects are modelled separately or deemed immaterial.",
    .data_source = DataSource{.attribute = "_DAV2004R_DATA", .key = "Agg_1o"},
};
static_assert(proved<DAV2004R_Agg_1o>());

inline constexpr Payload DAV2004R_SelUlt_2o{
    .attribute = "DAV2004R_SelUlt_2o",
    .order = key_order::generational_select,
    .table_name = "DAV 2004 R Selektionstafel Ultimate, 2. Ordnung",
    .table_type = TableType::life,
    .base_year = 1999,
    .formula = Formula::exponential,
    .select_period = select_period,
    .omega = omega,
    .start_age = 0,
    .description =
        "Second‑order selection (ultimate) annuitant mortality table under DAV 2004 R with base "
        "year 1999 and terminal age ω = 121. It provides best‑estimate mortality rates by age "
        "and sex for the post‑selection (ultimate) phase, using the simplified generational "
        "approach permitted by the applicable standard. Mortality improvements are applied "
        "through age‑specific annual mx under an exponential model. qx and mx are expressed in "
        "decimal form (not scaled). Typical uses include best‑estimate valuation, longevity "
        "projections, and experience analysis where selection is modelled separately or assumed "
        "negligible.",
    .data_source = DataSource{.attribute = "_DAV2004R_DATA", .key = "SelUlt_2o"},
};
static_assert(proved<DAV2004R_SelUlt_2o>());

inline constexpr Payload DAV2004R_SelUlt_1o{
    .attribute = "DAV2004R_SelUlt_1o",
    .order = key_order::generational_select,
    .table_name = "DAV 2004 R Selektionstafel Ultimate, 1. Ordnung",
    .table_type = TableType::life,
    .base_year = 1999,
    .formula = Formula::exponential,
    .select_period = select_period,
    .omega = omega,
    .start_age = 0,
    .description =
        "First‑order selection (ultimate) annuitant mortality table under DAV 2004 R with base "
        "year 1999 and terminal age ω = 121. It provides prudential mortality rates by age and "
        "sex for the post‑selection (ultimate) phase, using the simplified generational approach "
        "permitted by the applicable standard. Mortality improvements are applied through "
        "age‑specific annual mx under an exponential model. qx and mx are expressed in decimal "
        "form (not scaled). Typical uses include pricing, tariff construction, and conservative "
        "technical calculations where selection is modelled separately or assumed negligible.",
    .data_source = DataSource{.attribute = "_DAV2004R_DATA", .key = "SelUlt_1o"},
};
static_assert(proved<DAV2004R_SelUlt_1o>());

} // namespace marlune::tables::dav2004r
