// A position or direction on plain doubles, the unit of data of the geometry kernels.
#pragma once

namespace ostrel {

struct Vec3 {
  double x, y, z;
};

}  // namespace ostrel
