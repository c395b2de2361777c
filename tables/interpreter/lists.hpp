#pragma once

#include "interpreter/reference.hpp"

namespace marlune::tables {

// A list that nobody sees before it is full: arithmetic on items may run code that looks at every
// list of the process, and such code finds only what the collector tracks.
class Items {
public:
  explicit Items(Py_ssize_t expected) : list_(Reference::steal(PyList_New(expected))) {
    PyObject_GC_UnTrack(list_.get());
  }

  void add(Reference item) {
    if (size_ < PyList_GET_SIZE(list_.get())) {
      PyList_SET_ITEM(list_.get(), size_, item.release());
    } else {
      check(PyList_Append(list_.get(), item.get()));
    }
    ++size_;
  }

  [[nodiscard]] Reference list() && {
    if (size_ < PyList_GET_SIZE(list_.get())) {
      check(PyList_SetSlice(list_.get(), size_, PY_SSIZE_T_MAX, nullptr));
    }
    PyObject_GC_Track(list_.get());
    return std::move(list_);
  }

private:
  Reference list_;
  Py_ssize_t size_ = 0;
};

// The next item of an iterator; nothing at its end.
inline Reference next_item(const Reference &iterator) {
  Reference item = Reference::steal_if_any(PyIter_Next(iterator.get()));
  if (!item && PyErr_Occurred() != nullptr) {
    throw ErrorSet{};
  }
  return item;
}

// The items of an iterable, one after the other, each safe for arithmetic with a constant. A list is
// walked by index, as its iterator does: it may change under the walk.
template <class Action> void for_each_item(PyObject *iterable, Action action) {
  if (PyList_CheckExact(iterable)) {
    for (Py_ssize_t index = 0; index < PyList_GET_SIZE(iterable); ++index) {
      const Reference item = Reference::borrow(PyList_GET_ITEM(iterable, index));
      action(item.get());
    }
    return;
  }
  const Reference iterator = Reference::steal(PyObject_GetIter(iterable));
  while (const Reference item = next_item(iterator)) {
    action(item.get());
  }
}

} // namespace marlune::tables
