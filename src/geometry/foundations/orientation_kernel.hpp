// Orientation of a closed ring of points in plan, on plain doubles. Only x and y are
// looked at.
#pragma once

#include <span>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

// The sum over neighbouring pairs (p, q) of (q.x - p.x) * (q.y + p.y), added in order
// from 0.0: twice the area enclosed, positive when the ring runs clockwise. The pair
// from the last point back to the first is not added, so a ring is closed by repeating
// its first point at the end.
inline double orientation_sum(std::span<const Vec3> ring) {
  double total = 0.0;
  for (size_t i = 1; i < ring.size(); ++i) {
    const Vec3& current = ring[i - 1];
    const Vec3& next = ring[i];
    total += (next.x - current.x) * (next.y + current.y);
  }
  return total;
}

// Whether a closed ring runs clockwise; a ring of zero area counts as clockwise.
inline bool circumference_is_clockwise(std::span<const Vec3> closed_ring) {
  return orientation_sum(closed_ring) >= 0.0;
}

}  // namespace ostrel::kernel
