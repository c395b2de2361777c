#pragma once

// Ownership of interpreter objects. A failed call of the interpreter's API becomes a C++ exception
// here, and becomes a failure of the API again at the module's entry points, nowhere else.

#include <Python.h>

#include <utility>

#if PY_VERSION_HEX < 0x030E0000 || PY_VERSION_HEX >= 0x03100000 || defined(PYPY_VERSION)
#error "data_tables is for CPython 3.14 and 3.15"
#endif
#ifdef Py_GIL_DISABLED
#error "data_tables needs an interpreter with a GIL: this one is free-threaded"
#endif

namespace marlune::tables {

// The interpreter's error indicator is set; says nothing more, because the indicator does.
struct ErrorSet {};

inline void check(int result) {
  if (result < 0) {
    throw ErrorSet{};
  }
}

// One owned reference to an object, or nothing.
class Reference {
public:
  Reference() = default;

  // Takes over a new reference, or throws when the call that should have made it failed.
  static Reference steal(PyObject *object) {
    if (object == nullptr) {
      throw ErrorSet{};
    }
    return Reference(object);
  }
  // The same for a call that may rightly give nothing.
  static Reference steal_if_any(PyObject *object) { return Reference(object); }
  static Reference borrow(PyObject *object) { return Reference(Py_NewRef(object)); }

  Reference(Reference &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Reference &operator=(Reference &&other) noexcept {
    Reference moved(std::move(other));
    std::swap(object_, moved.object_);
    return *this;
  }
  Reference(const Reference &) = delete;
  Reference &operator=(const Reference &) = delete;
  ~Reference() { Py_XDECREF(object_); }

  explicit operator bool() const { return object_ != nullptr; }
  [[nodiscard]] PyObject *get() const { return object_; }
  [[nodiscard]] PyObject *release() { return std::exchange(object_, nullptr); }

private:
  explicit Reference(PyObject *object) : object_(object) {}

  PyObject *object_ = nullptr;
};

inline void set_item(const Reference &dict, PyObject *key, PyObject *value) {
  check(PyDict_SetItem(dict.get(), key, value));
}

} // namespace marlune::tables
