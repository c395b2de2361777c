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

// Lists of names, of which the inventory and the tables that the body binds are one.
struct Lists {
  Names inventory;
  Names bound;
};

constexpr void prove(invariants::Proof &proof, const Lists &lists) {
  for (const std::string_view name : lists.inventory) {
    const auto times = std::ranges::count(lists.bound, name);
    proof.require(times != 0, "the inventory lists a table that the body does not bind", {name});
    proof.require(times <= 1, "the body binds two tables under one name", {name});
    proof.require(std::ranges::count(lists.inventory, name) == 1,
                  "the inventory lists a table twice", {name});
  }
  for (const std::string_view name : lists.bound) {
    proof.require(std::ranges::count(lists.inventory, name) != 0,
                  "the body binds a table that the inventory does not list", {name});
  }
}

} // namespace marlune::tables
