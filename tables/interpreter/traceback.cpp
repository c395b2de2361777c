#include "interpreter/traceback.hpp"

#include "interpreter/reference.hpp"

#include <frameobject.h>

namespace marlune::tables {

void add_traceback(const char *function, int line, PyObject *globals) {
  PyObject *const pending = PyErr_GetRaisedException();
  if (pending == nullptr) {
    return;
  }
  // A frame that has not run reports the first line of its code as its own.
  PyCodeObject *const code = PyCode_NewEmpty("data_tables", function, line);
  PyObject *const names = globals != nullptr ? Py_NewRef(globals) : PyDict_New();
  PyFrameObject *frame = nullptr;
  if (code != nullptr && names != nullptr) {
    frame = PyFrame_New(PyThreadState_Get(), code, names, nullptr);
  }
  // When there is no memory for the entry, the exception goes on without it.
  PyErr_Clear();
  PyErr_SetRaisedException(pending);
  if (frame != nullptr) {
    PyTraceBack_Here(frame);
  }
  Py_XDECREF(frame);
  Py_XDECREF(names);
  Py_XDECREF(code);
}

} // namespace marlune::tables
