#include "surfaces/triangle_kernel.hpp"

#include <cmath>
#include <initializer_list>

namespace ostrel::kernel {

namespace {

bool all_finite(std::initializer_list<double> values) {
  for (double v : values)
    if (!std::isfinite(v)) return false;
  return true;
}

}  // namespace

std::optional<double> triangle_area(const Vec3& p0, const Vec3& p1, const Vec3& p2) {
  // p0.vector_to(p1).cross(p0.vector_to(p2)).magnitude / 2
  const Vec3 u{p1.x - p0.x, p1.y - p0.y, p1.z - p0.z};
  const Vec3 w{p2.x - p0.x, p2.y - p0.y, p2.z - p0.z};
  const Vec3 c{u.y * w.z - u.z * w.y, u.z * w.x - u.x * w.z, u.x * w.y - u.y * w.x};
  const double result = std::sqrt(library_pow(c.x, 2.0) + library_pow(c.y, 2.0) + library_pow(c.z, 2.0)) / 2;
  // Every step feeds the result, and none of them turns a non-finite value into a
  // finite one, so a finite result means that no step overflowed.
  if (!std::isfinite(result)) return std::nullopt;
  return result;
}

Vec3 triangle_centroid(const Vec3& v0, const Vec3& v1, const Vec3& v2) {
  return {(v0.x + v1.x + v2.x) / 3.0, (v0.y + v1.y + v2.y) / 3.0, (v0.z + v1.z + v2.z) / 3.0};
}

PlanVector moment_base(const Vec3& v0, const Vec3& v1) { return {v0.x - v1.x, v0.y - v1.y}; }

std::optional<Moments> triangle_moments(const Vec3& v0, const Vec3& v1, const Vec3& v2, double area, double cos_theta,
                                        double sin_theta) {
  const PlanVector base = moment_base(v0, v1);
  const double base_x2 = library_pow(base.x, 2.0), base_y2 = library_pow(base.y, 2.0);
  const double width = std::sqrt(base_x2 + base_y2);
  const double twice_area = 2.0 * area;
  const double height = twice_area / width;
  const double height3 = library_pow(height, 3.0);
  const double inertia_base = width * height3 / 36.0;

  const PlanVector side_1{v0.x - v2.x, v0.y - v2.y};
  const double side_1_x2 = library_pow(side_1.x, 2.0), side_1_y2 = library_pow(side_1.y, 2.0);
  const double length_side_1 = std::sqrt(side_1_x2 + side_1_y2);
  const PlanVector side_2{v1.x - v2.x, v1.y - v2.y};
  const double side_2_x2 = library_pow(side_2.x, 2.0), side_2_y2 = library_pow(side_2.y, 2.0);
  const double length_side_2 = std::sqrt(side_2_x2 + side_2_y2);

  // The builtin max keeps the first argument unless the second is greater.
  const double longest = length_side_2 > length_side_1 ? length_side_2 : length_side_1;
  const double longest2 = library_pow(longest, 2.0), height2 = library_pow(height, 2.0);
  const double offset2 = longest2 - height2;
  const double a = width - std::sqrt(offset2);
  const double width2 = library_pow(width, 2.0), a_width = a * width, a2 = library_pow(a, 2.0);
  const double width_height = width * height;
  const double inertia_height = width_height * (width2 - a_width + a2) / 36.0;

  const double cos2 = library_pow(cos_theta, 2.0), sin2 = library_pow(sin_theta, 2.0);
  const double cos2_base = cos2 * inertia_base, sin2_height = sin2 * inertia_height;
  const double sin2_base = sin2 * inertia_base, cos2_height = cos2 * inertia_height;
  const Moments result{cos2_base + sin2_height, sin2_base + cos2_height};

  if (!all_finite({area, cos_theta, sin_theta, base.x, base.y, base_x2, base_y2, width, twice_area, height, height3,
                   inertia_base, side_1.x, side_1.y, side_1_x2, side_1_y2, length_side_1, side_2.x, side_2.y,
                   side_2_x2, side_2_y2, length_side_2, longest2, height2, offset2, a, width2, a_width, a2,
                   width_height, inertia_height, cos2, sin2, cos2_base, sin2_height, sin2_base, cos2_height,
                   result.x, result.y}))
    return std::nullopt;
  return result;
}

}  // namespace ostrel::kernel
