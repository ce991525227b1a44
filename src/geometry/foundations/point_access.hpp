// Native access to Point objects for the kernels' faces: coordinates read once, and
// new points made without the round trip through the constructor's argument rules.
// Each is used only where it gives what the documented Python steps would give.
#pragma once

#include <optional>

#include "foundations/vec3.hpp"
#include "module/pristine.hpp"

namespace ostrel {

// The Point class as the module defined it.
OwnClass& point_class();

// The coordinates of a point whose class behaves as the module's Point and whose _x,
// _y and _z are floats. Nothing otherwise, and no exception is left set.
std::optional<Vec3> read_point(PyObject* point);

// The same in two steps, for callers that may not need z: x and y (z left as it was),
// then z.
bool read_point_xy(PyObject* point, Vec3& p);
bool read_point_z(PyObject* point, Vec3& p);

// The coordinates that `Point(*point)` would give: for a point as above, or for a tuple
// or list of two or three floats or ints. Nothing where the host must do the work.
std::optional<Vec3> read_point_like(PyObject* point);

// Whether `Point(...)` still makes a point of the module's own, unchanged class.
bool point_class_native();

// A new Point at `p`; only while point_class_native().
Ref make_point(Vec3 p);

}  // namespace ostrel
