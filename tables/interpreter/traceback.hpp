#pragma once

#include <Python.h>

namespace marlune::tables {

// Adds an entry to the pending exception, so that a traceback names the function of this module in
// which it arose; where none is pending, there is nothing to add to. `line` is a line of the C++ file
// that holds the function. `globals` is the dict of the module, by which others tell whose frame it
// is; NULL when there is no module.
void add_traceback(const char *function, int line, PyObject *globals);

} // namespace marlune::tables
