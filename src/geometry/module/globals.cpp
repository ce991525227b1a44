#include "module/globals.hpp"

namespace ostrel {

namespace {
PyObject* dict = nullptr;  // borrowed from the module, which lives for the process
}

void set_module_dict(PyObject* d) { dict = d; }
PyObject* module_dict() { return dict; }

Ref global(PyObject* name) {
  PyObject* value = PyDict_GetItemWithError(dict, name);
  if (!value) {
    if (PyErr_Occurred()) throw PyError{};
    value = PyDict_GetItemWithError(PyEval_GetBuiltins(), name);
    if (!value) {
      if (!PyErr_Occurred()) PyErr_Format(PyExc_NameError, "name '%U' is not defined", name);
      throw PyError{};
    }
  }
  return Ref::borrow(value);
}

void set_global(const char* name, PyObject* value) { check(PyDict_SetItemString(dict, name, value)); }

}  // namespace ostrel
