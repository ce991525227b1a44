#include "curves/arc_kernel.hpp"

#include <cmath>
#include <numbers>

namespace ostrel::kernel {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double two_pi = 2 * pi;

bool finite(Vec3 v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// cartesian_to_spherical of a point relative to the centre: (r, theta, phi). The
// squares are NumPy scalar powers, which call the C library's pow.
struct Spherical {
  double r, theta, phi;
};
bool to_spherical(Vec3 point, Vec3 centre, Spherical& s) {
  const Vec3 c = vector_between(centre, point);
  if (!finite(c)) return false;
  const double sum = library_pow(c.x, 2.0) + library_pow(c.y, 2.0) + library_pow(c.z, 2.0);
  s.r = std::sqrt(sum);
  // c.z / r is a NumPy division: r == 0 gives NaN and a warning.
  if (!std::isfinite(s.r) || s.r == 0.0) return false;
  s.theta = std::acos(c.z / s.r);
  s.phi = std::atan2(c.y, c.x);
  return true;
}

// An azimuth from atan2 moved into (0, 2 pi].
double positive_phi(double phi) { return phi > 0 ? phi : two_pi + phi; }

// Python's floored remainder for a positive divisor.
double floored_remainder(double a, double b) {
  double mod = std::fmod(a, b);
  if (mod != 0.0) {
    if (mod < 0) mod += b;
  } else {
    mod = std::copysign(0.0, b);
  }
  return mod;
}

}  // namespace

Thetas arc_thetas(const ArcPoints& arc) {
  const double start_x = arc.start.x - arc.centre.x, start_y = arc.start.y - arc.centre.y;
  const double end_x = arc.end.x - arc.centre.x, end_y = arc.end.y - arc.centre.y;
  return {std::atan2(end_y, end_x), std::atan2(start_y, start_x)};
}

double arc_angle(Thetas t, bool short_arc) {
  const double diff = std::fabs(t.theta2 - t.theta1);
  if (short_arc) return diff <= pi ? diff : two_pi - diff;
  return diff > pi ? diff : two_pi - diff;
}

bool discretize_arc(const ArcPoints& arc, bool short_arc, std::size_t num, std::vector<Vec3>& out) {
  Spherical start, end;
  if (!finite(arc.centre) || !to_spherical(arc.start, arc.centre, start) || !to_spherical(arc.end, arc.centre, end))
    return false;
  const double start_phi = positive_phi(start.phi), end_phi = positive_phi(end.phi);
  double diff_total = end_phi - start_phi;
  if (short_arc) {
    if (diff_total < -pi)
      diff_total += two_pi;
    else if (diff_total > pi)
      diff_total -= two_pi;
  } else {
    if (-pi < diff_total && diff_total < 0)
      diff_total += two_pi;
    else if (0 < diff_total && diff_total < pi)
      diff_total -= two_pi;
  }
  const double d_angle = diff_total / static_cast<double>(num - 1);
  // Every row keeps the start point's r and theta.
  const double r_sin = start.r * std::sin(start.theta);
  const double z = start.r * std::cos(start.theta) + arc.centre.z;
  out.resize(num);
  for (std::size_t i = 0; i < num; ++i) {
    double angle = i == 0         ? start_phi
                   : i == num - 1 ? end_phi
                                  : floored_remainder(start_phi + static_cast<double>(i) * d_angle, two_pi);
    if (pi < angle && angle <= two_pi) angle = angle - two_pi;
    out[i] = {r_sin * std::cos(angle) + arc.centre.x, r_sin * std::sin(angle) + arc.centre.y, z};
    if (!finite(out[i])) return false;
  }
  return true;
}

}  // namespace ostrel::kernel
