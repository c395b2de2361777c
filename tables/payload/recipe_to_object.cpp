#include "payload/recipe_to_object.hpp"

#include "interpreter/arithmetic.hpp"
#include "interpreter/lists.hpp"
#include "payload/rounding.hpp"

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
  switch (recipe.origin) {
  case Rates::Origin::literal:
  case Rates::Origin::levels:
    return literal_list(recipe);
  case Rates::Origin::shared:
    return context_.names.find(context_.literals[recipe.base]);
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
  std::ranges::transform(context_.recipes.slots.subspan(recipe.first, recipe.length),
                         PySequence_Fast_ITEMS(list.get()),
                         [this](Index constant) { return Py_NewRef(context_.literals[constant]); });
  return list;
}

Reference ObjectMaker::capped(const ListRecipe &recipe) const {
  PyObject *const factor = context_.literals[recipe.factor];
  PyObject *const certain = context_.literals[recipe.closing];
  const Reference base = context_.names.find(context_.literals[recipe.base]);
  Items items(recipe.length);
  for_each_item(base.get(), [&](PyObject *rate) {
    items.add(less(rate, certain) ? product(rate, factor) : Reference::borrow(certain));
  });
  return std::move(items).list();
}

Reference ObjectMaker::rounded(const ListRecipe &recipe) const {
  PyObject *const factor = context_.literals[recipe.factor];
  const Reference places = Reference::steal(PyLong_FromLong(rounding_places));
  const Reference base = context_.names.find(context_.literals[recipe.base]);
  Items items(recipe.length);
  for_each_item(base.get(), [&](PyObject *rate) {
    if (context_.builtins.own_round && both_exact_floats(rate, factor)) {
      const auto near = round_clear_cut(PyFloat_AS_DOUBLE(rate) * PyFloat_AS_DOUBLE(factor));
      if (near) {
        items.add(Reference::steal(PyFloat_FromDouble(*near)));
        return;
      }
    }
    const Reference exact = product(rate, factor);
    PyObject *const arguments[] = {exact.get(), places.get()};
    items.add(Reference::steal(
        PyObject_Vectorcall(context_.builtins.round.get(), arguments, 2, nullptr)));
  });
  return std::move(items).list();
}

Reference ObjectMaker::proportional(const ListRecipe &recipe) const {
  PyObject *const factor = context_.literals[recipe.factor];
  const Reference base = context_.names.find(context_.literals[recipe.base]);
  const Reference below_omega =
      Reference::steal(PySequence_GetSlice(base.get(), 0, recipe.length - 1));
  Items items(recipe.length);
  for_each_item(below_omega.get(), [&](PyObject *rate) { items.add(product(rate, factor)); });
  items.add(Reference::borrow(context_.literals[recipe.closing]));
  return std::move(items).list();
}

} // namespace marlune::tables
