// Point: an immutable position in 3D space, the base of every curve, surface and solid.
// Coordinates live in _x, _y, _z behind read-only properties; equality by tolerance is
// the module's meaning of coinciding points.
#include "foundations/point.hpp"

#include "foundations/arrays.hpp"
#include "foundations/coordinate_fields.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "foundations/vector.hpp"

namespace ostrel {

namespace {

using F = PointFields;
constexpr auto x_of = F::x_of, y_of = F::y_of, z_of = F::z_of;
constexpr auto floats_of = F::floats_of;

Ref repr(const Args& a) {
  Ref format = new_str(".3e");
  Ref x = x_of(a.self());
  Ref fx = check(PyObject_Format(x.get(), format.get()));
  Ref y = y_of(a.self());
  Ref fy = check(PyObject_Format(y.get(), format.get()));
  Ref z = z_of(a.self());
  Ref fz = check(PyObject_Format(z.get(), format.get()));
  return check(PyUnicode_FromFormat("Point(%U, %U, %U)", fx.get(), fy.get(), fz.get()));
}

Ref get_x(const Args& a) { return x_of(a.self()); }
Ref get_y(const Args& a) { return y_of(a.self()); }
Ref get_z(const Args& a) { return z_of(a.self()); }

Ref coordinates(const Args& a) {
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return float_array({x.get(), y.get(), z.get()});
}

Ref copy(const Args& a) {
  if (double c[3]; floats_of(a.self(), c)) return F::fresh(c[0], c[1], c[2]);
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return call(reinterpret_cast<PyObject*>(Py_TYPE(a.self())), {x.get(), y.get(), z.get()});
}

Ref coincides_with(const Args& a) { return check(PyObject_RichCompare(a.self(), a[1], Py_EQ)); }

Ref vector_to(const Args& a) {
  PyObject* point = a[1];
  double to[3], from[3];
  if (floats_of(point, to) && floats_of(a.self(), from))
    return make_vector(to[0] - from[0], to[1] - from[1], to[2] - from[2]);
  Ref px = getitem(point, 0), sx = x_of(a.self());
  Ref dx = sub(px.get(), sx.get());
  Ref py = getitem(point, 1), sy = y_of(a.self());
  Ref dy = sub(py.get(), sy.get());
  Ref pz = getitem(point, 2), sz = z_of(a.self());
  Ref dz = sub(pz.get(), sz.get());
  return call(global<"Vector">().get(), {dx.get(), dy.get(), dz.get()});
}

Ref get_local_coordinates(const Args& a) {
  Ref array = getattr(global<"np">().get(), id<"array">());
  Ref own = check(PySequence_Tuple(a.self()));
  Ref own_array = call(array.get(), {own.get()});
  Ref array_again = getattr(global<"np">().get(), id<"array">());
  Ref origin = check(PySequence_Tuple(a[1]));
  Ref origin_array = call(array_again.get(), {origin.get()});
  Ref local = sub(own_array.get(), origin_array.get());
  if (truth(a[2])) return call(global<"cartesian_to_spherical">().get(), {local.get()});
  return local;
}

}  // namespace

const ClassGuard& point_class() { return F::guard; }
Ref make_point(double x, double y, double z) { return F::make(x, y, z); }
Vec3 point_coordinates(PyObject* point) { return F::coordinates(point); }

void define_point() {
  Ref cls = ClassBuilder("Point", {},
               "A point made from coordinates X, Y and Z; it forms the basis of many structural 2D\n"
               "and 3D objects. Point(1, 2) makes a 2D point, with z equal to 0.")
      .method("__init__", "(x: float, y: float, z: float = 0.0)", F::init, "Make a point; z defaults to 0.0.")
      .method("__getitem__", "(index: int) -> float", F::get_coordinate, "Coordinate 0, 1 or 2; negative indices do not wrap.")
      .method("__iter__", "() -> Iterator", F::iter, "Iterate over x, y and z, so that a point can be unpacked.")
      .method("__eq__", "(other: object) -> bool", F::eq, "Coinciding by tolerance with another Point.")
      .method("__repr__", "() -> str", repr, "Point(x, y, z) with each coordinate in the format .3e.")
      .property("x", "() -> float", get_x, "The first coordinate.")
      .property("y", "() -> float", get_y, "The second coordinate.")
      .property("z", "() -> float", get_z, "The third coordinate.")
      .property("coordinates", "() -> np.ndarray", coordinates, "A new array of x, y and z.")
      .method("copy", "() -> Point", copy, "A new point at the same place, of the same class.")
      .method("coincides_with", "(other: Point) -> bool", coincides_with, "Whether the two points are equal.")
      .method("vector_to", "(point: Union[Tuple[float, float, float], Point]) -> Vector", vector_to,
              "The Vector from this point to another point or a sequence of three numbers.")
      .method("get_local_coordinates",
              "(local_origin: Union[Tuple[float, float, float], Point], spherical: bool = False) -> np.ndarray",
              get_local_coordinates,
              "Coordinates relative to local_origin: cartesian, or (r, theta, phi) when spherical is true.")
      .build();
  F::guard.set(cls.get());
}

}  // namespace ostrel
