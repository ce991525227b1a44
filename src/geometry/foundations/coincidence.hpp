// Point.__eq__ and Vector.__eq__ on coordinates: x, then y, then z, each by
// math.isclose with the module tolerance, stopping at the first that differs.
#pragma once

#include "foundations/tolerance.hpp"
#include "foundations/vec3.hpp"

namespace ostrel {

inline bool coincide(Vec3 a, Vec3 b, Tolerance module) {
  return isclose(a.x, b.x, module) && isclose(a.y, b.y, module) && isclose(a.z, b.z, module);
}

}  // namespace ostrel
