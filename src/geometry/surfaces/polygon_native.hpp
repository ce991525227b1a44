// The native paths of Polygon: an unchanged Polygon whose corners are plain Points, read
// once into doubles, and what the kernels make of them.
#pragma once

#include <optional>
#include <vector>

#include "foundations/point.hpp"
#include "module/instance.hpp"

namespace ostrel {

// The Polygon class as the module built it.
const ClassGuard& polygon_class();

// The corners of `self`, with the Point objects held, the tolerances, and nothing where
// the documented steps must run: a subclass or changed class, an instance attribute
// beyond the fields, a replaced global the steps call, a corner that is not a plain
// Point of finite floats.
struct NativePolygon {
  std::vector<Ref> objects;
  std::vector<Vec3> corners;
  kernel::Tolerances tolerances;
};
std::optional<NativePolygon> read_polygon(PyObject* self);

// The lowest index of a corner equal to another one.
std::optional<size_t> first_duplicate(const NativePolygon& polygon);

// Polygon._is_simple(points) for a list of plain Points.
std::optional<bool> native_is_simple(PyObject* points);

// Whether every corner after the first two lies on their line (Line.collinear).
std::optional<bool> native_all_collinear(PyObject* self);

// _triangulate_by_earclipping, and the three measures summed over its triangles: empty
// where the documented steps must run.
Ref native_triangulation(PyObject* self);
Ref native_area(PyObject* self);
Ref native_centroid(PyObject* self);
Ref native_moment_of_inertia(PyObject* self);

}  // namespace ostrel
