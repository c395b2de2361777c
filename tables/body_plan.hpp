#pragma once

// The plan of the body and of all that it holds, which the compiler leaves to the import:
// body_plan.cpp, the only file compiled that reads descriptions.

#include "binding.hpp"
#include "payload/plans.hpp"

namespace marlune::tables {

// What a binding binds, in terms of constants and plans.
struct BindingPlan {
  Binding::Kind kind = Binding::Kind::empty_dict;
  Index name = 0;   // constant
  Index plan = 0;   // of a table its payload plan, of a base vector its list plan
  Index callee = 0; // constant
  PyMethodDef *function = nullptr;
  int line = 0;
};

struct BodyPlan {
  Plans plans;
  std::span<PyFloatObject> floats; // the memory of the float objects, for the import to fill in
  std::span<const BindingPlan> bindings;
  std::span<const Index> inventory; // constants: the names of the tables
  Index module_name;                // constant: what the functions have as __module__
  // The lines at which a traceback shows what the exec step does before the body.
  int short_name_line;
  int builtins_line;
};

extern const BodyPlan body_plan;

} // namespace marlune::tables
