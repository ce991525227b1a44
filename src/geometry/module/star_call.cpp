#include "module/star_call.hpp"

#include "module/objects.hpp"

namespace ostrel {

namespace {

// How the host names a callable in call errors: "module.qualname()", the module left
// out when it is missing, None or "builtins"; str(callable) without a __qualname__.
Ref optional_attribute(PyObject* o, PyObject* name) {
  Ref value = Ref::steal(PyObject_GetAttr(o, name));
  if (!value) {
    if (!PyErr_ExceptionMatches(PyExc_AttributeError)) throw PyError{};
    PyErr_Clear();
  }
  return value;
}

Ref function_text(PyObject* callable) {
  Ref qualname = optional_attribute(callable, id<"__qualname__">());
  if (!qualname) return check(PyObject_Str(callable));
  Ref module = optional_attribute(callable, id<"__module__">());
  if (module && module.get() != Py_None) {
    Ref builtins = new_str("builtins");
    if (check(PyObject_RichCompareBool(module.get(), builtins.get(), Py_NE)))
      return check(PyUnicode_FromFormat("%S.%S()", module.get(), qualname.get()));
  }
  return check(PyUnicode_FromFormat("%S()", qualname.get()));
}

}  // namespace

Ref star_call(PyObject* callable, PyObject* iterable) {
  if (PyTuple_CheckExact(iterable)) return check(PyObject_Call(callable, iterable, nullptr));
  if (!Py_TYPE(iterable)->tp_iter && !PySequence_Check(iterable)) {
    Ref text = function_text(callable);
    raise_format(PyExc_TypeError, "%U argument after * must be an iterable, not %.200s", text.get(),
                 Py_TYPE(iterable)->tp_name);
  }
  Ref args = check(PySequence_Tuple(iterable));
  return check(PyObject_Call(callable, args.get(), nullptr));
}

}  // namespace ostrel
