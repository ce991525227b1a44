// CircularExtrusion: a round bar along a Line. It keeps only its line, diameter and
// material; at export it makes three LineRevolve pieces around the local y-axis (the
// mantle and two end discs), and its matrix turns that axis onto the line. Everything
// runs once per solid, as written, through the host.
#include <numbers>

#include "exchange/gltf.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "scene/default_material.hpp"
#include "scene/line_placement.hpp"
#include "scene/piece_name.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

enum class Init { self, diameter, line, open_ends, material };
Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref parent = super_of(guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  setattr(self, id<"_line">(), a[Init::line]);
  Ref diameter = new_float(a.num(Init::diameter));
  setattr(self, id<"_diameter">(), diameter.get());
  setattr(self, id<"_open_ends">(), a[Init::open_ends]);
  Ref material = material_or_default(a[Init::material]);
  setattr(self, id<"material">(), material.get());
  call_method(self, id<"_generate_transformation_matrix">(), {});
  return none();
}
constexpr Member init_member =
    method("__init__", "(diameter: float, line: Line, *, open_ends: bool = False, material: Material = None)", init,
           "A round bar of the diameter along the line; open_ends leaves out the two end discs.");

Ref line(const Args& a) { return getattr(a.self(), id<"_line">()); }
constexpr Member line_member = property("line", "() -> Line", line, "The axis.");

Ref length(const Args& a) {
  Ref axis = getattr(a.self(), id<"_line">());
  return getattr(axis.get(), id<"length">());
}
constexpr Member length_member = property("length", "() -> float", length, "The length of the line.");

Ref diameter(const Args& a) { return getattr(a.self(), id<"_diameter">()); }
constexpr Member diameter_member = property("diameter", "() -> float", diameter, "The outer diameter.");

Ref radius(const Args& a) {
  Ref d = getattr(a.self(), id<"_diameter">());
  Ref two = new_int(2);
  return div(d.get(), two.get());
}
constexpr Member radius_member = property("radius", "() -> float", radius, "diameter / 2");

Ref cross_sectional_area(const Args& a) {
  Ref r = getattr(a.self(), id<"radius">());
  Ref r2 = power(r.get(), 2);
  Ref pi = new_float(std::numbers::pi);
  return mul(pi.get(), r2.get());
}
constexpr Member cross_sectional_area_member =
    property("cross_sectional_area", "() -> float", cross_sectional_area, "math.pi * radius ** 2");

Ref circular_extrusion_name(const Args&) { return new_str("circular-extrusion"); }
constexpr Member name_member = property("_name", "() -> str", circular_extrusion_name, "\"circular-extrusion\"");

Ref generate_transformation_matrix(const Args& a) {
  PyObject* self = a.self();
  Ref xax = axis(1, 0, 0), yax = axis(0, 1, 0);
  Ref axis_line = getattr(self, id<"_line">());
  Ref end = getattr(axis_line.get(), id<"end_point">());
  Ref end_array = as_array(end.get());
  Ref start = getattr(axis_line.get(), id<"start_point">());
  Ref start_array = as_array(start.get());
  const Heading h = heading(end_array.get(), start_array.get());
  Ref rotation_matrix = global<"rotation_matrix">();
  // The pieces are revolved around local y: a quarter turn around x brings it onto z.
  Ref quarter = new_float(std::numbers::pi / 2);
  Ref extra_rot = call(rotation_matrix.get(), {quarter.get(), xax.get()});
  Ref rot0 = call(rotation_matrix.get(), {h.alpha.get(), yax.get()});
  Ref minus_beta = neg(h.beta.get());
  Ref rot1 = call(rotation_matrix.get(), {minus_beta.get(), xax.get()});
  Ref partial = check(PyNumber_MatrixMultiply(rot0.get(), rot1.get()));
  Ref transformation = check(PyNumber_MatrixMultiply(partial.get(), extra_rot.get()));
  setattr(self, id<"_transformation">(), transformation.get());
  Ref own = getattr(self, id<"_transformation">());
  axis_line = getattr(self, id<"_line">());
  start = getattr(axis_line.get(), id<"start_point">());
  translate_to(own.get(), start.get());
  return none();
}
constexpr Member generate_transformation_matrix_member =
    method("_generate_transformation_matrix", "() -> None", generate_transformation_matrix,
           "Set the matrix that turns local y onto the line and moves the local origin to its start.");

// Line(Point(x0, y0), Point(x1, y1)).revolve(material=self.material)
Ref revolved(PyObject* self, PyObject* x0, PyObject* y0, PyObject* x1, PyObject* y1) {
  Ref point = global<"Point">();
  Ref start = call(point.get(), {x0, y0}), end = call(point.get(), {x1, y1});
  Ref piece_line = call(global<"Line">().get(), {start.get(), end.get()});
  Ref material = getattr(self, id<"material">());
  Ref method = getattr(piece_line.get(), id<"revolve">());
  return call_kw(method.get(), {}, {{id<"material">(), material.get()}});
}

Ref construct_circular_extrusion(const Args& a) {
  PyObject* self = a.self();
  Ref axis_line = getattr(self, id<"_line">());
  Ref length = getattr(axis_line.get(), id<"length">());
  Ref radius = getattr(self, id<"radius">());
  Ref zero = new_int(0);
  Ref cylinder = revolved(self, radius.get(), zero.get(), radius.get(), length.get());
  Ref bottom = revolved(self, zero.get(), zero.get(), radius.get(), zero.get());
  Ref top = revolved(self, radius.get(), length.get(), zero.get(), length.get());
  Ref pieces = check(PyDict_New());
  check(PyDict_SetItemString(pieces.get(), "cylinder", cylinder.get()));
  Ref open_ends = getattr(self, id<"_open_ends">());
  if (truth(open_ends.get())) return pieces;
  check(PyDict_SetItemString(pieces.get(), "top", top.get()));
  check(PyDict_SetItemString(pieces.get(), "bottom", bottom.get()));
  return pieces;
}
constexpr Member construct_circular_extrusion_member =
    method("_construct_circular_extrusion", "() -> Dict[str, LineRevolve]", construct_circular_extrusion,
           "The pieces by name: the cylinder, and the top and bottom discs unless the ends are open.");

Ref to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref scene = new_scene();
  Ref pieces = call_method(self, id<"_construct_circular_extrusion">(), {});
  Ref items = call_method(pieces.get(), id<"items">(), {});
  Ref it = check(PyObject_GetIter(items.get()));
  while (Ref item = Ref::steal(PyIter_Next(it.get()))) {
    Ref entry[2];
    unpack(item.get(), 2, entry);
    Ref own_name = getattr(self, id<"_name">());
    Ref name = piece_name(own_name.get(), entry[0].get());
    Ref geometry = call_method(entry[1].get(), id<"_to_trimesh">(), {});
    Ref transform = getattr(entry[1].get(), id<"_transformation">());
    add_to_scene(scene.get(), geometry.get(), transform.get(), name.get());
  }
  if (PyErr_Occurred()) throw PyError{};
  return scene;
}
constexpr Member to_trimesh_member = method("_to_trimesh", "() -> trimesh.Scene", to_trimesh,
                                            "A scene of the pieces, each named circular-extrusion-<piece>.");

}  // namespace

void define_circular_extrusion() {
  define_class(
      "CircularExtrusion", {global<"TransformableObject">().get()},
      "A round bar of a given diameter along a line, made of revolved pieces at export.",
      {init_member, line_member, length_member, diameter_member, radius_member, cross_sectional_area_member,
       name_member, generate_transformation_matrix_member, construct_circular_extrusion_member, to_trimesh_member},
      &guard);
}

}  // namespace ostrel
