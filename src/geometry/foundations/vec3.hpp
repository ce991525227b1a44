// The kernel's 3-vector: plain doubles, no Python.
#pragma once

namespace ostrel {

struct Vec3 {
  double x, y, z;
};

}  // namespace ostrel
