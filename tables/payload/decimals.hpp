#pragma once

// Exact decimal arithmetic for the rules by which a publication derives one number from others: a
// decimal number is an integer count in its last place.

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

// 2.176 at three places is 2176.
constexpr std::int64_t count_of(double number, int places) {
  const auto scale = static_cast<double>(power_of_ten(places));
  const auto below = static_cast<std::int64_t>(number * scale);
  for (const std::int64_t count : {below, below + 1}) {
    if (static_cast<double>(count) / scale == number) {
      return count;
    }
  }
  throw "a number has more decimals than its publication prints";
}

// The double nearest to the number, which is what its decimal literal would be: both operands are
// exact, and the quotient is rounded once.
constexpr double decimal(std::int64_t count, int places) {
  constexpr std::int64_t last_exact = std::int64_t{1} << 53U;
  if (count > last_exact || power_of_ten(places) > last_exact) {
    throw "a decimal number has more digits than a double can count";
  }
  return static_cast<double>(count) / static_cast<double>(power_of_ten(places));
}

} // namespace marlune::tables
