#include "payload/constant_objects.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace marlune::tables {

namespace {

Reference text_object(const TextPlan &plan, const char *bytes) {
  const Py_ssize_t length = plan.length;
  PyObject *text = plan.charset == TextPlan::Charset::other
                       ? PyUnicode_FromStringAndSize(bytes, length)
                       : PyUnicode_FromKindAndData(PyUnicode_1BYTE_KIND, bytes, length);
  if (text != nullptr && plan.charset == TextPlan::Charset::identifier) {
    PyUnicode_InternInPlace(&text);
  }
  Reference owned = Reference::steal(text);
  // Hashed once, so that nobody pays for a first look-up later.
  check(PyObject_Hash(text) == -1 ? -1 : 0);
  return owned;
}

// The compiler has laid the float objects out for the interpreter of its headers.
void require_known_layout() {
  if (std::cmp_not_equal(PyFloat_Type.tp_basicsize, sizeof(PyFloatObject))) {
    PyErr_SetString(PyExc_ImportError, "data_tables has been built for an interpreter whose floats "
                                       "are laid out in another way");
    throw ErrorSet{};
  }
}

// Asks the kernel for the pages at once, which takes less time than one by one as they are first
// written to. Where it does not know how, they come one by one.
void populate([[maybe_unused]] std::span<PyFloatObject> floats) {
#ifdef MADV_POPULATE_WRITE
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  auto *const begin = reinterpret_cast<std::byte *>(floats.data());
  const std::size_t before = reinterpret_cast<std::uintptr_t>(begin) % page;
  const std::size_t whole_pages = (before + floats.size_bytes()) / page * page;
  madvise(begin - before, whole_pages, MADV_POPULATE_WRITE);
#endif
}

} // namespace

ConstantObjects::ConstantObjects(const Plans &plans, std::span<PyFloatObject> floats)
    : floats_(floats) {
  require_known_layout();
  populate(floats);
  std::ranges::transform(plans.floats, floats.begin(), [](double value) {
    return PyFloatObject{PyObject_HEAD_INIT(&PyFloat_Type) value};
  });
  objects_.reserve(constant::first_text + plans.texts.size());
  for (PyObject *const singleton : {Py_None, Py_False, Py_True}) {
    objects_.push_back(Reference::borrow(singleton));
  }
  for (const int value : plans.ints) {
    objects_.push_back(Reference::steal(PyLong_FromLong(value)));
  }
  objects_.resize(constant::first_text);
  const char *bytes = plans.text_bytes.data();
  for (const TextPlan &text : plans.texts) {
    objects_.push_back(text_object(text, bytes));
    bytes += text.length;
  }
}

} // namespace marlune::tables
