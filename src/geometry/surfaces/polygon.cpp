// Polygon: a flat, closed, simple figure in the xy plane, given by its corners in order.
// It is checked once, in the constructor; its area, centroid and second moments are sums
// over the triangles of its ear clipping, triangulated anew at every use.
//
// The native paths read the corners once into doubles (surfaces/polygon_native.hpp) and
// run the checks, the clipping and the sums in the kernels; they are taken for unchanged
// instances of the module's own classes only. Below each, the documented steps.
#include <optional>

#include "foundations/current_next.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "surfaces/ear_clipping.hpp"
#include "surfaces/polygon_native.hpp"
#include "surfaces/unprocessed_mesh.hpp"

namespace ostrel {

namespace {

ClassGuard guard{"Polygon"};

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
  if (const auto polygon = read_polygon(self)) {
    if (const auto index = first_duplicate(*polygon)) raise_duplicate(polygon->objects[*index].get());
    return none();
  }
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
  if (const auto simple = native_is_simple(points)) return boolean(*simple);
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
  if (const auto collinear = native_all_collinear(self)) {
    if (*collinear) raise(PyExc_ValueError, "All points of the polygon are collinear.");
    return none();
  }
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
  if (Ref area = native_area(self)) return area;
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
  if (Ref native = native_centroid(self)) return native;
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
  if (Ref native = native_moment_of_inertia(self)) return native;
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

const ClassGuard& polygon_class() { return guard; }

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
