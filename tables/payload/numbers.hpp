#pragma once

// The numbers of a list, from its description: the one place where a rule of rates stands for the
// compiler. Products and sums are those of the interpreter, in the same order and rounding: where
// others have changed what a rule starts from, the import follows it by the interpreter's arithmetic
// (payload/object_maker.cpp), and comes to the same bits where they have not.

#include "payload/record.hpp"
#include "payload/rounds_each_operation.hpp"

#include <cstdint>
#include <optional>

namespace marlune::tables {

// Entry i belongs to the age start_age + i.
using Numbers = Bounded<Number, 201>;

constexpr Numbers numbers_of(Literals literals) { return {literals.data(), literals.size()}; }

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

constexpr Numbers numbers_of(const Rates &rates) {
  Numbers numbers;
  switch (rates.origin) {
  case Rates::Origin::literal:
    return numbers_of(rates.literals);
  case Rates::Origin::shared:
    return numbers_of(rates.base->rates);
  case Rates::Origin::levels:
    for (const Level &level : rates.levels) {
      if (level.ages <= 0) {
        throw "a level of rates covers no age";
      }
      for (int age = 0; age < level.ages; ++age) {
        numbers.push_back(level.rate);
      }
    }
    return numbers;
  case Rates::Origin::capped:
    for (const Number &rate : rates.base->rates) {
      numbers.push_back(rate.value < 1.0 ? rate.value * rates.factor : 1.0);
    }
    return numbers;
  case Rates::Origin::rounded:
    for (const Number &rate : rates.base->rates) {
      numbers.push_back(rounded_rate(rate.value * rates.factor));
    }
    return numbers;
  case Rates::Origin::proportional:
    for (const Number &rate : rates.base->rates.first(rates.base->rates.size() - 1)) {
      numbers.push_back(rate.value * rates.factor);
    }
    numbers.push_back(0.0);
    return numbers;
  }
  throw "an origin of rates that nobody has heard of";
}

} // namespace marlune::tables
