// The host's float arithmetic on plain doubles, for every kernel: the three tolerance
// forms of math.isclose, and the operations where the host raises instead of giving the
// IEEE result. Those throw an ArithmeticFault; the boundary of the call turns it into
// the host's own exception by repeating the operation with the host's arithmetic.
#pragma once

#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace ostrel::kernel {

struct ArithmeticFault {
  enum class Kind {
    division_by_zero,  // a / 0.0: ZeroDivisionError
    power,             // a ** b where the host raises: OverflowError, ZeroDivisionError, ValueError
    null_vector,       // Vector.normalize of a vector of magnitude 0.0: ValueError from ZeroDivisionError
    math_domain,       // a math module function outside its domain: ValueError
  };
  Kind kind;
  double a = 0.0, b = 0.0;  // the operands: numerator, or base and exponent
};

// Thrown by a kernel that meets a case it leaves to the documented steps: where they
// would raise, or where the outcome is in doubt. The native path then gives nothing and
// the steps run (module/native_path.hpp).
struct TakeSteps {};

// Thrown by a kernel at the point where the documented steps raise an error whose type
// and text it knows: the native path raises it as the host's exception, so a failure
// costs no more than a success. An empty text stands for a raise without a message.
struct StepsRaise {
  enum class Type { value_error, index_error };
  Type type;
  std::string message;
};
inline StepsRaise value_error(std::string message) { return {StepsRaise::Type::value_error, std::move(message)}; }
// Item access past the end of a list.
inline StepsRaise list_index_out_of_range() { return {StepsRaise::Type::index_error, "list index out of range"}; }

// Float comparison with tolerance. The module uses three forms on purpose and they do
// not agree near zero, so each call site names the form it uses: both module
// tolerances (ISCLOSE_RTOL and ISCLOSE_ATOL); abs_tol=ISCLOSE_ATOL alone, rel_tol left
// at 1e-9; and plain math.isclose, rel_tol 1e-9 and abs_tol 0.
struct Tolerance {
  double rel;
  double abs;
};
inline constexpr Tolerance plain_tolerance{1e-9, 0.0};

// The module's two read tolerance forms, as one call read them.
struct Tolerances {
  Tolerance module;  // rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL
  Tolerance abs;     // abs_tol=ISCLOSE_ATOL alone
};

// math.isclose, exactly: infinities are close only to themselves, NaN to nothing.
inline bool isclose(double a, double b, Tolerance t) {
  if (a == b) return true;
  if (std::isinf(a) || std::isinf(b)) return false;
  const double diff = std::fabs(b - a);
  return diff <= std::fabs(t.rel * b) || diff <= std::fabs(t.rel * a) || diff <= t.abs;
}

// The C library's pow, called as the host calls it for a float `x ** y`. The compiler
// would turn pow(x, 2.0) into x * x, which differs from the library's result in the
// last bit for some inputs; the call goes through a pointer it cannot see through.
// No error checks: for callers that follow NumPy's float semantics.
double library_pow(double x, double y);

// `a ** b` for two floats as the host computes it, NaN and signed zero included; nothing
// where the host raises instead.
std::optional<double> host_power(double a, double b);

inline double power(double a, double b) {
  if (const auto r = host_power(a, b)) return *r;
  throw ArithmeticFault{ArithmeticFault::Kind::power, a, b};
}
inline double square(double a) { return power(a, 2.0); }

// a / b; the host refuses any zero divisor, NaN numerators included.
inline double divide(double a, double b) {
  if (b == 0.0) throw ArithmeticFault{ArithmeticFault::Kind::division_by_zero, a};
  return a / b;
}

// The functions of the math module: NaN out of a number is a domain error, infinity
// out of a finite number too.
double math_sqrt(double x);
double math_sin(double x);
double math_cos(double x);
double math_acos(double x);

}  // namespace ostrel::kernel
