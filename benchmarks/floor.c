// The floor: asks the interpreter for as many floats, ints, texts, lists, dicts and references as
// the module ends up holding, as large as those, and does nothing else: no rate to look up or to
// compute, no sharing to get right. shape.h says what to ask for; the benchmark counts it out of
// the module.

#include <Python.h>

#include "shape.h" // floats, ints, text_bytes, text_sizes, list_sizes, dict_sizes (ascending)

#define COUNT(array) (sizeof(array) / sizeof(*(array)))
enum { lists = COUNT(list_sizes), texts = COUNT(text_sizes), all = lists + texts + COUNT(ints) };

static PyObject *made[all]; // the lists, then the texts, then the ints

static PyObject *must(PyObject *object) {
  return object != NULL ? object : (Py_FatalError("the floor gets no memory"), NULL);
}

// A new float in every slot while there are floats to make; from then on the floats already made,
// in the order of their slots.
static void make_lists(void) {
  size_t slots = 0, source = 0;
  Py_ssize_t source_slot = 0;
  for (size_t i = 0; i < lists; ++i) {
    PyObject *list = made[i] = must(PyList_New(list_sizes[i]));
    for (Py_ssize_t slot = 0; slot < list_sizes[i]; ++slot, ++slots) {
      if (slots < floats) {
        PyList_SET_ITEM(list, slot, must(PyFloat_FromDouble((double)slots)));
        continue;
      }
      PyList_SET_ITEM(list, slot, Py_NewRef(PyList_GET_ITEM(made[source], source_slot)));
      if (++source_slot == list_sizes[source]) {
        ++source;
        source_slot = 0;
      }
    }
  }
}

static void make_texts_and_ints(void) {
  const char *text = text_bytes;
  for (size_t i = 0; i < texts; text += text_sizes[i], ++i) {
    made[lists + i] = must(PyUnicode_FromStringAndSize(text, text_sizes[i]));
  }
  for (size_t i = 0; i < COUNT(ints); ++i) {
    made[lists + texts + i] = must(PyLong_FromLong(ints[i]));
  }
}

// Each dict holds the one before it, so that the last one holds everything.
static PyObject *make_dicts(void) {
  PyObject *last = NULL;
  size_t next = 0;
  for (size_t i = 0; i < COUNT(dict_sizes); ++i) {
    PyObject *dict = must(PyDict_New());
    for (int entry = 0; entry < dict_sizes[i]; ++entry) {
      PyObject *value = entry == 0 && last != NULL ? last : made[next++ % all];
      if (PyDict_SetItem(dict, made[lists + entry], value) < 0) {
        must(NULL);
      }
    }
    last = dict;
  }
  return last;
}

static int exec(PyObject *module) {
  make_lists();
  make_texts_and_ints();
  return PyModule_Add(module, "REPO_TABLES", make_dicts());
}

static PyModuleDef_Slot slots[] = {{Py_mod_exec, (void *)exec}, {0, NULL}};
static PyModuleDef definition = {PyModuleDef_HEAD_INIT, .m_name = "data_tables", .m_slots = slots};
PyMODINIT_FUNC PyInit_data_tables(void) { return PyModuleDef_Init(&definition); }
