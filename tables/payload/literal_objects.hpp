#pragma once

#include "interpreter/reference.hpp"
#include "payload/recipes.hpp"

#include <span>
#include <vector>

namespace marlune::tables {

// What the compiler has resolved, as the import reads it.
struct Recipes {
  std::span<const double> floats;
  std::span<const int> ints;
  std::span<const std::string_view> texts;
  std::span<const Index> slots;
  std::span<const ListRecipe> lists;
  std::span<const EntryRecipe> entries;
  std::span<const ColumnRecipe> columns;
  std::span<const FieldRecipe> fields;
  std::span<const PayloadRecipe> payloads;
};

// One interpreter object for every distinct literal of the module, by constant index.
class LiteralObjects {
public:
  LiteralObjects() = default;
  explicit LiteralObjects(const Recipes &recipes);

  [[nodiscard]] PyObject *operator[](Index constant) const { return objects_[constant].get(); }
  [[nodiscard]] std::span<const Reference> all() const { return objects_; }

private:
  std::vector<Reference> objects_;
};

} // namespace marlune::tables
