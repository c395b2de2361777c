#pragma once

// What the two functions take out of the module's constants and lists, found by the compiler.

#include "payload/recipes.hpp"

#include <array>

namespace marlune::tables::dav2004r {

struct SexIngredients {
  Index qx, mi; // constants: the keys of the columns
  Index agg_1o, agg_2o, ult_1o, ult_2o, trend_1o, start_2o, target_2o; // list recipes
  std::array<Index, 5> factors; // constants, by select duration
};

struct Ingredients {
  Index first_year;                             // constant; the other years follow it
  std::array<Index, 5> durations;               // constants
  Index ult, blending;                          // constants
  Index agg_1o, agg_2o, sel_ult_1o, sel_ult_2o; // constants: the keys of the tables
  SexIngredients m, f;
};

extern const Ingredients ingredients;

} // namespace marlune::tables::dav2004r
