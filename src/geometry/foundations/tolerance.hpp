// Float comparison with tolerance. The module uses three forms on purpose and they do
// not agree near zero, so each call site names the form it uses:
//   module_tolerance()  both module tolerances, ISCLOSE_RTOL and ISCLOSE_ATOL
//   abs_tolerance()     abs_tol=ISCLOSE_ATOL alone, rel_tol left at 1e-9
//   plain_tolerance     no tolerance arguments: rel_tol 1e-9, abs_tol 0
#pragma once

namespace ostrel {

struct Tolerance {
  double rel;
  double abs;
};

// math.isclose, exactly: infinities are close only to themselves, NaN to nothing.
inline bool isclose(double a, double b, Tolerance t) {
  if (a == b) return true;
  if (__builtin_isinf(a) || __builtin_isinf(b)) return false;
  const double diff = __builtin_fabs(b - a);
  return diff <= __builtin_fabs(t.rel * b) || diff <= __builtin_fabs(t.rel * a) || diff <= t.abs;
}

// Read from the module globals at the moment of the call; a negative value raises the
// ValueError of math.isclose.
Tolerance module_tolerance();
Tolerance abs_tolerance();
inline constexpr Tolerance plain_tolerance{1e-9, 0.0};

}  // namespace ostrel
