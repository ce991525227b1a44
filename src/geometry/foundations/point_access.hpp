// Reading points for the faces of the kernels, beside foundations/point.hpp: the
// coordinates of the module's own points, and of the sequences that `Point(*p)` takes,
// read natively where that gives what the host would give. Each reader gives nothing,
// and leaves no exception set, where the host must do the work step by step.
#pragma once

#include <optional>

#include "foundations/point.hpp"

namespace ostrel {

// Whether `Point(...)` still makes a point of the module's own, unchanged class.
bool point_class_native();

// The coordinates of an instance of the module's unchanged Point, all exact floats.
std::optional<Vec3> read_point(PyObject* point);

// The same in two steps, for callers that may not need z: x and y (z left as it was),
// then z.
bool read_point_xy(PyObject* point, Vec3& p);
bool read_point_z(PyObject* point, Vec3& p);

// The coordinates that `Point(*point)` would give: for a point as above, or for a tuple
// or list of two or three floats or ints.
std::optional<Vec3> read_point_like(PyObject* point);

inline Ref make_point(Vec3 p) { return make_point(p.x, p.y, p.z); }

}  // namespace ostrel
