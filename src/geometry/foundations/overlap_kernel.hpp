// The overlap of two closed 1D intervals, on plain doubles.
#pragma once

#include <optional>
#include <utility>

#include "foundations/float_kernel.hpp"

namespace ostrel::kernel {

// An interval given by its two ends, in either order.
struct Interval {
  double start, end;
};

// The common part of `a` and `b`, ascending, or nothing. Inclusive, intervals that
// touch (ends equal by plain_tolerance) overlap in one value; otherwise they must
// share a stretch. On a tie the ends of `a` are kept, as max and min keep their first
// argument; NaN ends compare false everywhere, exactly as floats do.
inline std::optional<Interval> find_overlap(Interval a, Interval b, bool inclusive) {
  if (a.start > a.end) std::swap(a.start, a.end);
  if (b.start > b.end) std::swap(b.start, b.end);
  const bool touch = isclose(a.start, b.end, plain_tolerance) || isclose(b.start, a.end, plain_tolerance);
  if (inclusive) {
    if (!touch && (a.start > b.end || b.start > a.end)) return std::nullopt;
  } else if (touch || a.start >= b.end || b.start >= a.end) {
    return std::nullopt;
  }
  return Interval{b.start > a.start ? b.start : a.start, b.end < a.end ? b.end : a.end};
}

}  // namespace ostrel::kernel
