// ArcRevolve: the revolve of a circular Arc around the global y-axis through a free
// rotation angle, with closed forms for its area and inner volume. The inner volume and
// the profile handed to trimesh run on doubles where the documented steps would give
// the same; the rest runs as written, through the host.
#include <numbers>

#include "curves/arc.hpp"
#include "foundations/vector.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"
#include "scene/arc_revolve_kernel.hpp"

namespace ostrel {

namespace {

ClassGuard guard;
// The radius is Vector.magnitude of centre_point.vector_to(start_point); the profile
// walks the discretised arc with _current_next.
Natives natives{{&guard, &vector_class()}, {&arc_discretize_natives()}};
constexpr double pi = std::numbers::pi;

enum class Init { self, arc, args, rotation_angle, material, kwargs };
Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref keywords = check(PyDict_New());
  check(PyDict_SetItem(keywords.get(), id<"rotation_angle">(), a[Init::rotation_angle]));
  check(PyDict_SetItem(keywords.get(), id<"material">(), a[Init::material]));
  check(PyDict_Update(keywords.get(), a[Init::kwargs]));
  Ref parent = super_of(guard.cls(), self);
  Ref parent_init = getattr(parent.get(), id<"__init__">());
  check(PyObject_Call(parent_init.get(), a[Init::args], keywords.get()));
  setattr(self, id<"_arc">(), a[Init::arc]);
  Ref uuid1 = getattr(global<"uuid">().get(), id<"uuid1">());
  Ref uuid = call(uuid1.get(), {});
  setattr(self, id<"_uuid">(), uuid.get());
  return none();
}
constexpr Member init_member =
    method("__init__", "(arc: Arc, *args: Any, rotation_angle: float = None, material: Material = None, **kwargs: Any)",
           init, "The revolve of `arc` around the y-axis through rotation_angle radians (a full turn by default).");

Ref arc_revolve_name(const Args&) { return new_str("arc-revolve"); }
constexpr Member name_member = property("_name", "() -> str", arc_revolve_name, "\"arc-revolve\"");

Ref arc(const Args& a) { return getattr(a.self(), id<"_arc">()); }
constexpr Member arc_member = property("arc", "() -> Arc", arc, "The revolved arc.");

Ref uuid(const Args& a) {
  Ref value = getattr(a.self(), id<"_uuid">());
  return check(PyObject_Str(value.get()));
}
constexpr Member uuid_member = property("uuid", "() -> str", uuid, "The identifier made at construction, as text.");

// self._rotation_angle / (2 * math.pi) * total
Ref share_of_turn(PyObject* self, PyObject* total) {
  Ref angle = getattr(self, id<"_rotation_angle">());
  Ref full = new_float(2 * pi);
  Ref share = div(angle.get(), full.get());
  return mul(share.get(), total);
}

Ref surface_area(const Args& a) {
  PyObject* self = a.self();
  Ref revolved = getattr(self, id<"arc">());
  Ref pair = getattr(revolved.get(), id<"theta1_theta2">());
  Ref thetas[2];
  unpack(pair.get(), 2, thetas);
  Ref own_arc = getattr(self, id<"_arc">());
  Ref centre = getattr(own_arc.get(), id<"centre_point">());
  Ref R = getattr(centre.get(), id<"x">());
  revolved = getattr(self, id<"arc">());
  Ref r = getattr(revolved.get(), id<"radius">());
  Ref total = call(global<"surface_area_dome">().get(), {thetas[0].get(), thetas[1].get(), r.get(), R.get()});
  return share_of_turn(self, total.get());
}
constexpr Member surface_area_member =
    property("surface_area", "() -> float", surface_area, "The area swept, in proportion to the rotation angle.");

// (1/12) * r**3 * (9 * sin t + sin(3 t)) + r**2 * xc * (t + sin t * cos t) + xc**2 * r * sin t
Ref volume_antiderivative(PyObject* t, PyObject* r, PyObject* xc) {
  auto sin_of = [](PyObject* v) { return new_float(kernel::math_sin(as_double(v))); };
  auto cos_of = [](PyObject* v) { return new_float(kernel::math_cos(as_double(v))); };
  Ref twelfth = new_float(0.08333333333333333), nine = new_int(9), three = new_int(3);
  Ref r3 = power(r, 3), r2 = power(r, 2), xc2 = power(xc, 2);
  Ref sin_t = sin_of(t);
  Ref nine_sin = mul(nine.get(), sin_t.get());
  Ref triple = mul(three.get(), t);
  Ref sin_3t = sin_of(triple.get());
  Ref bracket = add(nine_sin.get(), sin_3t.get());
  Ref first = mul(twelfth.get(), r3.get());
  first = mul(first.get(), bracket.get());
  Ref cos_t = cos_of(t);
  Ref sin_cos = mul(sin_t.get(), cos_t.get());
  Ref t_term = add(t, sin_cos.get());
  Ref second = mul(r2.get(), xc);
  second = mul(second.get(), t_term.get());
  Ref third = mul(xc2.get(), r);
  third = mul(third.get(), sin_t.get());
  Ref sum = add(first.get(), second.get());
  return add(sum.get(), third.get());
}

// The documented steps, on the host's objects.
Ref inner_volume_steps(PyObject* self) {
  Ref own_arc = getattr(self, id<"_arc">());
  Ref start = getattr(own_arc.get(), id<"start_point">()), end = getattr(own_arc.get(), id<"end_point">()),
      centre = getattr(own_arc.get(), id<"centre_point">());
  Ref sx = getattr(start.get(), id<"x">()), cx = getattr(centre.get(), id<"x">());
  Ref relative_start_x = sub(sx.get(), cx.get());
  Ref sy = getattr(start.get(), id<"y">()), cy = getattr(centre.get(), id<"y">());
  Ref relative_start_y = sub(sy.get(), cy.get());
  Ref ex = getattr(end.get(), id<"x">());
  Ref relative_end_x = sub(ex.get(), cx.get());
  Ref ey = getattr(end.get(), id<"y">());
  Ref relative_end_y = sub(ey.get(), cy.get());
  Ref zero = new_int(0);
  Ref product = mul(relative_start_x.get(), relative_end_x.get());
  const bool same_side = compares(product.get(), zero.get(), Py_GE);
  bool outer = false;
  if (same_side) {
    Ref centre_x = getattr(centre.get(), id<"x">());
    if (compares(centre_x.get(), zero.get(), Py_GE)) {
      Ref start_y = getattr(start.get(), id<"y">()), end_y = getattr(end.get(), id<"y">());
      outer = compares(start_y.get(), end_y.get(), Py_GT);
    }
    if (!outer) {
      Ref centre_x_again = getattr(centre.get(), id<"x">());
      if (compares(centre_x_again.get(), zero.get(), Py_LT)) {
        Ref start_y = getattr(start.get(), id<"y">()), end_y = getattr(end.get(), id<"y">());
        outer = compares(start_y.get(), end_y.get(), Py_LT);
      }
    }
  }
  Ref short_value = getattr(own_arc.get(), id<"short_arc">());
  if (!truth(short_value.get()))
    raise(PyExc_ValueError, "Inner volume of arc-revolve is not defined when using long arc");
  if (!same_side) raise(PyExc_ValueError, "Start- and end-point should lie on the same vertical side from the centre");
  if (!outer) raise(PyExc_ValueError, "Inner volume of arc-revolve is not defined with inner oriented surface");
  Ref xc = getattr(centre.get(), id<"x">());
  Ref revolved = getattr(self, id<"arc">());
  Ref r = getattr(revolved.get(), id<"radius">());
  Ref theta1 = atan2(relative_end_y.get(), relative_end_x.get());
  Ref theta2 = atan2(relative_start_y.get(), relative_start_x.get());
  Ref upper = volume_antiderivative(theta1.get(), r.get(), xc.get());
  Ref lower = volume_antiderivative(theta2.get(), r.get(), xc.get());
  Ref difference = sub(upper.get(), lower.get());
  Ref pi_object = new_float(pi);
  Ref volume = mul(pi_object.get(), difference.get());
  Ref total = check(PyNumber_Absolute(volume.get()));
  return share_of_turn(self, total.get());
}

// The arc and the rotation angle of an unchanged ArcRevolve, read natively.
bool hold_revolve(PyObject* self, HeldArc& held, double& rotation_angle) {
  if (!guard.admits(self)) return false;
  Ref dict = Ref::borrow(instance_dict(self));
  Ref arc = dict ? Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_arc">())) : Ref();
  Ref angle = arc ? Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_rotation_angle">())) : Ref();
  if (!angle || !PyFloat_CheckExact(angle.get())) {
    PyErr_Clear();
    return false;
  }
  rotation_angle = PyFloat_AS_DOUBLE(angle.get());
  return hold_arc(arc.get(), held);
}

Ref inner_volume(const Args& a) {
  if (Ref r = native_path(natives, [&] {
        HeldArc held;
        double rotation_angle;
        if (!hold_revolve(a.self(), held, rotation_angle)) return Ref{};
        using Check = kernel::ArcVolume::Check;
        const kernel::ArcVolume v = kernel::arc_inner_volume(held.points, held.short_arc, rotation_angle);
        switch (v.check) {
          case Check::long_arc:
            raise(PyExc_ValueError, "Inner volume of arc-revolve is not defined when using long arc");
          case Check::opposite_sides:
            raise(PyExc_ValueError, "Start- and end-point should lie on the same vertical side from the centre");
          case Check::inner_oriented:
            raise(PyExc_ValueError, "Inner volume of arc-revolve is not defined with inner oriented surface");
          case Check::ok:
            break;
        }
        return new_float(v.volume);
      }))
    return r;
  return inner_volume_steps(a.self());
}
constexpr Member inner_volume_member =
    property("inner_volume", "() -> float", inner_volume,
             "The volume inside the surface, for a short arc with both ends on one side of its centre,\n"
             "oriented outwards; in proportion to the rotation angle.");

Ref height(const Args& a) {
  Ref own_arc = getattr(a.self(), id<"_arc">());
  Ref start = getattr(own_arc.get(), id<"start_point">()), end = getattr(own_arc.get(), id<"end_point">()),
      centre = getattr(own_arc.get(), id<"centre_point">());
  auto relative = [&](PyObject* point, PyObject* c) {
    Ref value = getattr(point, c), origin = getattr(centre.get(), c);
    return sub(value.get(), origin.get());
  };
  Ref y1 = relative(start.get(), id<"y">()), x1 = relative(start.get(), id<"x">());
  Ref y2 = relative(end.get(), id<"y">()), x2 = relative(end.get(), id<"x">());
  Ref theta1 = atan2(y1.get(), x1.get()), theta2 = atan2(y2.get(), x2.get());
  const double t1 = PyFloat_AS_DOUBLE(theta1.get()), t2 = PyFloat_AS_DOUBLE(theta2.get());
  auto radius = [&] {
    Ref revolved = getattr(a.self(), id<"arc">());
    return getattr(revolved.get(), id<"radius">());
  };
  auto lowest = [&] { return compares(y2.get(), y1.get(), Py_LT) ? y2 : y1; };
  Ref y_max, y_min;
  if ((t1 > pi / 2 && pi / 2 > t2) || (t1 < pi / 2 && pi / 2 < t2)) {
    y_max = radius();
    y_min = lowest();
  } else {
    y_max = compares(y2.get(), y1.get(), Py_GT) ? y2 : y1;
    if ((t1 < -pi / 2 && -pi / 2 < t2) || (t1 > -pi / 2 && -pi / 2 > t2)) {
      Ref r = radius();
      y_min = neg(r.get());
    } else {
      y_min = lowest();
    }
  }
  Ref span = sub(y_max.get(), y_min.get());
  return check(PyNumber_Absolute(span.get()));
}
constexpr Member height_member =
    property("height", "() -> float", height, "The vertical extent of the arc, from the raw atan2 angles of its ends.");

Ref geometries(const Args& a) {
  Ref own_arc = getattr(a.self(), id<"_arc">());
  return tuple({own_arc.get()});
}
constexpr Member geometries_member = property("geometries", "() -> Tuple[Arc]", geometries, "(arc,)");

Ref xy_pair(PyObject* point) {
  Ref x = getattr(point, id<"x">()), y = getattr(point, id<"y">());
  return tuple({x.get(), y.get()});
}

Ref linestring(const Args& a) {
  PyObject* self = a.self();
  if (Ref r = native_path(natives, [&] {
        HeldArc held;
        double rotation_angle;
        std::vector<Vec3> points;
        if (!hold_revolve(self, held, rotation_angle) ||
            !kernel::discretize_arc(held.points, held.short_arc, 20, points))
          return Ref{};
        const bool clockwise = kernel::ring_is_clockwise(points);
        Ref pairs = check(PyList_New(20));
        for (Py_ssize_t i = 0; i < 20; ++i) {
          const Vec3 p = points[clockwise ? 19 - i : i];
          Ref x = new_float(p.x), y = new_float(p.y);
          PyList_SET_ITEM(pairs.get(), i, tuple({x.get(), y.get()}).release());
        }
        return pairs;
      }))
    return r;
  Ref own_arc = getattr(self, id<"_arc">());
  Ref twenty = new_int(20);
  Ref discretized_arc = call_method(own_arc.get(), id<"discretize">(), {twenty.get()});
  Ref ring = closed(discretized_arc.get());
  Ref pairs = call(global<"_current_next">().get(), {ring.get()});
  Ref sum = new_int(0);
  Ref it = check(PyObject_GetIter(pairs.get()));
  while (Ref pair = Ref::steal(PyIter_Next(it.get()))) {
    Ref ends[2];
    unpack(pair.get(), 2, ends);
    Ref x2 = getattr(ends[1].get(), id<"x">()), x1 = getattr(ends[0].get(), id<"x">());
    Ref dx = sub(x2.get(), x1.get());
    Ref y2 = getattr(ends[1].get(), id<"y">()), y1 = getattr(ends[0].get(), id<"y">());
    Ref sy = add(y2.get(), y1.get());
    Ref term = mul(dx.get(), sy.get());
    sum = add(sum.get(), term.get());
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref zero = new_int(0);
  Ref ordered = discretized_arc;
  if (compares(sum.get(), zero.get(), Py_GT)) {
    Ref step = new_int(-1);
    Ref reverse = check(PySlice_New(nullptr, nullptr, step.get()));
    ordered = check(PyObject_GetItem(discretized_arc.get(), reverse.get()));
  }
  Ref result = check(PyList_New(0));
  Ref points_it = check(PyObject_GetIter(ordered.get()));
  while (Ref point = Ref::steal(PyIter_Next(points_it.get()))) {
    Ref pair = xy_pair(point.get());
    check(PyList_Append(result.get(), pair.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return result;
}
constexpr Member linestring_member =
    property("_trimesh_linestring", "() -> List[Tuple[float, float]]", linestring,
             "20 points of the arc as (x, y) pairs, running counter-clockwise in the xy plane.");

}  // namespace

void define_arc_revolve() {
  define_class("ArcRevolve", {global<"Revolve">().get()},
               "The revolve of a circular arc around the global y-axis through rotation_angle radians.",
               {init_member, name_member, arc_member, uuid_member, surface_area_member, inner_volume_member,
                height_member, geometries_member, linestring_member},
               &guard);
}

}  // namespace ostrel
