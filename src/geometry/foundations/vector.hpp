// The face of Vector for the rest of the module.
#pragma once

#include <optional>

#include "foundations/vec3_kernel.hpp"
#include "module/natives.hpp"

namespace ostrel {

// The Vector class as the module built it.
const ClassGuard& vector_class();

// `Vector(...)` through the module global still makes a vector of that class, unchanged,
// whose operations are then those of the kernels.
const Natives& vector_natives();

// The coordinates of an instance of the module's unchanged Vector, all exact floats.
std::optional<kernel::Vec3> read_vector(PyObject* vector);

// Vector(x, y, z) through the module global `Vector`.
Ref make_vector(kernel::Vec3 v);

}  // namespace ostrel
