#pragma once

#include "payload/context.hpp"

namespace marlune::tables {

// Binds every attribute of the module in order. `line` is that of the binding at work; after a
// failure, that of the binding that failed.
void run_body(const Context &context, int &line);

} // namespace marlune::tables
