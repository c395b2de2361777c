#pragma once

// The body and all that it holds, as the compiler leaves them to the import: resolved_body.cpp, the
// only file compiled that reads descriptions.

#include "payload/recipes.hpp"
#include "statement.hpp"

namespace marlune::tables {

// A statement of the body in terms of constants and recipes.
struct Step {
  Statement::Kind kind = Statement::Kind::empty_dict;
  Index name = 0;   // constant
  Index recipe = 0; // of a table its payload recipe, of a base vector its list recipe
  Index callee = 0; // constant
  PyMethodDef *function = nullptr;
  int line = 0;
};

struct ResolvedBody {
  Recipes recipes;
  std::span<PyFloatObject> floats; // the memory of the float objects, for the import to fill in
  std::span<const Step> steps;
  std::span<const Index> inventory; // constants: the names of the tables
  Index module_name;                // constant: what the functions have as __module__
  // The lines at which a traceback shows what the exec step does before the body.
  int short_name_line;
  int builtins_line;
};

extern const ResolvedBody resolved_body;

} // namespace marlune::tables
