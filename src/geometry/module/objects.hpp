// Thin throwing wrappers over the object protocol, with float fast paths where the
// operands are exact floats. The results are those of the Python expressions they
// stand for, errors included.
#pragma once

#include <cmath>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "module/ref.hpp"

namespace ostrel {

inline Ref getattr(PyObject* o, PyObject* name) { return check(PyObject_GetAttr(o, name)); }
inline void setattr(PyObject* o, PyObject* name, PyObject* value) {
  check(PyObject_SetAttr(o, name, value));
}
inline Ref new_float(double v) { return check(PyFloat_FromDouble(v)); }
inline Ref new_int(long long v) { return check(PyLong_FromLongLong(v)); }
inline Ref new_str(const char* s) { return check(PyUnicode_FromString(s)); }

// The host's float conversion: float, int, bool, __float__ and __index__ pass.
inline double as_double(PyObject* o) {
  if (PyFloat_CheckExact(o)) return PyFloat_AS_DOUBLE(o);
  double v = PyFloat_AsDouble(o);
  if (v == -1.0 && PyErr_Occurred()) throw PyError{};
  return v;
}

inline bool truth(PyObject* o) { return check(PyObject_IsTrue(o)) != 0; }
inline bool isinstance(PyObject* o, PyObject* cls) { return check(PyObject_IsInstance(o, cls)) != 0; }

// Calls with positional arguments and optional keyword names (a tuple of str) whose
// values follow the positional ones in `args`.
inline Ref call(PyObject* callable, std::initializer_list<PyObject*> args,
                PyObject* kwnames = nullptr) {
  Py_ssize_t n = static_cast<Py_ssize_t>(args.size());
  if (kwnames) n -= PyTuple_GET_SIZE(kwnames);
  return check(PyObject_Vectorcall(callable, args.begin(), static_cast<size_t>(n), kwnames));
}

// callable(*positional, name=value, ...), the keywords in the order given.
Ref call_kw(PyObject* callable, std::initializer_list<PyObject*> positional,
            std::initializer_list<std::pair<PyObject*, PyObject*>> keywords);

// super(cls, self), for calling the next class's methods as `super()` does in a method
// defined in `cls`.
inline Ref super_of(PyObject* cls, PyObject* self) {
  return check(PyObject_CallFunctionObjArgs(reinterpret_cast<PyObject*>(&PySuper_Type), cls, self, nullptr));
}

inline Ref call_method(PyObject* self, PyObject* name, std::initializer_list<PyObject*> args) {
  // Room for self in front, as the method call protocol wants.
  PyObject* stack[8];
  if (args.size() >= std::size(stack)) raise(PyExc_SystemError, "ostrel.geometry: too many arguments for call_method");
  stack[0] = self;
  std::copy(args.begin(), args.end(), stack + 1);
  return check(PyObject_VectorcallMethod(name, stack, args.size() + 1, nullptr));
}

inline Ref tuple(std::initializer_list<PyObject*> items) {
  Ref t = check(PyTuple_New(static_cast<Py_ssize_t>(items.size())));
  Py_ssize_t i = 0;
  for (PyObject* item : items) {
    Py_INCREF(item);
    PyTuple_SET_ITEM(t.get(), i++, item);
  }
  return t;
}

inline Ref list(std::initializer_list<PyObject*> items) {
  Ref l = check(PyList_New(static_cast<Py_ssize_t>(items.size())));
  Py_ssize_t i = 0;
  for (PyObject* item : items) {
    Py_INCREF(item);
    PyList_SET_ITEM(l.get(), i++, item);
  }
  return l;
}

inline Ref getitem(PyObject* o, Py_ssize_t index) {
  Ref key = new_int(index);
  return check(PyObject_GetItem(o, key.get()));
}

// math.atan2(y, x): both converted as the host's float() does, y first.
inline Ref atan2(PyObject* y, PyObject* x) {
  const double yd = as_double(y);
  return new_float(std::atan2(yd, as_double(x)));
}

// `o + [o[0]]`: a sequence closed by its first item, with the host's errors.
inline Ref closed(PyObject* o) {
  Ref first = getitem(o, 0);
  Ref tail = list({first.get()});
  return check(PyNumber_Add(o, tail.get()));
}
inline bool both_floats(PyObject* a, PyObject* b) { return PyFloat_CheckExact(a) && PyFloat_CheckExact(b); }

inline Ref add(PyObject* a, PyObject* b) {
  if (both_floats(a, b)) return new_float(PyFloat_AS_DOUBLE(a) + PyFloat_AS_DOUBLE(b));
  return check(PyNumber_Add(a, b));
}
inline Ref sub(PyObject* a, PyObject* b) {
  if (both_floats(a, b)) return new_float(PyFloat_AS_DOUBLE(a) - PyFloat_AS_DOUBLE(b));
  return check(PyNumber_Subtract(a, b));
}
inline Ref mul(PyObject* a, PyObject* b) {
  if (both_floats(a, b)) return new_float(PyFloat_AS_DOUBLE(a) * PyFloat_AS_DOUBLE(b));
  return check(PyNumber_Multiply(a, b));
}
// A zero divisor goes to the host, which raises its own ZeroDivisionError.
inline Ref div(PyObject* a, PyObject* b) {
  if (both_floats(a, b) && PyFloat_AS_DOUBLE(b) != 0.0)
    return new_float(PyFloat_AS_DOUBLE(a) / PyFloat_AS_DOUBLE(b));
  return check(PyNumber_TrueDivide(a, b));
}
inline Ref neg(PyObject* a) {
  if (PyFloat_CheckExact(a)) return new_float(-PyFloat_AS_DOUBLE(a));
  return check(PyNumber_Negative(a));
}

// `o ** n` with an int exponent, as the host computes it; an exact float is raised
// natively where the host would give a value.
Ref power(PyObject* o, long n);

// `a <op> b` with op one of Py_LT ... Py_GE, and its truth: exactly what `if a < b:`
// does (no identity shortcut for == and !=, unlike PyObject_RichCompareBool).
inline Ref compare(PyObject* a, PyObject* b, int op) { return check(PyObject_RichCompare(a, b, op)); }
inline bool compares(PyObject* a, PyObject* b, int op) { return truth(compare(a, b, op).get()); }

// `try: body()` / `except <type>: ...` of the documented steps: whether `body` raised an
// exception of `type`, which is then cleared; any other exception goes on.
template <typename Body>
bool raises(PyObject* type, Body&& body) {
  try {
    body();
    return false;
  } catch (const PyError&) {
    if (!PyErr_ExceptionMatches(type)) throw;
    PyErr_Clear();
    return true;
  }
}

// `first, second, ... = o`: exactly n items, with the host's unpacking errors.
void unpack(PyObject* o, Py_ssize_t n, Ref* out);

// `type(o).__name__`.
Ref type_name(PyObject* o);

// Sets `type(message)` as the current exception with the exception being handled as
// its cause, as `raise type(message) from error` does, and throws.
[[noreturn]] void raise_from(PyObject* type, const char* message);

}  // namespace ostrel
