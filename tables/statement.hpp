#pragma once

// What a statement of the module body is. It binds one attribute.

#include "payload/invariants.hpp"

#include <Python.h>

#include <source_location>

namespace marlune::tables {

struct Statement {
  enum class Kind : std::uint8_t { table, base_vector, function, call, inventory, empty_dict };

  Kind kind;
  std::string_view name;
  std::source_location place; // in the list of statements
  const Payload *payload = nullptr;
  const BaseVector *base_vector = nullptr;
  PyMethodDef *function = nullptr;
  std::string_view callee{}; // of a call: the attribute that holds the function
};

// Tables and base vectors are proved where they are bound, so that none is bound that nobody has
// proved.
consteval Statement table(const Payload &payload,
                          std::source_location place = std::source_location::current()) {
  invariants::require(proved(payload), "the body binds a table that is not proved");
  return {Statement::Kind::table, payload.attribute, place, &payload};
}
consteval Statement base_vector(const BaseVector &vector,
                                std::source_location place = std::source_location::current()) {
  invariants::require(proved(vector), "the body binds a base vector that is not proved");
  return {Statement::Kind::base_vector, vector.name, place, nullptr, &vector};
}
consteval Statement function(std::string_view name, PyMethodDef &function,
                             std::source_location place = std::source_location::current()) {
  return {Statement::Kind::function, name, place, nullptr, nullptr, &function};
}
consteval Statement call(std::string_view name, std::string_view callee,
                         std::source_location place = std::source_location::current()) {
  return {Statement::Kind::call, name, place, nullptr, nullptr, nullptr, callee};
}
consteval Statement inventory(std::string_view name,
                              std::source_location place = std::source_location::current()) {
  return {Statement::Kind::inventory, name, place};
}
consteval Statement empty_dict(std::string_view name,
                               std::source_location place = std::source_location::current()) {
  return {Statement::Kind::empty_dict, name, place};
}

} // namespace marlune::tables
