#pragma once

// The border between C++ and the interpreter: what leaves here is a result or a pending exception.

#include "interpreter/reference.hpp"
#include "interpreter/traceback.hpp"

#include <new>

namespace marlune::tables {

// Runs `action`; false when it failed, with the interpreter's exception pending.
template <class Action> bool succeeds(Action action) {
  try {
    action();
    return true;
  } catch (const ErrorSet &) {
    return false;
  } catch (const std::bad_alloc &) {
    PyErr_NoMemory();
    return false;
  }
}

// The body of a function of the module: its result, or NULL and an exception that names the
// function.
template <class Action> PyObject *guarded(const char *function, int line, Action action) {
  Reference result;
  if (succeeds([&] { result = action(); })) {
    return result.release();
  }
  add_traceback(function, line);
  return nullptr;
}

} // namespace marlune::tables
