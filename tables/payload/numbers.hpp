#pragma once

// The numbers of a list, from its description: the one place where a rule of rates stands for the
// compiler. Products and sums are the import's own, in the same order and rounding.

#include "payload/record.hpp"
#include "payload/rounding.hpp"

namespace marlune::tables {

// Entry i belongs to the age start_age + i.
using Numbers = Bounded<Number, 201>;

constexpr Numbers numbers_of(Literals literals) {
  return Numbers(literals.data(), literals.size());
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
