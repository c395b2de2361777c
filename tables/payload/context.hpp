#pragma once

#include "interpreter/builtins.hpp"
#include "interpreter/namespace.hpp"
#include "payload/constant_objects.hpp"

#include <memory>

namespace marlune::tables {

// What objects are made from: the plans, one object for every constant of theirs, and the names and
// builtins that they find at import. The module has it from before the first binding of its body,
// and after a successful import for ever. A failed import gives it up; a function that still runs
// then keeps its share.
struct Context {
  const Plans &plans;
  Namespace names{};
  ConstantObjects constants{};
  Builtins builtins{};
};

// The context of the live module, for its functions; null when there is none, because its import has
// failed or is not that far.
std::shared_ptr<const Context> live_context();

// Puts another in its place and returns the one before, which the caller lets go.
std::shared_ptr<const Context> exchange_live_context(std::shared_ptr<const Context> context);

} // namespace marlune::tables
