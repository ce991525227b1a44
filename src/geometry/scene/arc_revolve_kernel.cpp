#include "scene/arc_revolve_kernel.hpp"

#include <cmath>
#include <numbers>

namespace ostrel::kernel {

namespace {

// The antiderivative of x ** 2 dy along x = xc + r cos t, y = yc + r sin t (without pi),
// its three terms added left to right.
double volume_antiderivative(double t, double r, double xc) {
  const double first = 0.08333333333333333 * power(r, 3.0) * (9 * math_sin(t) + math_sin(3 * t));
  const double second = power(r, 2.0) * xc * (t + math_sin(t) * math_cos(t));
  const double third = power(xc, 2.0) * r * math_sin(t);
  return first + second + third;
}

}  // namespace

ArcVolume arc_inner_volume(const ArcPoints& arc, bool short_arc, double rotation_angle) {
  const Vec3 c = arc.centre;
  const double start_x = arc.start.x - c.x, start_y = arc.start.y - c.y;
  const double end_x = arc.end.x - c.x, end_y = arc.end.y - c.y;
  const bool same_side = start_x * end_x >= 0;
  const bool outer = same_side && ((c.x >= 0 && arc.start.y > arc.end.y) || (c.x < 0 && arc.start.y < arc.end.y));
  if (!short_arc) return {ArcVolume::Check::long_arc, 0.0};
  if (!same_side) return {ArcVolume::Check::opposite_sides, 0.0};
  if (!outer) return {ArcVolume::Check::inner_oriented, 0.0};
  const double r = magnitude(vector_between(c, arc.start));
  const double theta1 = std::atan2(end_y, end_x), theta2 = std::atan2(start_y, start_x);
  const double total =
      std::fabs(std::numbers::pi * (volume_antiderivative(theta1, r, c.x) - volume_antiderivative(theta2, r, c.x)));
  return {ArcVolume::Check::ok, rotation_angle / (2 * std::numbers::pi) * total};
}

bool ring_is_clockwise(const std::vector<Vec3>& points) {
  double sum = 0.0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Vec3 p1 = points[i], p2 = points[(i + 1) % points.size()];
    sum += (p2.x - p1.x) * (p2.y + p1.y);
  }
  return sum > 0;
}

}  // namespace ostrel::kernel
