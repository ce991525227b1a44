// Where straight lines meet in the xy plane, on plain doubles. A segment is read either
// bounded, between its ends, or extended, as the infinite line through them. Each
// function keeps the tolerance form, the order of tests and the float semantics of the
// module function of the same name; z is ignored, and every point made here has z 0.0.
// Polyline and polygon code calls these directly in its loops.
#pragma once

#include <optional>

#include "curves/line_kernel.hpp"

namespace ostrel::kernel {

// _between_bounds: a value close to a bound (abs_tol=ISCLOSE_ATOL alone) is at the
// bound; else it is inside when strictly between them, in either order. NaN is outside.
enum class Bound { outside, inside, at_bound };
Bound between_bounds(double x, double x1, double x2, Tolerance abs);

// The truth of _between_bounds(x, x1, x2, inclusive).
inline bool between(double x, double x1, double x2, bool inclusive, Tolerance abs) {
  const Bound b = between_bounds(x, x1, x2, abs);
  return b == Bound::at_bound ? inclusive : b == Bound::inside;
}

// x at which the infinite line meets y = `y`: NaN for a vertical line; a slope of exactly
// 0.0 throws the host's division by zero.
double intersection_extended_line_with_y(const Segment& line, double y);

// The same within the segment's x extent, bounds included; a vertical segment gives
// nothing.
std::optional<double> intersection_bounded_line_with_y(const Segment& line, double y, Tolerance abs);

// The point of the infinite line at `x`; its y is NaN for a vertical line.
Vec3 intersection_extended_line_with_x(const Segment& line, double x);

// The meeting point of two infinite lines; nothing for two verticals or for slopes
// close by abs_tol=ISCLOSE_ATOL.
std::optional<Vec3> intersection_extended_lines(const Segment& line1, const Segment& line2, Tolerance abs);

// Where the infinite `extended` line meets the segment `bounded`.
std::optional<Vec3> intersection_bounded_line_extended_line(const Segment& bounded, const Segment& extended,
                                                             bool inclusive, const Tolerances& t);

// Where two segments meet: first an exact bounding-box rejection, then both segments
// against the other's extension, whose two answers must coincide.
struct Crossing {
  enum class Kind { none, point, mismatch };  // mismatch: the bare ValueError
  Kind kind;
  Vec3 point;
};
// The first step alone: whether the bounding boxes of the two segments are apart, by an
// exact comparison, touching counting as apart unless inclusive. It reads x and y only.
bool bounding_boxes_apart(const Segment& line1, const Segment& line2, bool inclusive);
Crossing intersection_bounded_lines(const Segment& line1, const Segment& line2, bool inclusive,
                                    const Tolerances& t);

// point_is_on_bounded_line, in 3D: at an end (by Point equality), strictly within the
// segment (same direction as unit vectors, shorter), or neither. Throws ArithmeticFault
// as the Vector operations of the host would.
enum class OnSegment { outside, within, at_end };
OnSegment point_on_bounded_line(Vec3 point, const Segment& line, Tolerance module);

}  // namespace ostrel::kernel
