#include "foundations/float_kernel.hpp"

#include <cerrno>

namespace ostrel::kernel {

namespace {

double (*volatile const pow_function)(double, double) = ::pow;

bool is_odd_integer(double x) { return std::fmod(std::fabs(x), 2.0) == 1.0; }

double math_1(double x, double (*f)(double)) {
  const double r = f(x);
  if ((std::isnan(r) && !std::isnan(x)) || (std::isinf(r) && std::isfinite(x)))
    throw ArithmeticFault{ArithmeticFault::Kind::math_domain, x};
  return r;
}

}  // namespace

double library_pow(double x, double y) { return pow_function(x, y); }

std::optional<double> host_power(double iv, double iw) {
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
    if (iw < 0.0) return std::nullopt;  // ZeroDivisionError
    return is_odd_integer(iw) ? iv : 0.0;
  }
  if (iv == 1.0) return 1.0;
  bool negate = false;
  if (iv < 0.0) {
    if (iw != std::floor(iw)) return std::nullopt;  // ValueError
    iv = -iv;
    negate = is_odd_integer(iw);
  }
  if (iv == 1.0) return negate ? -1.0 : 1.0;
  errno = 0;
  double ix = library_pow(iv, iw);
  if (errno == 0 && std::isinf(ix))
    errno = ERANGE;
  else if (errno == ERANGE && ix == 0.0)
    errno = 0;                          // underflow is not an error
  if (errno != 0) return std::nullopt;  // OverflowError
  return negate ? -ix : ix;
}

double math_sqrt(double x) {
  return math_1(x, [](double v) { return std::sqrt(v); });
}
double math_sin(double x) {
  return math_1(x, [](double v) { return std::sin(v); });
}
double math_cos(double x) {
  return math_1(x, [](double v) { return std::cos(v); });
}
double math_acos(double x) {
  return math_1(x, [](double v) { return std::acos(v); });
}

}  // namespace ostrel::kernel
