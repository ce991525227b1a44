// A position or direction on plain doubles, the unit of data of the geometry kernels,
// with the Vector and Point operations the kernels share.
#pragma once

#include "foundations/float_kernel.hpp"

namespace ostrel::kernel {

struct Vec3 {
  double x, y, z;
};

// Point.__eq__ and Vector.__eq__: x, then y, then z, each by math.isclose with the
// module tolerance, stopping at the first that differs.
inline bool coincide(Vec3 a, Vec3 b, Tolerance module) {
  return isclose(a.x, b.x, module) && isclose(a.y, b.y, module) && isclose(a.z, b.z, module);
}

// Vector.squared_magnitude: x ** 2 + y ** 2 + z ** 2, summed left to right.
inline double squared_magnitude(Vec3 v) { return square(v.x) + square(v.y) + square(v.z); }

// Vector.magnitude: math.sqrt of the squared magnitude.
inline double magnitude(Vec3 v) { return math_sqrt(squared_magnitude(v)); }

// Vector.normalize: each coordinate divided by the magnitude; a magnitude of exactly
// 0.0 is a null vector, whatever its coordinates were.
inline Vec3 normalize(Vec3 v) {
  const double m = magnitude(v);
  if (m == 0.0) throw ArithmeticFault{ArithmeticFault::Kind::null_vector, v.x};
  return {v.x / m, v.y / m, v.z / m};
}

// Point.vector_to: the coordinates of `to` minus those of `from`.
inline Vec3 vector_between(Vec3 from, Vec3 to) { return {to.x - from.x, to.y - from.y, to.z - from.z}; }

}  // namespace ostrel::kernel
