// CartesianAxes: a Group of three thin round bars along the positive global directions
// from an origin, red for x, green for y and blue for z, to show how a scene is turned.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

// CircularExtrusion(axis_diameter, Line(origin, tip), material=Material("line", color=Color(r, g, b)))
Ref bar(PyObject* origin, PyObject* tip, PyObject* diameter, long red, long green, long blue) {
  Ref line = call(global<"Line">().get(), {origin, tip});
  Ref r = new_int(red), g = new_int(green), b = new_int(blue);
  Ref color = call(global<"Color">().get(), {r.get(), g.get(), b.get()});
  Ref name = new_str("line");
  Ref material = call_kw(global<"Material">().get(), {name.get()}, {{id<"color">(), color.get()}});
  return call_kw(global<"CircularExtrusion">().get(), {diameter, line.get()}, {{id<"material">(), material.get()}});
}

// Point(origin.x + dx, origin.y + dy, origin.z + dz), with one of the three offsets the length.
Ref tip(PyObject* origin, PyObject* length, int along) {
  Ref c[3] = {getattr(origin, id<"x">()), getattr(origin, id<"y">()), getattr(origin, id<"z">())};
  c[along] = add(c[along].get(), length);
  return call(global<"Point">().get(), {c[0].get(), c[1].get(), c[2].get()});
}

enum class Init { self, origin, axis_length, axis_diameter };
Ref init(const Args& a) {
  PyObject* origin = a[Init::origin];
  Ref length = new_float(a.num(Init::axis_length)), diameter = new_float(a.num(Init::axis_diameter));
  Ref x_tip = tip(origin, length.get(), 0);
  Ref x_axis = bar(origin, x_tip.get(), diameter.get(), 255, 0, 0);
  Ref y_tip = tip(origin, length.get(), 1);
  Ref y_axis = bar(origin, y_tip.get(), diameter.get(), 0, 255, 0);
  Ref z_tip = tip(origin, length.get(), 2);
  Ref z_axis = bar(origin, z_tip.get(), diameter.get(), 0, 0, 255);
  Ref axes = list({x_axis.get(), y_axis.get(), z_axis.get()});
  Ref parent = super_of(guard.cls(), a.self());
  call_method(parent.get(), id<"__init__">(), {axes.get()});
  return none();
}
constexpr Member init_member =
    method("__init__", "(origin: Point = Point(0, 0, 0), axis_length: float = 1, axis_diameter: float = 0.05)", init,
           "Three bars of axis_length and axis_diameter from origin along +x (red), +y (green) and +z (blue).");

}  // namespace

void define_cartesian_axes() {
  define_class("CartesianAxes", {global<"Group">().get()},
               "The three global axes as red, green and blue round bars from an origin, to show how a scene\n"
               "is turned.",
               {init_member}, &guard);
}

}  // namespace ostrel
