#include "dav2004r/functions.hpp"

#include "dav2004r/arguments.hpp"
#include "dav2004r/operands.hpp"
#include "dav2004r/rules.hpp"
#include "interpreter/arithmetic.hpp"
#include "interpreter/guard.hpp"
#include "interpreter/lists.hpp"
#include "payload/object_maker.hpp"

#include <algorithm>

namespace marlune::tables::dav2004r {

namespace {

// ---- _dav_mi_linear ----

// start + weight × (target − start), in this order.
Reference blend(const Reference &weight, PyObject *start, PyObject *target) {
  const Reference part = product(weight.get(), difference(target, start).get());
  return sum(start, part.get());
}

struct Pair {
  Reference first;
  Reference second;
};

Pair unpack_pair(PyObject *iterable) {
  const Reference iterator = Reference::steal(PyObject_GetIter(iterable));
  const auto require = [&](int position) {
    Reference item = next_item(iterator);
    if (!item) {
      PyErr_Format(PyExc_ValueError, "not enough values to unpack (expected 2, got %d)", position);
      throw ErrorSet{};
    }
    return item;
  };
  Pair pair;
  pair.first = require(0);
  pair.second = require(1);
  if (next_item(iterator)) {
    PyErr_SetString(PyExc_ValueError, "too many values to unpack (expected 2)");
    throw ErrorSet{};
  }
  return pair;
}

// Calls `action` for each pair that zip(start, target) gives, with the builtin `zip` of the import.
// The function outlives an import that fails; then nobody has another `zip` than the interpreter's.
template <class Action>
void for_each_pair(const Context *context, const TrendArguments &trends, Action action) {
  PyObject *const zip =
      context != nullptr ? context->builtins.zip.get() : reinterpret_cast<PyObject *>(&PyZip_Type);
  PyObject *const arguments[] = {trends.start, trends.target};
  const Reference pairs = Reference::steal(PyObject_Vectorcall(zip, arguments, 2, nullptr));
  for_each_item(pairs.get(), [&](PyObject *item) {
    const Pair pair = unpack_pair(item);
    action(pair.first.get(), pair.second.get());
  });
}

Reference copy_of(PyObject *list) {
  return Reference::steal(PyList_GetSlice(list, 0, PY_SSIZE_T_MAX));
}

Reference blended(const Context *context, const TrendArguments &trends, int year) {
  const Reference weight = Reference::steal(PyFloat_FromDouble(weight_of(year)));
  // Long lists take their time; a key interrupt need not wait for the last of the years.
  check(PyErr_CheckSignals());
  Items items(std::min(PyList_GET_SIZE(trends.start), PyList_GET_SIZE(trends.target)));
  for_each_pair(context, trends, [&](PyObject *start, PyObject *target) {
    items.add(blend(weight, start, target));
  });
  return std::move(items).list();
}

Reference year_key(const Context *context, int year) {
  if (context == nullptr) {
    return Reference::steal(PyLong_FromLong(year));
  }
  const auto later = static_cast<std::size_t>(year - first_year);
  return Reference::borrow(context->constants[index_of(operands.first_year + later)]);
}

// Whose trends these are, when they still are those of the publication.
const SexOperands *published_sex(const Context &context, const TrendArguments &trends) {
  const ObjectMaker maker(context);
  for (const SexOperands *const sex : {&operands.m, &operands.f}) {
    if (maker.is_unchanged(trends.start, sex->start_2o) &&
        maker.is_unchanged(trends.target, sex->target_2o)) {
      return sex;
    }
  }
  return nullptr;
}

Reference improvement_grid(const Context *context, const TrendArguments &trends) {
  const SexOperands *const published =
      context != nullptr ? published_sex(*context, trends) : nullptr;
  Reference grid = Reference::steal(PyDict_New());
  const auto add = [&](int year, const Reference &rates) {
    set_item(grid, year_key(context, year).get(), rates.get());
  };
  add(first_year, copy_of(trends.start));
  for (int year = first_year + 1; year < last_year; ++year) {
    const auto later = static_cast<std::size_t>(year - first_year - 1);
    add(year, published != nullptr ? ObjectMaker(*context).list(published->blended[later])
                                   : blended(context, trends, year));
  }
  add(last_year, copy_of(trends.target));
  return grid;
}

PyObject *globals_of(const Context *context) {
  return context != nullptr ? context->names.dict() : nullptr;
}

PyObject *call_mi_linear(PyObject * /*module*/, PyObject *const *values, Py_ssize_t count,
                         PyObject *keywords) {
  const auto context = live_context();
  return guarded("data_tables._dav_mi_linear", __LINE__, globals_of(context.get()), [&] {
    return improvement_grid(context.get(), trend_arguments(values, count, keywords));
  });
}

// ---- _build_dav2004r_data ----

// The literal columns of one sex, each a new list.
struct SexLists {
  Reference agg_1o, agg_2o, ult_1o, ult_2o, trend_1o, start_2o, target_2o;
};

struct Source {
  Reference SexLists::*list;
  Index SexOperands::*plan;
};
// In the order in which the lists are built, males first.
constexpr Source sources[] = {
    {&SexLists::agg_1o, &SexOperands::agg_1o},       {&SexLists::trend_1o, &SexOperands::trend_1o},
    {&SexLists::agg_2o, &SexOperands::agg_2o},       {&SexLists::start_2o, &SexOperands::start_2o},
    {&SexLists::target_2o, &SexOperands::target_2o}, {&SexLists::ult_1o, &SexOperands::ult_1o},
    {&SexLists::ult_2o, &SexOperands::ult_2o},
};

// A select duration: the ultimate rate times the factor at every age, the last one included.
Reference select_duration(const Reference &ultimate, PyObject *factor) {
  Items items(PyList_GET_SIZE(ultimate.get()));
  for_each_item(ultimate.get(), [&](PyObject *rate) { items.add(product(rate, factor)); });
  return std::move(items).list();
}

// `precomputed` are the lists of the durations where the ultimate column still is that of the plan.
Reference select_mapping(const Context &context, const Reference &ultimate, Index plan,
                         const ByDuration &precomputed, const ByDuration &factors) {
  const ObjectMaker maker(context);
  // Until the mapping is full: making lists of constants runs nobody else's code.
  const bool is_unchanged = maker.is_unchanged(ultimate.get(), plan);
  Reference mapping = Reference::steal(PyDict_New());
  for (std::size_t index = 0; index < factors.size(); ++index) {
    const Reference rates = is_unchanged
                                ? maker.list(precomputed[index])
                                : select_duration(ultimate, context.constants[factors[index]]);
    set_item(mapping, context.constants[operands.durations[index]], rates.get());
  }
  set_item(mapping, context.constants[operands.ult], ultimate.get());
  return mapping;
}

Reference select_1o(const Context &context, const SexLists &lists, const SexOperands &sex) {
  return select_mapping(context, lists.ult_1o, sex.ult_1o, sex.select_1o, sex.factors);
}

Reference select_2o(const Context &context, const SexLists &lists, const SexOperands &sex) {
  return select_mapping(context, lists.ult_2o, sex.ult_2o, sex.select_2o, sex.factors);
}

// The blend of two trends, by whatever the module's attribute holds at this moment.
Reference call_blending(const Context &context, const Reference &start, const Reference &target) {
  const Reference function = context.names.find(context.constants[operands.blending]);
  PyObject *const arguments[] = {start.get(), target.get()};
  return Reference::steal(PyObject_Vectorcall(function.get(), arguments, 2, nullptr));
}

Reference table_data(const Context &context, const Reference &qx_m, const Reference &qx_f,
                     const Reference &mi_m, const Reference &mi_f) {
  Reference data = Reference::steal(PyDict_New());
  set_item(data, context.constants[operands.m.qx], qx_m.get());
  set_item(data, context.constants[operands.f.qx], qx_f.get());
  set_item(data, context.constants[operands.m.mi], mi_m.get());
  set_item(data, context.constants[operands.f.mi], mi_f.get());
  return data;
}

Reference all_data(const Context &context) {
  SexLists m;
  SexLists f;
  const ObjectMaker maker(context);
  for (const Source &source : sources) {
    m.*source.list = maker.list(operands.m.*source.plan);
    f.*source.list = maker.list(operands.f.*source.plan);
  }
  const Reference grid_m = call_blending(context, m.start_2o, m.target_2o);
  const Reference grid_f = call_blending(context, f.start_2o, f.target_2o);

  // The select tables hold the improvement columns of the aggregate tables of their order.
  Reference all = Reference::steal(PyDict_New());
  const auto add = [&](Index key, const Reference &data) {
    set_item(all, context.constants[key], data.get());
  };
  add(operands.agg_1o, table_data(context, m.agg_1o, f.agg_1o, m.trend_1o, f.trend_1o));
  add(operands.agg_2o, table_data(context, m.agg_2o, f.agg_2o, grid_m, grid_f));
  const Reference sel_1o_m = select_1o(context, m, operands.m);
  const Reference sel_1o_f = select_1o(context, f, operands.f);
  add(operands.sel_ult_1o, table_data(context, sel_1o_m, sel_1o_f, m.trend_1o, f.trend_1o));
  const Reference sel_2o_m = select_2o(context, m, operands.m);
  const Reference sel_2o_f = select_2o(context, f, operands.f);
  add(operands.sel_ult_2o, table_data(context, sel_2o_m, sel_2o_f, grid_m, grid_f));
  return all;
}

PyObject *call_build_data(PyObject * /*module*/, PyObject * /*no arguments*/) {
  const auto context = live_context();
  return guarded("data_tables._build_dav2004r_data", __LINE__, globals_of(context.get()), [&] {
    if (!context) {
      PyErr_SetString(PyExc_RuntimeError, "_build_dav2004r_data() looks '_dav_mi_linear' up in the "
                                          "module data_tables, which is not imported");
      throw ErrorSet{};
    }
    return all_data(*context);
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
