#pragma once

// Exact decimal arithmetic for the rules by which a publication derives one number from others: a
// decimal number is counted in units of its last place.

#include <cstdint>
#include <initializer_list>

namespace marlune::tables {

constexpr std::int64_t power_of_ten(int places) {
  std::int64_t power = 1;
  for (; places > 0; --places) {
    power *= 10;
  }
  return power;
}

// How many units of the last place the number is: 2.176 at three places is 2176.
constexpr std::int64_t decimal_units(double number, int places) {
  const auto scale = static_cast<double>(power_of_ten(places));
  const auto below = static_cast<std::int64_t>(number * scale);
  for (const std::int64_t units : {below, below + 1}) {
    if (static_cast<double>(units) / scale == number) {
      return units;
    }
  }
  throw "a number has more decimals than its publication prints";
}

// The double nearest to so many units: what the compiler takes the decimal literal for, because
// both operands are exact and the quotient is rounded once.
constexpr double from_decimal_units(std::int64_t units, int places) {
  constexpr std::int64_t last_exact = std::int64_t{1} << 53U;
  if (units > last_exact || power_of_ten(places) > last_exact) {
    throw "a decimal number has more digits than a double can count";
  }
  return static_cast<double>(units) / static_cast<double>(power_of_ten(places));
}

} // namespace marlune::tables
