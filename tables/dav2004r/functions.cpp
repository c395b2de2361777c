#include "dav2004r/functions.hpp"

#include "constants.hpp"
#include "dav2004r/arguments.hpp"
#include "dav2004r/columns.hpp"
#include "interpreter/arithmetic.hpp"
#include "interpreter/guard.hpp"
#include "interpreter/lists.hpp"
#include "payload/objects.hpp"
#include "state.hpp"

#include <algorithm>

namespace marlune::tables::dav2004r {

namespace {

// ---- _dav_mi_linear ----

// The part of the way from start to target that a year has gone. The product is the rule, not the
// quotient by 20: they differ in the last bit for seven of the years.
struct Weight {
  double value;
  Reference object;

  explicit Weight(int year)
      : value(static_cast<double>(year - first_year) * 0.05),
        object(Reference::steal(PyFloat_FromDouble(value))) {}
};

Reference blend_objects(const Weight &weight, PyObject *start, PyObject *target) {
  const Reference difference = Reference::steal(PyNumber_Subtract(target, start));
  const Reference part = Reference::steal(PyNumber_Multiply(weight.object.get(), difference.get()));
  return Reference::steal(PyNumber_Add(start, part.get()));
}

// start + weight × (target − start), in this order, by the interpreter's number protocol.
Reference blend(const Weight &weight, PyObject *start, PyObject *target) {
  if (!both_exact_floats(start, target)) {
    return blend_objects(weight, start, target);
  }
  const double difference = PyFloat_AS_DOUBLE(target) - PyFloat_AS_DOUBLE(start);
  const double part = weight.value * difference;
  return Reference::steal(PyFloat_FromDouble(PyFloat_AS_DOUBLE(start) + part));
}

struct Pair {
  Reference first;
  Reference second;
};

Pair unpack_pair(PyObject *iterable) {
  const Reference iterator = Reference::steal(PyObject_GetIter(iterable));
  const auto next = [&] {
    PyObject *const item = PyIter_Next(iterator.get());
    if (item == nullptr && PyErr_Occurred() != nullptr) {
      throw ErrorSet{};
    }
    return item;
  };
  const auto require = [&](int position) {
    PyObject *const item = next();
    if (item == nullptr) {
      PyErr_Format(PyExc_ValueError, "not enough values to unpack (expected 2, got %d)", position);
    }
    return Reference::steal(item);
  };
  Pair pair;
  pair.first = require(0);
  pair.second = require(1);
  if (PyObject *const third = next()) {
    Py_DECREF(third);
    PyErr_SetString(PyExc_ValueError, "too many values to unpack (expected 2)");
    throw ErrorSet{};
  }
  return pair;
}

// Calls `action` for each pair that zip(start, target) gives, with the builtin `zip` of the import.
// The function outlives an import that fails; then nobody has another `zip` than the interpreter's.
template <class Action>
void for_each_pair(const LiveModule *live, const TrendArguments &trends, Action action) {
  if (live != nullptr && !live->builtins.own_zip) {
    PyObject *const arguments[] = {trends.start, trends.target};
    const Reference pairs =
        Reference::steal(PyObject_Vectorcall(live->builtins.zip.get(), arguments, 2, nullptr));
    for_each_item(pairs.get(), [&](PyObject *item) {
      const Pair pair = unpack_pair(item);
      action(pair.first.get(), pair.second.get());
    });
    return;
  }
  // The walk of the interpreter's own zip over two lists, which may change under it.
  for (Py_ssize_t index = 0;
       index < PyList_GET_SIZE(trends.start) && index < PyList_GET_SIZE(trends.target); ++index) {
    PyObject *const start = PyList_GET_ITEM(trends.start, index);
    PyObject *const target = PyList_GET_ITEM(trends.target, index);
    const bool floats = both_exact_floats(start, target);
    const Reference held_start = hold_unless(floats, start);
    const Reference held_target = hold_unless(floats, target);
    action(start, target);
  }
}

Reference copy_of(PyObject *list) {
  return Reference::steal(PyList_GetSlice(list, 0, PY_SSIZE_T_MAX));
}

Reference blended(const LiveModule *live, const TrendArguments &trends, int year) {
  const Weight weight(year);
  Items items(std::min(PyList_GET_SIZE(trends.start), PyList_GET_SIZE(trends.target)));
  for_each_pair(live, trends, [&](PyObject *start, PyObject *target) {
    items.add(blend(weight, start, target));
  });
  return std::move(items).list();
}

Reference year_key(const LiveModule *live, int year) {
  if (live == nullptr) {
    return Reference::steal(PyLong_FromLong(year));
  }
  return Reference::borrow(
      live->literals[static_cast<Index>(constant(first_year) + (year - first_year))]);
}

Reference improvement_grid(const LiveModule *live, const TrendArguments &trends) {
  Reference grid = Reference::steal(PyDict_New());
  const auto add = [&](int year, const Reference &rates) {
    set_item(grid, year_key(live, year).get(), rates.get());
  };
  add(first_year, copy_of(trends.start));
  for (int year = first_year + 1; year < last_year; ++year) {
    add(year, blended(live, trends, year));
  }
  add(last_year, copy_of(trends.target));
  return grid;
}

PyObject *globals_of(const LiveModule *live) {
  return live != nullptr ? live->names.dict() : nullptr;
}

PyObject *call_mi_linear(PyObject * /*module*/, PyObject *const *values, Py_ssize_t count,
                         PyObject *keywords) {
  const auto live = live_module();
  return guarded("data_tables._dav_mi_linear", __LINE__, globals_of(live.get()), [&] {
    return improvement_grid(live.get(), trend_arguments(values, count, keywords));
  });
}

// ---- _build_dav2004r_data ----

// A select duration: the ultimate rate times the factor at every age, the last one included.
Reference select_duration(const Reference &ultimate, PyObject *factor) {
  Items items(PyList_GET_SIZE(ultimate.get()));
  for_each_item(ultimate.get(), [&](PyObject *rate) { items.add(product(rate, factor)); });
  return std::move(items).list();
}

Reference select_mapping_of(const LiveModule &live, const Reference &ultimate, Index duration_1,
                            Index durations_2_to_5) {
  Reference mapping = Reference::steal(PyDict_New());
  const auto add = [&](Index duration, Index factor) {
    set_item(mapping, live.literals[duration],
             select_duration(ultimate, live.literals[factor]).get());
  };
  add(constant(1), duration_1);
  add(constant(2), durations_2_to_5);
  add(constant(3), durations_2_to_5);
  add(constant(4), durations_2_to_5);
  add(constant(5), durations_2_to_5);
  set_item(mapping, live.literals[constant("ult")], ultimate.get());
  return mapping;
}

Reference select_m(const LiveModule &live, const Reference &ultimate) {
  return select_mapping_of(live, ultimate, constant(select_factors_m.duration_1),
                           constant(select_factors_m.durations_2_to_5));
}

Reference select_f(const LiveModule &live, const Reference &ultimate) {
  return select_mapping_of(live, ultimate, constant(select_factors_f.duration_1),
                           constant(select_factors_f.durations_2_to_5));
}

// The blend of two trends, by whatever the module's attribute holds at this moment.
Reference call_blending(const LiveModule &live, const Reference &start, const Reference &target) {
  const Reference function = live.names.find(live.literals[constant("_dav_mi_linear")]);
  PyObject *const arguments[] = {start.get(), target.get()};
  return Reference::steal(PyObject_Vectorcall(function.get(), arguments, 2, nullptr));
}

// The capitals of MI_m and MI_f are part of the layout.
Reference table_data(const LiveModule &live, const Reference &qx_m, const Reference &qx_f,
                     const Reference &mi_m, const Reference &mi_f) {
  Reference data = Reference::steal(PyDict_New());
  set_item(data, live.literals[constant("qx_m")], qx_m.get());
  set_item(data, live.literals[constant("qx_f")], qx_f.get());
  set_item(data, live.literals[constant("MI_m")], mi_m.get());
  set_item(data, live.literals[constant("MI_f")], mi_f.get());
  return data;
}

Reference all_data(const LiveModule &live) {
  const ObjectMaker maker(module_recipes, live);
  const auto column = [&](Index page) { return maker.rates(module_recipes.lists[page]); };
  const Reference agg_1o_m = column(page(qx_agg_1o_m));
  const Reference agg_1o_f = column(page(qx_agg_1o_f));
  const Reference trend_1o_m = column(page(mi_trend_1o_m));
  const Reference trend_1o_f = column(page(mi_trend_1o_f));
  const Reference agg_2o_m = column(page(qx_agg_2o_m));
  const Reference agg_2o_f = column(page(qx_agg_2o_f));
  const Reference start_2o_m = column(page(mi_start_2o_m));
  const Reference start_2o_f = column(page(mi_start_2o_f));
  const Reference target_2o_m = column(page(mi_target_2o_m));
  const Reference target_2o_f = column(page(mi_target_2o_f));
  const Reference ult_1o_m = column(page(qx_ult_1o_m));
  const Reference ult_1o_f = column(page(qx_ult_1o_f));
  const Reference ult_2o_m = column(page(qx_ult_2o_m));
  const Reference ult_2o_f = column(page(qx_ult_2o_f));

  const Reference grid_2o_m = call_blending(live, start_2o_m, target_2o_m);
  const Reference grid_2o_f = call_blending(live, start_2o_f, target_2o_f);

  // The select tables hold the improvement columns of the aggregate tables of their order.
  Reference all = Reference::steal(PyDict_New());
  const auto add = [&](Index key, const Reference &data) {
    set_item(all, live.literals[key], data.get());
  };
  add(constant("Agg_1o"), table_data(live, agg_1o_m, agg_1o_f, trend_1o_m, trend_1o_f));
  add(constant("Agg_2o"), table_data(live, agg_2o_m, agg_2o_f, grid_2o_m, grid_2o_f));
  const Reference select_1o_m = select_m(live, ult_1o_m);
  const Reference select_1o_f = select_f(live, ult_1o_f);
  add(constant("SelUlt_1o"), table_data(live, select_1o_m, select_1o_f, trend_1o_m, trend_1o_f));
  const Reference select_2o_m = select_m(live, ult_2o_m);
  const Reference select_2o_f = select_f(live, ult_2o_f);
  add(constant("SelUlt_2o"), table_data(live, select_2o_m, select_2o_f, grid_2o_m, grid_2o_f));
  return all;
}

PyObject *call_build_data(PyObject * /*module*/, PyObject * /*no arguments*/) {
  const auto live = live_module();
  return guarded("data_tables._build_dav2004r_data", __LINE__, globals_of(live.get()), [&] {
    if (!live) {
      PyErr_SetString(PyExc_RuntimeError, "_build_dav2004r_data() looks '_dav_mi_linear' up in the "
                                          "module data_tables, which is not imported");
      throw ErrorSet{};
    }
    return all_data(*live);
  });
}

} // namespace

// Up to the two dashes the interpreter reads a signature, not the docstring.
PyMethodDef mi_linear = {
    "_dav_mi_linear",
    reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(call_mi_linear)),
    METH_FASTCALL | METH_KEYWORDS,
    "_dav_mi_linear(mi_start, mi_ziel)\n--\n\n"
    "Build DAV 2004 R year-indexed MI grid (2004 start → linear blend → 2024 target).",
};

PyMethodDef build_data = {
    "_build_dav2004r_data",
    call_build_data,
    METH_NOARGS,
    "_build_dav2004r_data()\n--\n\n",
};

} // namespace marlune::tables::dav2004r
