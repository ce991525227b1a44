// GeoPoint, GeoPolyline and GeoPolygon: small value classes for places on the Earth's
// surface in WGS latitude and longitude (degrees). A GeoPoint converts to and from RD
// through the module's RDWGSConverter; the two sequences are ordered points with a
// minimum length, of the same shape but no subclass of one another. All compare by
// value and are unhashable.
#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// ---- GeoPoint ----

enum class PointInit { self, lat, lon };
Ref point_init(const Args& a) {
  Ref lat = new_float(a.num(PointInit::lat)), lon = new_float(a.num(PointInit::lon));
  setattr(a.self(), id<"lat">(), lat.get());
  setattr(a.self(), id<"lon">(), lon.get());
  return none();
}
constexpr Member point_init_member = method("__init__", "(lat: float, lon: float)", point_init,
                                            "A place at latitude `lat` and longitude `lon`, in degrees.");

// math.isclose(self.<c>, other.<c>, abs_tol=ISCLOSE_ATOL)
bool close(PyObject* self, PyObject* other, PyObject* coordinate) {
  Ref mine = getattr(self, coordinate), theirs = getattr(other, coordinate);
  Ref atol = global<"ISCLOSE_ATOL">();
  const double a = as_double(mine.get()), b = as_double(theirs.get());
  return kernel::isclose(a, b, abs_tolerance(atol.get()));
}

enum class Eq { self, other };
Ref point_eq(const Args& a) {
  PyObject *self = a.self(), *other = a[Eq::other];
  if (!isinstance(other, global<"GeoPoint">().get())) return Ref::borrow(Py_NotImplemented);
  return boolean(close(self, other, id<"lat">()) && close(self, other, id<"lon">()));
}
constexpr Member point_eq_member =
    method("__eq__", "(other: Any) -> bool", point_eq,
           "Latitude and longitude each equal within the absolute tolerance ISCLOSE_ATOL.");

Ref formatted(PyObject* self, PyObject* coordinate) {
  Ref value = getattr(self, coordinate);
  Ref style = new_str(".3e");
  return check(PyObject_Format(value.get(), style.get()));
}

Ref point_repr(const Args& a) {
  Ref lat = formatted(a.self(), id<"lat">()), lon = formatted(a.self(), id<"lon">());
  return check(PyUnicode_FromFormat("GeoPoint(lat=%U, lon=%U)", lat.get(), lon.get()));
}
constexpr Member point_repr_member =
    method("__repr__", "() -> str", point_repr, "GeoPoint(lat=..., lon=...), each with four significant digits.");

enum class FromRd { cls, coords };
Ref from_rd(const Args& a) {
  Ref convert = getattr(global<"RDWGSConverter">().get(), id<"from_rd_to_wgs">());
  Ref wgs = call(convert.get(), {a[FromRd::coords]});
  Ref lat_lon[2];
  unpack(wgs.get(), 2, lat_lon);
  return call(a[FromRd::cls], {lat_lon[0].get(), lat_lon[1].get()});
}
constexpr Member from_rd_member =
    class_method("from_rd", "(coords: Tuple[float, float]) -> GeoPoint", from_rd,
                 "The place at RD (x, y) in metres, as an instance of the class it is called on.");

Ref rd(const Args& a) {
  Ref convert = getattr(global<"RDWGSConverter">().get(), id<"from_wgs_to_rd">());
  Ref lat = getattr(a.self(), id<"lat">()), lon = getattr(a.self(), id<"lon">());
  Ref wgs = tuple({lat.get(), lon.get()});
  Ref result = call(convert.get(), {wgs.get()});
  Ref x_y[2];
  unpack(result.get(), 2, x_y);
  return tuple({x_y[0].get(), x_y[1].get()});
}
constexpr Member rd_member = property("rd", "() -> Tuple[float, float]", rd, "(x, y) in RD metres.");

// ---- GeoPolyline and GeoPolygon ----

struct Sequence {
  const char* name;
  Py_ssize_t minimum;
  const char* too_short;
};
constexpr Sequence sequences[] = {
    {"GeoPolyline", 2, "GeoPolyline should have at least two points."},
    {"GeoPolygon", 3, "GeoPolygon should have at least three points."},
};

// The interned name of the class, which is also its module global.
template <int K>
PyObject* class_name() {
  static PyObject* name = nullptr;
  return kept(name, [] { return PyUnicode_InternFromString(sequences[K].name); });
}

enum class SequenceInit { self, points };
template <int K>
Ref sequence_init(const Args& a) {
  PyObject* points = a[SequenceInit::points];
  if (PyTuple_GET_SIZE(points) < sequences[K].minimum) raise(PyExc_ValueError, sequences[K].too_short);
  setattr(a.self(), id<"_points">(), points);
  return none();
}

template <int K>
Ref sequence_eq(const Args& a) {
  PyObject *self = a.self(), *other = a[Eq::other];
  if (!isinstance(other, global(class_name<K>()).get())) return Ref::borrow(Py_NotImplemented);
  Ref mine = getattr(self, id<"_points">());
  const Py_ssize_t count = check(PyObject_Size(mine.get()));
  Ref theirs = getattr(other, id<"points">());
  if (count != check(PyObject_Size(theirs.get()))) return boolean(false);
  // all(p == q for p, q in zip(self._points, other.points))
  Ref mine_again = getattr(self, id<"_points">());
  Ref my_items = check(PyObject_GetIter(mine_again.get()));
  Ref theirs_again = getattr(other, id<"points">());
  Ref their_items = check(PyObject_GetIter(theirs_again.get()));
  while (Ref p = Ref::steal(PyIter_Next(my_items.get()))) {
    Ref q = Ref::steal(PyIter_Next(their_items.get()));
    if (!q) break;
    if (!compares(p.get(), q.get(), Py_EQ)) return boolean(false);
  }
  if (PyErr_Occurred()) throw PyError{};
  return boolean(true);
}

template <int K>
Ref sequence_repr(const Args& a) {
  Ref points = getattr(a.self(), id<"_points">());
  Ref texts = check(PyList_New(0));
  Ref items = check(PyObject_GetIter(points.get()));
  while (Ref p = Ref::steal(PyIter_Next(items.get()))) {
    Ref text = check(PyObject_Repr(p.get()));
    check(PyList_Append(texts.get(), text.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref separator = new_str(", ");
  Ref joined = check(PyUnicode_Join(separator.get(), texts.get()));
  return check(PyUnicode_FromFormat("%s(%U)", sequences[K].name, joined.get()));
}

Ref sequence_points(const Args& a) {
  Ref points = getattr(a.self(), id<"_points">());
  return check(PySequence_List(points.get()));
}

template <int K>
void define_sequence(const char* doc) {
  define_class(
      sequences[K].name, {}, doc,
      {method("__init__", "(*points: GeoPoint)", sequence_init<K>,
              "The points in order, each a positional argument; ValueError below the minimum."),
       method("__eq__", "(other: Any) -> bool", sequence_eq<K>, "The same number of points, pairwise equal in order."),
       method("__repr__", "() -> str", sequence_repr<K>, "The class name and the points."),
       property("points", "() -> List[GeoPoint]", sequence_points, "A new list of the points at each access.")});
}

}  // namespace

void define_geo_shapes() {
  define_class("GeoPoint", {},
               "A place on the Earth's surface: WGS latitude `lat` and longitude `lon` in degrees,\n"
               "both public and writable. Converts to and from RD through RDWGSConverter.",
               {point_init_member, point_eq_member, point_repr_member, from_rd_member, rd_member});
  define_sequence<0>("An open line of at least two GeoPoints, in order.");
  define_sequence<1>(
      "A polygon of at least three GeoPoints, in order; it is not closed by repeating\n"
      "its first point.");
}

}  // namespace ostrel
