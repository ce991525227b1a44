#include "foundations/tolerance.hpp"

#include "module/globals.hpp"
#include "module/objects.hpp"
#include "module/own_globals.hpp"

namespace ostrel {

namespace {
Tolerance validated(Tolerance t) {
  if (t.rel < 0.0 || t.abs < 0.0) raise(PyExc_ValueError, "tolerances must be non-negative");
  return t;
}
}  // namespace

Tolerance module_tolerance() {
  // Kept while the module namespace is unchanged and both values are plain floats,
  // whose reading has no effects of its own.
  static unsigned long long cached_generation = 0;
  static Tolerance cached{};
  const unsigned long long now = globals_generation();
  if (now == cached_generation) return cached;
  Ref rel_object = global<"ISCLOSE_RTOL">(), abs_object = global<"ISCLOSE_ATOL">();
  const Tolerance t = validated({as_double(rel_object.get()), as_double(abs_object.get())});
  if (PyFloat_CheckExact(rel_object.get()) && PyFloat_CheckExact(abs_object.get())) {
    cached = t;
    cached_generation = now;
  }
  return t;
}

Tolerance abs_tolerance() { return validated({1e-9, as_double(global<"ISCLOSE_ATOL">().get())}); }

}  // namespace ostrel
