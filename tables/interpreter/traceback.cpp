#include "interpreter/traceback.hpp"

#include "interpreter/reference.hpp"

#include <frameobject.h>

namespace marlune::tables {

void add_traceback(const char *function, int line) {
  PyObject *const pending = PyErr_GetRaisedException();
  // A frame that has not run reports the first line of its code as its own.
  PyCodeObject *const code = PyCode_NewEmpty("data_tables", function, line);
  PyObject *const globals = PyDict_New();
  PyFrameObject *frame = nullptr;
  if (code != nullptr && globals != nullptr) {
    frame = PyFrame_New(PyThreadState_Get(), code, globals, nullptr);
  }
  // When there is no memory for the entry, the exception goes on without it.
  PyErr_Clear();
  PyErr_SetRaisedException(pending);
  if (frame != nullptr) {
    PyTraceBack_Here(frame);
  }
  Py_XDECREF(frame);
  Py_XDECREF(globals);
  Py_XDECREF(code);
}

} // namespace marlune::tables
