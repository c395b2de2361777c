#pragma once

#include "interpreter/reference.hpp"
#include "payload/recipes.hpp"

#include <vector>

namespace marlune::tables {

// One interpreter object for every distinct literal of the module, by constant index.
class LiteralObjects {
public:
  LiteralObjects() = default;
  explicit LiteralObjects(const Recipes &recipes);

  [[nodiscard]] PyObject *operator[](Index index) const {
    return index < constant::first_float ? objects_[index].get()
                                         : floats_[index - constant::first_float].get();
  }

private:
  std::vector<Reference> objects_; // None, False, True, ints and texts
  std::vector<Reference> floats_;
};

} // namespace marlune::tables
