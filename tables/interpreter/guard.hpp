#pragma once

// The border between C++ and the interpreter: what leaves here is a result or a pending exception.

#include "interpreter/reference.hpp"
#include "interpreter/traceback.hpp"

#include <exception>
#include <new>

namespace marlune::tables {

// Runs `action`; false when it failed, with the interpreter's exception pending. What was never
// meant to be thrown stops here, too: the process is not the module's own.
template <class Action> bool try_call(Action action) {
  try {
    action();
    return true;
  } catch (const ErrorSet &) {
    return false;
  } catch (const std::bad_alloc &) {
    PyErr_NoMemory();
  } catch (const std::exception &error) {
    PyErr_Format(PyExc_SystemError, "data_tables has failed within itself: %s", error.what());
  } catch (const char *sentence) {
    PyErr_Format(PyExc_SystemError, "data_tables has failed within itself: %s", sentence);
  } catch (...) {
    PyErr_SetString(PyExc_SystemError, "data_tables has failed within itself");
  }
  return false;
}

// The body of a function of the module: its result, or NULL and an exception that names the
// function.
template <class Action>
PyObject *guarded(const char *function, int line, PyObject *globals, Action action) {
  Reference result;
  if (try_call([&] { result = action(); })) {
    return result.release();
  }
  add_traceback(function, line, globals);
  return nullptr;
}

} // namespace marlune::tables
