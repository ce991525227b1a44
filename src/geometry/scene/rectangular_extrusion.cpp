// RectangularExtrusion, an Extrusion of a rectangle centred on its line, and SquareBeam,
// one standing on the z axis around the origin.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

ClassGuard rectangular_guard;
ClassGuard beam_guard;

Ref point(double x, double y) {
  Ref px = new_float(x), py = new_float(y);
  return call(global<"Point">().get(), {px.get(), py.get()});
}

enum class Init { self, width, height, line, profile_rotation, material };
Ref init(const Args& a) {
  PyObject* self = a.self();
  const double w = a.num(Init::width), h = a.num(Init::height);
  Ref width = new_float(w), height = new_float(h);
  setattr(self, id<"_width">(), width.get());
  setattr(self, id<"_height">(), height.get());
  // Clockwise in plan and closed.
  Ref corners[5] = {point(-w * 0.5, h * 0.5), point(w * 0.5, h * 0.5), point(w * 0.5, -h * 0.5),
                    point(-w * 0.5, -h * 0.5), point(-w * 0.5, h * 0.5)};
  Ref points = list({corners[0].get(), corners[1].get(), corners[2].get(), corners[3].get(), corners[4].get()});
  Ref rotation = new_float(a.num(Init::profile_rotation));
  Ref parent = super_of(rectangular_guard.cls(), self);
  Ref parent_init = getattr(parent.get(), id<"__init__">());
  call_kw(parent_init.get(), {points.get(), a[Init::line], rotation.get()}, {{id<"material">(), a[Init::material]}});
  return none();
}
constexpr Member init_member =
    method("__init__",
           "(width: float, height: float, line: Line, profile_rotation: float = 0.0, *, material: Material = None)",
           init, "A width by height rectangle, centred on `line`, swept along it.");

Ref rectangular_name(const Args&) { return new_str("rectangular-extrusion"); }
constexpr Member name_member = property("_name", "() -> str", rectangular_name, "\"rectangular-extrusion\"");

Ref width(const Args& a) { return getattr(a.self(), id<"_width">()); }
constexpr Member width_member = property("width", "() -> float", width, "The size along local x.");

Ref height(const Args& a) { return getattr(a.self(), id<"_height">()); }
constexpr Member height_member = property("height", "() -> float", height, "The size along local y.");

Ref cross_sectional_area(const Args& a) {
  Ref w = getattr(a.self(), id<"_width">()), h = getattr(a.self(), id<"_height">());
  return mul(w.get(), h.get());
}
constexpr Member cross_sectional_area_member =
    property("cross_sectional_area", "() -> float", cross_sectional_area, "width * height");

Ref inner_volume(const Args& a) {
  Ref area = getattr(a.self(), id<"cross_sectional_area">());
  Ref axis = getattr(a.self(), id<"line">());
  Ref length = getattr(axis.get(), id<"length">());
  return mul(area.get(), length.get());
}
constexpr Member inner_volume_member =
    property("inner_volume", "() -> float", inner_volume, "cross_sectional_area * the line's length");

enum class BeamInit { self, length_x, length_y, length_z, material };
Ref beam_init(const Args& a) {
  PyObject* self = a.self();
  const double z = a.num(BeamInit::length_z);
  Ref zero = new_int(0);
  Ref bottom_z = new_float(-z * 0.5), top_z = new_float(z * 0.5);
  Ref point_class = global<"Point">();
  Ref bottom = call(point_class.get(), {zero.get(), zero.get(), bottom_z.get()});
  Ref top = call(point_class.get(), {zero.get(), zero.get(), top_z.get()});
  Ref line = call(global<"Line">().get(), {bottom.get(), top.get()});
  Ref x = new_float(a.num(BeamInit::length_x)), y = new_float(a.num(BeamInit::length_y));
  Ref parent = super_of(beam_guard.cls(), self);
  Ref parent_init = getattr(parent.get(), id<"__init__">());
  call_kw(parent_init.get(), {x.get(), y.get(), line.get()}, {{id<"material">(), a[BeamInit::material]}});
  return none();
}
constexpr Member beam_init_member =
    method("__init__", "(length_x: float, length_y: float, length_z: float, *, material: Material = None)", beam_init,
           "A box of the three sizes with its centroid at the origin, along the z axis.");

}  // namespace

void define_rectangular_extrusion() {
  define_class(
      "RectangularExtrusion", {global<"Extrusion">().get()},
      "An Extrusion of a width by height rectangle centred on its line.",
      {init_member, name_member, width_member, height_member, cross_sectional_area_member, inner_volume_member},
      &rectangular_guard);
  define_class("SquareBeam", {global<"RectangularExtrusion">().get()},
               "A RectangularExtrusion along the z axis with its centroid at the origin.", {beam_init_member},
               &beam_guard);
}

}  // namespace ostrel
