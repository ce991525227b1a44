// Revolve, the abstract base of solids of revolution around the global y-axis, and
// LineRevolve, the revolve of a straight line with its closed forms. A profile of
// (x, y) pairs (x the radius, y the height) becomes a mesh through trimesh, which
// revolves around z: the mesh is turned from z to y as it is made. Everything here runs
// once per solid, so it runs as written, through the host.
#include <numbers>

#include "curves/line.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "scene/default_material.hpp"
#include "scene/line_placement.hpp"

namespace ostrel {

namespace {

ClassGuard revolve_guard, line_revolve_guard;

constexpr double pi = std::numbers::pi;

enum class Init { self, args, rotation_angle, material, kwargs };
Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref parent = super_of(revolve_guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  Ref thickness = new_float(0.0);
  setattr(self, id<"_thickness">(), thickness.get());
  Ref angle = a[Init::rotation_angle] == Py_None ? new_float(2 * pi) : Ref::borrow(a[Init::rotation_angle]);
  setattr(self, id<"_rotation_angle">(), angle.get());
  Ref material = material_or_default(a[Init::material]);
  setattr(self, id<"material">(), material.get());
  return none();
}
constexpr Member init_member =
    method("__init__", "(*args: Any, rotation_angle: float = None, material: Material = None, **kwargs: Any)", init,
           "A wall thickness of 0.0, a full turn unless rotation_angle (radians) is given, and the material.\n"
           "Further arguments are accepted and discarded.");

Ref not_implemented(const Args&) {
  PyErr_SetNone(PyExc_NotImplementedError);
  throw PyError{};
}
constexpr Member surface_area_member =
    abstract_property("surface_area", "() -> float", not_implemented, "The area of the revolved surface.");
constexpr Member inner_volume_member =
    abstract_property("inner_volume", "() -> float", not_implemented, "The volume the surface encloses.");

Ref get_thickness(const Args& a) { return getattr(a.self(), id<"_thickness">()); }
enum class SetThickness { self, value };
Ref set_thickness(const Args& a) {
  Ref value = new_float(a.num(SetThickness::value));
  setattr(a.self(), id<"_thickness">(), value.get());
  return none();
}
constexpr Member thickness_member = property("thickness", "() -> float", get_thickness, "(value: float) -> None",
                                             set_thickness, "The wall thickness, the factor of the mass.");

Ref mass(const Args& a) {
  PyObject* self = a.self();
  Ref material = getattr(self, id<"material">());
  Ref density = getattr(material.get(), id<"density">());
  if (density.get() == Py_None)
    raise(PyExc_ValueError, "Mass can not be calculated, since material does not have a density assigned");
  material = getattr(self, id<"material">());
  density = getattr(material.get(), id<"density">());
  Ref area = getattr(self, id<"surface_area">());
  Ref weight = mul(density.get(), area.get());
  Ref thickness = getattr(self, id<"_thickness">());
  return mul(weight.get(), thickness.get());
}
constexpr Member mass_member =
    property("mass", "() -> float", mass, "density * surface_area * thickness; ValueError without a density.");

Ref revolve_name(const Args&) { return new_str("revolve"); }
constexpr Member revolve_name_member = property("_name", "() -> str", revolve_name, "\"revolve\"");

constexpr Member linestring_member =
    abstract_property("_trimesh_linestring", "() -> Sequence[Tuple[float, float]]", not_implemented,
                      "The profile as (x, y) pairs: x the radius, y the height.");

Ref to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref material = getattr(self, id<"material">());
  Ref visual = call_method(material.get(), id<"_to_trimesh">(), {});
  Ref trimesh = global<"trimesh">();
  Ref geometry = getattr(trimesh.get(), id<"geometry">());
  Ref z = axis(0, 0, 1), y = axis(0, 1, 0);
  Ref z_to_y = call_method(geometry.get(), id<"align_vectors">(), {z.get(), y.get()});
  Ref creation = getattr(global<"trimesh">().get(), id<"creation">());
  Ref revolve_function = getattr(creation.get(), id<"revolve">());
  Ref linestring = getattr(self, id<"_trimesh_linestring">());
  Ref angle = getattr(self, id<"_rotation_angle">());
  Ref sections = new_int(60);
  Ref revolve = call_kw(revolve_function.get(), {linestring.get()},
                        {{id<"angle">(), angle.get()},
                         {id<"sections">(), sections.get()},
                         {id<"transform">(), z_to_y.get()},
                         {id<"visual">(), visual.get()},
                         {id<"process">(), Py_False}});
  // A partial turn loses its last face row.
  Ref angle_again = getattr(self, id<"_rotation_angle">());
  if (!kernel::isclose(as_double(angle_again.get()), pi * 2, kernel::plain_tolerance)) {
    Ref faces = getattr(revolve.get(), id<"faces">());
    Ref fewer = check(PySequence_GetSlice(faces.get(), 0, -1));
    setattr(revolve.get(), id<"faces">(), fewer.get());
  }
  return revolve;
}
constexpr Member to_trimesh_member =
    method("_to_trimesh", "() -> trimesh.parent.Geometry3D", to_trimesh,
           "The revolved profile as a mesh of 60 sections around the y-axis, with the material's visual.");

// LineRevolve

enum class LineInit { self, line, args, material, kwargs };
Ref line_init(const Args& a) {
  PyObject *self = a.self(), *line = a[LineInit::line], *kwargs = a[LineInit::kwargs];
  for (PyObject* end : {id<"start_point">(), id<"end_point">()}) {
    Ref z = end_coordinate(line, end, id<"z">());
    if (!kernel::isclose(as_double(z.get()), 0.0, kernel::plain_tolerance))
      raise(PyExc_NotImplementedError, "Line revolve only implemented in xy plane (z=0)");
  }
  if (PyDict_DelItem(kwargs, id<"rotation_angle">()) < 0) {
    if (!PyErr_ExceptionMatches(PyExc_KeyError)) throw PyError{};
    PyErr_Clear();
  }
  Ref keywords = check(PyDict_New());
  check(PyDict_SetItem(keywords.get(), id<"rotation_angle">(), Py_None));
  check(PyDict_SetItem(keywords.get(), id<"material">(), a[LineInit::material]));
  check(PyDict_Update(keywords.get(), kwargs));
  Ref parent = super_of(line_revolve_guard.cls(), self);
  Ref parent_init = getattr(parent.get(), id<"__init__">());
  check(PyObject_Call(parent_init.get(), a[LineInit::args], keywords.get()));
  setattr(self, id<"_line">(), line);
  Ref uuid1 = getattr(global<"uuid">().get(), id<"uuid1">());
  Ref uuid = call(uuid1.get(), {});
  setattr(self, id<"_uuid">(), uuid.get());
  return none();
}
constexpr Member line_init_member =
    method("__init__", "(line: Line, *args: Any, material: Material = None, **kwargs: Any)", line_init,
           "The full turn of a line in the xy plane (z exactly 0) around the y-axis; a rotation_angle\n"
           "keyword is dropped.");

Ref line_name(const Args&) { return new_str("line-revolve"); }
constexpr Member line_name_member = property("_name", "() -> str", line_name, "\"line-revolve\"");

Ref line(const Args& a) { return getattr(a.self(), id<"_line">()); }
constexpr Member line_member = property("line", "() -> Line", line, "The revolved line.");

Ref uuid(const Args& a) { return getattr(a.self(), id<"_uuid">()); }
constexpr Member uuid_member = property("uuid", "() -> uuid.UUID", uuid, "The identifier made at construction.");

Ref height(const Args& a) {
  Ref np = global<"np">();
  Ref axis_line = getattr(a.self(), id<"_line">());
  Ref length_vector = getattr(axis_line.get(), id<"length_vector">());
  Ref zero = new_int(0), one = new_int(1);
  Ref components = list({zero.get(), one.get(), zero.get()});
  Ref array = getattr(np.get(), id<"array">());
  Ref up = call_kw(array.get(), {components.get()}, {{id<"dtype">(), reinterpret_cast<PyObject*>(&PyFloat_Type)}});
  Ref dot = call_method(np.get(), id<"dot">(), {length_vector.get(), up.get()});
  return check(PyNumber_Float(dot.get()));
}
constexpr Member height_member =
    property("height", "() -> float", height, "End y minus start y: negative for a line running downwards.");

// The two ends' x and y, read from the line's points.
struct Ends {
  Ref sx, sy, ex, ey;
};
Ends ends(PyObject* self) {
  Ref axis_line = getattr(self, id<"_line">());
  Ref start = getattr(axis_line.get(), id<"start_point">());
  Ref end = getattr(axis_line.get(), id<"end_point">());
  return {getattr(start.get(), id<"x">()), getattr(start.get(), id<"y">()), getattr(end.get(), id<"x">()),
          getattr(end.get(), id<"y">())};
}

bool close(PyObject* a, PyObject* b) {
  const double x = as_double(a);
  return kernel::isclose(x, as_double(b), kernel::plain_tolerance);
}

// a and b of y = a * x + b through the two ends.
std::pair<Ref, Ref> line_function(const Ends& e) {
  Ref rise = sub(e.ey.get(), e.sy.get()), run = sub(e.ex.get(), e.sx.get());
  Ref slope = div(rise.get(), run.get());
  Ref product = mul(slope.get(), e.sx.get());
  Ref intercept = sub(e.sy.get(), product.get());
  return {slope, intercept};
}

Ref number(double v) { return new_float(v); }

Ref surface_area(const Args& a) {
  const Ends e = ends(a.self());
  Ref pi_object = number(pi);
  if (close(e.sy.get(), e.ey.get())) {
    if (close(e.sx.get(), e.ex.get()))
      raise(PyExc_ValueError, "Point revolve (two equal points) does not have a surface area");
    // max() and min() of the builtins, which keep the first of two equal values.
    const bool end_larger = compares(e.ex.get(), e.sx.get(), Py_GT);
    const bool end_smaller = compares(e.ex.get(), e.sx.get(), Py_LT);
    Ref r_max = end_larger ? e.ex : e.sx, r_min = end_smaller ? e.ex : e.sx;
    Ref outer = power(r_max.get(), 2), inner = power(r_min.get(), 2);
    Ref outer_area = mul(pi_object.get(), outer.get()), inner_area = mul(pi_object.get(), inner.get());
    return sub(outer_area.get(), inner_area.get());
  }
  Ref two_pi = number(2 * pi);
  if (close(e.sx.get(), e.ex.get())) {
    Ref drop = sub(e.sy.get(), e.ey.get());
    Ref h = check(PyNumber_Absolute(drop.get()));
    Ref around = mul(two_pi.get(), e.sx.get());
    return mul(around.get(), h.get());
  }
  auto [slope, intercept] = line_function(e);
  // 2 * math.pi / a * math.sqrt(1 + 1 / a ** 2) * (F(end y) - F(start y)), F(y) = 0.5 * y ** 2 - b * y
  Ref one = new_int(1), half = number(0.5);
  Ref factor = div(two_pi.get(), slope.get());
  Ref slope_squared = power(slope.get(), 2);
  Ref inverse = div(one.get(), slope_squared.get());
  Ref radicand = add(one.get(), inverse.get());
  Ref root = new_float(kernel::math_sqrt(as_double(radicand.get())));
  factor = mul(factor.get(), root.get());
  auto antiderivative = [&](PyObject* y) {
    Ref y2 = power(y, 2);
    Ref first = mul(half.get(), y2.get());
    Ref second = mul(intercept.get(), y);
    return sub(first.get(), second.get());
  };
  Ref upper = antiderivative(e.ey.get()), lower = antiderivative(e.sy.get());
  Ref difference = sub(upper.get(), lower.get());
  return mul(factor.get(), difference.get());
}
constexpr Member surface_area_member_line =
    property("surface_area", "() -> float", surface_area,
             "The area of the full turn: a flat ring, a cylinder wall, or the signed area of a cone band.");

Ref inner_volume(const Args& a) {
  const Ends e = ends(a.self());
  if (close(e.sy.get(), e.ey.get()))
    raise(PyExc_ValueError, "Horizontal line-revolve (equal y) does not have an inner volume");
  if (compares(e.ey.get(), e.sy.get(), Py_LT))
    raise(PyExc_ValueError, "Inner volume of line-revolve is not defined with inner oriented surface");
  Ref pi_object = number(pi);
  if (close(e.sx.get(), e.ex.get())) {
    Ref rise = sub(e.ey.get(), e.sy.get());
    Ref h = check(PyNumber_Absolute(rise.get()));
    Ref r2 = power(e.sx.get(), 2);
    Ref disc = mul(pi_object.get(), r2.get());
    return mul(disc.get(), h.get());
  }
  auto [slope, intercept] = line_function(e);
  // 1 / a ** 2 * math.pi * (G(end y) - G(start y)), G(y) = (1/3) * y ** 3 - b * y ** 2 + b ** 2 * y
  Ref one = new_int(1), third = number(1.0 / 3.0);
  Ref intercept_squared = power(intercept.get(), 2);
  auto antiderivative = [&](PyObject* y) {
    Ref y3 = power(y, 3), y2 = power(y, 2);
    Ref first = mul(third.get(), y3.get());
    Ref second = mul(intercept.get(), y2.get());
    Ref third_term = mul(intercept_squared.get(), y);
    Ref partial = sub(first.get(), second.get());
    return add(partial.get(), third_term.get());
  };
  Ref slope_squared = power(slope.get(), 2);
  Ref factor = div(one.get(), slope_squared.get());
  factor = mul(factor.get(), pi_object.get());
  Ref upper = antiderivative(e.ey.get()), lower = antiderivative(e.sy.get());
  Ref difference = sub(upper.get(), lower.get());
  return mul(factor.get(), difference.get());
}
constexpr Member inner_volume_member_line =
    property("inner_volume", "() -> float", inner_volume,
             "The volume between the two levels inside the surface, for a line running upwards.");

Ref geometries(const Args& a) {
  Ref axis_line = getattr(a.self(), id<"_line">());
  return tuple({axis_line.get()});
}
constexpr Member geometries_member = property("geometries", "() -> Tuple[Line]", geometries, "(line,)");

Ref linestring(const Args& a) {
  Ref axis_line = getattr(a.self(), id<"_line">());
  Ref pairs = check(PyList_New(0));
  for (PyObject* end : {id<"_start_point">(), id<"_end_point">()}) {
    Ref point = getattr(axis_line.get(), end);
    Ref x = getattr(point.get(), id<"x">()), y = getattr(point.get(), id<"y">());
    Ref pair = tuple({x.get(), y.get()});
    check(PyList_Append(pairs.get(), pair.get()));
  }
  return pairs;
}
constexpr Member linestring_member_line =
    property("_trimesh_linestring", "() -> List[Tuple[float, float]]", linestring, "[(start x, y), (end x, y)]");

}  // namespace

void define_revolve() {
  define_class("Revolve", {global<"TransformableObject">().get(), global<"ABC">().get()},
               "Abstract base of solids of revolution around the global y-axis: a profile of (x, y) pairs, x\n"
               "the radius and y the height, turned through rotation_angle radians.",
               {init_member, surface_area_member, inner_volume_member, thickness_member, mass_member,
                revolve_name_member, linestring_member, to_trimesh_member},
               &revolve_guard);
  define_class("LineRevolve", {global<"Revolve">().get()},
               "The full turn of a straight line in the xy plane around the y-axis.",
               {line_init_member, line_name_member, line_member, uuid_member, height_member, surface_area_member_line,
                inner_volume_member_line, geometries_member, linestring_member_line},
               &line_revolve_guard);
}

}  // namespace ostrel
