// Vector: the free 3-vector with public, writable x, y, z attributes. Every operation
// reads the attributes afresh (nothing is cached) and reads `other` by attribute
// only, so any object with x, y and z serves; new vectors are made through
// self.__class__ so that subclasses survive arithmetic.
#include "foundations/vector.hpp"

#include "foundations/coordinate_fields.hpp"

namespace ostrel {

namespace {

using F = VectorFields;
using kernel::Vec3;
constexpr auto x_of = F::x_of, y_of = F::y_of, z_of = F::z_of;
const ClassGuard& guard = F::guard;

// The parameters of the binary operations.
enum class Other { self, other };

// A float object of `o`'s value, as the constructor stores it.
Ref as_float(PyObject* o) { return PyFloat_CheckExact(o) ? Ref::borrow(o) : new_float(as_double(o)); }

// self.__class__(x, y, z); made directly when that is the module's own Vector.
Ref make_like(PyObject* self, PyObject* x, PyObject* y, PyObject* z) {
  if (!guard.admits(self)) return call(reinterpret_cast<PyObject*>(Py_TYPE(self)), {x, y, z});
  Ref fx = as_float(x), fy = as_float(y), fz = as_float(z);
  return new_instance(guard, {{id<"x">(), fx.get()}, {id<"y">(), fy.get()}, {id<"z">(), fz.get()}});
}

double plus(double a, double b) { return a + b; }
double minus(double a, double b) { return a - b; }

Ref repr(const Args& a) {
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return check(PyUnicode_FromFormat("Vector(%S, %S, %S)", x.get(), y.get(), z.get()));
}
constexpr Member repr_member = method("__repr__", "() -> str", repr, "Vector(x, y, z).");

Ref negative(const Args& a) {
  if (Ref r = native_path(F::natives, [&] {
        const auto c = F::read(a.self());
        return c ? F::fresh({-c->x, -c->y, -c->z}) : Ref{};
      }))
    return r;
  Ref x = x_of(a.self());
  Ref nx = neg(x.get());
  Ref y = y_of(a.self());
  Ref ny = neg(y.get());
  Ref z = z_of(a.self());
  Ref nz = neg(z.get());
  return make_like(a.self(), nx.get(), ny.get(), nz.get());
}
constexpr Member negative_member = method("__neg__", "() -> Vector", negative, "The opposite vector.");

// self.c <op> other.c for each coordinate, read and computed in the order written.
template <Ref (*op)(PyObject*, PyObject*), double (*op_double)(double, double)>
Ref componentwise(const Args& a) {
  PyObject *self = a.self(), *other = a[Other::other];
  if (Ref r = native_path(F::natives, [&] {
        const auto s = F::read(self), o = s ? F::read(other) : std::nullopt;
        return o ? F::fresh({op_double(s->x, o->x), op_double(s->y, o->y), op_double(s->z, o->z)}) : Ref{};
      }))
    return r;
  Ref sx = x_of(self), ox = x_of(other);
  Ref x = op(sx.get(), ox.get());
  Ref sy = y_of(self), oy = y_of(other);
  Ref y = op(sy.get(), oy.get());
  Ref sz = z_of(self), oz = z_of(other);
  Ref z = op(sz.get(), oz.get());
  return make_like(self, x.get(), y.get(), z.get());
}
constexpr Member add_member =
    method("__add__", "(other: Vector) -> Vector", componentwise<add, plus>, "Sum of two vectors.");
constexpr Member sub_member =
    method("__sub__", "(other: Vector) -> Vector", componentwise<sub, minus>, "Difference of two vectors.");

Ref multiply(const Args& a) {
  const double f = a.num(Other::other);
  if (Ref r = native_path(F::natives, [&] {
        const auto c = F::read(a.self());
        return c ? F::fresh({c->x * f, c->y * f, c->z * f}) : Ref{};
      }))
    return r;
  Ref factor = new_float(f);
  Ref sx = x_of(a.self());
  Ref x = mul(sx.get(), factor.get());
  Ref sy = y_of(a.self());
  Ref y = mul(sy.get(), factor.get());
  Ref sz = z_of(a.self());
  Ref z = mul(sz.get(), factor.get());
  return make_like(a.self(), x.get(), y.get(), z.get());
}
constexpr Member multiply_member =
    method("__mul__", "(other: float) -> Vector", multiply, "The vector scaled by a number.");

Ref rmultiply(const Args& a) {
  if (guard.admits(a.self())) return multiply(a);  // __mul__ is still the module's own
  Ref factor = new_float(a.num(Other::other));
  return call_method(a.self(), id<"__mul__">(), {factor.get()});
}
constexpr Member rmultiply_member =
    method("__rmul__", "(other: float) -> Vector", rmultiply, "The vector scaled by a number.");

Ref squared_magnitude(const Args& a) {
  if (Ref r = native_path(F::natives, [&] {
        const auto c = F::read(a.self());
        return c ? new_float(kernel::squared_magnitude(*c)) : Ref{};
      }))
    return r;
  Ref x = x_of(a.self());
  Ref x2 = power(x.get(), 2);
  Ref y = y_of(a.self());
  Ref y2 = power(y.get(), 2);
  Ref xy = add(x2.get(), y2.get());
  Ref z = z_of(a.self());
  Ref z2 = power(z.get(), 2);
  return add(xy.get(), z2.get());
}
constexpr Member squared_magnitude_member =
    property("squared_magnitude", "() -> float", squared_magnitude, "x**2 + y**2 + z**2.");

Ref magnitude(const Args& a) {
  if (Ref r = native_path(F::natives, [&] {
        const auto c = F::read(a.self());
        return c ? new_float(kernel::magnitude(*c)) : Ref{};
      }))
    return r;
  Ref squared = getattr(a.self(), id<"squared_magnitude">());
  return new_float(kernel::math_sqrt(as_double(squared.get())));
}
constexpr Member magnitude_member = property("magnitude", "() -> float", magnitude, "Length of the vector.");

Ref coordinates(const Args& a) {
  Ref x = x_of(a.self()), y = y_of(a.self()), z = z_of(a.self());
  return tuple({x.get(), y.get(), z.get()});
}
constexpr Member coordinates_member =
    property("coordinates", "() -> Tuple[float, float, float]", coordinates, "The tuple (x, y, z).");

Ref normalize(const Args& a) {
  if (Ref r = native_path(F::natives, [&] {
        const auto c = F::read(a.self());
        return c ? F::fresh(kernel::normalize(*c)) : Ref{};
      }))
    return r;
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
constexpr Member normalize_member =
    method("normalize", "() -> Vector", normalize,
           "The vector of length one in the same direction; ValueError for a null vector.");

Ref dot(const Args& a) {
  PyObject *self = a.self(), *other = a[Other::other];
  if (Ref r = native_path(F::natives, [&] {
        const auto s = F::read(self), o = s ? F::read(other) : std::nullopt;
        return o ? new_float(s->x * o->x + s->y * o->y + s->z * o->z) : Ref{};
      }))
    return r;
  Ref sx = x_of(self), ox = x_of(other);
  Ref xx = mul(sx.get(), ox.get());
  Ref sy = y_of(self), oy = y_of(other);
  Ref yy = mul(sy.get(), oy.get());
  Ref partial = add(xx.get(), yy.get());
  Ref sz = z_of(self), oz = z_of(other);
  Ref zz = mul(sz.get(), oz.get());
  return add(partial.get(), zz.get());
}
constexpr Member dot_member = method("dot", "(other: Vector) -> float", dot, "Dot product with another vector.");

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
  PyObject *self = a.self(), *other = a[Other::other];
  if (Ref r = native_path(F::natives, [&] {
        const auto s = F::read(self), o = s ? F::read(other) : std::nullopt;
        return o ? F::fresh({s->y * o->z - s->z * o->y, s->z * o->x - s->x * o->z, s->x * o->y - s->y * o->x})
                 : Ref{};
      }))
    return r;
  Ref x = difference_of_products(self, y_of, other, z_of, z_of, y_of);
  Ref y = difference_of_products(self, z_of, other, x_of, x_of, z_of);
  Ref z = difference_of_products(self, x_of, other, y_of, y_of, x_of);
  return make_like(self, x.get(), y.get(), z.get());
}
constexpr Member cross_member =
    method("cross", "(other: Vector) -> Vector", cross, "Cross product with another vector.");

}  // namespace

const ClassGuard& vector_class() { return F::guard; }
const Natives& vector_natives() { return F::natives; }
std::optional<Vec3> read_vector(PyObject* vector) { return F::read(vector); }
Ref make_vector(Vec3 v) { return F::make(v); }

void define_vector() {
  define_class(
      "Vector", {},
      "A free vector in 3D space with public, writable coordinates x, y and z.\n\n"
      "Supports negation (-v), addition (v + w), subtraction (v - w), multiplication\n"
      "and reverse multiplication by a number (v * 2, 2 * v), the dot product v.dot(w)\n"
      "and the cross product v.cross(w). Equality is by tolerance.",
      {method("__init__", F::init_signature, F::init, "Make a vector from its coordinates; z defaults to 0.0."),
       method("__getitem__", F::getitem_signature, F::get_coordinate,
              "Coordinate 0, 1 or 2; negative indices do not wrap."),
       method("__iter__", F::iter_signature, F::iter, "Iterate over x, y and z."),
       method("__eq__", F::eq_signature, F::eq, "Equal by tolerance to another Vector."), repr_member, negative_member,
       add_member, sub_member, multiply_member, rmultiply_member, squared_magnitude_member, magnitude_member,
       coordinates_member, normalize_member, dot_member, cross_member},
      &F::guard);
  F::install_slots();
}

}  // namespace ostrel
