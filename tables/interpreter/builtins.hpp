#pragma once

#include "interpreter/namespace.hpp"

namespace marlune::tables {

// The builtins that the tables are computed with, as they were when the module was imported: a
// replacement made before the import is honoured, a later one is not seen.
struct Builtins {
  Reference zip;
  Reference round;
  // Whether these are the interpreter's own. If so, exact floats and lists may take a shorter way
  // that gives the same bits.
  bool own_zip = false;
  bool own_round = false;

  static Builtins find(const Namespace &names);
};

} // namespace marlune::tables
