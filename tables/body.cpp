#include "run_body.hpp"

#include "constants.hpp"
#include "payload/objects.hpp"

namespace marlune::tables {

namespace {

Reference new_function(const LiveModule &live, PyMethodDef *method) {
  return Reference::steal(
      PyCFunction_NewEx(method, nullptr, live.literals[constant("data_tables")]));
}

Reference call_attribute(const LiveModule &live, Index name) {
  const Reference function = live.names.find(live.literals[name]);
  return Reference::steal(PyObject_CallNoArgs(function.get()));
}

Reference new_repository(const LiveModule &live) {
  Reference tables = Reference::steal(PyDict_New());
  for (const Index name : repository_constants) {
    set_item(tables, live.literals[name], live.names.find(live.literals[name]).get());
  }
  return tables;
}

Reference value_of(const Step &step, const LiveModule &live) {
  const ObjectMaker maker(module_recipes, live);
  switch (step.kind) {
  case Statement::Kind::table:
    return maker.payload(module_recipes.payloads[step.recipe]);
  case Statement::Kind::base_vector:
    return maker.rates(module_recipes.lists[step.recipe]);
  case Statement::Kind::function:
    return new_function(live, step.function);
  case Statement::Kind::call:
    return call_attribute(live, step.callee);
  case Statement::Kind::repository:
    return new_repository(live);
  case Statement::Kind::empty_dict:
    return Reference::steal(PyDict_New());
  }
  Py_UNREACHABLE();
}

} // namespace

const LinesBeforeBody lines_before_body{.short_name = short_name_line, .builtins = builtins_line};

LiteralObjects make_literals() { return LiteralObjects(module_recipes); }

void run_body(const LiveModule &live, int &line) {
  for (const Step &step : body_steps) {
    line = step.line;
    live.names.bind(live.literals[step.name], value_of(step, live));
  }
}

} // namespace marlune::tables
