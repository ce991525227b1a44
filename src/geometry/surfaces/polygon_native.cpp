#include "surfaces/polygon_native.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "curves/intersections.hpp"
#include "curves/line.hpp"
#include "curves/line_kernel.hpp"
#include "foundations/arrays.hpp"
#include "foundations/orientation_kernel.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vector.hpp"
#include "module/globals.hpp"
#include "module/natives.hpp"
#include "module/objects.hpp"
#include "surfaces/ear_clipping_kernel.hpp"
#include "surfaces/polygon_kernel.hpp"
#include "surfaces/triangle.hpp"
#include "surfaces/triangle_kernel.hpp"

namespace ostrel {

namespace {

// The classes whose members the documented steps of the checks and of the clipping use.
Natives natives{{&point_class(), &line_class(), &triangle_class(), &vector_class()},
                {&bounded_lines_natives(), &on_bounded_line_natives(), &line_collinear_natives()}};

bool finite(const Vec3& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

// The items of an exact list of plain Points. Reading a point can run a caller's code
// (a key of its dict that compares), so the list must still hold what was read.
bool read_corners(PyObject* list, NativePolygon& out) {
  if (!PyList_CheckExact(list)) return false;
  const Py_ssize_t n = PyList_GET_SIZE(list);
  out.objects.reserve(n);
  out.corners.reserve(n);
  for (Py_ssize_t i = 0; i < n; ++i) {
    if (PyList_GET_SIZE(list) != n) return false;
    out.objects.push_back(Ref::borrow(PyList_GET_ITEM(list, i)));
    const auto p = read_point(out.objects.back().get());
    if (!p || !finite(*p)) return false;
    out.corners.push_back(*p);
  }
  if (PyList_GET_SIZE(list) != n) return false;
  for (Py_ssize_t i = 0; i < n; ++i)
    if (PyList_GET_ITEM(list, i) != out.objects[i].get()) return false;
  return true;
}

std::optional<NativePolygon> read_list(PyObject* list) {
  if (!natives.hold()) return std::nullopt;
  NativePolygon polygon;
  const auto t = native_tolerances();
  if (!t || !read_corners(list, polygon)) return std::nullopt;
  polygon.tolerances = *t;
  return polygon;
}

// The triangles of the clipping as corner triples, the corners held; nothing where the
// documented steps must run; the ValueErrors of the clipping raised where they stand.
struct Clipped {
  NativePolygon polygon;
  std::vector<std::array<uint32_t, 3>> triangles;  // into polygon, turned counter-clockwise
};
std::optional<Clipped> clip(PyObject* self) {
  auto polygon = read_polygon(self);
  if (!polygon || polygon->corners.empty()) return std::nullopt;
  // has_clockwise_circumference: only corners with z exactly zero pass its check.
  std::vector<Vec3> ring = polygon->corners;
  for (const Vec3& p : ring)
    if (p.z != 0.0) return std::nullopt;
  ring.push_back(ring.front());
  if (kernel::circumference_is_clockwise(ring)) {
    std::reverse(polygon->corners.begin(), polygon->corners.end());
    std::reverse(polygon->objects.begin(), polygon->objects.end());
  }
  Clipped clipped{std::move(*polygon), {}};
  if (clipped.polygon.corners.size() < 3) return clipped;
  kernel::EarClipping result = kernel::clip_ears(clipped.polygon.corners, clipped.polygon.tolerances.module);
  switch (result.outcome) {
    case kernel::EarClipping::Outcome::undecided:
      return std::nullopt;
    case kernel::EarClipping::Outcome::clockwise:
      raise(PyExc_ValueError, "Circumference should be counter clockwise");
    case kernel::EarClipping::Outcome::no_ear:
      raise(PyExc_ValueError, "No ear found, unexpected error");
    case kernel::EarClipping::Outcome::degenerate_edge:
      raise(PyExc_ValueError, "Start and end point may not coincide");
    case kernel::EarClipping::Outcome::done:
      break;
  }
  clipped.triangles = std::move(result.triangles);
  return clipped;
}

struct Corners {
  Vec3 v[3];
};
Corners corners_of(const Clipped& c, const std::array<uint32_t, 3>& t) {
  return {{c.polygon.corners[t[0]], c.polygon.corners[t[1]], c.polygon.corners[t[2]]}};
}

// Per triangle in clipping order: area() and centroid, as Triangle computes them.
struct Measured {
  double area;
  Vec3 centroid;
};
std::optional<std::vector<Measured>> measure(const Clipped& c) {
  std::vector<Measured> out;
  out.reserve(c.triangles.size());
  for (const auto& t : c.triangles) {
    const Corners k = corners_of(c, t);
    const auto area = kernel::triangle_area(k.v[0], k.v[1], k.v[2]);
    if (!area) return std::nullopt;
    out.push_back({*area, kernel::triangle_centroid(k.v[0], k.v[1], k.v[2])});
  }
  return out;
}

// centroid: the area-weighted sums, each divided by the total area.
std::pair<double, double> centroid_of(const std::vector<Measured>& triangles) {
  double area = 0.0, x = 0.0, y = 0.0;
  for (const Measured& m : triangles) {
    x += m.centroid.x * m.area;
    y += m.centroid.y * m.area;
    area += m.area;
  }
  return {kernel::divide(x, area), kernel::divide(y, area)};
}

// The cosine and sine of each triangle's base angle theta = np.pi + np.arctan2(y, x), as
// Triangle.moment_of_inertia takes them from NumPy, in three calls for all triangles.
struct Turns {
  std::vector<double> cos, sin;
};
std::optional<Turns> base_turns(const Clipped& c) {
  Ref pi = getattr(global<"np">().get(), id<"pi">());
  if (!PyFloat_CheckExact(pi.get())) return std::nullopt;
  std::vector<double> xs, ys;
  for (const auto& t : c.triangles) {
    const kernel::PlanVector base = kernel::moment_base(c.polygon.corners[t[0]], c.polygon.corners[t[1]]);
    xs.push_back(base.x);
    ys.push_back(base.y);
  }
  auto theta = numpy_elementwise(id<"arctan2">(), ys, xs);
  if (!theta) return std::nullopt;
  for (double& angle : *theta) angle = PyFloat_AS_DOUBLE(pi.get()) + angle;
  auto cos = numpy_elementwise(id<"cos">(), *theta), sin = numpy_elementwise(id<"sin">(), *theta);
  if (!cos || !sin) return std::nullopt;
  return Turns{std::move(*cos), std::move(*sin)};
}

}  // namespace

std::optional<NativePolygon> read_polygon(PyObject* self) {
  if (!polygon_class().admits(self)) return std::nullopt;
  // Nothing but the five fields, so no method is hidden by an attribute of the instance.
  PyObject* dict = instance_dict(self);
  if (!dict || PyDict_GET_SIZE(dict) != 5) {
    PyErr_Clear();
    return std::nullopt;
  }
  Ref points = Ref::borrow(PyDict_GetItemWithError(dict, id<"points">()));
  if (!points) {
    PyErr_Clear();
    return std::nullopt;
  }
  return read_list(points.get());
}

std::optional<size_t> first_duplicate(const NativePolygon& polygon) {
  return kernel::first_duplicate(polygon.corners, polygon.tolerances.module);
}

std::optional<bool> native_is_simple(PyObject* points) {
  const auto polygon = read_list(points);
  if (!polygon || polygon->corners.empty()) return std::nullopt;
  switch (kernel::is_simple(polygon->corners, polygon->tolerances)) {
    case kernel::Simplicity::simple:
      return true;
    case kernel::Simplicity::not_simple:
      return false;
    case kernel::Simplicity::undecided:
      break;
  }
  return std::nullopt;
}

std::optional<bool> native_all_collinear(PyObject* self) {
  const auto polygon = read_polygon(self);
  if (!polygon || polygon->corners.size() < 2) return std::nullopt;
  const kernel::Tolerance module = polygon->tolerances.module;
  const kernel::Segment line{polygon->corners[0], polygon->corners[1]};
  if (kernel::coincide(line.start, line.end, module)) return std::nullopt;  // Line refuses it
  for (size_t i = 2; i < polygon->corners.size(); ++i)
    if (!kernel::collinear(line, polygon->corners[i], module)) return false;
  return true;
}

Ref native_triangulation(PyObject* self) {
  const auto clipped = clip(self);
  if (!clipped) return {};
  // Each Triangle as its __init__ fills it: the three points as `profile`, their
  // coordinates as `vertices`. Nothing made here can form a cycle, so the collector,
  // which would otherwise walk the growing list again and again, waits till the end.
  CollectorPause pause;
  Ref triangles = check(PyList_New(0));
  for (const auto& t : clipped->triangles) {
    const auto& o = clipped->polygon.objects;
    Ref profile = list({o[t[0]].get(), o[t[1]].get(), o[t[2]].get()});
    Ref rows[3];
    for (int k = 0; k < 3; ++k) {
      const Vec3& c = clipped->polygon.corners[t[k]];
      Ref x = new_float(c.x), y = new_float(c.y), z = new_float(c.z);
      rows[k] = list({x.get(), y.get(), z.get()});
    }
    Ref vertices = list({rows[0].get(), rows[1].get(), rows[2].get()});
    Ref triangle =
        new_instance(triangle_class(), {{id<"profile">(), profile.get()}, {id<"vertices">(), vertices.get()}});
    check(PyList_Append(triangles.get(), triangle.get()));
  }
  return triangles;
}

Ref native_area(PyObject* self) {
  const auto clipped = clip(self);
  if (!clipped) return {};
  const auto measured = measure(*clipped);
  if (!measured) return {};
  // The host's own sum of the areas, from the integer 0.
  Ref areas = check(PyList_New(static_cast<Py_ssize_t>(measured->size())));
  for (size_t i = 0; i < measured->size(); ++i)
    PyList_SET_ITEM(areas.get(), static_cast<Py_ssize_t>(i), new_float((*measured)[i].area).release());
  return call(global<"sum">().get(), {areas.get()});
}

Ref native_centroid(PyObject* self) {
  const auto clipped = clip(self);
  if (!clipped) return {};
  const auto measured = measure(*clipped);
  if (!measured) return {};
  const auto [x, y] = centroid_of(*measured);
  Ref cx = new_float(x), cy = new_float(y);
  return tuple({cx.get(), cy.get()});
}

Ref native_moment_of_inertia(PyObject* self) {
  // The centroid first, as the documented steps take it. They clip the ears twice, once
  // for the centroid and once for the sum; both give the same triangles, so one serves.
  const auto clipped = clip(self);
  if (!clipped) return {};
  const auto measured = measure(*clipped);
  if (!measured) return {};
  const auto [centre_x, centre_y] = centroid_of(*measured);
  const auto turns = base_turns(*clipped);
  if (!turns) return {};
  double x = 0.0, y = 0.0;
  for (size_t i = 0; i < measured->size(); ++i) {
    const Measured& m = (*measured)[i];
    const Corners k = corners_of(*clipped, clipped->triangles[i]);
    const auto own = kernel::triangle_moments(k.v[0], k.v[1], k.v[2], m.area, turns->cos[i], turns->sin[i]);
    if (!own) return {};
    x += kernel::square(m.centroid.y - centre_y) * m.area + own->x;
    y += kernel::square(m.centroid.x - centre_x) * m.area + own->y;
    if (!std::isfinite(x) || !std::isfinite(y)) return {};  // NumPy warns there
  }
  // NumPy scalars from the first triangle's moments on, as the documented sums give them.
  Ref float64 = getattr(global<"np">().get(), id<"float64">());
  Ref fx = new_float(x), fy = new_float(y);
  Ref mx = call(float64.get(), {fx.get()}), my = call(float64.get(), {fy.get()});
  return tuple({mx.get(), my.get()});
}

}  // namespace ostrel
