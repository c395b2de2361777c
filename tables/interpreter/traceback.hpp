#pragma once

namespace marlune::tables {

// Adds an entry to the pending exception, so that a traceback names the function of this module in
// which it arose. `line` is a line of the C++ file that holds the function.
void add_traceback(const char *function, int line);

} // namespace marlune::tables
