// The face of Vector for the rest of the module.
#pragma once

#include "foundations/vec3.hpp"
#include "module/instance.hpp"

namespace ostrel {

// The Vector class as the module built it.
const ClassGuard& vector_class();

// Vector(x, y, z) through the module global `Vector`.
Ref make_vector(double x, double y, double z);

// The attributes x, y, z of a vector (or of anything that has them), as doubles.
Vec3 vector_coordinates(PyObject* vector);

}  // namespace ostrel
