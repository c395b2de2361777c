#include "interpreter/namespace.hpp"

namespace marlune::tables {

Reference Namespace::find(PyObject *name) const {
  PyObject *found = nullptr;
  check(PyDict_GetItemRef(dict_.get(), name, &found));
  return found != nullptr ? Reference::steal(found) : find_builtin(name);
}

Reference Namespace::find_builtin(PyObject *name) const {
  PyObject *found = nullptr;
  check(PyObject_GetOptionalAttr(builtins_.get(), name, &found));
  if (found == nullptr) {
    PyErr_Format(PyExc_NameError, "name '%U' is not defined", name);
  }
  return Reference::steal(found);
}

} // namespace marlune::tables
