#include "curves/intersections_kernel.hpp"

namespace ostrel::kernel {

namespace {

// max and min of the two-item lists the bounding-box test builds: the first item
// unless the second is strictly beyond it.
double max_of(double first, double second) { return second > first ? second : first; }
double min_of(double first, double second) { return second < first ? second : first; }

// The exact rejection on the bounding boxes along one axis.
bool apart(double a1, double a2, double b1, double b2, bool inclusive) {
  const double max_a = max_of(a1, a2), min_a = min_of(a1, a2), max_b = max_of(b1, b2), min_b = min_of(b1, b2);
  if (inclusive) return max_a < min_b || min_a > max_b;
  return max_a <= min_b || min_a >= max_b;
}

}  // namespace

Bound between_bounds(double x, double x1, double x2, Tolerance abs) {
  if (isclose(x, x1, abs) || isclose(x, x2, abs)) return Bound::at_bound;
  if ((x1 < x && x < x2) || (x2 < x && x < x1)) return Bound::inside;
  return Bound::outside;
}

double intersection_extended_line_with_y(const Segment& line, double y) {
  const LineFunction f = line_function(line);
  return divide(y - f.b, f.a);
}

std::optional<double> intersection_bounded_line_with_y(const Segment& line, double y, Tolerance abs) {
  const double x = intersection_extended_line_with_y(line, y);
  if (between(x, line.start.x, line.end.x, true, abs)) return x;
  return std::nullopt;
}

Vec3 intersection_extended_line_with_x(const Segment& line, double x) {
  const LineFunction f = line_function(line);
  return {x, f.a * x + f.b, 0.0};
}

std::optional<Vec3> intersection_extended_lines(const Segment& line1, const Segment& line2, Tolerance abs) {
  const bool vertical1 = is_vertical(line1), vertical2 = is_vertical(line2);
  if (vertical1 && vertical2) return std::nullopt;
  if (vertical1) return intersection_extended_line_with_x(line2, line1.start.x);
  if (vertical2) return intersection_extended_line_with_x(line1, line2.start.x);
  const LineFunction f1 = line_function(line1), f2 = line_function(line2);
  if (isclose(f1.a, f2.a, abs)) return std::nullopt;
  const double x = divide(f1.b - f2.b, f2.a - f1.a);
  return Vec3{x, f1.a * x + f1.b, 0.0};
}

std::optional<Vec3> intersection_bounded_line_extended_line(const Segment& bounded, const Segment& extended,
                                                             bool inclusive, const Tolerances& t) {
  const auto p = intersection_extended_lines(bounded, extended, t.abs);
  if (!p) return std::nullopt;
  const Segment& s = bounded;
  // The one-axis tests of horizontal and vertical segments fall through to the
  // two-axis test when they fail.
  if (is_horizontal(s) && between(p->x, s.start.x, s.end.x, inclusive, t.abs)) return p;
  if (is_vertical(s) && between(p->y, s.start.y, s.end.y, inclusive, t.abs)) return p;
  if (between(p->x, s.start.x, s.end.x, inclusive, t.abs) && between(p->y, s.start.y, s.end.y, inclusive, t.abs))
    return p;
  // Last chance for an end that the one-axis tests just missed.
  if (inclusive && (coincide(*p, s.start, t.module) || coincide(*p, s.end, t.module))) return p;
  return std::nullopt;
}

bool bounding_boxes_apart(const Segment& line1, const Segment& line2, bool inclusive) {
  return apart(line1.start.x, line1.end.x, line2.start.x, line2.end.x, inclusive) ||
         apart(line1.start.y, line1.end.y, line2.start.y, line2.end.y, inclusive);
}

Crossing intersection_bounded_lines(const Segment& line1, const Segment& line2, bool inclusive,
                                    const Tolerances& t) {
  constexpr Crossing nothing{Crossing::Kind::none, {}};
  if (bounding_boxes_apart(line1, line2, inclusive)) return nothing;
  const auto first = intersection_bounded_line_extended_line(line1, line2, inclusive, t);
  const auto second = intersection_bounded_line_extended_line(line2, line1, inclusive, t);
  if (!first || !second) return nothing;
  if (coincide(*first, *second, t.module)) return {Crossing::Kind::point, *first};
  return {Crossing::Kind::mismatch, *first};
}

OnSegment point_on_bounded_line(Vec3 point, const Segment& line, Tolerance module) {
  if (coincide(point, line.start, module) || coincide(point, line.end, module)) return OnSegment::at_end;
  const Vec3 v = vector_between(line.start, point);
  const Vec3 direction = vector_between(line.start, line.end);
  // In this order: each may raise, and the first to raise is the one the caller sees.
  const Vec3 unit = normalize(v);
  const Vec3 unit_direction = normalize(direction);
  if (!coincide(unit, unit_direction, module)) return OnSegment::outside;
  return magnitude(v) < magnitude(direction) ? OnSegment::within : OnSegment::outside;
}

}  // namespace ostrel::kernel
