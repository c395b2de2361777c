#pragma once

#include "interpreter/reference.hpp"

#include <cstddef>
#include <vector>

namespace marlune::tables {

// Collects the items of a list that is not there before it is full: arithmetic on items may run
// code that looks at every list of the process.
class Items {
public:
  explicit Items(Py_ssize_t expected) { items_.reserve(static_cast<std::size_t>(expected)); }

  void add(Reference item) { items_.push_back(std::move(item)); }

  [[nodiscard]] Reference list() && {
    Reference list = Reference::steal(PyList_New(static_cast<Py_ssize_t>(items_.size())));
    Py_ssize_t index = 0;
    for (Reference &item : items_) {
      PyList_SET_ITEM(list.get(), index, item.release());
      ++index;
    }
    return list;
  }

private:
  std::vector<Reference> items_;
};

// The items of an iterable, one after the other, each held while it is used. A list is walked by
// index, as its iterator does: it may change under the walk.
template <class Action> void for_each_item(PyObject *iterable, Action action) {
  if (PyList_CheckExact(iterable)) {
    for (Py_ssize_t index = 0; index < PyList_GET_SIZE(iterable); ++index) {
      const Reference item = Reference::borrow(PyList_GET_ITEM(iterable, index));
      action(item.get());
    }
    return;
  }
  const Reference iterator = Reference::steal(PyObject_GetIter(iterable));
  while (PyObject *const next = PyIter_Next(iterator.get())) {
    const Reference item = Reference::steal(next);
    action(item.get());
  }
  if (PyErr_Occurred() != nullptr) {
    throw ErrorSet{};
  }
}

} // namespace marlune::tables
