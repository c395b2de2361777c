#pragma once

// The module body: what the import binds, in the order in which it binds it. A binding is of one
// attribute, and its line is the one that a traceback of a failed import shows. The traceback names
// no file but "data_tables", so every line that "init data_tables" shows is one of this file.

#include "dav2004r/functions.hpp"
#include "dav2004r/payloads.hpp"
#include "published/am92_af92.hpp"
#include "published/cmf2020.hpp"
#include "published/gam_swiss.hpp"
#include "published/per2020.hpp"
#include "published/spanish_static.hpp"
#include "synthetic/generational.hpp"
#include "synthetic/select_generational.hpp"
#include "synthetic/select_unisex.hpp"
#include "synthetic/static_tables.hpp"

#include "binding.hpp"

namespace marlune::tables {

// What the exec step does before the first binding.
inline constexpr int short_name_line = __LINE__; // registers the module under its short name
inline constexpr int builtins_line = __LINE__;   // finds zip and round

inline constexpr Binding body[] = {
    // Spain
    table(published::PER2020_Col_2o),
    table(published::PER2020_Col_1o),
    table(published::PER2020_Ind_2o),
    table(published::PER2020_Ind_1o),
    table(published::PASEM2020_Gen_2o),
    table(published::PASEM2020_Dec_2o),
    table(published::PASEM2020_Rel_1o),
    table(published::PASEM2020_NoRel_1o),
    table(published::PASEM2020_Dec_1o),
    table(published::PEAI2007_IAP_Ind),
    table(published::PEAI2007_IAP_Col),
    table(published::PASEM2010),
    table(published::IASS90),
    table(published::SS90TOT),
    table(published::SS90ABS),
    // Germany
    function("_dav_mi_linear", dav2004r::mi_linear),
    function("_build_dav2004r_data", dav2004r::build_data),
    call("_DAV2004R_DATA", "_build_dav2004r_data"),
    table(dav2004r::DAV2004R_Agg_2o),
    table(dav2004r::DAV2004R_Agg_1o),
    table(dav2004r::DAV2004R_SelUlt_2o),
    table(dav2004r::DAV2004R_SelUlt_1o),
    // United States
    table(published::GAM71),
    table(published::GAM83),
    table(published::GAM94_AA),
    // Chile
    table(published::CB_H_2020),
    table(published::MI_H_2020),
    table(published::RV_M_2020),
    table(published::B_M_2020),
    table(published::MI_M_2020),
    // United Kingdom
    table(published::AM92_AF92),
    // Synthetic, with lists of their own
    table(synthetic::DummySD2015),
    table(synthetic::DummySD2015Gen),
    table(synthetic::DummyEXIT),
    table(synthetic::DummyEXIT_Gen),
    table(synthetic::Dummy_qx0),
    table(synthetic::DummyLIFE_1Sm),
    table(synthetic::DummyLIFE_1Sf),
    // Synthetic, over the base vectors
    base_vector(synthetic::qx_life),
    base_vector(synthetic::ox_m),
    base_vector(synthetic::ox_f),
    base_vector(synthetic::ix_m),
    base_vector(synthetic::ix_f),
    table(synthetic::DummyLIFE_LinearGen),
    table(synthetic::DummyLIFE_DiscreteGen),
    table(synthetic::DummyLIFE_ProjectedGen),
    table(synthetic::DummyLIFE_Select),
    table(synthetic::DummyLIFE_Unisex),
    table(synthetic::DummySD_LinearGen),
    table(synthetic::DummySD_DiscreteGen),
    table(synthetic::DummySD_ProjectedGen),
    table(synthetic::DummySD_Select),
    table(synthetic::DummySD_Unisex),
    table(synthetic::DummyEXIT_LinearGen),
    table(synthetic::DummyEXIT_DiscreteGen),
    table(synthetic::DummyEXIT_ProjectedGen),
    table(synthetic::DummyEXIT_Select),
    table(synthetic::DummyEXIT_Unisex),
    table(synthetic::DummySD_Gen2o),
    table(synthetic::DummyEXIT_Gen2o),
    table(synthetic::DummySD_SelectGen_a),
    table(synthetic::DummyEXIT_SelectGen_a),
    table(synthetic::DummySD_SelectGen_b),
    table(synthetic::DummyEXIT_SelectGen_b),
    table(synthetic::DummyLIFE_SelectGen_c),
    table(synthetic::DummySD_SelectGen_c),
    table(synthetic::DummyEXIT_SelectGen_c),
    table(synthetic::DummyLIFE_SelectGen_d),
    table(synthetic::DummySD_SelectGen_d),
    table(synthetic::DummyEXIT_SelectGen_d),
    // Switzerland
    table(published::GRMF80),
    table(published::GRMF95),
    table(published::GKMF80),
    table(published::GKMF95),
    // The inventory
    inventory("REPO_TABLES"),
    empty_dict("__test__"),
};

} // namespace marlune::tables
