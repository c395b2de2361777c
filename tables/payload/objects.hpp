#pragma once

// From recipes to interpreter objects. A flat column is one list; a select mapping, a year grid and
// a duration grid are dicts of lists that differ in their keys alone.

#include "payload/recipes.hpp"
#include "state.hpp"

namespace marlune::tables {

class ObjectMaker {
public:
  ObjectMaker(const Recipes &recipes, const LiveModule &live) : recipes_(recipes), live_(live) {}

  // The payload as the module binds it: metadata in its order, then "data".
  [[nodiscard]] Reference payload(const PayloadRecipe &recipe) const;

  // A list of rates by age. Only the list of a base vector is passed on; every other is new.
  [[nodiscard]] Reference rates(const ListRecipe &recipe) const;

private:
  [[nodiscard]] Reference data(const PayloadRecipe &recipe) const;
  [[nodiscard]] Reference column(const ColumnRecipe &recipe) const;
  [[nodiscard]] Reference mapping(const ColumnRecipe &recipe) const;

  [[nodiscard]] Reference literal_list(const ListRecipe &recipe) const;
  [[nodiscard]] Reference levels(const ListRecipe &recipe) const;
  [[nodiscard]] Reference capped(const ListRecipe &recipe) const;
  [[nodiscard]] Reference rounded(const ListRecipe &recipe) const;
  [[nodiscard]] Reference proportional(const ListRecipe &recipe) const;

  const Recipes &recipes_;
  const LiveModule &live_;
};

} // namespace marlune::tables
