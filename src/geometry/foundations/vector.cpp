// Vector: the free 3-vector with public, writable x, y, z attributes. Every operation
// reads the attributes afresh (nothing is cached) and reads `other` by attribute
// only, so any object with x, y and z serves; new vectors are made through
// self.__class__ so that subclasses survive arithmetic.
#include "foundations/vector.hpp"

#include "foundations/coordinate_fields.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

using F = VectorFields;
constexpr auto x_of = F::x_of, y_of = F::y_of, z_of = F::z_of;
constexpr auto floats_of = F::floats_of;
const ClassGuard& guard = F::guard;

// A float object of `o`'s value, as the constructor stores it.
Ref as_float(PyObject* o) { return PyFloat_CheckExact(o) ? Ref::borrow(o) : new_float(as_double(o)); }

// self.__class__(x, y, z); made directly when that is the module's own Vector.
Ref make_like(PyObject* self, PyObject* x, PyObject* y, PyObject* z) {
  if (!guard.admits(self)) return call(reinterpret_cast<PyObject*>(Py_TYPE(self)), {x, y, z});
  Ref fx = as_float(x), fy = as_float(y), fz = as_float(z);
  return new_instance(guard, {{id<"x">(), fx.get()}, {id<"y">(), fy.get()}, {id<"z">(), fz.get()}});
}

Ref new_vector(double x, double y, double z) { return F::fresh(x, y, z); }

double plus(double a, double b) { return a + b; }
double minus(double a, double b) { return a - b; }

Ref repr(const Args& a) {
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return check(PyUnicode_FromFormat("Vector(%S, %S, %S)", x.get(), y.get(), z.get()));
}

Ref negative(const Args& a) {
  if (double c[3]; floats_of(a.self(), c)) return new_vector(-c[0], -c[1], -c[2]);
  Ref x = x_of(a.self());
  Ref nx = neg(x.get());
  Ref y = y_of(a.self());
  Ref ny = neg(y.get());
  Ref z = z_of(a.self());
  Ref nz = neg(z.get());
  return make_like(a.self(), nx.get(), ny.get(), nz.get());
}

// self.c <op> other.c for each coordinate, read and computed in the order written.
template <Ref (*op)(PyObject*, PyObject*), double (*op_double)(double, double)>
Ref componentwise(const Args& a) {
  PyObject *self = a.self(), *other = a[1];
  double s[3], o[3];
  if (floats_of(self, s) && floats_of(other, o))
    return new_vector(op_double(s[0], o[0]), op_double(s[1], o[1]), op_double(s[2], o[2]));
  Ref sx = x_of(self), ox = x_of(other);
  Ref x = op(sx.get(), ox.get());
  Ref sy = y_of(self), oy = y_of(other);
  Ref y = op(sy.get(), oy.get());
  Ref sz = z_of(self), oz = z_of(other);
  Ref z = op(sz.get(), oz.get());
  return make_like(self, x.get(), y.get(), z.get());
}

Ref multiply(const Args& a) {
  const double f = a.num(1);
  if (double c[3]; floats_of(a.self(), c)) return new_vector(c[0] * f, c[1] * f, c[2] * f);
  Ref factor = new_float(a.num(1));
  Ref sx = x_of(a.self());
  Ref x = mul(sx.get(), factor.get());
  Ref sy = y_of(a.self());
  Ref y = mul(sy.get(), factor.get());
  Ref sz = z_of(a.self());
  Ref z = mul(sz.get(), factor.get());
  return make_like(a.self(), x.get(), y.get(), z.get());
}

Ref rmultiply(const Args& a) {
  if (guard.admits(a.self())) return multiply(a);  // __mul__ is still the module's own
  Ref factor = new_float(a.num(1));
  return call_method(a.self(), id<"__mul__">(), {factor.get()});
}

double squared_magnitude_of(const double* c) {
  return float_pow(c[0], 2.0) + float_pow(c[1], 2.0) + float_pow(c[2], 2.0);
}

Ref squared_magnitude(const Args& a) {
  if (double c[3]; floats_of(a.self(), c)) return new_float(squared_magnitude_of(c));
  Ref x = x_of(a.self());
  Ref x2 = square(x.get());
  Ref y = y_of(a.self());
  Ref y2 = square(y.get());
  Ref xy = add(x2.get(), y2.get());
  Ref z = z_of(a.self());
  Ref z2 = square(z.get());
  return add(xy.get(), z2.get());
}

Ref magnitude(const Args& a) {
  if (double c[3]; floats_of(a.self(), c)) return new_float(math_sqrt(squared_magnitude_of(c)));
  Ref squared = getattr(a.self(), id<"squared_magnitude">());
  return new_float(math_sqrt(as_double(squared.get())));
}

Ref coordinates(const Args& a) {
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return tuple({x.get(), y.get(), z.get()});
}

Ref normalize(const Args& a) {
  if (double c[3]; floats_of(a.self(), c)) {
    const double magnitude = math_sqrt(squared_magnitude_of(c));
    if (magnitude == 0.0) {
      PyErr_SetString(PyExc_ZeroDivisionError, "float division by zero");
      raise_from(PyExc_ValueError, "Null vector can't be normalized");
    }
    return new_vector(c[0] / magnitude, c[1] / magnitude, c[2] / magnitude);
  }
  Ref magnitude = getattr(a.self(), id<"magnitude">());
  try {
    Ref x = x_of(a.self());
    Ref nx = div(x.get(), magnitude.get());
    Ref y = y_of(a.self());
    Ref ny = div(y.get(), magnitude.get());
    Ref z = z_of(a.self());
    Ref nz = div(z.get(), magnitude.get());
    return make_like(a.self(), nx.get(), ny.get(), nz.get());
  } catch (const PyError&) {
    if (!PyErr_ExceptionMatches(PyExc_ZeroDivisionError)) throw;
    raise_from(PyExc_ValueError, "Null vector can't be normalized");
  }
}

Ref dot(const Args& a) {
  PyObject *self = a.self(), *other = a[1];
  double s[3], o[3];
  if (floats_of(self, s) && floats_of(other, o)) return new_float(s[0] * o[0] + s[1] * o[1] + s[2] * o[2]);
  Ref sx = x_of(self), ox = x_of(other);
  Ref xx = mul(sx.get(), ox.get());
  Ref sy = y_of(self), oy = y_of(other);
  Ref yy = mul(sy.get(), oy.get());
  Ref partial = add(xx.get(), yy.get());
  Ref sz = z_of(self), oz = z_of(other);
  Ref zz = mul(sz.get(), oz.get());
  return add(partial.get(), zz.get());
}

// p * q - r * s, with p, q, r, s read in that order.
Ref difference_of_products(PyObject* first, Ref (*p)(PyObject*), PyObject* second, Ref (*q)(PyObject*),
                           Ref (*r)(PyObject*), Ref (*s)(PyObject*)) {
  Ref pv = p(first), qv = q(second);
  Ref left = mul(pv.get(), qv.get());
  Ref rv = r(first), sv = s(second);
  Ref right = mul(rv.get(), sv.get());
  return sub(left.get(), right.get());
}

Ref cross(const Args& a) {
  PyObject *self = a.self(), *other = a[1];
  double s[3], o[3];
  if (floats_of(self, s) && floats_of(other, o))
    return new_vector(s[1] * o[2] - s[2] * o[1], s[2] * o[0] - s[0] * o[2], s[0] * o[1] - s[1] * o[0]);
  Ref x = difference_of_products(self, y_of, other, z_of, z_of, y_of);
  Ref y = difference_of_products(self, z_of, other, x_of, x_of, z_of);
  Ref z = difference_of_products(self, x_of, other, y_of, y_of, x_of);
  return make_like(self, x.get(), y.get(), z.get());
}

}  // namespace

const ClassGuard& vector_class() { return F::guard; }
Ref make_vector(double x, double y, double z) { return F::make(x, y, z); }
Vec3 vector_coordinates(PyObject* vector) { return F::coordinates(vector); }

void define_vector() {
  Ref cls = ClassBuilder("Vector", {},
               "A free vector in 3D space with public, writable coordinates x, y and z.\n\n"
               "Supports negation (-v), addition (v + w), subtraction (v - w), multiplication\n"
               "and reverse multiplication by a number (v * 2, 2 * v), the dot product v.dot(w)\n"
               "and the cross product v.cross(w). Equality is by tolerance.")
      .method("__init__", "(x: float, y: float, z: float = 0.0)", F::init,
              "Make a vector from its coordinates; z defaults to 0.0.")
      .method("__getitem__", "(index: int) -> float", F::get_coordinate, "Coordinate 0, 1 or 2; negative indices do not wrap.")
      .method("__iter__", "() -> Iterator", F::iter, "Iterate over x, y and z.")
      .method("__eq__", "(other: object) -> bool", F::eq, "Equal by tolerance to another Vector.")
      .method("__repr__", "() -> str", repr, "Vector(x, y, z).")
      .method("__neg__", "() -> Vector", negative, "The opposite vector.")
      .method("__add__", "(other: Vector) -> Vector", componentwise<add, plus>, "Sum of two vectors.")
      .method("__sub__", "(other: Vector) -> Vector", componentwise<sub, minus>, "Difference of two vectors.")
      .method("__mul__", "(other: float) -> Vector", multiply, "The vector scaled by a number.")
      .method("__rmul__", "(other: float) -> Vector", rmultiply, "The vector scaled by a number.")
      .property("squared_magnitude", "() -> float", squared_magnitude, "x**2 + y**2 + z**2.")
      .property("magnitude", "() -> float", magnitude, "Length of the vector.")
      .property("coordinates", "() -> Tuple[float, float, float]", coordinates, "The tuple (x, y, z).")
      .method("normalize", "() -> Vector", normalize,
              "The vector of length one in the same direction; ValueError for a null vector.")
      .method("dot", "(other: Vector) -> float", dot, "Dot product with another vector.")
      .method("cross", "(other: Vector) -> Vector", cross, "Cross product with another vector.")
      .build();
  F::guard.set(cls.get());
}

}  // namespace ostrel
