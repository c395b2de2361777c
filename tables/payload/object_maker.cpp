#include "payload/object_maker.hpp"

#include "interpreter/arithmetic.hpp"
#include "interpreter/lists.hpp"
#include "payload/rounding.hpp"

#include <algorithm>

namespace marlune::tables {

Reference ObjectMaker::payload(Index index) const {
  const PayloadPlan &plan = context_.plans.payloads[index];
  Reference payload = Reference::steal(PyDict_New());
  for (const FieldPlan &field : context_.plans.fields.subspan(plan.first_field, plan.fields)) {
    set_item(payload, context_.constants[field.key], context_.constants[field.value]);
  }
  set_item(payload, context_.constants[plan.data_key], data(plan).get());
  return payload;
}

Reference ObjectMaker::data(const PayloadPlan &plan) const {
  if (plan.columns == 0) {
    const Reference source = context_.names.find(context_.constants[plan.source_attribute]);
    PyObject *const key = context_.constants[plan.source_key];
    return Reference::steal(PyObject_GetItem(source.get(), key));
  }
  Reference data = Reference::steal(PyDict_New());
  for (const ColumnPlan &each : context_.plans.columns.subspan(plan.first_column, plan.columns)) {
    set_item(data, context_.constants[each.key], column(each).get());
  }
  return data;
}

Reference ObjectMaker::column(const ColumnPlan &plan) const {
  return plan.shape == Shape::flat ? list(context_.plans.entries[plan.first_entry].list)
                                   : mapping(plan);
}

Reference ObjectMaker::mapping(const ColumnPlan &plan) const {
  Reference mapping = Reference::steal(PyDict_New());
  for (const EntryPlan &entry : context_.plans.entries.subspan(plan.first_entry, plan.entries)) {
    set_item(mapping, context_.constants[entry.label], list(entry.list).get());
  }
  return mapping;
}

Reference ObjectMaker::list(Index index) const {
  const ListPlan &plan = context_.plans.lists[index];
  if (plan.origin == Rates::Origin::literal) {
    return constant_list(plan);
  }
  Reference base = context_.names.find(context_.constants[plan.base]);
  if (plan.origin == Rates::Origin::shared) {
    return base;
  }
  return is_unchanged(base.get(), plan.base_first, plan.length) ? constant_list(plan)
                                                                : computed_list(plan, base);
}

bool ObjectMaker::is_unchanged(PyObject *list, Index index) const {
  const ListPlan &plan = context_.plans.lists[index];
  return is_unchanged(list, plan.first, plan.length);
}

bool ObjectMaker::is_unchanged(PyObject *list, Index first, Index length) const {
  if (!context_.builtins.are_own || !PyList_CheckExact(list) || PyList_GET_SIZE(list) != length) {
    return false;
  }
  const Index *const slots = &context_.plans.slots[first];
  PyObject *const *const items = PySequence_Fast_ITEMS(list);
  const std::size_t last = length - 1U;
  for (std::size_t slot = 0; slot < last; ++slot) {
    if (items[slot] != context_.constants.float_object(slots[slot])) {
      return false;
    }
  }
  return items[last] == context_.constants[slots[last]];
}

Reference ObjectMaker::constant_list(const ListPlan &plan) const {
  Reference list = Reference::steal(PyList_New(plan.length));
  const Index *const slots = &context_.plans.slots[plan.first];
  PyObject **const items = PySequence_Fast_ITEMS(list.get());
  const std::size_t last = plan.length - 1U;
  // All but the last are floats, which nobody counts.
  for (std::size_t slot = 0; slot < last; ++slot) {
    items[slot] = context_.constants.float_object(slots[slot]);
  }
  items[last] = Py_NewRef(context_.constants[slots[last]]);
  return list;
}

// The rules as the interpreter's own code would follow them, whatever the base list holds.
Reference ObjectMaker::computed_list(const ListPlan &plan, const Reference &base) const {
  Items items(plan.length);
  PyObject *const factor = context_.constants[plan.factor];
  PyObject *const closing = context_.constants[plan.closing];
  switch (plan.origin) {
  case Rates::Origin::scaled_below_certain:
    for_each_item(base.get(), [&](PyObject *rate) {
      items.add(less(rate, closing) ? product(rate, factor) : Reference::borrow(closing));
    });
    break;
  case Rates::Origin::rounded: {
    const Reference places = Reference::steal(PyLong_FromLong(rounding_places));
    for_each_item(base.get(), [&](PyObject *rate) {
      const Reference exact = product(rate, factor);
      PyObject *const arguments[] = {exact.get(), places.get()};
      items.add(Reference::steal(
          PyObject_Vectorcall(context_.builtins.round.get(), arguments, 2, nullptr)));
    });
    break;
  }
  case Rates::Origin::proportional: {
    const Reference last = Reference::steal(PyLong_FromSsize_t(plan.length - 1));
    const Reference below_last = Reference::steal(PySlice_New(nullptr, last.get(), nullptr));
    const Reference below_omega = Reference::steal(PyObject_GetItem(base.get(), below_last.get()));
    for_each_item(below_omega.get(), [&](PyObject *rate) { items.add(product(rate, factor)); });
    items.add(Reference::borrow(closing));
    break;
  }
  case Rates::Origin::literal:
  case Rates::Origin::levels:
  case Rates::Origin::shared:
    Py_UNREACHABLE();
  }
  return std::move(items).list();
}

} // namespace marlune::tables
