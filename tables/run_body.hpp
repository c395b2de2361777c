#pragma once

#include "payload/context.hpp"

namespace marlune::tables {

// Binds every attribute of the module in order. `line` is that of the statement at work; after a
// failure, that of the statement that failed.
void run_body(const Context &context, int &line);

} // namespace marlune::tables
