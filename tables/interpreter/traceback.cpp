#include "interpreter/traceback.hpp"

#include "interpreter/reference.hpp"

#include <frameobject.h>

namespace marlune::tables {

namespace {

// Nothing where there is no memory for it.
Reference new_frame(const char *function, int line, PyObject *globals) {
  // A frame that has not run reports the first line of its code as its own.
  PyCodeObject *const code = PyCode_NewEmpty("data_tables", function, line);
  const Reference held_code = Reference::steal_if_any(reinterpret_cast<PyObject *>(code));
  const Reference names =
      globals != nullptr ? Reference::borrow(globals) : Reference::steal_if_any(PyDict_New());
  if (!held_code || !names) {
    return {};
  }
  PyFrameObject *const frame = PyFrame_New(PyThreadState_Get(), code, names.get(), nullptr);
  return Reference::steal_if_any(reinterpret_cast<PyObject *>(frame));
}

} // namespace

void add_traceback(const char *function, int line, PyObject *globals) {
  PyObject *const pending = PyErr_GetRaisedException();
  if (pending == nullptr) {
    return;
  }
  const Reference frame = new_frame(function, line, globals);
  // Without an entry, the exception goes on.
  PyErr_Clear();
  PyErr_SetRaisedException(Py_NewRef(pending));
  if (frame) {
    PyTraceBack_Here(reinterpret_cast<PyFrameObject *>(frame.get()));
  }
  // Where there is no memory for the entry itself, the interpreter has raised that instead.
  PyErr_SetRaisedException(pending);
}

} // namespace marlune::tables
