#include "dav2004r/arguments.hpp"

#include "interpreter/reference.hpp"

#include <algorithm>
#include <utility>

namespace marlune::tables::dav2004r {

namespace {

constexpr std::array<const char *, 2> names{"mi_start", "mi_ziel"};
using Values = std::array<PyObject *, names.size()>;

[[noreturn]] void refuse_count(Py_ssize_t given) {
  PyErr_Format(PyExc_TypeError, "_dav_mi_linear() takes exactly 2 positional arguments (%zd given)",
               given);
  throw ErrorSet{};
}

void take_keyword(Values &values, PyObject *keyword, PyObject *value) {
  for (std::size_t index = 0; index < names.size(); ++index) {
    if (PyUnicode_EqualToUTF8(keyword, names[index]) == 0) {
      continue;
    }
    if (values[index] != nullptr) {
      PyErr_Format(PyExc_TypeError,
                   "_dav_mi_linear() got multiple values for keyword argument '%U'", keyword);
      throw ErrorSet{};
    }
    values[index] = value;
    return;
  }
  PyErr_Format(PyExc_TypeError, "_dav_mi_linear() got an unexpected keyword argument '%U'",
               keyword);
  throw ErrorSet{};
}

// A subclass may override what a walk over a list relies on.
void add_subclass_note() {
  const Reference error = Reference::steal(PyErr_GetRaisedException());
  const Reference added = Reference::steal(PyObject_CallMethod(
      error.get(), "add_note", "s", "Subclasses of built-in types are deliberately rejected."));
  PyErr_SetRaisedException(Py_NewRef(error.get()));
}

void require_list(const char *name, PyObject *value) {
  if (PyList_CheckExact(value)) {
    return;
  }
  PyErr_Format(PyExc_TypeError, "Argument '%s' has incorrect type (expected list, got %.200s)",
               name, Py_TYPE(value)->tp_name);
  if (PyList_Check(value)) {
    add_subclass_note();
  }
  throw ErrorSet{};
}

} // namespace

TrendArguments trend_arguments(PyObject *const *values, Py_ssize_t count, PyObject *keywords) {
  if (std::cmp_greater(count, names.size())) {
    refuse_count(count);
  }
  Values found{};
  std::copy(values, values + count, found.begin());
  const Py_ssize_t named = keywords == nullptr ? 0 : PyTuple_GET_SIZE(keywords);
  for (Py_ssize_t index = 0; index < named; ++index) {
    take_keyword(found, PyTuple_GET_ITEM(keywords, index), values[count + index]);
  }
  for (std::size_t index = 0; index < found.size(); ++index) {
    if (found[index] == nullptr) {
      refuse_count(static_cast<Py_ssize_t>(index));
    }
  }
  for (std::size_t index = 0; index < found.size(); ++index) {
    require_list(names[index], found[index]);
  }
  return {.start = found[0], .target = found[1]};
}

} // namespace marlune::tables::dav2004r
