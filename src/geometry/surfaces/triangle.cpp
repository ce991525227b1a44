// Triangle: three points as `profile` (the caller's objects) and a snapshot of their
// coordinates as `vertices`. `area()` reads the profile, `centroid` and
// `moment_of_inertia` read the vertices.
//
// Each measure has a native path, which reads plain floats and runs the kernel, and
// the documented steps on the Python objects. The native path is taken only where it
// gives the same result: the objects are instances of the module's own classes,
// unchanged, the numbers are exact floats, and every step stays finite. Anything else,
// errors included, comes from the documented steps.
#include "surfaces/triangle.hpp"

#include <cmath>
#include <optional>

#include "foundations/point.hpp"
#include "foundations/vector.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/instance.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"
#include "surfaces/triangle_kernel.hpp"

namespace ostrel {

namespace {

ClassGuard guard;
// Point.vector_to makes a Vector through the module global: still the module's own,
// unchanged class, with its own cross and magnitude.
Natives area_natives{{&vector_class()}};
// The centroid and the second moments read the vertex lists; the moments use NumPy.
Natives vertices_natives;

// `obj.name` is the method of its class, not an attribute of the instance that hides it.
bool unshadowed(PyObject* obj, PyObject* name) {
  Ref bound = getattr(obj, name);
  return PyMethod_Check(bound.get()) && PyMethod_GET_SELF(bound.get()) == obj &&
         PyMethod_GET_FUNCTION(bound.get()) == _PyType_Lookup(Py_TYPE(obj), name);
}

// seq[i], without the int object for the common exact list.
Ref item(PyObject* seq, Py_ssize_t i) {
  if (PyList_CheckExact(seq) && i < PyList_GET_SIZE(seq)) return Ref::borrow(PyList_GET_ITEM(seq, i));
  return getitem(seq, i);
}

bool read_float(PyObject* o, double& out) {
  if (!PyFloat_CheckExact(o)) return false;
  out = PyFloat_AS_DOUBLE(o);
  return true;
}

// vertices[0..2][0..2] as exact floats.
bool read_vertices(PyObject* vertices, Vec3 (&out)[3]) {
  return or_take_steps([&] {
    for (Py_ssize_t i = 0; i < 3; ++i) {
      Ref row = item(vertices, i);
      Ref x = item(row.get(), 0), y = item(row.get(), 1), z = item(row.get(), 2);
      if (!read_float(x.get(), out[i].x) || !read_float(y.get(), out[i].y) || !read_float(z.get(), out[i].z))
        return false;
    }
    return true;
  });
}

Ref np_call(PyObject* name, std::initializer_list<PyObject*> args) {
  Ref function = getattr(global<"np">().get(), name);
  return call(function.get(), args);
}

enum class Init { self, point1, point2, point3 };
Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref profile = list({a[Init::point1], a[Init::point2], a[Init::point3]});
  setattr(self, id<"profile">(), profile.get());
  Ref rows[3];
  int i = 0;
  for (Init p : {Init::point1, Init::point2, Init::point3}) {
    PyObject* point = a[p];
    Ref x = getattr(point, id<"x">()), y = getattr(point, id<"y">()), z = getattr(point, id<"z">());
    rows[i++] = list({x.get(), y.get(), z.get()});
  }
  Ref vertices = list({rows[0].get(), rows[1].get(), rows[2].get()});
  setattr(self, id<"vertices">(), vertices.get());
  return none();
}
constexpr Member init_member = method("__init__", "(point1: Point, point2: Point, point3: Point)", init,
                                      "Make a triangle; the points are not checked.");

// ---- area ----

// profile[0].vector_to(profile[1]).cross(profile[0].vector_to(profile[2])).magnitude / 2
Ref area_through_objects(PyObject* self) {
  Ref profile = getattr(self, id<"profile">());
  Ref p0 = item(profile.get(), 0);
  Ref to_first = getattr(p0.get(), id<"vector_to">());
  Ref p1 = item(profile.get(), 1);
  Ref first = call(to_first.get(), {p1.get()});
  Ref profile_again = getattr(self, id<"profile">());
  Ref p0_again = item(profile_again.get(), 0);
  Ref to_second = getattr(p0_again.get(), id<"vector_to">());
  Ref p2 = item(profile_again.get(), 2);
  Ref second = call(to_second.get(), {p2.get()});
  Ref cross = call_method(first.get(), id<"cross">(), {second.get()});
  Ref magnitude = getattr(cross.get(), id<"magnitude">());
  Ref two = new_int(2);
  return div(magnitude.get(), two.get());
}

Ref area_of(PyObject* self) {
  if (Ref r = native_path(area_natives, [&] {
        std::optional<Vec3> p[3];
        const bool read = or_take_steps([&] {
          Ref profile = getattr(self, id<"profile">());
          Ref p0 = item(profile.get(), 0), p1 = item(profile.get(), 1), p2 = item(profile.get(), 2);
          // Points (of the unchanged class, so with its own vector_to and indexing) holding floats.
          return (p[0] = read_point(p0.get())) && (p[1] = read_point(p1.get())) && (p[2] = read_point(p2.get())) &&
                 unshadowed(p0.get(), id<"vector_to">());
        });
        const auto area = read ? kernel::triangle_area(*p[0], *p[1], *p[2]) : std::nullopt;
        return area ? new_float(*area) : Ref{};
      }))
    return r;
  return area_through_objects(self);
}

Ref area(const Args& a) { return area_of(a.self()); }
constexpr Member area_member = method("area", "() -> float", area, "Area of the triangle in 3D, from `profile`.");

// ---- centroid ----

Ref centroid_through_objects(PyObject* vertices) {
  Ref coordinates[3];
  for (Py_ssize_t j = 0; j < 3; ++j) {
    Ref row0 = item(vertices, 0);
    Ref c0 = item(row0.get(), j);
    Ref row1 = item(vertices, 1);
    Ref c1 = item(row1.get(), j);
    Ref partial = add(c0.get(), c1.get());
    Ref row2 = item(vertices, 2);
    Ref c2 = item(row2.get(), j);
    Ref sum = add(partial.get(), c2.get());
    Ref three = new_float(3.0);
    coordinates[j] = div(sum.get(), three.get());
  }
  return tuple({coordinates[0].get(), coordinates[1].get(), coordinates[2].get()});
}

Ref centroid(const Args& a) {
  Ref vertices = getattr(a.self(), id<"vertices">());
  if (Ref r = native_path(vertices_natives, [&] {
        Vec3 v[3];
        if (!read_vertices(vertices.get(), v)) return Ref{};
        const Vec3 c = kernel::triangle_centroid(v[0], v[1], v[2]);
        Ref x = new_float(c.x), y = new_float(c.y), z = new_float(c.z);
        return tuple({x.get(), y.get(), z.get()});
      }))
    return r;
  return centroid_through_objects(vertices.get());
}
constexpr Member centroid_member =
    property("centroid", "() -> Tuple[float, float, float]", centroid, "The mean of the three vertices.");

// ---- second moments ----

// The documented steps, on the objects: Python floats where the host computes, NumPy
// scalars from np.sqrt on, with NumPy's warnings for a division by zero or an invalid
// square root, and NaN results without an exception.
Ref moments_through_objects(PyObject* area, PyObject* vertices) {
  auto at = [vertices](Py_ssize_t i, Py_ssize_t j) {
    Ref row = item(vertices, i);
    return item(row.get(), j);
  };
  auto difference = [&](Py_ssize_t i, Py_ssize_t k, Py_ssize_t j) {
    Ref left = at(i, j);
    Ref right = at(k, j);
    return sub(left.get(), right.get());
  };
  auto length = [](PyObject* x, PyObject* y) {
    Ref x2 = power(x, 2);
    Ref y2 = power(y, 2);
    Ref sum = add(x2.get(), y2.get());
    return np_call(id<"sqrt">(), {sum.get()});
  };
  Ref thirty_six = new_float(36.0);

  Ref base_x = difference(0, 1, 0);
  Ref base_y = difference(0, 1, 1);
  Ref pi = getattr(global<"np">().get(), id<"pi">());
  Ref angle = np_call(id<"arctan2">(), {base_y.get(), base_x.get()});
  Ref theta = add(pi.get(), angle.get());
  Ref width = length(base_x.get(), base_y.get());
  Ref two = new_float(2.0);
  Ref twice_area = mul(two.get(), area);
  Ref height = div(twice_area.get(), width.get());
  Ref height3 = power(height.get(), 3);
  Ref width_height3 = mul(width.get(), height3.get());
  Ref inertia_base = div(width_height3.get(), thirty_six.get());

  Ref side_1_x = difference(0, 2, 0);
  Ref side_1_y = difference(0, 2, 1);
  Ref length_side_1 = length(side_1_x.get(), side_1_y.get());
  Ref side_2_x = difference(1, 2, 0);
  Ref side_2_y = difference(1, 2, 1);
  Ref length_side_2 = length(side_2_x.get(), side_2_y.get());

  // max(length_side_1, length_side_2): the first unless the second is greater.
  const bool second_greater = check(PyObject_RichCompareBool(length_side_2.get(), length_side_1.get(), Py_GT)) > 0;
  PyObject* longest = second_greater ? length_side_2.get() : length_side_1.get();
  Ref longest2 = power(longest, 2);
  Ref height2 = power(height.get(), 2);
  Ref offset2 = sub(longest2.get(), height2.get());
  Ref offset = np_call(id<"sqrt">(), {offset2.get()});
  Ref a = sub(width.get(), offset.get());

  Ref width_height = mul(width.get(), height.get());
  Ref width2 = power(width.get(), 2);
  Ref a_width = mul(a.get(), width.get());
  Ref partial = sub(width2.get(), a_width.get());
  Ref a2 = power(a.get(), 2);
  Ref factor = add(partial.get(), a2.get());
  Ref product = mul(width_height.get(), factor.get());
  Ref inertia_height = div(product.get(), thirty_six.get());

  // c ** 2 * first + s ** 2 * second, with c and s taken afresh as written.
  auto turned = [&](PyObject* c_name, PyObject* s_name) {
    Ref c = np_call(c_name, {theta.get()});
    Ref c2 = power(c.get(), 2);
    Ref left = mul(c2.get(), inertia_base.get());
    Ref s = np_call(s_name, {theta.get()});
    Ref s2 = power(s.get(), 2);
    Ref right = mul(s2.get(), inertia_height.get());
    return add(left.get(), right.get());
  };
  Ref inertia_x = turned(id<"cos">(), id<"sin">());
  Ref inertia_y = turned(id<"sin">(), id<"cos">());
  return tuple({inertia_x.get(), inertia_y.get()});
}

bool all_finite(const Vec3 (&v)[3], double area) {
  for (const Vec3& p : v)
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return false;
  return std::isfinite(area);
}

// The kernel, with theta's cosine and sine from NumPy itself; empty where a step
// leaves the finite range.
Ref native_moments(const Vec3 (&v)[3], double area) {
  const kernel::PlanVector base = kernel::moment_base(v[0], v[1]);
  Ref pi = getattr(global<"np">().get(), id<"pi">());
  if (!PyFloat_CheckExact(pi.get())) return {};
  Ref base_x = new_float(base.x), base_y = new_float(base.y);
  Ref angle = np_call(id<"arctan2">(), {base_y.get(), base_x.get()});
  Ref theta = add(pi.get(), angle.get());
  Ref c = np_call(id<"cos">(), {theta.get()});
  Ref s = np_call(id<"sin">(), {theta.get()});
  if (!PyFloat_Check(c.get()) || !PyFloat_Check(s.get())) return {};
  const auto m =
      kernel::triangle_moments(v[0], v[1], v[2], area, PyFloat_AS_DOUBLE(c.get()), PyFloat_AS_DOUBLE(s.get()));
  if (!m) return {};
  // NumPy scalars, as the documented steps give them.
  Ref float64 = getattr(global<"np">().get(), id<"float64">());
  Ref x = new_float(m->x), y = new_float(m->y);
  Ref inertia_x = call(float64.get(), {x.get()});
  Ref inertia_y = call(float64.get(), {y.get()});
  return tuple({inertia_x.get(), inertia_y.get()});
}

Ref moment_of_inertia(const Args& a) {
  PyObject* self = a.self();
  const bool own_area = guard.admits(self) && unshadowed(self, id<"area">());
  Ref area = own_area ? area_of(self) : call_method(self, id<"area">(), {});
  Ref vertices = getattr(self, id<"vertices">());
  if (Ref r = native_path(vertices_natives, [&] {
        Vec3 v[3];
        const bool read = PyFloat_CheckExact(area.get()) && read_vertices(vertices.get(), v) &&
                          all_finite(v, PyFloat_AS_DOUBLE(area.get()));
        return read ? native_moments(v, PyFloat_AS_DOUBLE(area.get())) : Ref{};
      }))
    return r;
  return moments_through_objects(area.get(), vertices.get());
}
constexpr Member moment_of_inertia_member =
    property("moment_of_inertia", "() -> Tuple[float, float]", moment_of_inertia,
             "Second moments of area (about x, about y) through the centroid, of the\n"
             "triangle in the xy plane; no product of inertia is taken into account.");

// ---- text ----

Ref repr(const Args& a) {
  Ref profile = getattr(a.self(), id<"profile">());
  Ref p[3];
  unpack(profile.get(), 3, p);
  return check(PyUnicode_FromFormat("<Triangle (%S, %S, %S)>", p[0].get(), p[1].get(), p[2].get()));
}
constexpr Member repr_member = method("__repr__", "() -> str", repr, "<Triangle (point1, point2, point3)>.");

}  // namespace

const ClassGuard& triangle_class() { return guard; }

void define_triangle() {
  define_class("Triangle", {},
               "A triangle of three 3D points: its area, centroid and second moments of area.\n\n"
               "`profile` holds the three points as given; `vertices` a copy of their\n"
               "coordinates, taken at construction.",
               {init_member, area_member, centroid_member, moment_of_inertia_member, repr_member}, &guard);
}

}  // namespace ostrel
