// Sphere, a uv sphere centred on the origin and placed by its matrix, and Torus, a Group
// of two ArcRevolve pieces: the section circle split into a long and a short arc,
// revolved around the global y-axis. Built once per solid, as written, through the host.
#include <numbers>

#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "scene/default_material.hpp"
#include "scene/hidden_children.hpp"
#include "scene/shared_material.hpp"

namespace ostrel {

namespace {

ClassGuard sphere_guard, torus_guard;
constexpr double pi = std::numbers::pi;

enum class SphereInit { self, centre_point, radius, width_segments, height_segments, material };
Ref sphere_init(const Args& a) {
  PyObject* self = a.self();
  Ref parent = super_of(sphere_guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  PyObject* centre = a[SphereInit::centre_point];
  setattr(self, id<"centre_point">(), centre);
  Ref radius = new_float(a.num(SphereInit::radius));
  setattr(self, id<"radius">(), radius.get());
  Ref width = new_float(a.num(SphereInit::width_segments)), height = new_float(a.num(SphereInit::height_segments));
  setattr(self, id<"width_segments">(), width.get());
  setattr(self, id<"height_segments">(), height.get());
  Ref material = material_or_default(a[SphereInit::material]);
  setattr(self, id<"material">(), material.get());
  Ref zero = new_int(0);
  Ref origin = call(global<"Point">().get(), {zero.get(), zero.get()});
  Ref translation_vector = call_method(origin.get(), id<"vector_to">(), {centre});
  call_method(self, id<"translate">(), {translation_vector.get()});
  return none();
}
constexpr Member sphere_init_member =
    method("__init__",
           "(centre_point: Point, radius: float, width_segments: float = 30.0, height_segments: float = 30.0, "
           "material: Material = None)",
           sphere_init, "A sphere around centre_point; the mesh stays on the origin and the matrix places it.");

Ref radius_of(PyObject* self) { return getattr(self, id<"radius">()); }

Ref diameter(const Args& a) {
  Ref two = new_int(2), r = radius_of(a.self());
  return mul(two.get(), r.get());
}
constexpr Member diameter_member = method("diameter", "() -> float", diameter, "2 * radius");

Ref circumference(const Args& a) {
  Ref two_pi = new_float(2 * pi), r = radius_of(a.self());
  return mul(two_pi.get(), r.get());
}
constexpr Member circumference_member = method("circumference", "() -> float", circumference, "2 * math.pi * radius");

Ref surface_area(const Args& a) {
  Ref four_pi = new_float(4 * pi), r = radius_of(a.self());
  Ref r2 = power(r.get(), 2);
  return mul(four_pi.get(), r2.get());
}
constexpr Member surface_area_member = method("surface_area", "() -> float", surface_area, "4 * math.pi * radius ** 2");

Ref volume(const Args& a) {
  Ref factor = new_float(1.3333333333333333 * pi), r = radius_of(a.self());
  Ref r3 = power(r.get(), 3);
  return mul(factor.get(), r3.get());
}
constexpr Member volume_member = method("volume", "() -> float", volume, "1.3333333333333333 * math.pi * radius ** 3");

Ref sphere_name(const Args&) { return new_str("sphere"); }
constexpr Member sphere_name_member = property("_name", "() -> str", sphere_name, "\"sphere\"");

Ref sphere_to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref material = getattr(self, id<"material">());
  Ref visual = call_method(material.get(), id<"_to_trimesh">(), {});
  Ref creation = getattr(global<"trimesh">().get(), id<"creation">());
  Ref r = radius_of(self);
  Ref width = getattr(self, id<"width_segments">()), height = getattr(self, id<"height_segments">());
  Ref count = tuple({width.get(), height.get()});
  Ref sphere = call_method(creation.get(), id<"uv_sphere">(), {r.get(), count.get()});
  setattr(sphere.get(), id<"visual">(), visual.get());
  return sphere;
}
constexpr Member sphere_to_trimesh_member =
    method("_to_trimesh", "() -> trimesh.Trimesh", sphere_to_trimesh, "A uv sphere mesh on the origin.");

// Torus

enum class TorusInit { self, radius_cross_section, radius_rotation_axis, rotation_angle, material };
Ref torus_init(const Args& a) {
  PyObject* self = a.self();
  Ref r = new_float(a.num(TorusInit::radius_cross_section)), R = new_float(a.num(TorusInit::radius_rotation_axis));
  setattr(self, id<"_radius_cross_section">(), r.get());
  setattr(self, id<"_radius_rotation_axis">(), R.get());
  setattr(self, id<"_rotation_angle">(), a[TorusInit::rotation_angle]);
  Ref material = material_or_default(a[TorusInit::material]);
  setattr(self, id<"_material">(), material.get());
  Ref objects = call_method(self, id<"_construct_torus">(), {});
  Ref parent = super_of(torus_guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {objects.get()});
  return none();
}
constexpr Member torus_init_member =
    method("__init__",
           "(radius_cross_section: float, radius_rotation_axis: float, rotation_angle=2 * math.pi, *, "
           "material: Material = None)",
           torus_init,
           "A ring around the y-axis: a section circle of radius_cross_section whose centre lies\n"
           "radius_rotation_axis from the axis, turned through rotation_angle radians.");

constexpr Member torus_children_member =
    property("children", "() -> List[TransformableObject]", hidden_children, "Hidden: a torus shows no members.");

Ref inner_volume(const Args& a) {
  PyObject* self = a.self();
  Ref pi_object = new_float(pi), two = new_int(2);
  Ref r = getattr(self, id<"_radius_cross_section">());
  Ref pi_r = mul(pi_object.get(), r.get());
  Ref squared = power(pi_r.get(), 2);
  Ref twice = mul(two.get(), squared.get());
  Ref R = getattr(self, id<"_radius_rotation_axis">());
  Ref full_volume = mul(twice.get(), R.get());
  Ref full_turn = new_float(2 * pi);
  Ref share = div(full_volume.get(), full_turn.get());
  Ref angle = getattr(self, id<"_rotation_angle">());
  return mul(share.get(), angle.get());
}
constexpr Member inner_volume_member =
    property("inner_volume", "() -> float", inner_volume, "The volume of the ring, in proportion to the angle.");

constexpr Member material_member =
    property("material", "() -> Material", get_shared_material, "(value: Material) -> None", set_shared_material,
             "The material; setting it reaches both halves.");

Ref torus_name(const Args&) { return new_str("torus"); }
constexpr Member torus_name_member = property("_name", "() -> str", torus_name, "\"torus\"");

// Arc(centre, start, end, short_arc=...).revolve(rotation_angle=..., material=...)
Ref revolved_arc(PyObject* self, PyObject* centre, PyObject* start, PyObject* end, bool short_arc) {
  Ref arc = call_kw(global<"Arc">().get(), {centre, start, end}, {{id<"short_arc">(), short_arc ? Py_True : Py_False}});
  Ref angle = getattr(self, id<"_rotation_angle">());
  Ref material = getattr(self, id<"_material">());
  Ref method = getattr(arc.get(), id<"revolve">());
  return call_kw(method.get(), {}, {{id<"rotation_angle">(), angle.get()}, {id<"material">(), material.get()}});
}

Ref construct_torus(const Args& a) {
  PyObject* self = a.self();
  Ref r = getattr(self, id<"_radius_cross_section">()), R = getattr(self, id<"_radius_rotation_axis">());
  Ref point = global<"Point">();
  Ref zero = new_int(0);
  Ref centre_point = call(point.get(), {R.get(), zero.get()});
  Ref centre_x = getattr(centre_point.get(), id<"x">());
  Ref minus_r = neg(r.get());
  Ref start_point = call(point.get(), {centre_x.get(), minus_r.get()});
  centre_x = getattr(centre_point.get(), id<"x">());
  Ref outer_x = add(centre_x.get(), r.get());
  Ref end_point = call(point.get(), {outer_x.get(), zero.get()});
  // Three quarters of the section from the long arc, the last quarter from the short one.
  Ref bottom_half = revolved_arc(self, centre_point.get(), start_point.get(), end_point.get(), false);
  Ref top_half = revolved_arc(self, centre_point.get(), end_point.get(), start_point.get(), true);
  return list({bottom_half.get(), top_half.get()});
}
constexpr Member construct_torus_member =
    method("_construct_torus", "() -> List[ArcRevolve]", construct_torus, "The two revolved arcs of the section.");

}  // namespace

void define_sphere_torus() {
  define_class("Sphere", {global<"TransformableObject">().get()},
               "A sphere of a radius around a centre point, meshed with width by height segments.",
               {sphere_init_member, diameter_member, circumference_member, surface_area_member, volume_member,
                sphere_name_member, sphere_to_trimesh_member},
               &sphere_guard);
  define_class("Torus", {global<"Group">().get()},
               "A ring: a section circle turned around the global y-axis, as two revolved arcs.",
               {torus_init_member, torus_children_member, inner_volume_member, material_member, torus_name_member,
                construct_torus_member},
               &torus_guard);
}

}  // namespace ostrel
