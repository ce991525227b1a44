// Polygon: a flat, closed, simple figure in the xy plane, given by its corners in order.
// It is checked once, in the constructor; its area, centroid and second moments are sums
// over the triangles of its ear clipping (take the first ear from the start of the
// counter-clockwise circumference, cut it off, repeat on the shorter list), triangulated
// anew at every use.
//
// The native paths read the corners once into doubles and run the checks
// (surfaces/polygon_kernel.hpp), the clipping (surfaces/ear_clipping_kernel.hpp) and the
// sums in the kernels, for unchanged instances of the module's own classes; they give the
// same triangles in the same order, the same values and the same errors. Below each, the
// documented steps, through the instance.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>

#include "curves/intersections.hpp"
#include "curves/line.hpp"
#include "curves/line_kernel.hpp"
#include "foundations/arrays.hpp"
#include "foundations/current_next.hpp"
#include "foundations/orientation_kernel.hpp"
#include "foundations/point.hpp"
#include "foundations/side_by_side.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vector.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"
#include "surfaces/ear_clipping_kernel.hpp"
#include "surfaces/polygon_kernel.hpp"
#include "surfaces/triangle.hpp"
#include "surfaces/triangle_kernel.hpp"
#include "surfaces/unprocessed_mesh.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

// ---- native paths ----

// The classes whose members the documented steps of the checks and of the clipping use.
Natives natives{{&point_class(), &line_class(), &triangle_class(), &vector_class()},
                {&bounded_lines_natives(), &on_bounded_line_natives(), &line_collinear_natives()}};

// The corners of a polygon read once: the Point objects held, their coordinates, and
// the tolerances of the call.
struct NativePolygon {
  std::vector<Ref> objects;
  std::vector<Vec3> corners;
  kernel::Tolerances tolerances;
};

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
  NativePolygon polygon;
  const auto t = native_tolerances();
  if (!t || !read_corners(list, polygon)) return std::nullopt;
  polygon.tolerances = *t;
  return polygon;
}

// The points list of an unchanged Polygon; nothing where the native paths step aside.
Ref points_of(PyObject* self) {
  if (!guard.admits(self)) return {};
  // Nothing but the five fields, so no method is hidden by an attribute of the instance.
  PyObject* dict = instance_dict(self);
  if (!dict || PyDict_GET_SIZE(dict) != 5) {
    PyErr_Clear();
    return {};
  }
  Ref points = Ref::borrow(PyDict_GetItemWithError(dict, id<"points">()));
  if (!points) PyErr_Clear();
  return points;
}

// The corners of an unchanged Polygon, read natively.
std::optional<NativePolygon> read_polygon(PyObject* self) {
  Ref points = points_of(self);
  if (!points) return std::nullopt;
  return read_list(points.get());
}

// Per triangle in clipping order: area() and centroid, as Triangle computes them.
struct Measured {
  double area;
  Vec3 centroid;
};

// A clipping and, once a measure asked for them, its triangles' areas and centroids
// (nothing where a triangle's area must come from the documented steps).
struct Clipping {
  kernel::EarClipping result;
  std::optional<std::optional<std::vector<Measured>>> measured;
};

// The last clipping, by the corners and the tolerance it was made of: the area, the
// centroid and the second moments of one polygon each ask for the same clipping and the
// same measures, and they depend on nothing else. Shared, so that a caller keeps what it
// reads while another polygon's clipping takes its place.
struct LastClipping {
  std::vector<Vec3> corners;
  kernel::Tolerance module{};
  std::shared_ptr<Clipping> clipping;

  bool holds(const std::vector<Vec3>& ring, kernel::Tolerance tolerance) const {
    // Bit for bit, so that a signed zero or a changed tolerance counts as a change.
    auto same = [](const void* a, const void* b, size_t size) { return std::memcmp(a, b, size) == 0; };
    return clipping && corners.size() == ring.size() && same(&module, &tolerance, sizeof module) &&
           same(corners.data(), ring.data(), ring.size() * sizeof(Vec3));
  }
};

std::shared_ptr<Clipping> clipping_of(const std::vector<Vec3>& ring, kernel::Tolerance module) {
  static LastClipping last;
  if (!last.holds(ring, module)) {
    last.clipping.reset();  // a throw below must not leave a stale pair
    auto clipping = std::make_shared<Clipping>();
    clipping->result = kernel::clip_ears(ring, module);
    last.module = module;
    last.corners = ring;
    last.clipping = std::move(clipping);
  }
  return last.clipping;
}

// The triangles of the clipping as corner triples, the corners held; nothing where the
// documented steps must run; the ValueErrors of the clipping raised where they stand.
struct Clipped {
  NativePolygon polygon;
  std::shared_ptr<Clipping> clipping;  // its triangles index polygon, turned counter-clockwise
  const std::vector<std::array<uint32_t, 3>>& triangles() const {
    static const std::vector<std::array<uint32_t, 3>> none;
    return clipping ? clipping->result.triangles : none;
  }
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
  clipped.clipping = clipping_of(clipped.polygon.corners, clipped.polygon.tolerances.module);
  switch (clipped.clipping->result.outcome) {
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
  return clipped;
}

struct Corners {
  Vec3 v[3];
};
Corners corners_of(const Clipped& c, const std::array<uint32_t, 3>& t) {
  return {{c.polygon.corners[t[0]], c.polygon.corners[t[1]], c.polygon.corners[t[2]]}};
}

// The measures of the clipping's triangles, made at the first call for a clipping.
const std::optional<std::vector<Measured>>& measure(const Clipped& c) {
  static const std::optional<std::vector<Measured>> no_triangles = std::vector<Measured>{};
  if (!c.clipping) return no_triangles;
  auto& measured = c.clipping->measured;
  if (!measured) {
    std::vector<Measured> out;
    out.reserve(c.triangles().size());
    for (const auto& t : c.triangles()) {
      const Corners k = corners_of(c, t);
      const auto area = kernel::triangle_area(k.v[0], k.v[1], k.v[2]);
      if (!area) {
        measured.emplace(std::nullopt);
        return *measured;
      }
      out.push_back({*area, kernel::triangle_centroid(k.v[0], k.v[1], k.v[2])});
    }
    measured.emplace(std::move(out));
  }
  return *measured;
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
  for (const auto& t : c.triangles()) {
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


std::optional<size_t> first_duplicate(const NativePolygon& polygon) {
  return kernel::first_duplicate(polygon.corners, polygon.tolerances.module);
}

Ref native_is_simple(PyObject* points) {
  const auto polygon = read_list(points);
  if (!polygon || polygon->corners.empty()) return {};
  switch (kernel::is_simple(polygon->corners, polygon->tolerances)) {
    case kernel::Simplicity::simple:
      return boolean(true);
    case kernel::Simplicity::not_simple:
      return boolean(false);
    case kernel::Simplicity::undecided:
      break;
  }
  return {};
}

// The corners are read one at a time, as the documented loop stops at the first that
// leaves the line (the third, in most polygons); from a copy of the list, as the loop
// walks a slice of it.
std::optional<bool> native_all_collinear(PyObject* self) {
  Ref points = points_of(self);
  const auto t = native_tolerances();
  if (!points || !t || !PyList_CheckExact(points.get()) || PyList_GET_SIZE(points.get()) < 2) return std::nullopt;
  Ref corners = check(PyList_GetSlice(points.get(), 0, PY_SSIZE_T_MAX));
  auto corner = [&](Py_ssize_t i) -> std::optional<Vec3> {
    const auto p = read_point(PyList_GET_ITEM(corners.get(), i));
    return p && finite(*p) ? p : std::nullopt;
  };
  const auto start = corner(0), end = corner(1);
  if (!start || !end || kernel::coincide(*start, *end, t->module)) return std::nullopt;  // Line refuses it
  const kernel::Segment line{*start, *end};
  for (Py_ssize_t i = 2; i < PyList_GET_SIZE(corners.get()); ++i) {
    const auto p = corner(i);
    if (!p) return std::nullopt;
    if (!kernel::collinear(line, *p, t->module)) return false;
  }
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
  for (const auto& t : clipped->triangles()) {
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
  const auto& measured = measure(*clipped);
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
  const auto& measured = measure(*clipped);
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
  const auto& measured = measure(*clipped);
  if (!measured) return {};
  const auto [centre_x, centre_y] = centroid_of(*measured);
  const auto turns = base_turns(*clipped);
  if (!turns) return {};
  // Each triangle's terms apart (on two cores for many), then summed in order; where a
  // square overflows, the sum squares again in its place, to raise there.
  struct Terms {
    std::optional<kernel::Moments> own;
    std::optional<double> x, y;
  };
  std::vector<Terms> terms(measured->size());
  for_each_index_in_halves(terms.size(), [&](size_t i) {
    const Measured& m = (*measured)[i];
    const Corners k = corners_of(*clipped, clipped->triangles()[i]);
    Terms& t = terms[i];
    t.own = kernel::triangle_moments(k.v[0], k.v[1], k.v[2], m.area, turns->cos[i], turns->sin[i]);
    const auto square_y = kernel::host_power(m.centroid.y - centre_y, 2.0);
    const auto square_x = kernel::host_power(m.centroid.x - centre_x, 2.0);
    if (t.own && square_y && square_x) t.x = *square_y * m.area + t.own->x, t.y = *square_x * m.area + t.own->y;
  });
  double x = 0.0, y = 0.0;
  for (size_t i = 0; i < terms.size(); ++i) {
    const Measured& m = (*measured)[i];
    const Terms& t = terms[i];
    if (!t.own) return {};
    x += t.x ? *t.x : kernel::square(m.centroid.y - centre_y) * m.area + t.own->x;
    y += t.y ? *t.y : kernel::square(m.centroid.x - centre_x) * m.area + t.own->y;
    if (!std::isfinite(x) || !std::isfinite(y)) return {};  // NumPy warns there
  }
  // NumPy scalars from the first triangle's moments on, as the documented sums give them.
  Ref float64 = getattr(global<"np">().get(), id<"float64">());
  Ref fx = new_float(x), fy = new_float(y);
  Ref mx = call(float64.get(), {fx.get()}), my = call(float64.get(), {fy.get()});
  return tuple({mx.get(), my.get()});
}


enum class Init { self, points, surface_orientation, material, skip_duplicate_vertices_check };
Ref init(const Args& a) {
  PyObject *self = a.self(), *material = a[Init::material];
  Ref parent = super_of(guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  Ref points = check(PySequence_List(a[Init::points]));
  setattr(self, id<"points">(), points.get());
  if (truth(material)) {
    setattr(self, id<"material">(), material);
  } else {
    Ref name = new_str("default-material");
    Ref default_material = call(global<"Material">().get(), {name.get()});
    setattr(self, id<"material">(), default_material.get());
  }
  setattr(self, id<"_surface_orientation">(), a[Init::surface_orientation]);
  setattr(self, id<"_skip_duplicate_vertices_check">(), a[Init::skip_duplicate_vertices_check]);
  call_method(self, id<"_verify">(), {});
  return none();
}
constexpr Member init_member =
    method("__init__",
           "(points: List[Point], *, surface_orientation: bool = False, material: Material = None, "
           "skip_duplicate_vertices_check: bool = False)",
           init, "Make the polygon and check it: no duplicate corners, no crossing edges, not all collinear.");

// ---- the checks ----

[[noreturn]] void raise_duplicate(PyObject* point) {
  PyErr_Format(PyExc_ValueError, "Duplicate points are not supported (%S)", point);
  throw PyError{};
}

Ref check_duplicate_points(const Args& a) {
  PyObject* self = a.self();
  if (Ref r = native_path(natives, [&] {
        const auto polygon = read_polygon(self);
        if (!polygon) return Ref{};
        if (const auto index = first_duplicate(*polygon)) raise_duplicate(polygon->objects[*index].get());
        return none();
      }))
    return r;
  Ref points = getattr(self, id<"points">());
  const Py_ssize_t n = check(PyObject_Length(points.get()));
  for (Py_ssize_t i = 0; i < n; ++i) {
    for (Py_ssize_t j = 0; j < n; ++j) {
      if (i == j) continue;
      Ref first = getitem(points.get(), i), second = getitem(points.get(), j);
      Ref equal = check(PyObject_RichCompare(first.get(), second.get(), Py_EQ));
      if (truth(equal.get())) raise_duplicate(first.get());
    }
  }
  return none();
}
constexpr Member check_duplicate_points_member =
    method("_check_duplicate_points", "() -> None", check_duplicate_points,
           "Raise ValueError naming the first corner that equals another one.");

enum class IsSimple { points };
Ref is_simple(const Args& a) {
  PyObject* points = a[IsSimple::points];
  if (Ref simple = native_path(natives, [&] { return native_is_simple(points); })) return simple;
  Ref all_points = closed(points);
  Ref lines = check(PyList_New(0));
  Ref pairs = call(global<"_current_next">().get(), {all_points.get()});
  Ref it = check(PyObject_GetIter(pairs.get()));
  while (Ref pair = Ref::steal(PyIter_Next(it.get()))) {
    Ref ends[2];
    unpack(pair.get(), 2, ends);
    Ref line = call(global<"Line">().get(), {ends[0].get(), ends[1].get()});
    check(PyList_Append(lines.get(), line.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  // `for line1 in lines: for line2 in lines:` through the list's own iterators, which
  // read its size at each step: the intersection function is the caller's to replace,
  // and a replacement may change the list.
  Ref outer = check(PyObject_GetIter(lines.get()));
  while (Ref line1 = Ref::steal(PyIter_Next(outer.get()))) {
    Ref inner = check(PyObject_GetIter(lines.get()));
    while (Ref line2 = Ref::steal(PyIter_Next(inner.get()))) {
      if (line1.get() == line2.get()) continue;
      Ref intersection = call(global<"calculate_intersection_bounded_lines">().get(), {line1.get(), line2.get()});
      if (intersection.get() == Py_None) continue;
      Ref end1 = getattr(line1.get(), id<"end_point">()), start2 = getattr(line2.get(), id<"start_point">());
      Ref line1_line2 = check(PyObject_RichCompare(end1.get(), start2.get(), Py_EQ));
      Ref end2 = getattr(line2.get(), id<"end_point">()), start1 = getattr(line1.get(), id<"start_point">());
      Ref line2_line1 = check(PyObject_RichCompare(end2.get(), start1.get(), Py_EQ));
      if (!truth(line1_line2.get()) && !truth(line2_line1.get())) return boolean(false);
    }
    if (PyErr_Occurred()) throw PyError{};
  }
  if (PyErr_Occurred()) throw PyError{};
  return boolean(true);
}
constexpr Member is_simple_member =
    static_method("_is_simple", "(points: List[Point]) -> bool", is_simple,
                  "Whether only neighbouring edges meet; they may meet anywhere, and parallel edges never count.");

Ref verify(const Args& a) {
  PyObject* self = a.self();
  call_method(self, id<"_check_duplicate_points">(), {});
  Ref points = getattr(self, id<"points">());
  Ref simple = call_method(self, id<"_is_simple">(), {points.get()});
  if (!truth(simple.get()))
    raise(PyExc_ValueError, "Constructed polygon has self-intersecting lines, which is not supported.");
  if (Ref r = native_path(natives, [&] {
        const auto collinear = native_all_collinear(self);
        if (!collinear) return Ref{};
        if (*collinear) raise(PyExc_ValueError, "All points of the polygon are collinear.");
        return none();
      }))
    return r;
  points = getattr(self, id<"points">());
  Ref first = getitem(points.get(), 0), second = getitem(points.get(), 1);
  Ref line = call(global<"Line">().get(), {first.get(), second.get()});
  points = getattr(self, id<"points">());
  Ref rest = check(PySequence_GetSlice(points.get(), 2, PY_SSIZE_T_MAX));
  Ref it = check(PyObject_GetIter(rest.get()));
  while (Ref q = Ref::steal(PyIter_Next(it.get()))) {
    Ref on_line = call_method(line.get(), id<"collinear">(), {q.get()});
    if (!truth(on_line.get())) return none();
  }
  if (PyErr_Occurred()) throw PyError{};
  raise(PyExc_ValueError, "All points of the polygon are collinear.");
}
constexpr Member verify_member =
    method("_verify", "() -> None", verify, "The three checks of the constructor, in order; each raises ValueError.");

// ---- orientation and measures ----

Ref has_clockwise_circumference(const Args& a) {
  Ref points = getattr(a.self(), id<"points">());
  Ref ring = closed(points.get());
  return call(global<"circumference_is_clockwise">().get(), {ring.get()});
}
constexpr Member has_clockwise_circumference_member =
    method("has_clockwise_circumference", "() -> bool", has_clockwise_circumference,
           "Whether the corners run clockwise in plan.");

Ref triangles(const Args& a) { return call_method(a.self(), id<"_triangulate_by_earclipping">(), {}); }
constexpr Member triangles_member =
    method("_triangles", "() -> List[Triangle]", triangles, "The triangles of the ear clipping, in clipping order.");

Ref cross_sectional_area(const Args& a) {
  PyObject* self = a.self();
  if (Ref area = native_path(natives, [&] { return native_area(self); })) return area;
  Ref triangles = call_method(self, id<"_triangles">(), {});
  Ref areas = check(PyList_New(0));
  Ref it = check(PyObject_GetIter(triangles.get()));
  while (Ref triangle = Ref::steal(PyIter_Next(it.get()))) {
    Ref area = call_method(triangle.get(), id<"area">(), {});
    check(PyList_Append(areas.get(), area.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return call(global<"sum">().get(), {areas.get()});
}
constexpr Member cross_sectional_area_member =
    property("cross_sectional_area", "() -> float", cross_sectional_area, "The sum of the triangle areas.");

// triangle.<name>[index]
Ref indexed(PyObject* triangle, PyObject* name, Py_ssize_t index) {
  Ref value = getattr(triangle, name);
  return getitem(value.get(), index);
}

Ref centroid(const Args& a) {
  PyObject* self = a.self();
  if (Ref native = native_path(natives, [&] { return native_centroid(self); })) return native;
  Ref area = new_float(0.0), centroid_x = new_float(0.0), centroid_y = new_float(0.0);
  Ref triangles = call_method(self, id<"_triangles">(), {});
  Ref it = check(PyObject_GetIter(triangles.get()));
  while (Ref triangle = Ref::steal(PyIter_Next(it.get()))) {
    Ref triangle_area = call_method(triangle.get(), id<"area">(), {});
    Ref cx = indexed(triangle.get(), id<"centroid">(), 0);
    Ref wx = mul(cx.get(), triangle_area.get());
    centroid_x = check(PyNumber_InPlaceAdd(centroid_x.get(), wx.get()));
    Ref cy = indexed(triangle.get(), id<"centroid">(), 1);
    Ref wy = mul(cy.get(), triangle_area.get());
    centroid_y = check(PyNumber_InPlaceAdd(centroid_y.get(), wy.get()));
    area = check(PyNumber_InPlaceAdd(area.get(), triangle_area.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  centroid_x = check(PyNumber_InPlaceTrueDivide(centroid_x.get(), area.get()));
  centroid_y = check(PyNumber_InPlaceTrueDivide(centroid_y.get(), area.get()));
  return tuple({centroid_x.get(), centroid_y.get()});
}
constexpr Member centroid_member =
    property("centroid", "() -> Tuple[float, float]", centroid,
             "(x, y) of the centroid: the area-weighted mean of the triangle centroids.");

// moment += (triangle.centroid[index] - centre) ** 2 * triangle_area + triangle.moment_of_inertia[own]
Ref parallel_axis(PyObject* moment, PyObject* triangle, Py_ssize_t index, PyObject* centre, PyObject* area,
                  Py_ssize_t own) {
  Ref c = indexed(triangle, id<"centroid">(), index);
  Ref offset = sub(c.get(), centre);
  Ref offset2 = power(offset.get(), 2);
  Ref shifted = mul(offset2.get(), area);
  Ref local = indexed(triangle, id<"moment_of_inertia">(), own);
  Ref term = add(shifted.get(), local.get());
  return check(PyNumber_InPlaceAdd(moment, term.get()));
}

Ref moment_of_inertia(const Args& a) {
  PyObject* self = a.self();
  if (Ref native = native_path(natives, [&] { return native_moment_of_inertia(self); })) return native;
  Ref moment_x = new_float(0.0), moment_y = new_float(0.0);
  Ref centre = getattr(self, id<"centroid">());
  Ref c[2];
  unpack(centre.get(), 2, c);
  Ref triangles = call_method(self, id<"_triangles">(), {});
  Ref it = check(PyObject_GetIter(triangles.get()));
  while (Ref triangle = Ref::steal(PyIter_Next(it.get()))) {
    Ref triangle_area = call_method(triangle.get(), id<"area">(), {});
    moment_x = parallel_axis(moment_x.get(), triangle.get(), 1, c[1].get(), triangle_area.get(), 0);
    moment_y = parallel_axis(moment_y.get(), triangle.get(), 0, c[0].get(), triangle_area.get(), 1);
  }
  if (PyErr_Occurred()) throw PyError{};
  return tuple({moment_x.get(), moment_y.get()});
}
constexpr Member moment_of_inertia_member =
    property("moment_of_inertia", "() -> Tuple[float, float]", moment_of_inertia,
             "Second moments of area (about the x direction, about the y direction) through the centroid,\n"
             "summed over the triangles by the parallel-axis rule.");

// ---- ear clipping ----



Ref x_of(PyObject* p) { return getattr(p, id<"x">()); }
Ref y_of(PyObject* p) { return getattr(p, id<"y">()); }

enum class Convex { p1, p2, p3 };
Ref convex_angle_when_ccw(const Args& a) {
  PyObject *p1 = a[Convex::p1], *p2 = a[Convex::p2], *p3 = a[Convex::p3];
  if (Ref r = native_path(point_natives(), [&] {
        const auto v1 = read_point(p1), v2 = read_point(p2), v3 = read_point(p3);
        return v1 && v2 && v3 ? boolean(kernel::convex_when_ccw(*v1, *v2, *v3)) : Ref{};
      }))
    return r;
  // (p2.x - p1.x) * (p3.y - p1.y) - (p2.y - p1.y) * (p3.x - p1.x) >= 0
  Ref x2 = x_of(p2), x1 = x_of(p1);
  Ref dx2 = sub(x2.get(), x1.get());
  Ref y3 = y_of(p3), y1 = y_of(p1);
  Ref dy3 = sub(y3.get(), y1.get());
  Ref left = mul(dx2.get(), dy3.get());
  Ref y2 = y_of(p2), y1b = y_of(p1);
  Ref dy2 = sub(y2.get(), y1b.get());
  Ref x3 = x_of(p3), x1b = x_of(p1);
  Ref dx3 = sub(x3.get(), x1b.get());
  Ref right = mul(dy2.get(), dx3.get());
  Ref crossp = sub(left.get(), right.get());
  Ref zero = new_int(0);
  return check(PyObject_RichCompare(crossp.get(), zero.get(), Py_GE));
}

enum class OnTriangle { p1, p2, p3, p };
Ref on_triangle(const Args& a) {
  PyObject *p1 = a[OnTriangle::p1], *p2 = a[OnTriangle::p2], *p3 = a[OnTriangle::p3], *p = a[OnTriangle::p];
  Ref result;
  for (auto [start, end] : {std::pair{p1, p2}, {p2, p3}, {p3, p1}}) {
    Ref line = call(global<"Line">().get(), {start, end});
    result = call(global<"point_is_on_bounded_line">().get(), {p, line.get()});
    if (truth(result.get())) break;
  }
  return result;
}

enum class InTriangle { p1, p2, p3, p };
Ref in_triangle(const Args& a) {
  PyObject *p1 = a[InTriangle::p1], *p2 = a[InTriangle::p2], *p3 = a[InTriangle::p3], *p = a[InTriangle::p];
  if (Ref r = native_path(point_natives(), [&] {
        const auto v1 = read_point(p1), v2 = read_point(p2), v3 = read_point(p3), v = read_point(p);
        return v1 && v2 && v3 && v ? boolean(kernel::strictly_in_triangle(*v1, *v2, *v3, *v)) : Ref{};
      }))
    return r;
  Ref eps = new_float(1e-7);
  // (a.y - b.y) * (c.x - d.x) + (b.x - a.x) * (c.y - d.y), the shape of all three numerators
  auto form = [](PyObject* a, PyObject* b, PyObject* c, PyObject* d) {
    Ref ay = y_of(a), by = y_of(b);
    Ref dy = sub(ay.get(), by.get());
    Ref cx = x_of(c), dx_ = x_of(d);
    Ref dx = sub(cx.get(), dx_.get());
    Ref left = mul(dy.get(), dx.get());
    Ref bx = x_of(b), ax = x_of(a);
    Ref ex = sub(bx.get(), ax.get());
    Ref cy = y_of(c), dy_ = y_of(d);
    Ref ey = sub(cy.get(), dy_.get());
    Ref right = mul(ex.get(), ey.get());
    return add(left.get(), right.get());
  };
  Ref twice_area = form(p2, p3, p1, p3);
  Ref denominator = add(twice_area.get(), eps.get());
  Ref alpha_numerator = form(p2, p3, p, p3);
  Ref alpha = div(alpha_numerator.get(), denominator.get());
  Ref beta_numerator = form(p3, p1, p, p3);
  Ref beta = div(beta_numerator.get(), denominator.get());
  Ref one = new_int(1), zero = new_int(0);
  Ref rest = sub(one.get(), alpha.get());
  Ref gamma = sub(rest.get(), beta.get());
  for (PyObject* x : {alpha.get(), beta.get(), gamma.get()}) {
    Ref at_least_one = check(PyObject_RichCompare(x, one.get(), Py_GE));
    if (truth(at_least_one.get())) return boolean(false);
    Ref at_most_zero = check(PyObject_RichCompare(x, zero.get(), Py_LE));
    if (truth(at_most_zero.get())) return boolean(false);
  }
  return boolean(true);
}

// closed_circumference = circumference + [circumference[0]]; raise if it runs clockwise.
void require_counter_clockwise(PyObject* circumference) {
  Ref ring = closed(circumference);
  Ref clockwise = call(global<"circumference_is_clockwise">().get(), {ring.get()});
  if (truth(clockwise.get())) raise(PyExc_ValueError, "Circumference should be counter clockwise");
}

bool differ(PyObject* a, PyObject* b) { return truth(check(PyObject_RichCompare(a, b, Py_NE)).get()); }

enum class GetEar { self, circumference };
Ref get_ear(const Args& a) {
  PyObject *self = a.self(), *circumference = a[GetEar::circumference];
  require_counter_clockwise(circumference);
  const Py_ssize_t size = check(PyObject_Length(circumference));
  if (size < 3) raise(PyExc_ValueError, "Insufficient number of points on circumference, minimum of 3");
  if (size == 3) {
    Ref new_circumference = check(PyList_New(0));
    Ref c0 = getitem(circumference, 0), c1 = getitem(circumference, 1), c2 = getitem(circumference, 2);
    Ref triangle = call(global<"Triangle">().get(), {c0.get(), c1.get(), c2.get()});
    return tuple({triangle.get(), new_circumference.get()});
  }
  Ref new_circumference = check(PySequence_List(circumference));
  for (Py_ssize_t i = 0; i < size; ++i) {
    bool tritest = false;
    Ref p1 = getitem(circumference, (i - 1 + size) % size);
    Ref p2 = getitem(circumference, i % size);
    Ref p3 = getitem(circumference, (i + 1) % size);
    Ref convex = call_method(self, id<"_convex_angle_when_ccw">(), {p1.get(), p2.get(), p3.get()});
    if (!truth(convex.get())) continue;
    Ref it = check(PyObject_GetIter(circumference));
    while (Ref p = Ref::steal(PyIter_Next(it.get()))) {
      if (!differ(p.get(), p1.get()) || !differ(p.get(), p2.get()) || !differ(p.get(), p3.get())) continue;
      Ref inside = call_method(self, id<"_in_triangle">(), {p1.get(), p2.get(), p3.get(), p.get()});
      if (!truth(inside.get())) {
        Ref on_edge = call_method(self, id<"_on_triangle">(), {p1.get(), p2.get(), p3.get(), p.get()});
        if (!truth(on_edge.get())) continue;
      }
      tritest = true;
    }
    if (PyErr_Occurred()) throw PyError{};
    if (!tritest) {
      check(PySequence_DelItem(new_circumference.get(), i % size));
      Ref triangle = call(global<"Triangle">().get(), {p1.get(), p2.get(), p3.get()});
      return tuple({triangle.get(), new_circumference.get()});
    }
  }
  raise(PyExc_ValueError, "No ear found, unexpected error");
}

Ref triangulate_by_earclipping(const Args& a) {
  PyObject* self = a.self();
  if (Ref native = native_path(natives, [&] { return native_triangulation(self); })) return native;
  Ref triangles = check(PyList_New(0));
  Ref clockwise = call_method(self, id<"has_clockwise_circumference">(), {});
  Ref points = getattr(self, id<"points">());
  Ref step = new_int(truth(clockwise.get()) ? -1 : 1);
  Ref all = check(PySlice_New(nullptr, nullptr, step.get()));
  Ref circumference = check(PyObject_GetItem(points.get(), all.get()));
  while (check(PyObject_Length(circumference.get())) >= 3) {
    require_counter_clockwise(circumference.get());
    Ref ear = call_method(self, id<"_get_ear">(), {circumference.get()});
    Ref parts[2];
    unpack(ear.get(), 2, parts);
    circumference = std::move(parts[1]);
    check(PyList_Append(triangles.get(), parts[0].get()));
  }
  return triangles;
}


constexpr Member convex_angle_when_ccw_member =
    static_method("_convex_angle_when_ccw", "(p1: Point, p2: Point, p3: Point) -> bool", convex_angle_when_ccw,
                  "Whether the turn p1, p2, p3 is not to the right (a straight angle counts as convex).");
constexpr Member on_triangle_member =
    static_method("_on_triangle", "(p1: Point, p2: Point, p3: Point, p: Point) -> bool", on_triangle,
                  "Whether p lies on an edge of the triangle, ends included.");
constexpr Member in_triangle_member =
    static_method("_in_triangle", "(p1: Point, p2: Point, p3: Point, p: Point) -> bool", in_triangle,
                  "Whether p lies strictly inside the triangle (barycentric, 1e-7 added to the denominator).");
constexpr Member get_ear_member =
    method("_get_ear", "(circumference: List[Point]) -> Tuple[Triangle, List[Point]]", get_ear,
           "The first ear of a counter-clockwise circumference and the circumference without its tip.");
constexpr Member triangulate_by_earclipping_member =
    method("_triangulate_by_earclipping", "() -> List[Triangle]", triangulate_by_earclipping,
           "All triangles of the polygon, counter-clockwise, in clipping order.");

// ---- the mesh ----

Ref triangle_vertices_and_faces(const Args& a) {
  PyObject* self = a.self();
  Ref triangles = call_method(self, id<"_triangulate_by_earclipping">(), {});
  Ref skip = getattr(self, id<"_skip_duplicate_vertices_check">());
  Ref assembly = call_kw(global<"TriangleAssembly">().get(), {triangles.get()},
                         {{id<"skip_duplicate_vertices_check">(), skip.get()}});
  Ref result = call_method(assembly.get(), id<"_get_vertices_and_faces">(), {});
  Ref parts[2];
  unpack(result.get(), 2, parts);
  Ref orientation = getattr(self, id<"_surface_orientation">());
  if (truth(orientation.get())) {
    Ref clockwise = call_method(self, id<"has_clockwise_circumference">(), {});
    if (!truth(clockwise.get())) {
      Ref reversed = check(PyList_New(0));
      Ref step = new_int(-1);
      Ref reverse = check(PySlice_New(nullptr, nullptr, step.get()));
      Ref it = check(PyObject_GetIter(parts[1].get()));
      while (Ref face = Ref::steal(PyIter_Next(it.get()))) {
        Ref turned = check(PyObject_GetItem(face.get(), reverse.get()));
        check(PyList_Append(reversed.get(), turned.get()));
      }
      if (PyErr_Occurred()) throw PyError{};
      parts[1] = std::move(reversed);
    }
  }
  return tuple({parts[0].get(), parts[1].get()});
}
constexpr Member triangle_vertices_and_faces_member = method(
    "_triangle_vertices_and_faces", "() -> Tuple[List[List[float]], List[List[int]]]", triangle_vertices_and_faces,
    "The mesh lists of the triangulation; with surface_orientation, the faces of a counter-clockwise\n"
    "polygon are reversed.");

Ref to_trimesh(const Args& a) { return unprocessed_mesh(a.self(), id<"_triangle_vertices_and_faces">()); }
constexpr Member to_trimesh_member = method("_to_trimesh", "() -> trimesh.parent.Geometry3D", to_trimesh,
                                            "A new unprocessed trimesh mesh of the triangulation.");

Ref polygon_name(const Args&) { return new_str("polygon"); }
constexpr Member name_member = property("_name", "() -> str", polygon_name, "\"polygon\"");

// ---- extrusion ----

enum class Extrude { self, line, profile_rotation, material };
Ref extrude(const Args& a) {
  PyObject* self = a.self();
  Ref clockwise = call_method(self, id<"has_clockwise_circumference">(), {});
  if (!truth(clockwise.get()))
    raise(PyExc_ValueError, "Polygon must be defined in clockwise direction to support extrusion.");
  Ref profile = check(PyList_New(0));
  Ref points = getattr(self, id<"points">());
  Ref it = check(PyObject_GetIter(points.get()));
  while (Ref p = Ref::steal(PyIter_Next(it.get()))) {
    Ref x = getattr(p.get(), id<"x">()), y = getattr(p.get(), id<"y">());
    Ref flat = call(global<"Point">().get(), {x.get(), y.get()});
    check(PyList_Append(profile.get(), flat.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref ring = closed(profile.get());
  Ref rotation = new_float(a.num(Extrude::profile_rotation));
  return call_kw(global<"Extrusion">().get(), {ring.get(), a[Extrude::line], rotation.get()},
                 {{id<"material">(), a[Extrude::material]}});
}
constexpr Member extrude_member =
    method("extrude", "(line: Line, *, profile_rotation: float = 0, material: Material = None) -> Extrusion", extrude,
           "An Extrusion of this clockwise polygon along `line`; the corners' z is dropped.");

}  // namespace

void define_polygon() {
  define_class(
      "Polygon", {global<"TransformableObject">().get()},
      "A flat, closed, simple figure in the xy plane, given by its corners in order (not closed).\n"
      "Area, centroid and second moments are sums over the triangles of its ear clipping.",
      {init_member, verify_member, is_simple_member, has_clockwise_circumference_member, cross_sectional_area_member,
       centroid_member, moment_of_inertia_member, convex_angle_when_ccw_member, on_triangle_member, in_triangle_member,
       get_ear_member, triangulate_by_earclipping_member, triangle_vertices_and_faces_member, triangles_member,
       check_duplicate_points_member, name_member, to_trimesh_member, extrude_member},
      &guard);
}

}  // namespace ostrel
