#include "payload/objects.hpp"

#include "interpreter/arithmetic.hpp"
#include "interpreter/lists.hpp"
#include "payload/rounding.hpp"

#include <algorithm>

namespace marlune::tables {

Reference ObjectMaker::payload(const PayloadRecipe &recipe) const {
  Reference payload = Reference::steal(PyDict_New());
  for (const FieldRecipe &field : recipes_.fields.subspan(recipe.first_field, recipe.fields)) {
    set_item(payload, live_.literals[field.key], live_.literals[field.value]);
  }
  set_item(payload, live_.literals[recipe.data_key], data(recipe).get());
  return payload;
}

Reference ObjectMaker::data(const PayloadRecipe &recipe) const {
  if (recipe.columns == 0) {
    const Reference source = live_.names.find(live_.literals[recipe.source_attribute]);
    PyObject *const key = live_.literals[recipe.source_key];
    return Reference::steal(PyObject_GetItem(source.get(), key));
  }
  Reference data = Reference::steal(PyDict_New());
  for (const ColumnRecipe &each : recipes_.columns.subspan(recipe.first_column, recipe.columns)) {
    set_item(data, live_.literals[each.key], column(each).get());
  }
  return data;
}

Reference ObjectMaker::column(const ColumnRecipe &recipe) const {
  return recipe.shape == Shape::flat
             ? rates(recipes_.lists[recipes_.entries[recipe.first_entry].list])
             : mapping(recipe);
}

Reference ObjectMaker::mapping(const ColumnRecipe &recipe) const {
  Reference mapping = Reference::steal(PyDict_New());
  for (const EntryRecipe &entry : recipes_.entries.subspan(recipe.first_entry, recipe.entries)) {
    set_item(mapping, live_.literals[entry.label], rates(recipes_.lists[entry.list]).get());
  }
  return mapping;
}

Reference ObjectMaker::rates(const ListRecipe &recipe) const {
  switch (recipe.origin) {
  case Rates::Origin::literal:
    return literal_list(recipe);
  case Rates::Origin::levels:
    return levels(recipe);
  case Rates::Origin::shared:
    return live_.names.find(live_.literals[recipe.base]);
  case Rates::Origin::capped:
    return capped(recipe);
  case Rates::Origin::rounded:
    return rounded(recipe);
  case Rates::Origin::proportional:
    return proportional(recipe);
  }
  Py_UNREACHABLE();
}

Reference ObjectMaker::literal_list(const ListRecipe &recipe) const {
  Reference list = Reference::steal(PyList_New(recipe.length));
  std::ranges::transform(recipes_.slots.subspan(recipe.first, recipe.length),
                         PySequence_Fast_ITEMS(list.get()),
                         [literals = live_.literals.all()](Index constant) {
                           return Py_NewRef(literals[constant].get());
                         });
  return list;
}

Reference ObjectMaker::levels(const ListRecipe &recipe) const {
  const auto slots = recipes_.slots.subspan(recipe.first, recipe.length);
  Py_ssize_t ages = 0;
  for (std::size_t slot = 0; slot < slots.size(); slot += 2) {
    ages += slots[slot + 1];
  }
  Reference list = Reference::steal(PyList_New(ages));
  Py_ssize_t age = 0;
  for (std::size_t slot = 0; slot < slots.size(); slot += 2) {
    PyObject *const rate = live_.literals[slots[slot]];
    for (const Py_ssize_t end = age + slots[slot + 1]; age < end; ++age) {
      PyList_SET_ITEM(list.get(), age, Py_NewRef(rate));
    }
  }
  return list;
}

Reference ObjectMaker::capped(const ListRecipe &recipe) const {
  PyObject *const factor = live_.literals[recipe.factor];
  PyObject *const certain = live_.literals[recipe.closing];
  const Reference base = live_.names.find(live_.literals[recipe.base]);
  Items items(recipe.length);
  for_each_item(base.get(), [&](PyObject *rate) {
    items.add(less(rate, certain) ? product(rate, factor) : Reference::borrow(certain));
  });
  return std::move(items).list();
}

Reference ObjectMaker::rounded(const ListRecipe &recipe) const {
  PyObject *const factor = live_.literals[recipe.factor];
  const Reference places = Reference::steal(PyLong_FromLong(rounding_places));
  const Reference base = live_.names.find(live_.literals[recipe.base]);
  Items items(recipe.length);
  for_each_item(base.get(), [&](PyObject *rate) {
    if (live_.builtins.own_round && both_exact_floats(rate, factor)) {
      const auto near = round_clear_cut(PyFloat_AS_DOUBLE(rate) * PyFloat_AS_DOUBLE(factor));
      if (near) {
        items.add(Reference::steal(PyFloat_FromDouble(*near)));
        return;
      }
    }
    const Reference exact = product(rate, factor);
    PyObject *const arguments[] = {exact.get(), places.get()};
    items.add(
        Reference::steal(PyObject_Vectorcall(live_.builtins.round.get(), arguments, 2, nullptr)));
  });
  return std::move(items).list();
}

Reference ObjectMaker::proportional(const ListRecipe &recipe) const {
  PyObject *const factor = live_.literals[recipe.factor];
  const Reference base = live_.names.find(live_.literals[recipe.base]);
  const Reference below_omega =
      Reference::steal(PySequence_GetSlice(base.get(), 0, recipe.length - 1));
  Items items(recipe.length);
  for_each_item(below_omega.get(), [&](PyObject *rate) { items.add(product(rate, factor)); });
  items.add(Reference::borrow(live_.literals[recipe.closing]));
  return std::move(items).list();
}

} // namespace marlune::tables
