#include "curves/line_kernel.hpp"

#include <limits>

#include "foundations/overlap_kernel.hpp"

namespace ostrel::kernel {

namespace {

// Line._check_overlap_sign_x and _y: the ascending pair turned round when exactly one
// of it and the segment runs towards larger values. Zero counts as not positive.
Interval along(Interval overlap, double segment_difference) {
  if ((overlap.end - overlap.start > 0) != (segment_difference > 0)) return {overlap.end, overlap.start};
  return overlap;
}

// Line(Point(x0, y0), Point(x1, y1)), or the point when the two ends coincide.
Overlap overlap_of(Interval x, Interval y, Tolerance module) {
  const Vec3 start{x.start, y.start, 0.0}, end{x.end, y.end, 0.0};
  if (coincide(start, end, module)) return {Overlap::Kind::point, start, start};
  return {Overlap::Kind::line, start, end};
}

// The interval overlap of the two segments' coordinates along one axis.
std::optional<Interval> shared(double Vec3::*axis, const Segment& a, const Segment& b, bool inclusive) {
  return find_overlap(Interval{a.start.*axis, a.end.*axis}, Interval{b.start.*axis, b.end.*axis}, inclusive);
}

}  // namespace

LineFunction line_function(const Segment& s) {
  const double dx = s.end.x - s.start.x;
  const double a = dx == 0.0 ? std::numeric_limits<double>::quiet_NaN() : (s.end.y - s.start.y) / dx;
  return {a, s.start.y - a * s.start.x};
}

bool collinear(const Segment& s, Vec3 p, Tolerance module) {
  const Vec3 base = coincide(s.start, p, module) ? s.end : s.start;
  const Vec3 vec = normalize(vector_between(base, p));
  const Vec3 direction = normalize(vector_between(s.start, s.end));
  return coincide(direction, vec, module) || coincide(direction, {-vec.x, -vec.y, -vec.z}, module);
}

Overlap find_overlap(const Segment& self, const Segment& other, bool inclusive, const Tolerances& t) {
  constexpr Overlap nothing{Overlap::Kind::none, {}, {}};
  const bool self_vertical = is_vertical(self), other_vertical = is_vertical(other);
  if (self_vertical && other_vertical) {
    if (!isclose(self.start.x, other.start.x, t.abs)) return nothing;
    const double x = self.start.x;
    const auto y = shared(&Vec3::y, self, other, inclusive);
    if (!y) return nothing;
    return overlap_of({x, x}, along(*y, self.end.y - self.start.y), t.module);
  }
  if (self_vertical || other_vertical) return nothing;

  const LineFunction mine = line_function(self), theirs = line_function(other);
  if (!isclose(mine.a, theirs.a, t.module) || !isclose(mine.b, theirs.b, t.module)) return nothing;
  const auto x = shared(&Vec3::x, self, other, inclusive);
  const auto y = isclose(mine.a, 0.0, t.module) ? std::optional<Interval>{{mine.b, mine.b}}
                                                : shared(&Vec3::y, self, other, inclusive);
  if (!x || !y) return nothing;
  return overlap_of(along(*x, self.end.x - self.start.x), along(*y, self.end.y - self.start.y), t.module);
}

}  // namespace ostrel::kernel
