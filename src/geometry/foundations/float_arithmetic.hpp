// Float arithmetic of the host on plain doubles, for the kernels. Where the host raises
// instead of giving the IEEE result, these throw an ArithmeticFault, which the face
// turns into the host's own exception (see arithmetic_fault.hpp).
#pragma once

#include <cmath>

#include "foundations/library_pow.hpp"
#include "foundations/vec3.hpp"

namespace ostrel {

struct ArithmeticFault {
  enum class Kind {
    division_by_zero,  // a / 0.0: ZeroDivisionError
    square_overflow,   // a ** 2 beyond the largest double: OverflowError
    null_vector,       // Vector.normalize of a vector of magnitude 0.0: ValueError
  };
  Kind kind;
  double operand;  // the numerator, or the base
};

// a / b; the host refuses any zero divisor, NaN numerators included.
inline double divide(double a, double b) {
  if (b == 0.0) throw ArithmeticFault{ArithmeticFault::Kind::division_by_zero, a};
  return a / b;
}

// a ** 2 as the host computes a float power: the C library's pow, an overflow of a
// finite base being an error.
inline double square(double a) {
  const double r = library_pow(std::fabs(a), 2.0);
  if (std::isinf(r) && std::isfinite(a)) throw ArithmeticFault{ArithmeticFault::Kind::square_overflow, a};
  return r;
}

// Vector.magnitude: math.sqrt(x ** 2 + y ** 2 + z ** 2), summed left to right.
inline double magnitude(Vec3 v) { return std::sqrt(square(v.x) + square(v.y) + square(v.z)); }

// Vector.normalize: each coordinate divided by the magnitude; a magnitude of exactly
// 0.0 is a null vector, whatever its coordinates were.
inline Vec3 normalize(Vec3 v) {
  const double m = magnitude(v);
  if (m == 0.0) throw ArithmeticFault{ArithmeticFault::Kind::null_vector, v.x};
  return {v.x / m, v.y / m, v.z / m};
}

// Point.vector_to: the coordinates of `to` minus those of `from`.
inline Vec3 vector_between(Vec3 from, Vec3 to) { return {to.x - from.x, to.y - from.y, to.z - from.z}; }

}  // namespace ostrel
