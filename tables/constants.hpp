#pragma once

// All that the module holds, resolved at compile time: the constants, the recipes of its tables,
// and the statements of its body in terms of both.

#include "body.hpp"
#include "dav2004r/columns.hpp"
#include "payload/literal_objects.hpp"
#include "payload/recipes.hpp"
#include "repository.hpp"

#include <iterator>

namespace marlune::tables {

namespace detail {

// The texts and numbers that the DAV functions use beside the columns.
constexpr void collect_dav2004r(Cookbook &cookbook) {
  for (const std::string_view text : {"Agg_1o", "Agg_2o", "SelUlt_1o", "SelUlt_2o", "qx_m", "qx_f",
                                      "MI_m", "MI_f", "ult", "_dav_mi_linear", "data_tables"}) {
    cookbook.constants.add(text);
  }
  for (const auto &factors : {dav2004r::select_factors_m, dav2004r::select_factors_f}) {
    cookbook.constants.add(factors.duration_1);
    cookbook.constants.add(factors.durations_2_to_5);
  }
  for (int duration = 1; duration <= dav2004r::select_period; ++duration) {
    cookbook.constants.add(duration);
  }
  for (const Literals column : dav2004r::columns) {
    cookbook.collect(column);
  }
}

constexpr void collect(Cookbook &cookbook, const Statement &statement) {
  cookbook.constants.add(statement.name);
  switch (statement.kind) {
  case Statement::Kind::table:
    cookbook.collect(*statement.payload);
    break;
  case Statement::Kind::base_vector:
    cookbook.collect(statement.base_vector->rates);
    break;
  case Statement::Kind::call:
    cookbook.constants.add(statement.callee);
    collect_dav2004r(cookbook);
    break;
  case Statement::Kind::function:
  case Statement::Kind::repository:
  case Statement::Kind::empty_dict:
    break;
  }
}

constexpr Cookbook resolve_body() {
  Cookbook cookbook;
  // First and without a gap, so that the blending can count through them.
  for (int year = dav2004r::first_year; year <= dav2004r::last_year; ++year) {
    cookbook.constants.add(year);
  }
  for (const Statement &statement : body) {
    collect(cookbook, statement);
  }
  for (const Statement &statement : body) {
    if (statement.kind == Statement::Kind::table) {
      cookbook.resolve(*statement.payload);
    }
    if (statement.kind == Statement::Kind::base_vector) {
      cookbook.resolve(statement.base_vector->rates);
    }
  }
  for (const Literals column : dav2004r::columns) {
    cookbook.resolve(column);
  }
  return cookbook;
}

inline constexpr Cookbook cookbook = resolve_body();

inline constexpr auto floats =
    cut_to_length<cookbook.constants.floats.size()>(cookbook.constants.floats);
inline constexpr auto ints = cut_to_length<cookbook.constants.ints.size()>(cookbook.constants.ints);
inline constexpr auto texts =
    cut_to_length<cookbook.constants.texts.size()>(cookbook.constants.texts);
inline constexpr auto slots = cut_to_length<cookbook.slots.size()>(cookbook.slots);
inline constexpr auto lists = cut_to_length<cookbook.lists.size()>(cookbook.lists);
inline constexpr auto entries = cut_to_length<cookbook.entries.size()>(cookbook.entries);
inline constexpr auto columns = cut_to_length<cookbook.columns.size()>(cookbook.columns);
inline constexpr auto fields = cut_to_length<cookbook.fields.size()>(cookbook.fields);
inline constexpr auto payloads = cut_to_length<cookbook.payloads.size()>(cookbook.payloads);

} // namespace detail

inline constexpr Recipes module_recipes{detail::floats,  detail::ints,   detail::texts,
                                        detail::slots,   detail::lists,  detail::entries,
                                        detail::columns, detail::fields, detail::payloads};

// The index of a constant that some description holds; does not compile for any other.
consteval Index constant(std::string_view text) { return detail::cookbook.constants.of(text); }
consteval Index constant(int value) { return detail::cookbook.constants.of(value); }
consteval Index constant(double value) { return detail::cookbook.constants.of(value); }

// The list recipe of a literal column.
consteval Index page(Literals literals) { return detail::cookbook.list_of(literals).value(); }

// A statement of the body as the import runs it.
struct Step {
  Statement::Kind kind = Statement::Kind::empty_dict;
  Index name = 0;   // constant
  Index recipe = 0; // of a table its payload recipe, of a base vector its list recipe
  Index callee = 0; // constant
  PyMethodDef *function = nullptr;
  int line = 0;
};

inline constexpr auto body_steps = [] {
  std::array<Step, std::size(body)> steps{};
  Index payloads = 0;
  for (std::size_t index = 0; index < steps.size(); ++index) {
    const Statement &statement = body[index];
    Step &step = steps[index];
    step.kind = statement.kind;
    step.name = detail::cookbook.constants.of(statement.name);
    step.line = statement.line;
    step.function = statement.function;
    if (statement.kind == Statement::Kind::table) {
      step.recipe = payloads;
      ++payloads;
    }
    if (statement.kind == Statement::Kind::base_vector) {
      step.recipe = detail::cookbook.list_of(statement.base_vector->rates).value();
    }
    if (statement.kind == Statement::Kind::call) {
      step.callee = detail::cookbook.constants.of(statement.callee);
    }
  }
  return steps;
}();

inline constexpr auto repository_constants = [] {
  std::array<Index, std::size(repository_names)> constants{};
  for (std::size_t index = 0; index < constants.size(); ++index) {
    constants[index] = detail::cookbook.constants.of(repository_names[index]);
  }
  return constants;
}();
static_assert(repository_constants.size() == module_recipes.payloads.size(),
              "the inventory does not list as many tables as the body binds");

} // namespace marlune::tables
