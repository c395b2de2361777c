#pragma once

#include "interpreter/reference.hpp"

namespace marlune::tables {

inline bool both_exact_floats(PyObject *left, PyObject *right) {
  return PyFloat_CheckExact(left) && PyFloat_CheckExact(right);
}

// left × right by the interpreter's number protocol; for exact floats that is the product of
// doubles.
inline Reference product(PyObject *left, PyObject *right) {
  if (both_exact_floats(left, right)) {
    return Reference::steal(PyFloat_FromDouble(PyFloat_AS_DOUBLE(left) * PyFloat_AS_DOUBLE(right)));
  }
  return Reference::steal(PyNumber_Multiply(left, right));
}

// Whether left < right, likewise.
inline bool less(PyObject *left, PyObject *right) {
  if (both_exact_floats(left, right)) {
    return PyFloat_AS_DOUBLE(left) < PyFloat_AS_DOUBLE(right);
  }
  const Reference result = Reference::steal(PyObject_RichCompare(left, right, Py_LT));
  const int is_less = PyObject_IsTrue(result.get());
  check(is_less);
  return is_less != 0;
}

} // namespace marlune::tables
