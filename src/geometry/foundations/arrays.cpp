#define PY_ARRAY_UNIQUE_SYMBOL ostrel_geometry_ARRAY_API
#include "foundations/arrays.hpp"

#include <numpy/arrayobject.h>

namespace ostrel {

namespace {
PyObject* imported_numpy = nullptr;
}

void import_numpy_api() {
  if (_import_array() < 0) throw PyError{};
  imported_numpy = global<"np">().release();
}

Ref float_array(std::initializer_list<PyObject*> items) {
  Ref np = global<"np">();
  bool all_floats = np.get() == imported_numpy;
  for (PyObject* item : items) all_floats = all_floats && PyFloat_CheckExact(item);
  if (all_floats) {
    npy_intp size = static_cast<npy_intp>(items.size());
    Ref array = check(PyArray_SimpleNew(1, &size, NPY_DOUBLE));
    double* data = static_cast<double*>(PyArray_DATA(reinterpret_cast<PyArrayObject*>(array.get())));
    for (PyObject* item : items) *data++ = PyFloat_AS_DOUBLE(item);
    return array;
  }
  Ref values = list(items);
  Ref array = getattr(np.get(), id<"array">());
  Ref kwnames = tuple({id<"dtype">()});
  return call(array.get(), {values.get(), reinterpret_cast<PyObject*>(&PyFloat_Type)}, kwnames.get());
}

}  // namespace ostrel
