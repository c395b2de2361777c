#include "interpreter/builtins.hpp"

#include <string_view>

namespace marlune::tables {

namespace {

bool is_own_function(PyObject *object, std::string_view name, PyObject *builtins) {
  return PyCFunction_CheckExact(object) && PyCFunction_GET_SELF(object) == builtins &&
         name == reinterpret_cast<PyCFunctionObject *>(object)->m_ml->ml_name;
}

Reference find_builtin(const Namespace &names, const char *name) {
  return names.find_builtin(Reference::steal(PyUnicode_InternFromString(name)).get());
}

} // namespace

Builtins Builtins::find(const Namespace &names) {
  Builtins found;
  found.zip = find_builtin(names, "zip");
  found.round = find_builtin(names, "round");
  found.are_own = found.zip.get() == reinterpret_cast<PyObject *>(&PyZip_Type) &&
                  is_own_function(found.round.get(), "round", names.builtins());
  return found;
}

} // namespace marlune::tables
