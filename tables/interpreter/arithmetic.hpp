#pragma once

#include "interpreter/reference.hpp"

#include <cfloat>

// Every rate is the result of operations on doubles, each rounded by itself, and is right to the last
// bit or wrong. A compiler that is told to reckon otherwise is refused.
#if defined(__FAST_MATH__) || defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__)
#error "rates come out different with -ffast-math and what belongs to it: build without"
#endif
// 1 widens floats alone, and there are none.
static_assert(FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1,
              "rates come out different where doubles are computed with in more than their "
              "precision: build for SSE2, not for x87");

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
