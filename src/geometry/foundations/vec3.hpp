// A position or direction in 3D space as plain doubles, for the kernels.
#pragma once

namespace ostrel {

struct Vec3 {
  double x, y, z;
};

}  // namespace ostrel
