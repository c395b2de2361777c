#pragma once

// The two rules by which DAV 2004 R columns follow from others: for the compiler here, for lists that
// others have changed in functions.cpp.

#include "dav2004r/columns.hpp"
#include "payload/rate_values.hpp"

#include <algorithm>

namespace marlune::tables::dav2004r {

// The part of the way from the start trend to the target trend that a year has gone. The product is
// the rule, not the quotient by 20: they differ in the last bit for seven of the years.
constexpr double weight_of(int year) { return static_cast<double>(year - first_year) * 0.05; }

// start + weight × (target − start), in this order, up to the end of the shorter trend.
constexpr RateValues blended(Literals start, Literals target, int year) {
  RateValues rates;
  for (std::size_t age = 0; age < std::min(start.size(), target.size()); ++age) {
    const double difference = target[age].value - start[age].value;
    const double part = weight_of(year) * difference;
    rates.push_back(start[age].value + part);
  }
  return rates;
}

// The ultimate rate times the factor at every age, the last one included.
constexpr RateValues selected(Literals ultimate, double factor) {
  RateValues rates;
  for (const Number &rate : ultimate) {
    rates.push_back(rate.value * factor);
  }
  return rates;
}

} // namespace marlune::tables::dav2004r
