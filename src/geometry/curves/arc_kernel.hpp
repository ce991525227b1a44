// Circular arcs in the xy plane on plain doubles: the angles of the end points, the
// opening angle and the discretisation, each with the float semantics of the Arc
// member it stands for.
#pragma once

#include <cstddef>
#include <vector>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

struct ArcPoints {
  Vec3 centre, start, end;
};

// Arc.theta1_theta2: atan2 of the END point first, then of the start point, each
// relative to the centre.
struct Thetas {
  double theta1, theta2;
};
Thetas arc_thetas(const ArcPoints& arc);

// Arc.angle: the opening angle, in [0, pi] for a short arc and [pi, 2 pi] for a long one.
double arc_angle(Thetas t, bool short_arc);

// Arc.discretize: `num` (at least 2) points from the start point towards the end point,
// each through the spherical round trip with the start point's r and theta. False,
// with `out` undefined, where the documented steps would meet a value NumPy warns
// about (an end point on the centre, an overflow, a non-finite coordinate): those
// cases are left to the documented steps.
bool discretize_arc(const ArcPoints& arc, bool short_arc, std::size_t num, std::vector<Vec3>& out);

}  // namespace ostrel::kernel
