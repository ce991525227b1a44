#include "module/objects.hpp"

#include "foundations/library_pow.hpp"

#include <cerrno>

namespace ostrel {

namespace {

bool is_odd_integer(double x) { return std::fmod(std::fabs(x), 2.0) == 1.0; }

// The math module's wrapper of a one-argument libm function: NaN out of a number is
// a domain error, infinity out of a finite number too.
double math_1(double x, double (*f)(double)) {
  const double r = f(x);
  if (std::isnan(r) && !std::isnan(x)) raise(PyExc_ValueError, "math domain error");
  if (std::isinf(r) && std::isfinite(x)) raise(PyExc_ValueError, "math domain error");
  return r;
}

}  // namespace

double float_pow(double iv, double iw) {
  // The special cases are taken in the host's order, so that every result, NaN and
  // signed zero included, is the one `iv ** iw` gives.
  if (iw == 0.0) return 1.0;
  if (std::isnan(iv)) return iv;
  if (std::isnan(iw)) return iv == 1.0 ? 1.0 : iw;
  if (std::isinf(iw)) {
    iv = std::fabs(iv);
    if (iv == 1.0) return 1.0;
    if ((iw > 0.0) == (iv > 1.0)) return std::fabs(iw);
    return 0.0;
  }
  if (std::isinf(iv)) {
    const bool odd = is_odd_integer(iw);
    if (iw > 0.0) return odd ? iv : std::fabs(iv);
    return odd ? std::copysign(0.0, iv) : 0.0;
  }
  if (iv == 0.0) {
    if (iw < 0.0) raise(PyExc_ZeroDivisionError, "0.0 cannot be raised to a negative power");
    return is_odd_integer(iw) ? iv : 0.0;
  }
  if (iv == 1.0) return 1.0;
  bool negate = false;
  if (iv < 0.0) {
    if (iw != std::floor(iw)) raise(PyExc_ValueError, "negative number cannot be raised to a fractional power");
    iv = -iv;
    negate = is_odd_integer(iw);
  }
  if (iv == 1.0) return negate ? -1.0 : 1.0;
  errno = 0;
  double ix = library_pow(iv, iw);
  if (errno == 0 && std::isinf(ix)) errno = ERANGE;
  else if (errno == ERANGE && ix == 0.0) errno = 0;  // underflow is not an error
  if (negate) ix = -ix;
  if (errno != 0) {
    PyErr_SetFromErrno(errno == ERANGE ? PyExc_OverflowError : PyExc_ValueError);
    throw PyError{};
  }
  return ix;
}

double math_sqrt(double x) { return math_1(x, [](double v) { return std::sqrt(v); }); }
double math_sin(double x) { return math_1(x, [](double v) { return std::sin(v); }); }
double math_cos(double x) { return math_1(x, [](double v) { return std::cos(v); }); }
double math_acos(double x) { return math_1(x, [](double v) { return std::acos(v); }); }
double math_atan2(double y, double x) { return std::atan2(y, x); }

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
  static PyObject* const name = PyUnicode_InternFromString("__name__");
  return getattr(reinterpret_cast<PyObject*>(Py_TYPE(o)), name);
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
