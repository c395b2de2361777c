#pragma once

#include <Python.h>

#include <array>

namespace marlune::tables::dav2004r {

// The two arguments of `_dav_mi_linear`, borrowed from the caller and proved to be lists.
struct TrendArguments {
  PyObject *start;
  PyObject *target;
};

// Reads a call in the interpreter's fast convention: `count` values by position, then the values of
// `keywords` (NULL or a tuple of names). Throws with TypeError pending.
TrendArguments trend_arguments(PyObject *const *values, Py_ssize_t count, PyObject *keywords);

} // namespace marlune::tables::dav2004r
