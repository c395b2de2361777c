#pragma once

// One binding of the module body: an attribute and what it holds.

#include "payload/invariants.hpp"

#include <Python.h>

#include <source_location>

namespace marlune::tables {

struct Binding {
  enum class Kind : std::uint8_t { table, base_vector, function, call, inventory, empty_dict };

  Kind kind;
  std::string_view name;
  std::source_location place; // in the list of bindings
  const Payload *payload = nullptr;
  const BaseVector *base_vector = nullptr;
  PyMethodDef *function = nullptr;
  std::string_view callee{}; // of a call: the attribute that holds the function
};

// Tables and base vectors are proved where they are bound: what is not proved cannot be bound.
consteval Binding table(const Payload &payload,
                        std::source_location place = std::source_location::current()) {
  invariants::require(proof_of(payload).holds(), "the body binds a table that is not proved");
  return {Binding::Kind::table, payload.attribute, place, &payload};
}
consteval Binding base_vector(const BaseVector &vector,
                              std::source_location place = std::source_location::current()) {
  invariants::require(proof_of(vector).holds(), "the body binds a base vector that is not proved");
  return {Binding::Kind::base_vector, vector.name, place, nullptr, &vector};
}
consteval Binding function(std::string_view name, PyMethodDef &function,
                           std::source_location place = std::source_location::current()) {
  return {Binding::Kind::function, name, place, nullptr, nullptr, &function};
}
consteval Binding call(std::string_view name, std::string_view callee,
                       std::source_location place = std::source_location::current()) {
  return {Binding::Kind::call, name, place, nullptr, nullptr, nullptr, callee};
}
consteval Binding inventory(std::string_view name,
                            std::source_location place = std::source_location::current()) {
  return {Binding::Kind::inventory, name, place};
}
consteval Binding empty_dict(std::string_view name,
                             std::source_location place = std::source_location::current()) {
  return {Binding::Kind::empty_dict, name, place};
}

} // namespace marlune::tables
