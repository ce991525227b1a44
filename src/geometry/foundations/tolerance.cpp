#include "foundations/tolerance.hpp"

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {
Tolerance validated(Tolerance t) {
  if (t.rel < 0.0 || t.abs < 0.0) raise(PyExc_ValueError, "tolerances must be non-negative");
  return t;
}
}  // namespace

Tolerance module_tolerance() {
  const double rel = as_double(global<"ISCLOSE_RTOL">().get());
  const double abs = as_double(global<"ISCLOSE_ATOL">().get());
  return validated({rel, abs});
}

Tolerance abs_tolerance() { return validated({1e-9, as_double(global<"ISCLOSE_ATOL">().get())}); }

}  // namespace ostrel
