#pragma once

#include "interpreter/reference.hpp"

namespace marlune::tables {

// The names that code of the module sees: the module's own, then the builtins.
class Namespace {
public:
  Namespace() = default;
  Namespace(Reference dict, Reference builtins)
      : dict_(std::move(dict)), builtins_(std::move(builtins)) {}

  // The object bound to the name at this moment; NameError when there is none.
  [[nodiscard]] Reference find(PyObject *name) const;

  // The same among the builtins alone.
  [[nodiscard]] Reference find_builtin(PyObject *name) const;

  void bind(PyObject *name, const Reference &value) const { set_item(dict_, name, value.get()); }

  [[nodiscard]] PyObject *dict() const { return dict_.get(); }
  [[nodiscard]] PyObject *builtins() const { return builtins_.get(); }

private:
  Reference dict_;
  Reference builtins_;
};

} // namespace marlune::tables
