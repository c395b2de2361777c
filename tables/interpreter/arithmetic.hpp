#pragma once

// The interpreter's number protocol.

#include "interpreter/reference.hpp"

namespace marlune::tables {

inline Reference difference(PyObject *left, PyObject *right) {
  return Reference::steal(PyNumber_Subtract(left, right));
}

inline Reference product(PyObject *left, PyObject *right) {
  return Reference::steal(PyNumber_Multiply(left, right));
}

inline Reference sum(PyObject *left, PyObject *right) {
  return Reference::steal(PyNumber_Add(left, right));
}

inline bool less(PyObject *left, PyObject *right) {
  const Reference result = Reference::steal(PyObject_RichCompare(left, right, Py_LT));
  const int is_less = PyObject_IsTrue(result.get());
  check(is_less);
  return is_less != 0;
}

} // namespace marlune::tables
