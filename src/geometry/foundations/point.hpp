// The face of Point for the rest of the module: the class guard, reading a point's
// coordinates natively, and making points.
#pragma once

#include <optional>

#include "foundations/vec3_kernel.hpp"
#include "module/natives.hpp"

namespace ostrel {

using Vec3 = kernel::Vec3;

// The Point class as the module built it.
const ClassGuard& point_class();

// `Point(...)` through the module global still makes a point of that class, unchanged.
const Natives& point_natives();

// The coordinates of an instance of the module's unchanged Point whose fields are all
// exact floats; nothing otherwise, with no exception set.
std::optional<Vec3> read_point(PyObject* point);

// The coordinates that `Point(*point)` would give without running a caller's code: for
// a point as above, or a tuple or list of two or three floats, ints or bools.
std::optional<Vec3> read_point_like(PyObject* point);

// Point(x, y, z) through the module global `Point`.
Ref make_point(Vec3 p);

}  // namespace ostrel
