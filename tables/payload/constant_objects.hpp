#pragma once

#include "interpreter/reference.hpp"
#include "payload/plans.hpp"

#include <span>
#include <vector>

namespace marlune::tables {

// One interpreter object for every constant of the pool, by its index.
class ConstantObjects {
public:
  ConstantObjects() = default;

  // Fills `floats` in, the memory of the float objects.
  //
  // They lie in the module's own memory, nobody allocates them, and they are immortal: what a list
  // holds is an address, without counting. The interpreter makes its small ints, its one-letter texts
  // and its types in the same way, with the same macro, and CPython 3.14 has fixed the layout. What it
  // changes is what sys.getrefcount and tracemalloc tell. That the objects outlive the interpreter
  // does no harm: no second one gets the module.
  ConstantObjects(const Plans &plans, std::span<PyFloatObject> floats);

  [[nodiscard]] PyObject *operator[](Index index) const {
    return index < constant::first_float ? objects_[index].get() : float_object(index);
  }
  // Of a constant that is a float.
  [[nodiscard]] PyObject *float_object(Index index) const {
    return reinterpret_cast<PyObject *>(&floats_[index - constant::first_float]);
  }

private:
  std::vector<Reference> objects_; // None, False, True, ints and texts
  std::span<PyFloatObject> floats_;
};

} // namespace marlune::tables
