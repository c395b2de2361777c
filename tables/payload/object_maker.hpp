#pragma once

// From plans to interpreter objects. A flat column is one list; a select mapping, a year grid and
// a duration grid are dicts of lists that differ in their keys alone.

#include "payload/context.hpp"

namespace marlune::tables {

// By the index of a plan.
class ObjectMaker {
public:
  explicit ObjectMaker(const Context &context) : context_(context) {}

  // The payload as the module binds it: metadata in its order, then "data".
  [[nodiscard]] Reference payload(Index index) const;

  // A list of rates by age. Only the list of a base vector is passed on; every other is new.
  [[nodiscard]] Reference list(Index index) const;

  // Whether the list still is what the compiler computed from: the very objects of that plan, with
  // the interpreter's own builtins. Then what it computed is what the rule would give now.
  [[nodiscard]] bool is_unchanged(PyObject *list, Index index) const;

private:
  [[nodiscard]] Reference data(const PayloadPlan &plan) const;
  [[nodiscard]] Reference column(const ColumnPlan &plan) const;
  [[nodiscard]] Reference mapping(const ColumnPlan &plan) const;

  [[nodiscard]] bool is_unchanged(PyObject *list, Index first, Index length) const;
  [[nodiscard]] Reference constant_list(const ListPlan &plan) const;
  [[nodiscard]] Reference computed_list(const ListPlan &plan, const Reference &base) const;

  const Context &context_;
};

} // namespace marlune::tables
