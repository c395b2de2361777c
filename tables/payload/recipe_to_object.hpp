#pragma once

// From recipes to interpreter objects. A flat column is one list; a select mapping, a year grid and
// a duration grid are dicts of lists that differ in their keys alone.

#include "payload/context.hpp"

namespace marlune::tables {

class ObjectMaker {
public:
  explicit ObjectMaker(const Context &context) : context_(context) {}

  // The payload as the module binds it: metadata in its order, then "data".
  [[nodiscard]] Reference payload(Index recipe) const;

  // A list of rates by age. Only the list of a base vector is passed on; every other is new.
  [[nodiscard]] Reference list(Index recipe) const;

private:
  [[nodiscard]] Reference data(const PayloadRecipe &recipe) const;
  [[nodiscard]] Reference column(const ColumnRecipe &recipe) const;
  [[nodiscard]] Reference mapping(const ColumnRecipe &recipe) const;

  [[nodiscard]] Reference literal_list(const ListRecipe &recipe) const;
  [[nodiscard]] Reference capped(const ListRecipe &recipe) const;
  [[nodiscard]] Reference rounded(const ListRecipe &recipe) const;
  [[nodiscard]] Reference proportional(const ListRecipe &recipe) const;

  const Context &context_;
};

} // namespace marlune::tables
