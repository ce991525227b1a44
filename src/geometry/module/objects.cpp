#include "module/objects.hpp"

#include "foundations/float_kernel.hpp"

namespace ostrel {

Ref power(PyObject* o, long n) {
  if (PyFloat_CheckExact(o))
    if (const auto r = kernel::host_power(PyFloat_AS_DOUBLE(o), static_cast<double>(n))) return new_float(*r);
  Ref exponent = new_int(n);
  return check(PyNumber_Power(o, exponent.get(), Py_None));
}

Ref call_kw(PyObject* callable, std::initializer_list<PyObject*> positional,
            std::initializer_list<std::pair<PyObject*, PyObject*>> keywords) {
  PyObject* stack[16];
  const size_t n = positional.size(), k = keywords.size();
  if (n + k > 16) raise(PyExc_SystemError, "too many arguments");
  std::copy(positional.begin(), positional.end(), stack);
  Ref names = check(PyTuple_New(static_cast<Py_ssize_t>(k)));
  size_t i = 0;
  for (auto [name, value] : keywords) {
    Py_INCREF(name);
    PyTuple_SET_ITEM(names.get(), static_cast<Py_ssize_t>(i), name);
    stack[n + i++] = value;
  }
  return check(PyObject_Vectorcall(callable, stack, n, k ? names.get() : nullptr));
}

void unpack(PyObject* o, Py_ssize_t n, Ref* out) {
  Ref it = Ref::steal(PyObject_GetIter(o));
  if (!it) {
    if (PyErr_ExceptionMatches(PyExc_TypeError)) {
      PyErr_Clear();
      raise_format(PyExc_TypeError, "cannot unpack non-iterable %.200s object", Py_TYPE(o)->tp_name);
    }
    throw PyError{};
  }
  for (Py_ssize_t i = 0; i < n; ++i) {
    out[i] = Ref::steal(PyIter_Next(it.get()));
    if (!out[i]) {
      if (PyErr_Occurred()) throw PyError{};
      raise_format(PyExc_ValueError, "not enough values to unpack (expected %zd, got %zd)", n, i);
    }
  }
  Ref extra = Ref::steal(PyIter_Next(it.get()));
  if (extra) raise_format(PyExc_ValueError, "too many values to unpack (expected %zd)", n);
  if (PyErr_Occurred()) throw PyError{};
}

Ref type_name(PyObject* o) {
  return getattr(reinterpret_cast<PyObject*>(Py_TYPE(o)), id<"__name__">());
}

void raise_from(PyObject* type, const char* message) {
  PyObject *cause_type, *cause, *traceback;
  PyErr_Fetch(&cause_type, &cause, &traceback);
  PyErr_NormalizeException(&cause_type, &cause, &traceback);
  if (traceback) PyException_SetTraceback(cause, traceback);
  Py_XDECREF(cause_type);
  Py_XDECREF(traceback);
  PyObject* error = PyObject_CallFunction(type, "s", message);
  if (!error) {
    Py_XDECREF(cause);
    throw PyError{};
  }
  Py_XINCREF(cause);
  PyException_SetContext(error, cause);  // steals
  PyException_SetCause(error, cause);    // steals, and suppresses the context
  PyErr_SetObject(type, error);
  Py_DECREF(error);
  throw PyError{};
}

}  // namespace ostrel
