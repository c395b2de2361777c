#pragma once

// What the two functions work on: indices of constants and lists, resolved by the compiler.

#include "payload/plans.hpp"

#include <array>

namespace marlune::tables::dav2004r {

using ByDuration = std::array<Index, 5>;

struct SexOperands {
  Index qx, mi; // constants: the keys of the columns
  // Lists: the literal columns, then what the compiler has computed from them.
  Index agg_1o, agg_2o, ult_1o, ult_2o, trend_1o, start_2o, target_2o;
  ByDuration select_1o, select_2o;
  std::array<Index, 19> blended; // 2005 to 2023
  ByDuration factors;            // constants
};

struct Operands {
  Index first_year;                             // constant; the other years follow it
  ByDuration durations;                         // constants
  Index ult, blending;                          // constants
  Index agg_1o, agg_2o, sel_ult_1o, sel_ult_2o; // constants: the keys of the tables
  SexOperands m, f;
};

extern const Operands operands;

} // namespace marlune::tables::dav2004r
