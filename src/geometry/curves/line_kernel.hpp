// Straight segments on plain doubles: orientation, the line function y = ax + b,
// collinearity and the overlap of two segments, each with the tolerance form and the
// float semantics of the Line member it stands for.
#pragma once

#include <optional>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

// A directed segment, from start to end.
struct Segment {
  Vec3 start, end;
};

// Line.horizontal and Line.vertical: plain math.isclose, abs_tol 0.0, on purpose.
inline bool is_horizontal(const Segment& s) {
  return isclose(s.start.y, s.end.y, plain_tolerance) && !isclose(s.start.x, s.end.x, plain_tolerance);
}
inline bool is_vertical(const Segment& s) {
  return isclose(s.start.x, s.end.x, plain_tolerance) && !isclose(s.start.y, s.end.y, plain_tolerance);
}

// y = a * x + b in the xy plane.
struct LineFunction {
  double a, b;
};

// a is NaN, and so b, only for an x difference of exactly zero; a segment that is
// vertical by tolerance only gets a very large slope.
LineFunction line_function(const Segment& s);

// Line.collinear: whether `p` lies on the unbounded line, the directions compared as
// unit vectors with the module tolerance. Throws ArithmeticFault as the host would.
bool collinear(const Segment& s, Vec3 p, Tolerance module);

// The part two segments share, in the xy plane, running along `self`.
struct Overlap {
  enum class Kind { none, point, line };
  Kind kind;
  Vec3 start, end;  // z = 0.0; a point result is `start`
};

// Line.find_overlap of two segments, `inclusive` as the interval overlap takes it.
Overlap find_overlap(const Segment& self, const Segment& other, bool inclusive, const Tolerances& t);

}  // namespace ostrel::kernel
