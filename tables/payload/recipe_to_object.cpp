#include "payload/recipe_to_object.hpp"

#include "interpreter/arithmetic.hpp"
#include "interpreter/lists.hpp"
#include "payload/numbers.hpp"

#include <algorithm>

namespace marlune::tables {

Reference ObjectMaker::payload(Index index) const {
  const PayloadRecipe &recipe = context_.recipes.payloads[index];
  Reference payload = Reference::steal(PyDict_New());
  for (const FieldRecipe &field :
       context_.recipes.fields.subspan(recipe.first_field, recipe.fields)) {
    set_item(payload, context_.literals[field.key], context_.literals[field.value]);
  }
  set_item(payload, context_.literals[recipe.data_key], data(recipe).get());
  return payload;
}

Reference ObjectMaker::data(const PayloadRecipe &recipe) const {
  if (recipe.columns == 0) {
    const Reference source = context_.names.find(context_.literals[recipe.source_attribute]);
    PyObject *const key = context_.literals[recipe.source_key];
    return Reference::steal(PyObject_GetItem(source.get(), key));
  }
  Reference data = Reference::steal(PyDict_New());
  for (const ColumnRecipe &each :
       context_.recipes.columns.subspan(recipe.first_column, recipe.columns)) {
    set_item(data, context_.literals[each.key], column(each).get());
  }
  return data;
}

Reference ObjectMaker::column(const ColumnRecipe &recipe) const {
  return recipe.shape == Shape::flat ? list(context_.recipes.entries[recipe.first_entry].list)
                                     : mapping(recipe);
}

Reference ObjectMaker::mapping(const ColumnRecipe &recipe) const {
  Reference mapping = Reference::steal(PyDict_New());
  for (const EntryRecipe &entry :
       context_.recipes.entries.subspan(recipe.first_entry, recipe.entries)) {
    set_item(mapping, context_.literals[entry.label], list(entry.list).get());
  }
  return mapping;
}

Reference ObjectMaker::list(Index index) const {
  const ListRecipe &recipe = context_.recipes.lists[index];
  if (recipe.origin == Rates::Origin::literal) {
    return known_list(recipe);
  }
  Reference base = context_.names.find(context_.literals[recipe.base]);
  if (recipe.origin == Rates::Origin::shared) {
    return base;
  }
  return is_known(base.get(), recipe.base_first, recipe.length) ? known_list(recipe)
                                                                : computed_list(recipe, base);
}

bool ObjectMaker::is_known(PyObject *list, Index index) const {
  const ListRecipe &known = context_.recipes.lists[index];
  return is_known(list, known.first, known.length);
}

bool ObjectMaker::is_known(PyObject *list, Index first, Index length) const {
  if (!context_.builtins.are_own || !PyList_CheckExact(list) || PyList_GET_SIZE(list) != length) {
    return false;
  }
  const Index *const slots = &context_.recipes.slots[first];
  PyObject *const *const items = PySequence_Fast_ITEMS(list);
  const std::size_t last = length - 1U;
  for (std::size_t slot = 0; slot < last; ++slot) {
    if (items[slot] != context_.literals.float_object(slots[slot])) {
      return false;
    }
  }
  return items[last] == context_.literals[slots[last]];
}

Reference ObjectMaker::known_list(const ListRecipe &recipe) const {
  Reference list = Reference::steal(PyList_New(recipe.length));
  const Index *const slots = &context_.recipes.slots[recipe.first];
  PyObject **const items = PySequence_Fast_ITEMS(list.get());
  const std::size_t last = recipe.length - 1U;
  // All but the last are floats, which nobody counts.
  for (std::size_t slot = 0; slot < last; ++slot) {
    items[slot] = context_.literals.float_object(slots[slot]);
  }
  items[last] = Py_NewRef(context_.literals[slots[last]]);
  return list;
}

// The rules as the interpreter's own code would follow them, whatever the base list holds.
Reference ObjectMaker::computed_list(const ListRecipe &recipe, const Reference &base) const {
  Items items(recipe.length);
  PyObject *const factor = context_.literals[recipe.factor];
  PyObject *const closing = context_.literals[recipe.closing];
  switch (recipe.origin) {
  case Rates::Origin::capped:
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
    const Reference last = Reference::steal(PyLong_FromSsize_t(recipe.length - 1));
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
