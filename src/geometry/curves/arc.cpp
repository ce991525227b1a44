// Arc: a circular arc in the global xy plane, given by a centre and two end points, the
// shorter or the longer way round. A plain value class: nothing is cached, every
// measure is recomputed from the three points. The angle math and the discretisation
// run on doubles in arc_kernel wherever the documented steps would give the same.
#include "curves/arc.hpp"

#include "curves/line.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

ClassGuard guard;
Natives natives{{&guard, &point_class()}};
Natives discretize_natives{{}, {&natives, &point_natives()}};

Ref field(PyObject* self, PyObject* name) { return getattr(self, name); }

// math.isclose(<point>.z, 0): no absolute tolerance, so only an exact zero passes.
bool z_is_zero(PyObject* point) {
  Ref z = getattr(point, id<"z">());
  return kernel::isclose(as_double(z.get()), 0.0, kernel::plain_tolerance);
}

// centre_point.vector_to(point).squared_magnitude
Ref squared_radius(PyObject* centre, PyObject* point) {
  Ref v = call_method(centre, id<"vector_to">(), {point});
  return getattr(v.get(), id<"squared_magnitude">());
}

enum class Init { self, centre_point, start_point, end_point, short_arc };
Ref init(const Args& a) {
  PyObject *centre = a[Init::centre_point], *start = a[Init::start_point], *end = a[Init::end_point];
  Ref start_squared = squared_radius(centre, start);
  Ref end_squared = squared_radius(centre, end);
  const double s = as_double(start_squared.get());
  if (!kernel::isclose(s, as_double(end_squared.get()), kernel::plain_tolerance))
    raise(PyExc_ValueError,
          "Only circular arcs are possible. start_point and end-point should have the same distance to the centre.");
  if (!z_is_zero(centre) || !z_is_zero(start) || !z_is_zero(end))
    raise(PyExc_ValueError, "Arc can only be drawn in xy plane (z=0)");
  PyObject* self = a.self();
  setattr(self, id<"_centre_point">(), centre);
  setattr(self, id<"_start_point">(), start);
  setattr(self, id<"_end_point">(), end);
  setattr(self, id<"_short_arc">(), a[Init::short_arc]);
  return none();
}
constexpr Member init_member =
    method("__init__", "(centre_point: Point, start_point: Point, end_point: Point, short_arc: bool = True)", init,
           "An arc around centre_point from start_point to end_point, all with z exactly 0; the shorter of\n"
           "the two arcs between the end points when short_arc is true, the longer otherwise.");

Ref radius(const Args& a) {
  Ref centre = getattr(a.self(), id<"centre_point">());
  Ref start = getattr(a.self(), id<"start_point">());
  Ref v = call_method(centre.get(), id<"vector_to">(), {start.get()});
  return getattr(v.get(), id<"magnitude">());
}
constexpr Member radius_member =
    property("radius", "() -> float", radius, "Distance from the centre to the start point.");

Ref centre_point(const Args& a) { return field(a.self(), id<"_centre_point">()); }
constexpr Member centre_point_member = property("centre_point", "() -> Point", centre_point, "The centre.");
Ref start_point(const Args& a) { return field(a.self(), id<"_start_point">()); }
constexpr Member start_point_member = property("start_point", "() -> Point", start_point, "The first end point.");
Ref end_point(const Args& a) { return field(a.self(), id<"_end_point">()); }
constexpr Member end_point_member = property("end_point", "() -> Point", end_point, "The second end point.");

Ref theta(PyObject* self, Py_ssize_t index) {
  Ref pair = getattr(self, id<"theta1_theta2">());
  return getitem(pair.get(), index);
}
Ref theta1(const Args& a) { return theta(a.self(), 0); }
constexpr Member theta1_member = property("theta1", "() -> float", theta1, "The angle of the end point.");
Ref theta2(const Args& a) { return theta(a.self(), 1); }
constexpr Member theta2_member = property("theta2", "() -> float", theta2, "The angle of the start point.");

Ref short_arc(const Args& a) { return field(a.self(), id<"_short_arc">()); }
constexpr Member short_arc_member =
    property("short_arc", "() -> bool", short_arc, "Whether the arc is the shorter way round, as given.");

Ref geometries(const Args& a) {
  Ref start = field(a.self(), id<"_start_point">()), end = field(a.self(), id<"_end_point">()),
      centre = field(a.self(), id<"_centre_point">());
  return tuple({start.get(), end.get(), centre.get()});
}
constexpr Member geometries_member = property("geometries", "() -> Tuple[Point, Point, Point]", geometries,
                                              "The start point, the end point and the centre.");

Ref pi_object() { return getattr(global<"math">().get(), id<"pi">()); }

// 2 * math.pi
Ref two_pi() {
  Ref two = new_int(2), pi = pi_object();
  return mul(two.get(), pi.get());
}

Ref angle(const Args& a) {
  PyObject* self = a.self();
  if (Ref r = native_path(natives, [&] {
        HeldArc held;
        return hold_arc(self, held) ? new_float(kernel::arc_angle(kernel::arc_thetas(held.points), held.short_arc))
                                    : Ref{};
      }))
    return r;
  Ref pair = getattr(self, id<"theta1_theta2">());
  Ref thetas[2];
  unpack(pair.get(), 2, thetas);
  Ref difference = sub(thetas[1].get(), thetas[0].get());
  Ref diff = check(PyNumber_Absolute(difference.get()));
  Ref short_value = field(self, id<"_short_arc">());
  Ref pi = pi_object();
  const bool within = compares(diff.get(), pi.get(), truth(short_value.get()) ? Py_LE : Py_GT);
  if (within) return diff;
  Ref full = two_pi();
  return sub(full.get(), diff.get());
}
constexpr Member angle_member =
    property("angle", "() -> float", angle,
             "The opening angle in radians: within [0, pi] for a short arc, [pi, 2 pi] for a long one.");

Ref length(const Args& a) {
  Ref opening = getattr(a.self(), id<"angle">());
  Ref r = getattr(a.self(), id<"radius">());
  return mul(opening.get(), r.get());
}
constexpr Member length_member = property("length", "() -> float", length, "angle * radius");

// <point>.<c> - centre_point.<c>, through the properties.
Ref relative(PyObject* self, PyObject* point_name, PyObject* c) {
  Ref point = getattr(self, point_name);
  Ref value = getattr(point.get(), c);
  Ref centre = getattr(self, id<"centre_point">());
  Ref origin = getattr(centre.get(), c);
  return sub(value.get(), origin.get());
}

Ref theta1_theta2(const Args& a) {
  PyObject* self = a.self();
  if (Ref r = native_path(natives, [&] {
        HeldArc held;
        if (!hold_arc(self, held)) return Ref{};
        const kernel::Thetas t = kernel::arc_thetas(held.points);
        Ref t1 = new_float(t.theta1), t2 = new_float(t.theta2);
        return tuple({t1.get(), t2.get()});
      }))
    return r;
  Ref start_x = relative(self, id<"start_point">(), id<"x">());
  Ref start_y = relative(self, id<"start_point">(), id<"y">());
  Ref end_x = relative(self, id<"end_point">(), id<"x">());
  Ref end_y = relative(self, id<"end_point">(), id<"y">());
  Ref t1 = atan2(end_y.get(), end_x.get());
  Ref t2 = atan2(start_y.get(), start_x.get());
  return tuple({t1.get(), t2.get()});
}
constexpr Member theta1_theta2_member =
    property("theta1_theta2", "() -> Tuple[float, float]", theta1_theta2,
             "(theta1, theta2): the atan2 angles around the centre of the END point and of the start point.");

// <point>.get_local_coordinates(local_origin=self.centre_point, spherical=True)
Ref local_spherical(PyObject* self, PyObject* point_name) {
  Ref point = getattr(self, point_name);
  Ref centre = getattr(self, id<"centre_point">());
  Ref method = getattr(point.get(), id<"get_local_coordinates">());
  return call_kw(method.get(), {}, {{id<"local_origin">(), centre.get()}, {id<"spherical">(), Py_True}});
}

// Element 2 of (r, theta, phi) when it is > 0, else 2 * math.pi plus it.
Ref positive_phi(PyObject* spherical) {
  Ref phi = getitem(spherical, 2);
  Ref zero = new_int(0);
  if (compares(phi.get(), zero.get(), Py_GT)) return phi;
  Ref full = two_pi();
  return add(full.get(), phi.get());
}

// -math.pi < value < 0 and the like, as a chained comparison.
bool between(PyObject* low, PyObject* value, PyObject* high) {
  return compares(low, value, Py_LT) && compares(value, high, Py_LT);
}

// The documented steps, on the host's objects.
Ref discretize_steps(PyObject* self, PyObject* num) {
  Ref start_local_spherical = local_spherical(self, id<"start_point">());
  Ref end_local_spherical = local_spherical(self, id<"end_point">());
  Ref np = global<"np">();
  Ref one = new_int(1), zero = new_int(0);
  Ref reps = tuple({num, one.get()});
  Ref coordinates_local_spherical = call_method(np.get(), id<"tile">(), {start_local_spherical.get(), reps.get()});
  Ref start_phi = positive_phi(start_local_spherical.get());
  Ref end_phi = positive_phi(end_local_spherical.get());
  Ref diff_total = sub(end_phi.get(), start_phi.get());
  Ref short_value = field(self, id<"_short_arc">());
  Ref pi = pi_object();
  Ref minus_pi = neg(pi.get());
  if (truth(short_value.get())) {
    if (compares(diff_total.get(), minus_pi.get(), Py_LT)) {
      Ref full = two_pi();
      diff_total = add(diff_total.get(), full.get());
    } else if (compares(diff_total.get(), pi.get(), Py_GT)) {
      Ref full = two_pi();
      diff_total = sub(diff_total.get(), full.get());
    }
  } else {
    if (between(minus_pi.get(), diff_total.get(), zero.get())) {
      Ref full = two_pi();
      diff_total = add(diff_total.get(), full.get());
    } else if (between(zero.get(), diff_total.get(), pi.get())) {
      Ref full = two_pi();
      diff_total = sub(diff_total.get(), full.get());
    }
  }
  Ref segments = check(PyNumber_Subtract(num, one.get()));
  Ref d_angle = div(diff_total.get(), segments.get());

  Ref angles = check(PyList_New(0));
  Ref indices = check(PyObject_CallFunctionObjArgs(reinterpret_cast<PyObject*>(&PyRange_Type), num, nullptr));
  Ref it = check(PyObject_GetIter(indices.get()));
  while (Ref i = Ref::steal(PyIter_Next(it.get()))) {
    Ref angle;
    Ref last = check(PyNumber_Subtract(num, one.get()));
    if (compares(i.get(), zero.get(), Py_EQ)) {
      angle = start_phi;
    } else if (compares(i.get(), last.get(), Py_EQ)) {
      angle = end_phi;
    } else {
      Ref step = mul(i.get(), d_angle.get());
      Ref sum = add(start_phi.get(), step.get());
      Ref full = two_pi();
      angle = check(PyNumber_Remainder(sum.get(), full.get()));
    }
    Ref full = two_pi();
    if (compares(pi.get(), angle.get(), Py_LT) && compares(angle.get(), full.get(), Py_LE))
      angle = sub(angle.get(), full.get());
    check(PyList_Append(angles.get(), angle.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref all = check(PySlice_New(nullptr, nullptr, nullptr));
  Ref two = new_int(2);
  Ref column = tuple({all.get(), two.get()});
  check(PyObject_SetItem(coordinates_local_spherical.get(), column.get(), angles.get()));

  Ref points = check(PyList_New(0));
  Ref rows = check(PyObject_GetIter(coordinates_local_spherical.get()));
  while (Ref coordinates = Ref::steal(PyIter_Next(rows.get()))) {
    Ref cartesian = call(global<"spherical_to_cartesian">().get(), {coordinates.get()});
    Ref centre = getattr(self, id<"centre_point">());
    Ref centre_items = check(PySequence_Tuple(centre.get()));
    Ref array = getattr(global<"np">().get(), id<"array">());
    Ref offset = call(array.get(), {centre_items.get()});
    Ref global_coordinates = check(PyNumber_Add(cartesian.get(), offset.get()));
    Ref x = getitem(global_coordinates.get(), 0), y = getitem(global_coordinates.get(), 1),
        z = getitem(global_coordinates.get(), 2);
    Ref point = call(global<"Point">().get(), {x.get(), y.get(), z.get()});
    check(PyList_Append(points.get(), point.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return points;
}

enum class Discretize { self, num };
Ref discretize(const Args& a) {
  PyObject *self = a.self(), *num = a[Discretize::num];
  Ref two = new_int(2);
  if (compares(num, two.get(), Py_LT)) raise(PyExc_ValueError, "Provides at least two points (start and end)");
  if (Ref r = native_path(discretize_natives, [&] {
        HeldArc held;
        if (!PyLong_CheckExact(num) || !hold_arc(self, held)) return Ref{};
        // Larger counts take the documented steps, whose NumPy allocation reports its own
        // MemoryError where the count is more than memory holds.
        constexpr Py_ssize_t native_limit = Py_ssize_t{1} << 20;
        const Py_ssize_t n = PyLong_AsSsize_t(num);
        if (n == -1) PyErr_Clear();
        std::vector<Vec3> coordinates;
        if (n < 2 || n > native_limit ||
            !kernel::discretize_arc(held.points, held.short_arc, static_cast<size_t>(n), coordinates))
          return Ref{};
        Ref points = check(PyList_New(n));
        for (Py_ssize_t i = 0; i < n; ++i) PyList_SET_ITEM(points.get(), i, make_point(coordinates[i]).release());
        return points;
      }))
    return r;
  return discretize_steps(self, num);
}
constexpr Member discretize_member =
    method("discretize", "(num: int = 2) -> List[Point]", discretize,
           "`num` points equally spaced in angle from the start point to the end point, each through the\n"
           "spherical round trip with the start point's r and theta (so not the stored end points).");

enum class Revolve { self, rotation_angle, material, kwargs };
Ref revolve(const Args& a) {
  PyObject* self = a.self();
  Ref short_value = field(self, id<"_short_arc">());
  if (truth(short_value.get())) {
    Ref start = field(self, id<"_start_point">());
    Ref start_x = getattr(start.get(), id<"x">());
    Ref end = field(self, id<"_end_point">());
    Ref end_x = getattr(end.get(), id<"x">());
    Ref product = mul(start_x.get(), end_x.get());
    Ref zero = new_int(0);
    if (compares(product.get(), zero.get(), Py_LT))
      raise(PyExc_ValueError, "Arc cannot be revolved when it intersects the y-axis");
  }
  Ref keywords = check(PyDict_New());
  check(PyDict_SetItem(keywords.get(), id<"rotation_angle">(), a[Revolve::rotation_angle]));
  check(PyDict_SetItem(keywords.get(), id<"material">(), a[Revolve::material]));
  check(PyDict_Update(keywords.get(), a[Revolve::kwargs]));
  Ref arguments = tuple({self});
  return check(PyObject_Call(global<"ArcRevolve">().get(), arguments.get(), keywords.get()));
}
constexpr Member revolve_member = method(
    "revolve", "(*, rotation_angle: float = None, material: Material = None, **kwargs: Any) -> ArcRevolve", revolve,
    "The ArcRevolve of this arc around the y-axis; ValueError for a short arc whose end points lie on\n"
    "both sides of that axis.");

}  // namespace

bool hold_arc(PyObject* arc, HeldArc& held) {
  if (!guard.admits(arc)) return false;
  Ref dict = Ref::borrow(instance_dict(arc));
  if (!dict) {
    PyErr_Clear();
    return false;
  }
  Ref short_value = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_short_arc">()));
  held.centre = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_centre_point">()));
  held.start = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_start_point">()));
  held.end = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_end_point">()));
  if (!short_value || !held.centre || !held.start || !held.end) {
    PyErr_Clear();
    return false;
  }
  const auto truth_value = plain_truth(short_value.get());
  const auto centre = read_point(held.centre.get());
  const auto start = centre ? read_point(held.start.get()) : std::nullopt;
  const auto end = start ? read_point(held.end.get()) : std::nullopt;
  if (!truth_value || !end || !holds_only_fields(held.start.get(), 3) || !holds_only_fields(held.end.get(), 3))
    return false;
  held.points = {*centre, *start, *end};
  held.short_arc = *truth_value;
  return true;
}

const Natives& arc_discretize_natives() { return discretize_natives; }

void define_arc() {
  define_class("Arc", {},
               "A circular arc in the xy plane (z = 0) around centre_point, from start_point to end_point,\n"
               "the shorter way round when short_arc is true and the longer way otherwise.",
               {init_member, radius_member, centre_point_member, start_point_member, end_point_member, theta1_member,
                theta2_member, short_arc_member, geometries_member, angle_member, length_member, theta1_theta2_member,
                discretize_member, revolve_member},
               &guard);
}

}  // namespace ostrel
