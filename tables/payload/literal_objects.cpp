#include "payload/literal_objects.hpp"

#include <algorithm>

namespace marlune::tables {

namespace {

bool is_identifier_like(std::string_view text) {
  return std::ranges::all_of(text, [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= '0' && letter <= '9') || letter == '_';
  });
}

Reference text_object(std::string_view text) {
  PyObject *object = PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size()));
  if (object != nullptr && is_identifier_like(text)) {
    PyUnicode_InternInPlace(&object);
  }
  Reference owned = Reference::steal(object);
  // Hashed once, so that nobody pays for a first look-up later.
  check(PyObject_Hash(object) == -1 ? -1 : 0);
  return owned;
}

} // namespace

LiteralObjects::LiteralObjects(const Recipes &recipes) {
  objects_.reserve(constant::first_text + recipes.texts.size());
  for (PyObject *const singleton : {Py_None, Py_False, Py_True}) {
    objects_.push_back(Reference::borrow(singleton));
  }
  for (const int value : recipes.ints) {
    objects_.push_back(Reference::steal(PyLong_FromLong(value)));
  }
  objects_.resize(constant::first_text);
  for (const std::string_view text : recipes.texts) {
    objects_.push_back(text_object(text));
  }
  floats_.reserve(recipes.floats.size());
  for (const double value : recipes.floats) {
    floats_.push_back(Reference::steal(PyFloat_FromDouble(value)));
  }
}

} // namespace marlune::tables
