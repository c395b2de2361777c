#pragma once

#include "state.hpp"

namespace marlune::tables {

// One object for every literal of the module.
LiteralObjects make_literals();

// Binds every attribute of the module in order. `line` is that of the statement at work; after a
// failure, that of the statement that failed.
void run_body(const LiveModule &live, int &line);

} // namespace marlune::tables
