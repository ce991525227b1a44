// Point: an immutable position in 3D space, the base of every curve, surface and solid.
// Coordinates live in _x, _y, _z behind read-only properties; equality by tolerance is
// the module's meaning of coinciding points.
#include "foundations/point.hpp"

#include "foundations/arrays.hpp"
#include "foundations/coordinate_fields.hpp"
#include "foundations/vector.hpp"

namespace ostrel {

namespace {

using F = PointFields;
constexpr auto x_of = F::x_of, y_of = F::y_of, z_of = F::z_of;

// An item that the float conversion of Point.__init__ takes without running code of
// the caller's: a float (the host reads the value of a float subclass directly), an
// exact int that fits, or a bool.
std::optional<double> plain_number(PyObject* o) {
  if (PyFloat_Check(o)) return PyFloat_AS_DOUBLE(o);
  if (PyLong_CheckExact(o) || PyBool_Check(o)) {
    const double v = PyLong_AsDouble(o);
    if (v == -1.0 && PyErr_Occurred()) {
      PyErr_Clear();
      return std::nullopt;
    }
    return v;
  }
  return std::nullopt;
}

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
constexpr Member repr_member =
    method("__repr__", "() -> str", repr, "Point(x, y, z) with each coordinate in the format .3e.");

Ref get_x(const Args& a) { return x_of(a.self()); }
Ref get_y(const Args& a) { return y_of(a.self()); }
Ref get_z(const Args& a) { return z_of(a.self()); }
constexpr Member x_member = property("x", "() -> float", get_x, "The first coordinate.");
constexpr Member y_member = property("y", "() -> float", get_y, "The second coordinate.");
constexpr Member z_member = property("z", "() -> float", get_z, "The third coordinate.");

Ref coordinates(const Args& a) {
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return float_array({x.get(), y.get(), z.get()});
}
constexpr Member coordinates_member =
    property("coordinates", "() -> np.ndarray", coordinates, "A new array of x, y and z.");

Ref copy(const Args& a) {
  if (Ref r = native_path(F::natives, [&] {
        const auto p = F::read(a.self());
        return p ? F::fresh(*p) : Ref{};
      }))
    return r;
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return call(reinterpret_cast<PyObject*>(Py_TYPE(a.self())), {x.get(), y.get(), z.get()});
}
constexpr Member copy_member = method("copy", "() -> Point", copy, "A new point at the same place, of the same class.");

enum class CoincidesWith { self, other };
Ref coincides_with(const Args& a) { return compare(a.self(), a[CoincidesWith::other], Py_EQ); }
constexpr Member coincides_with_member =
    method("coincides_with", "(other: Point) -> bool", coincides_with, "Whether the two points are equal.");

enum class VectorTo { self, point };
Ref vector_to(const Args& a) {
  PyObject* point = a[VectorTo::point];
  if (Ref r = native_path(F::natives, [&] {
        const auto to = F::read(point), from = to ? F::read(a.self()) : std::nullopt;
        return from ? make_vector(kernel::vector_between(*from, *to)) : Ref{};
      }))
    return r;
  Ref px = getitem(point, 0), sx = x_of(a.self());
  Ref dx = sub(px.get(), sx.get());
  Ref py = getitem(point, 1), sy = y_of(a.self());
  Ref dy = sub(py.get(), sy.get());
  Ref pz = getitem(point, 2), sz = z_of(a.self());
  Ref dz = sub(pz.get(), sz.get());
  return call(global<"Vector">().get(), {dx.get(), dy.get(), dz.get()});
}
constexpr Member vector_to_member =
    method("vector_to", "(point: Union[Tuple[float, float, float], Point]) -> Vector", vector_to,
           "The Vector from this point to another point or a sequence of three numbers.");

enum class LocalCoordinates { self, local_origin, spherical };
Ref get_local_coordinates(const Args& a) {
  Ref array = getattr(global<"np">().get(), id<"array">());
  Ref own = check(PySequence_Tuple(a.self()));
  Ref own_array = call(array.get(), {own.get()});
  Ref array_again = getattr(global<"np">().get(), id<"array">());
  Ref origin = check(PySequence_Tuple(a[LocalCoordinates::local_origin]));
  Ref origin_array = call(array_again.get(), {origin.get()});
  Ref local = sub(own_array.get(), origin_array.get());
  if (truth(a[LocalCoordinates::spherical])) return call(global<"cartesian_to_spherical">().get(), {local.get()});
  return local;
}
constexpr Member get_local_coordinates_member =
    method("get_local_coordinates",
           "(local_origin: Union[Tuple[float, float, float], Point], spherical: bool = False) -> np.ndarray",
           get_local_coordinates,
           "Coordinates relative to local_origin: cartesian, or (r, theta, phi) when spherical is true.");

}  // namespace

const ClassGuard& point_class() { return F::guard; }
const Natives& point_natives() { return F::natives; }
std::optional<Vec3> read_point(PyObject* point) { return F::read(point); }
Ref make_point(Vec3 p) { return F::make(p); }

std::optional<Vec3> read_point_like(PyObject* point) {
  if (!PyTuple_CheckExact(point) && !PyList_CheckExact(point)) return read_point(point);
  // Items of an exact tuple or list that are plain numbers: reading them runs no code,
  // so the size cannot change under the loop.
  const Py_ssize_t n = PySequence_Fast_GET_SIZE(point);
  if (n != 2 && n != 3) return std::nullopt;
  double c[3] = {0.0, 0.0, 0.0};
  for (Py_ssize_t i = 0; i < n; ++i) {
    const auto v = plain_number(PySequence_Fast_GET_ITEM(point, i));
    if (!v) return std::nullopt;
    c[i] = *v;
  }
  return Vec3{c[0], c[1], c[2]};
}

void define_point() {
  define_class(
      "Point", {},
      "A point made from coordinates X, Y and Z; it forms the basis of many structural 2D\n"
      "and 3D objects. Point(1, 2) makes a 2D point, with z equal to 0.",
      {method("__init__", F::init_signature, F::init, "Make a point; z defaults to 0.0."),
       method("__getitem__", F::getitem_signature, F::get_coordinate,
              "Coordinate 0, 1 or 2; negative indices do not wrap."),
       method("__iter__", F::iter_signature, F::iter, "Iterate over x, y and z, so that a point can be unpacked."),
       method("__eq__", F::eq_signature, F::eq, "Coinciding by tolerance with another Point."), repr_member, x_member,
       y_member, z_member, coordinates_member, copy_member, coincides_with_member, vector_to_member,
       get_local_coordinates_member},
      &F::guard);
  F::install_slots();
}

}  // namespace ostrel
