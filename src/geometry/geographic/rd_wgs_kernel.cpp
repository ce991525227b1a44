#include "geographic/rd_wgs_kernel.hpp"

#include <algorithm>
#include <cmath>
#include <span>

#include "foundations/float_kernel.hpp"

namespace ostrel::kernel {

namespace {

// v ** n for an int n >= 2 as the host's float power computes it (the power of the
// absolute value, negated for a negative v and an odd n; an infinite result of a finite
// v is an overflow, which the host raises), without the general special cases.
double integer_power(double v, int n) {
  if (std::isnan(v)) return v;
  const bool odd = (n & 1) != 0;
  if (std::isinf(v)) return odd ? v : std::fabs(v);
  if (v == 0.0) return odd ? v : 0.0;
  const double r = library_pow(std::fabs(v), n);
  if (std::isinf(r)) throw ArithmeticFault{ArithmeticFault::Kind::power, v, static_cast<double>(n)};
  return v < 0.0 && odd ? -r : r;
}

// v ** 0 ... v ** Highest as the host's float power gives them, each computed once: a
// power is the same value in every term that uses it. The host gives 1.0 for an
// exponent of 0, NaN and infinity included, and v itself for 1. Only the exponents the
// series use are computed, so that none overflows that the host never computes.
template <int Highest>
struct Powers {
  explicit Powers(double v) {
    values[0] = 1.0;
    values[1] = v;
    for (int n = 2; n <= Highest; ++n) values[n] = integer_power(v, n);
  }
  double operator[](int n) const { return values[n]; }
  double values[Highest + 1] = {};
};

// The highest power of the first (p) or second (q) variable in the series, read off the
// tables when the module is compiled.
template <std::size_t... N>
constexpr int highest(int SeriesTerm::*variable, const std::array<SeriesTerm, N>&... series) {
  int h = 1;
  for (std::span<const SeriesTerm> terms : {std::span<const SeriesTerm>(series)...})
    for (const SeriesTerm& t : terms) h = std::max(h, t.*variable);
  return h;
}

template <std::size_t N, int P, int Q>
double series(const std::array<SeriesTerm, N>& terms, const Powers<P>& first, const Powers<Q>& second) {
  double sum = 0.0;
  for (const SeriesTerm& t : terms) sum = sum + t.coefficient * first[t.p] * second[t.q];
  return sum;
}

}  // namespace

std::array<double, 2> rd_to_wgs(double x, double y) {
  const Powers<highest(&SeriesTerm::p, latitude_series, longitude_series)> dx(1e-5 * (x - rd_x0));
  const Powers<highest(&SeriesTerm::q, latitude_series, longitude_series)> dy(1e-5 * (y - rd_y0));
  const double phi = wgs_phi0 + series(latitude_series, dx, dy) / 3600.0;
  const double lam = wgs_lam0 + series(longitude_series, dx, dy) / 3600.0;
  return {phi, lam};
}

std::array<double, 2> wgs_to_rd(double phi, double lam) {
  const Powers<highest(&SeriesTerm::p, x_series, y_series)> dphi(0.36 * (phi - wgs_phi0));
  const Powers<highest(&SeriesTerm::q, x_series, y_series)> dlam(0.36 * (lam - wgs_lam0));
  const double x = series(x_series, dphi, dlam) + rd_x0;
  const double y = series(y_series, dphi, dlam) + rd_y0;
  return {x, y};
}

}  // namespace ostrel::kernel
