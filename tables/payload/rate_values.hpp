#pragma once

// The values of a list, from its description: the one place where a rule of rates stands for the
// compiler. Products and sums are those of the interpreter, in the same order and rounding: where
// others have changed what a rule starts from, the import follows it by the interpreter's arithmetic
// (payload/object_maker.cpp), and comes to the same bits where they have not.

#include "payload/ieee754.hpp"
#include "payload/record.hpp"
#include "payload/rounding.hpp"

namespace marlune::tables {

// Entry i belongs to the age start_age + i.
using RateValues = Bounded<Number, 201>;

constexpr RateValues values_of(Literals literals) { return {literals.data(), literals.size()}; }

constexpr RateValues values_of(const Rates &rates) {
  RateValues values;
  switch (rates.origin) {
  case Rates::Origin::literal:
    return values_of(rates.literals);
  case Rates::Origin::shared:
    return values_of(rates.base->rates);
  case Rates::Origin::levels:
    for (const Level &level : rates.levels) {
      if (level.ages <= 0) {
        throw "a level of rates covers no age";
      }
      for (int age = 0; age < level.ages; ++age) {
        values.push_back(level.rate);
      }
    }
    return values;
  case Rates::Origin::scaled_below_certain:
    for (const Number &rate : rates.base->rates) {
      values.push_back(rate.value < 1.0 ? rate.value * rates.factor : 1.0);
    }
    return values;
  case Rates::Origin::rounded:
    for (const Number &rate : rates.base->rates) {
      values.push_back(rounded_rate(rate.value * rates.factor));
    }
    return values;
  case Rates::Origin::proportional:
    for (const Number &rate : rates.base->rates.first(rates.base->rates.size() - 1)) {
      values.push_back(rate.value * rates.factor);
    }
    values.push_back(0.0);
    return values;
  }
  throw "an origin of rates that the enumeration does not have";
}

} // namespace marlune::tables
