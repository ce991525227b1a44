// Ear clipping on plain doubles: the corner tests of Polygon and the whole clipping, with
// the float forms and the order of choice of the Python members they stand for.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

// Polygon._convex_angle_when_ccw: the turn p1, p2, p3 is not to the right. Exact; a
// straight angle counts as convex.
inline bool convex_when_ccw(Vec3 p1, Vec3 p2, Vec3 p3) {
  const double crossp = (p2.x - p1.x) * (p3.y - p1.y) - (p2.y - p1.y) * (p3.x - p1.x);
  return crossp >= 0;
}

// Polygon._in_triangle: the barycentric coordinates, with 1e-7 added to the
// denominator, all strictly between 0 and 1. Throws ArithmeticFault for a denominator
// of zero, as the host's division would.
bool strictly_in_triangle(Vec3 p1, Vec3 p2, Vec3 p3, Vec3 p);

// Polygon._on_triangle: p on the edge p1-p2, else p2-p3, else p3-p1, ends included.
// Nothing where the edge to be built next has coinciding ends: there Line raises.
std::optional<bool> on_triangle(Vec3 p1, Vec3 p2, Vec3 p3, Vec3 p, Tolerance module);

// Polygon._triangulate_by_earclipping once the circumference runs counter-clockwise:
// the same triangles, in the same order, with the same corners (previous, tip, next, as
// indices into `circumference`). The documented steps restart the search at the first
// corner after every clip and test every corner against every point; here each corner
// keeps its state (reflex, blocked by a point, ear) until a clip changes its neighbours
// or removes the point that blocked it; points are found through a tree of boxes that
// counts the points left and shrinks to them, entered only where a box can hold a point
// the tests accept (bounds of the in-triangle test's own rounded values, and of how far
// from an edge the on-edge test's tolerance reaches); the orientation of the remainder
// is kept as a running sum, summed in list order only when its sign is in doubt. From
// 8,192 corners on, a second core tests the corners ahead between their first neighbours
// against all the points, and the search takes the ears it finds, while enough searches
// meet corners between their first neighbours.
// `degenerate_edge`: the steps make a Line of coinciding ends (the neighbours of a
// candidate corner coincide). `undecided` leaves the case to the
// documented steps: a zero denominator, coinciding neighbours along the ring, a value
// beyond the finite range.
struct EarClipping {
  enum class Outcome { done, clockwise, no_ear, degenerate_edge, undecided };
  Outcome outcome = Outcome::done;
  std::vector<std::array<uint32_t, 3>> triangles;
};
EarClipping clip_ears(std::span<const Vec3> circumference, Tolerance module);

}  // namespace ostrel::kernel
