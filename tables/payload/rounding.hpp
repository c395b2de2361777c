#pragma once

// Rounding by the compiler as by the interpreter's round().

#include "payload/ieee754.hpp"

#include <cstdint>
#include <optional>

namespace marlune::tables {

inline constexpr int rounding_places = 7;

// What the interpreter's round(rate, 7) gives for a rate, or nothing where only exact decimal
// arithmetic can tell. round() gives the double nearest to the decimal number m / 10^7, m being the
// integer nearest to the exact product rate × 10^7. For a rate up to 1 the product in doubles is
// off by less than 2e-9; so m is certain unless the product lies that close to halfway between two
// integers. m and 10^7 are exact doubles, hence the quotient is that nearest double.
constexpr std::optional<double> round_clear_cut(double rate) {
  constexpr double scale = 1e7;
  constexpr double doubt = 1e-6;
  const bool is_rate = rate >= 0.0 && rate <= 1.0; // not so for a NaN
  if (!is_rate) {
    return std::nullopt;
  }
  if (rate == 0.0) {
    return rate; // with its sign
  }
  const double scaled = rate * scale;
  const auto below = static_cast<double>(static_cast<std::int64_t>(scaled));
  const double part = scaled - below;
  if (part > 0.5 - doubt && part < 0.5 + doubt) {
    return std::nullopt;
  }
  return (part < 0.5 ? below : below + 1.0) / scale;
}

constexpr double rounded_rate(double rate) {
  const std::optional<double> near = round_clear_cut(rate);
  return near ? *near : throw "a rate that only exact decimal arithmetic can round";
}

} // namespace marlune::tables
