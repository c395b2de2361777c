#include "run_body.hpp"

#include "body_plan.hpp"
#include "payload/object_maker.hpp"

namespace marlune::tables {

namespace {

Reference new_function(const Context &context, PyMethodDef *method) {
  return Reference::steal(
      PyCFunction_NewEx(method, nullptr, context.constants[body_plan.module_name]));
}

Reference call_attribute(const Context &context, Index name) {
  const Reference function = context.names.find(context.constants[name]);
  return Reference::steal(PyObject_CallNoArgs(function.get()));
}

Reference new_inventory(const Context &context) {
  Reference tables = Reference::steal(PyDict_New());
  for (const Index constant : body_plan.inventory) {
    PyObject *const name = context.constants[constant];
    set_item(tables, name, context.names.find(name).get());
  }
  return tables;
}

Reference value_of(const BindingPlan &binding, const Context &context) {
  const ObjectMaker maker(context);
  switch (binding.kind) {
  case Binding::Kind::table:
    return maker.payload(binding.plan);
  case Binding::Kind::base_vector:
    return maker.list(binding.plan);
  case Binding::Kind::function:
    return new_function(context, binding.function);
  case Binding::Kind::call:
    return call_attribute(context, binding.callee);
  case Binding::Kind::inventory:
    return new_inventory(context);
  case Binding::Kind::empty_dict:
    return Reference::steal(PyDict_New());
  }
  Py_UNREACHABLE();
}

} // namespace

void run_body(const Context &context, int &line) {
  for (const BindingPlan &binding : body_plan.bindings) {
    line = binding.line;
    context.names.bind(context.constants[binding.name], value_of(binding, context));
  }
}

} // namespace marlune::tables
