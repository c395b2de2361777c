#include "payload/context.hpp"

#include <utility>

namespace marlune::tables {

namespace {

// Never destroyed: when the process ends, the interpreter is gone before the C++ statics are.
union Live {
  constexpr Live() : context() {}
  Live(const Live &) = delete;
  Live(Live &&) = delete;
  Live &operator=(const Live &) = delete;
  Live &operator=(Live &&) = delete;
  constexpr ~Live() {}

  std::shared_ptr<const Context> context;
};

constinit Live live;

} // namespace

std::shared_ptr<const Context> live_context() { return live.context; }

std::shared_ptr<const Context> exchange_live_context(std::shared_ptr<const Context> context) {
  return std::exchange(live.context, std::move(context));
}

} // namespace marlune::tables
