#pragma once

#include "interpreter/builtins.hpp"
#include "interpreter/namespace.hpp"
#include "payload/literal_objects.hpp"

#include <memory>

namespace marlune::tables {

// What the module has while it is alive: from the start of its exec step, and after a successful
// import for ever. A failed import gives it up; a function that still runs then keeps its share.
struct LiveModule {
  Reference module;
  Namespace names;
  LiteralObjects literals;
  Builtins builtins;
};

// The live module, for the functions of the module; RuntimeError when its import has failed.
std::shared_ptr<const LiveModule> live_module();

} // namespace marlune::tables
