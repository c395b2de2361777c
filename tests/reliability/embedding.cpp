// A process that embeds the interpreter. Each argument is a Python program for a round of its own:
// the interpreter is initialised, runs it, and is finalised. `border` lets the programs throw at the
// module's border between C++ and the interpreter what nobody means to throw there. What marks an
// interpreter as the owner of the module takes its time here.

#include "interpreter/guard.hpp"

#include <chrono>
#include <dlfcn.h>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

using namespace marlune::tables;

PyObject *throws(PyObject * /*module*/, PyObject *what) {
  const std::string_view kind = PyUnicode_AsUTF8(what);
  return guarded("border.throws", __LINE__, nullptr, [&]() -> Reference {
    if (kind == "length_error") {
      throw std::length_error("too long");
    }
    if (kind == "sentence") {
      throw "a rule that is broken";
    }
    if (kind == "int") {
      throw 5;
    }
    throw ErrorSet{}; // and nothing is set
  });
}

// Fails without saying why, as a careless extension does.
PyObject *fail_silently(PyObject * /*self*/, PyObject * /*index*/) { return nullptr; }
PyType_Slot silent_slots[] = {{Py_mp_subscript, reinterpret_cast<void *>(fail_silently)},
                              {0, nullptr}};
PyType_Spec silent{"border.Silent", sizeof(PyObject), 0, Py_TPFLAGS_DEFAULT, silent_slots};

PyObject *round_(PyObject * /*module*/, PyObject *const * /*arguments*/, Py_ssize_t /*count*/) {
  return PyUnicode_FromString("rounded");
}

PyMethodDef functions[] = {
    {"throws", throws, METH_O, nullptr},
    {"round", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(round_)), METH_FASTCALL,
     nullptr},
    {nullptr, nullptr, 0, nullptr},
};
PyModuleDef definition = {
    .m_base = PyModuleDef_HEAD_INIT, .m_name = "border", .m_size = -1, .m_methods = functions};

PyObject *border() {
  PyObject *const module = PyModule_Create(&definition);
  PyModule_AddObject(module, "Silent", PyType_FromSpec(&silent));
  return module;
}

} // namespace

// The module's calls come here, those of the interpreter itself do not.
extern "C" int PyDict_SetItem(PyObject *dict, PyObject *key, PyObject *value) {
  static const auto real = reinterpret_cast<decltype(&PyDict_SetItem)>(dlsym(RTLD_NEXT, __func__));
  if (PyLong_Check(key) && value == Py_None) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  }
  return real(dict, key, value);
}

int main(int count, char **programs) {
  PyImport_AppendInittab("border", border);
  for (int round = 1; round < count; ++round) {
    Py_Initialize();
    if (PyRun_SimpleString(programs[round]) != 0 || Py_FinalizeEx() != 0) {
      return round;
    }
  }
}
