#pragma once

// The body and all that it holds, resolved by the compiler: names and rates to indices of the plan.

#include "body.hpp"
#include "body_plan.hpp"
#include "dav2004r/resolve_operands.hpp"
#include "inventory.hpp"
#include "payload/plan_builder.hpp"

#include <algorithm>
#include <array>
#include <iterator>

namespace marlune::tables {

inline constexpr auto bound_names = [] {
  Bounded<std::string_view, std::size(body)> bound;
  for (const Binding &binding : body) {
    if (binding.kind == Binding::Kind::table) {
      bound.push_back(binding.name);
    }
  }
  return bound;
}();
inline constexpr Lists tables_listed{inventory_names, {bound_names.begin(), bound_names.end()}};
static_assert(proved<tables_listed>());

struct ResolvedBody {
  PlanBuilder builder;
  dav2004r::Operands operands{};
  std::array<BindingPlan, std::size(body)> bindings{};
  std::array<Index, std::size(inventory_names)> inventory{};
  Index module_name = 0;
};

constexpr BindingPlan resolve(const Binding &binding, PlanBuilder &builder) {
  BindingPlan resolved{.kind = binding.kind,
                       .name = builder.constants.add(binding.name),
                       .function = binding.function,
                       .line = static_cast<int>(binding.place.line())};
  switch (binding.kind) {
  case Binding::Kind::table:
    resolved.plan = builder.add(*binding.payload);
    break;
  case Binding::Kind::base_vector:
    resolved.plan = builder.add(literal(binding.base_vector->rates));
    break;
  case Binding::Kind::call:
    resolved.callee = builder.constants.add(binding.callee);
    break;
  case Binding::Kind::function:
  case Binding::Kind::inventory:
  case Binding::Kind::empty_dict:
    break;
  }
  return resolved;
}

constexpr ResolvedBody resolve_body() {
  ResolvedBody result;
  PlanBuilder &builder = result.builder;
  // First, because its years have to follow each other.
  result.operands = dav2004r::resolve_operands(builder);
  std::ranges::transform(body, result.bindings.begin(),
                         [&](const Binding &binding) { return resolve(binding, builder); });
  std::ranges::transform(inventory_names, result.inventory.begin(),
                         [&](std::string_view name) { return builder.constants.add(name); });
  result.module_name = builder.constants.add("data_tables");
  return result;
}

} // namespace marlune::tables
