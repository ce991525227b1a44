#include "foundations/tolerance.hpp"

#include "module/globals.hpp"
#include "module/natives.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

using kernel::Tolerance;

Tolerance validated(Tolerance t) {
  if (t.rel < 0.0 || t.abs < 0.0) raise(PyExc_ValueError, "tolerances must be non-negative");
  return t;
}

// A float or int global as a double, where reading it runs no code.
std::optional<double> plain_number(PyObject* name) {
  PyObject* value = PyDict_GetItemWithError(module_dict(), name);  // an interned str key: cannot fail
  if (!value) return std::nullopt;
  if (PyFloat_CheckExact(value)) return PyFloat_AS_DOUBLE(value);
  if (!PyLong_CheckExact(value)) return std::nullopt;
  const double v = PyLong_AsDouble(value);
  if (v == -1.0 && PyErr_Occurred()) {
    PyErr_Clear();
    return std::nullopt;
  }
  return v;
}

}  // namespace

Tolerance module_tolerance() {
  Ref rel = global<"ISCLOSE_RTOL">(), abs = global<"ISCLOSE_ATOL">();
  return validated({as_double(rel.get()), as_double(abs.get())});
}

Tolerance abs_tolerance() { return abs_tolerance(global<"ISCLOSE_ATOL">().get()); }

Tolerance abs_tolerance(PyObject* atol) { return validated({1e-9, as_double(atol)}); }

std::optional<kernel::Tolerances> native_tolerances() {
  // Kept while the module namespace is unchanged.
  static unsigned long long cached_generation = 0;
  static std::optional<kernel::Tolerances> cached;
  const unsigned long long now = globals_generation();
  if (now == cached_generation) return cached;
  const auto rel = plain_number(id<"ISCLOSE_RTOL">()), abs = plain_number(id<"ISCLOSE_ATOL">());
  cached = std::nullopt;
  if (rel && abs && *rel >= 0.0 && *abs >= 0.0) cached = kernel::Tolerances{{*rel, *abs}, {1e-9, *abs}};
  cached_generation = now;
  return cached;
}

}  // namespace ostrel
