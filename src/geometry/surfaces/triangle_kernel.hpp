// Triangle measures on plain doubles, computed step by step as the Python class does,
// so that callers summing triangles in loops (polygons) get the very same numbers.
//
// Where a step leaves the finite range the result is std::nullopt: there the host
// raises (OverflowError of a float power) or NumPy warns, and the caller recomputes
// through the Python objects to get exactly that behaviour.
#pragma once

#include <optional>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

// |(p1 - p0) x (p2 - p0)| / 2, in 3D.
std::optional<double> triangle_area(const Vec3& p0, const Vec3& p1, const Vec3& p2);

// The mean of the vertices, each coordinate summed left to right, then divided by 3.0.
Vec3 triangle_centroid(const Vec3& v0, const Vec3& v1, const Vec3& v2);

// The base edge of the second moments, from vertex 1 to vertex 0, in plan.
struct PlanVector {
  double x, y;
};
PlanVector moment_base(const Vec3& v0, const Vec3& v1);

// Second moments about centroidal axes parallel to x and y, of the plan of the
// triangle with the (3D) `area`. The base makes the angle theta = pi + atan2(base.y,
// base.x) with the x axis; its cosine and sine come from the caller, who takes them
// with NumPy's own arctan2, cos and sin, since those may differ from the C library's
// in the last bit. No product-of-inertia term takes part.
struct Moments {
  double x, y;
};
std::optional<Moments> triangle_moments(const Vec3& v0, const Vec3& v1, const Vec3& v2, double area, double cos_theta,
                                        double sin_theta);

}  // namespace ostrel::kernel
