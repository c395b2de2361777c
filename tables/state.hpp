#pragma once

#include "interpreter/builtins.hpp"
#include "interpreter/namespace.hpp"
#include "payload/literal_objects.hpp"

#include <memory>

namespace marlune::tables {

// What the module has while it is alive: from before the first statement of its body, and after a
// successful import for ever. A failed import gives it up; a function that still runs then keeps its
// share.
struct LiveModule {
  Namespace names;
  LiteralObjects literals;
  Builtins builtins;
};

// The live module, for the functions of the module; null when there is none, because its import has
// failed or is not that far.
std::shared_ptr<const LiveModule> live_module();

} // namespace marlune::tables
