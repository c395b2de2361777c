#pragma once

// The inventory: the tables of `REPO_TABLES`, name by name, published before synthetic. The order
// is part of the contract and differs from the order in which the body binds the tables.

#include "payload/invariants.hpp"

#include <algorithm>
#include <span>
#include <string_view>

namespace marlune::tables {

inline constexpr std::string_view inventory_names[] = {
    "PER2020_Col_2o",
    "PER2020_Col_1o",
    "PER2020_Ind_2o",
    "PER2020_Ind_1o",
    "PASEM2020_Gen_2o",
    "PASEM2020_Dec_2o",
    "PASEM2020_Rel_1o",
    "PASEM2020_NoRel_1o",
    "PASEM2020_Dec_1o",
    "PEAI2007_IAP_Ind",
    "PEAI2007_IAP_Col",
    "PASEM2010",
    "DAV2004R_Agg_2o",
    "DAV2004R_Agg_1o",
    "DAV2004R_SelUlt_2o",
    "DAV2004R_SelUlt_1o",
    "GAM71",
    "GAM83",
    "GAM94_AA",
    "GRMF80",
    "GRMF95",
    "GKMF80",
    "GKMF95",
    "IASS90",
    "SS90TOT",
    "SS90ABS",
    "CB_H_2020",
    "MI_H_2020",
    "RV_M_2020",
    "B_M_2020",
    "MI_M_2020",
    "AM92_AF92",
    "DummySD2015",
    "DummySD2015Gen",
    "DummyEXIT",
    "DummyEXIT_Gen",
    "Dummy_qx0",
    "DummyLIFE_1Sm",
    "DummyLIFE_1Sf",
    "DummyLIFE_LinearGen",
    "DummyLIFE_DiscreteGen",
    "DummyLIFE_ProjectedGen",
    "DummyLIFE_Select",
    "DummyLIFE_Unisex",
    "DummySD_LinearGen",
    "DummySD_DiscreteGen",
    "DummySD_ProjectedGen",
    "DummySD_Select",
    "DummySD_Unisex",
    "DummyEXIT_LinearGen",
    "DummyEXIT_DiscreteGen",
    "DummyEXIT_ProjectedGen",
    "DummyEXIT_Select",
    "DummyEXIT_Unisex",
    "DummySD_Gen2o",
    "DummyEXIT_Gen2o",
    "DummySD_SelectGen_a",
    "DummyEXIT_SelectGen_a",
    "DummySD_SelectGen_b",
    "DummyEXIT_SelectGen_b",
    "DummyLIFE_SelectGen_c",
    "DummySD_SelectGen_c",
    "DummyEXIT_SelectGen_c",
    "DummyLIFE_SelectGen_d",
    "DummySD_SelectGen_d",
    "DummyEXIT_SelectGen_d",
};

using Names = std::span<const std::string_view>;

// The inventory and the tables that the body binds are the same names, each once.
constexpr void prove_inventory(Names inventory, Names bound) {
  invariants::require(inventory.size() == bound.size(),
                      "the inventory does not list as many tables as the body binds");
  for (const std::string_view name : inventory) {
    const auto times = std::ranges::count(bound, name);
    invariants::require(times != 0, "the inventory lists a table that the body does not bind");
    invariants::require(times == 1, "the body binds two tables under one name");
    invariants::require(std::ranges::count(inventory, name) == 1,
                        "the inventory lists a table twice");
  }
}

} // namespace marlune::tables
