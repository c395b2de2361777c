// The module's entry, its create step and its exec step.

#include "body_plan.hpp"
#include "docstring.hpp"
#include "interpreter/guard.hpp"
#include "payload/context.hpp"
#include "run_body.hpp"

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

namespace marlune::tables {

namespace {

constexpr const char *module_name = "data_tables";

constexpr std::int64_t no_interpreter = -1;

// What is static and mutable beside the live context. It is never destroyed: when the process ends,
// the interpreter is gone before the C++ statics are.
struct State {
  // The one that has the module. Interpreters with GILs of their own may ask for it at the same time.
  std::atomic<std::int64_t> interpreter = no_interpreter;
  Reference module; // from the start of its exec step
};

State &state() {
  static auto *const state = new State;
  return *state;
}

// ---- create step ----

// The objects of the module belong to the interpreter that made them, and they are made once. Where a
// process ends the interpreter and starts it again, ids begin again as well; so the interpreter bears
// a mark, which ends with it. The address is that of this library alone, for the process's life.
void require_same_interpreter() {
  PyInterpreterState *const running = PyInterpreterState_Get();
  const std::int64_t current = PyInterpreterState_GetID(running);
  check(current < 0 ? -1 : 0);
  PyObject *const marks = PyInterpreterState_GetDict(running);
  if (marks == nullptr) {
    throw std::bad_alloc();
  }
  const Reference mark = Reference::steal(PyLong_FromVoidPtr(&state()));
  std::int64_t owner = no_interpreter;
  if (state().interpreter.compare_exchange_strong(owner, current)) {
    if (PyDict_SetItem(marks, mark.get(), Py_None) < 0) {
      state().interpreter = no_interpreter;
      throw ErrorSet{};
    }
    return;
  }
  const int marked = PyDict_Contains(marks, mark.get());
  check(marked);
  if (owner != current || marked == 0) {
    PyErr_SetString(PyExc_ImportError, "Interpreter change detected - this module can only be "
                                       "loaded into one interpreter per process.");
    throw ErrorSet{};
  }
}

enum class IfNone : std::uint8_t { copy, leave_out };

void copy_from_spec(PyObject *spec, const char *attribute, const Reference &dict, const char *name,
                    IfNone if_none) {
  PyObject *found = nullptr;
  check(PyObject_GetOptionalAttrString(spec, attribute, &found));
  if (found == nullptr) {
    return;
  }
  const Reference value = Reference::steal(found);
  if (found != Py_None || if_none == IfNone::copy) {
    check(PyDict_SetItemString(dict.get(), name, found));
  }
}

Reference new_module(PyObject *spec) {
  const Reference name = Reference::steal(PyObject_GetAttrString(spec, "name"));
  Reference module = Reference::steal(PyModule_NewObject(name.get()));
  const Reference dict = Reference::borrow(PyModule_GetDict(module.get()));
  copy_from_spec(spec, "loader", dict, "__loader__", IfNone::copy);
  copy_from_spec(spec, "origin", dict, "__file__", IfNone::copy);
  copy_from_spec(spec, "parent", dict, "__package__", IfNone::copy);
  copy_from_spec(spec, "submodule_search_locations", dict, "__path__", IfNone::leave_out);
  return module;
}

PyObject *create(PyObject *spec, PyModuleDef * /*definition*/) {
  Reference module;
  const bool created = try_call([&] {
    require_same_interpreter();
    module = state().module ? Reference::borrow(state().module.get()) : new_module(spec);
  });
  return created ? module.release() : nullptr;
}

// ---- exec step ----

void warn_of_other_version() {
  const unsigned long running = Py_Version;
  const auto major = static_cast<int>((running >> 24U) & 0xFFU);
  const auto minor = static_cast<int>((running >> 16U) & 0xFFU);
  if (major == PY_MAJOR_VERSION && minor == PY_MINOR_VERSION) {
    return;
  }
  check(PyErr_WarnFormat(PyExc_RuntimeWarning, 1,
                         "compile time Python version %d.%d of module '%s' does not match runtime "
                         "version %d.%d",
                         PY_MAJOR_VERSION, PY_MINOR_VERSION, module_name, major, minor));
}

// So that the functions' __module__, which is the short name, leads back to the module.
void register_short_name(PyObject *module) {
  PyObject *const modules = PyImport_GetModuleDict();
  const Reference name = Reference::steal(PyUnicode_InternFromString(module_name));
  const int registered = PyDict_Contains(modules, name.get());
  check(registered);
  if (registered == 0) {
    check(PyDict_SetItem(modules, name.get(), module));
  }
}

// How far the exec step has come, for the traceback of its failure.
struct Progress {
  int line = 0; // of the binding at work; 0 while the module has no constants
};

void set_up_module(PyObject *module, Progress &progress) {
  state().module = Reference::borrow(module);
  const auto live = std::make_shared<Context>(Context{.plans = body_plan.plans});
  Reference builtins = Reference::steal(PyImport_AddModuleRef("builtins"));
  check(PyObject_SetAttrString(module, "__builtins__", builtins.get()));
  live->names = Namespace(Reference::borrow(PyModule_GetDict(module)), std::move(builtins));
  warn_of_other_version();
  live->constants = ConstantObjects(body_plan.plans, body_plan.floats);
  progress.line = body_plan.short_name_line;
  register_short_name(module);
  progress.line = body_plan.builtins_line;
  live->builtins = Builtins::find(live->names);
  exchange_live_context(live);
  run_body(*live, progress.line);
}

int abort_import(PyObject *module, const Progress &progress) {
  if (progress.line != 0) {
    add_traceback("init data_tables", progress.line, PyModule_GetDict(module));
  }
  PyObject *const pending = PyErr_GetRaisedException();
  {
    // Let go when it is forgotten already: finalizers may import the module again.
    const Reference forgotten = std::move(state().module);
    const auto context = exchange_live_context(nullptr);
  }
  if (pending != nullptr) {
    PyErr_SetRaisedException(pending);
  } else {
    PyErr_SetString(PyExc_ImportError, "init data_tables");
  }
  return -1;
}

int exec(PyObject *module) {
  if (state().module) {
    if (state().module.get() == module) {
      return 0;
    }
    PyErr_SetString(PyExc_RuntimeError, "Module 'data_tables' has already been imported. "
                                        "Re-initialisation is not supported.");
    return -1;
  }
  Progress progress;
  return try_call([&] { set_up_module(module, progress); }) ? 0 : abort_import(module, progress);
}

PyModuleDef_Slot slots[] = {
    {Py_mod_create, reinterpret_cast<void *>(create)},
    {Py_mod_exec, reinterpret_cast<void *>(exec)},
    {0, nullptr},
};

PyMethodDef no_methods[] = {{nullptr, nullptr, 0, nullptr}};

PyModuleDef definition = {
    .m_base = PyModuleDef_HEAD_INIT,
    .m_name = module_name,
    .m_doc = docstring,
    .m_size = 0,
    .m_methods = no_methods,
    .m_slots = slots,
    .m_traverse = nullptr,
    .m_clear = nullptr,
    .m_free = nullptr,
};

} // namespace

} // namespace marlune::tables

PyMODINIT_FUNC PyInit_data_tables() { return PyModuleDef_Init(&marlune::tables::definition); }
