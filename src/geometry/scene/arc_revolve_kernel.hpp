// The closed forms of a revolved arc on plain doubles, with the float semantics of the
// ArcRevolve members they stand for.
#pragma once

#include "curves/arc_kernel.hpp"

namespace ostrel::kernel {

// ArcRevolve.inner_volume: the checks in their order, then the volume through the
// rotation angle. Throws ArithmeticFault where the host raises.
struct ArcVolume {
  enum class Check { ok, long_arc, opposite_sides, inner_oriented };
  Check check;
  double volume;
};
ArcVolume arc_inner_volume(const ArcPoints& arc, bool short_arc, double rotation_angle);

// Whether the closed ring of the points runs clockwise: the sum over its consecutive
// pairs, last to first included, of (x2 - x1) * (y2 + y1) is greater than zero.
bool ring_is_clockwise(const std::vector<Vec3>& points);

}  // namespace ostrel::kernel
