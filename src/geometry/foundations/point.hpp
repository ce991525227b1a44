// The face of Point for the rest of the module: making points and reading their
// coordinates in one step each, directly where the class is the module's own.
#pragma once

#include "foundations/vec3.hpp"
#include "module/instance.hpp"

namespace ostrel {

// The Point class as the module built it.
const ClassGuard& point_class();

// Point(x, y, z) through the module global `Point`.
Ref make_point(double x, double y, double z);

// The fields _x, _y, _z of a point, converted to doubles.
Vec3 point_coordinates(PyObject* point);

}  // namespace ostrel
