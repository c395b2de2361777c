#pragma once

#include "interpreter/namespace.hpp"

namespace marlune::tables {

// The builtins that the tables are computed with, as they were when the module was imported: a
// replacement made before the import is honoured, a later one is not seen.
struct Builtins {
  Reference zip;
  Reference round;
  // Whether both are the interpreter's own, so that what they give is known.
  bool are_own = false;

  static Builtins find(const Namespace &names);
};

} // namespace marlune::tables
