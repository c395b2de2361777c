// The limit: makes what the module holds, to the last value, type, order and shared list, with the
// least work that the interpreter allows. The floats stand in the extension's own memory, lists take
// their addresses, and a program without choices makes lists and dicts one after the other. There is
// no documentation, no function and no rule for what others may have changed. tables.h holds the
// constants and the program; the benchmark writes it from the module.

#include <Python.h>

#include "tables.h" // values, ints, units, texts, slots, program, bindings; containers

#define COUNT(array) (sizeof(array) / sizeof(*(array)))
enum {
  first_text = 3,
  first_int = first_text + COUNT(texts) / 3,
  first_made = first_int + COUNT(ints)
};

static PyFloatObject floats[COUNT(values)];
static PyObject *objects[first_made + containers]; // None, False, True, then as numbered above

static PyObject *must(PyObject *object) {
  return object != NULL ? object : (Py_FatalError("the limit gets no memory"), NULL);
}

static void put(PyObject *dict, int key, int value) {
  if (PyDict_SetItem(dict, objects[key], objects[value]) < 0) {
    must(NULL);
  }
}

static void make_constants(void) {
  for (size_t i = 0; i < COUNT(values); ++i) {
    floats[i] = (PyFloatObject){PyObject_HEAD_INIT(&PyFloat_Type) values[i]};
  }
  PyObject **next = objects;
  *next++ = Py_None, *next++ = Py_False, *next++ = Py_True;
  for (size_t i = 0; i < COUNT(texts); i += 3) {
    const int kind = texts[i], length = texts[i + 2]; // 0: to be interned
    const void *const text = units + texts[i + 1];
    *next++ = must(kind == 0 ? PyUnicode_InternFromString(text)
                             : PyUnicode_FromKindAndData(kind, text, length));
  }
  for (size_t i = 0; i < COUNT(ints); ++i) {
    *next++ = must(PyLong_FromLong(ints[i]));
  }
}

// Of a list the program says: 0, its first slot, its length, and what it ends in where that is no
// float, or 0. Of a dict: 1, its length, and its keys and values.
static void make_containers(void) {
  PyObject **next = objects + first_made;
  for (size_t at = 0; at < COUNT(program); ++next) {
    const int kind = program[at++];
    if (kind == 1) {
      *next = must(PyDict_New());
      for (int left = program[at++]; left > 0; --left, at += 2) {
        put(*next, program[at], program[at + 1]);
      }
      continue;
    }
    const int first = program[at], length = program[at + 1], last = program[at + 2];
    at += 3;
    *next = must(PyList_New(length));
    PyObject **const items = ((PyListObject *)*next)->ob_item;
    for (int i = 0; i < length; ++i) {
      items[i] = (PyObject *)&floats[slots[first + i]];
    }
    if (last != 0) {
      items[length - 1] = Py_NewRef(objects[last]);
    }
  }
}

static int exec(PyObject *module) {
  make_constants();
  make_containers();
  objects[0] = PyModule_GetDict(module);
  for (size_t i = 0; i < COUNT(bindings); i += 2) {
    put(objects[0], bindings[i], bindings[i + 1]);
  }
  for (size_t i = first_text; i < COUNT(objects); ++i) {
    Py_DECREF(objects[i]);
  }
  return 0;
}

static PyModuleDef_Slot module_slots[] = {{Py_mod_exec, (void *)exec}, {0, NULL}};
static PyModuleDef definition = {PyModuleDef_HEAD_INIT, .m_name = "data_tables",
                                 .m_slots = module_slots};
PyMODINIT_FUNC PyInit_data_tables(void) { return PyModuleDef_Init(&definition); }
