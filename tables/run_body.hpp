#pragma once

#include "state.hpp"

namespace marlune::tables {

// One object for every literal of the module.
LiteralObjects make_literals();

// The lines of body.hpp at which a traceback shows what the exec step does before the body.
struct LinesBeforeBody {
  int short_name;
  int builtins;
};
extern const LinesBeforeBody lines_before_body;

// Binds every attribute of the module in order. `line` is that of the statement at work; after a
// failure, that of the statement that failed.
void run_body(const LiveModule &live, int &line);

} // namespace marlune::tables
