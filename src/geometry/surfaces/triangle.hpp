// The face of Triangle for the rest of the module.
#pragma once

#include <optional>

#include "module/instance.hpp"
#include "surfaces/triangle_kernel.hpp"

namespace ostrel {

// The Triangle class as the module built it.
const ClassGuard& triangle_class();

// The second moments of a triangle with these vertices and area, as its
// moment_of_inertia gives them, with theta's cosine and sine taken from NumPy itself;
// nothing where a step leaves the finite range.
std::optional<kernel::Moments> native_triangle_moments(const kernel::Vec3 (&v)[3], double area);

}  // namespace ostrel
