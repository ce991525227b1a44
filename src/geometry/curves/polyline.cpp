// Polyline: a chain of straight segments given by its points in order. The list of
// points is the only field, public and writable, and its Point objects are shared with
// the caller; every member computes anew at each call and returns new polylines.
// This file holds construction, comparison, extents, reversal, clean-up, monotonicity,
// the point-on-polyline test and the native reading of polylines; the other operations
// have files of their own.
#include "curves/polyline.hpp"

#include "curves/line.hpp"
#include "foundations/point.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vector.hpp"
#include "module/boundary.hpp"
#include "module/globals.hpp"
#include "module/instance.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

enum class Init { self, points };
Ref init(const Args& a) {
  Ref points = check(PySequence_List(a[Init::points]));
  setattr(a.self(), id<"points">(), points.get());
  return none();
}
constexpr Member init_member = method("__init__", "(points: List[Point])", init,
                                      "A polyline through a new list of the given points, which are not copied.");

enum class Deserialize { cls, points };
Ref deserialize(const Args& a) {
  Ref points = check(PyList_New(0));
  Ref items = check(PyObject_GetIter(a[Deserialize::points]));
  while (Ref p = Ref::steal(PyIter_Next(items.get()))) {
    Ref point_cls = global<"Point">();
    Ref x = check(PyObject_GetItem(p.get(), id<"x">()));
    Ref y = check(PyObject_GetItem(p.get(), id<"y">()));
    Ref point = call(point_cls.get(), {x.get(), y.get()});
    check(PyList_Append(points.get(), point.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return call(a.self(), {points.get()});
}
constexpr Member deserialize_member = class_method("_deserialize", "(points: List) -> Polyline", deserialize,
                                                   "A polyline of new points from the dictionaries of serialize().");

enum class FromLines { cls, lines };
Ref from_lines(const Args& a) {
  Ref points = check(PyList_New(0));
  Ref lines = check(PyObject_GetIter(a[FromLines::lines]));
  for (Py_ssize_t i = 0;; ++i) {
    Ref line = Ref::steal(PyIter_Next(lines.get()));
    if (!line) break;
    if (i == 0) {
      Ref start = getattr(line.get(), id<"start_point">());
      check(PyList_Append(points.get(), start.get()));
    }
    if (i > 0) {
      Ref last = getitem(points.get(), -1);
      Ref start = getattr(line.get(), id<"start_point">());
      if (!equal(last.get(), start.get()))
        raise_format(PyExc_ValueError, "Start point of line %zd does not coincide with end point of previous line.", i);
    }
    Ref end = getattr(line.get(), id<"end_point">());
    check(PyList_Append(points.get(), end.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return call(a.self(), {points.get()});
}
constexpr Member from_lines_member =
    class_method("from_lines", "(lines: Sequence[Line]) -> Polyline", from_lines,
                 "A polyline through the ends of a chain of lines, each starting where the previous one ended.");

enum class IsEqualTo { self, other };
Ref is_equal_to(const Args& a) {
  PyObject *self = a.self(), *other = a[IsEqualTo::other];
  Ref mine = points_of(self), theirs = points_of(other);
  if (length_of(mine.get()) != length_of(theirs.get())) return boolean(false);
  Ref mine_again = points_of(self), theirs_again = points_of(other);
  Ref first = check(PyObject_GetIter(mine_again.get())), second = check(PyObject_GetIter(theirs_again.get()));
  while (Ref p1 = Ref::steal(PyIter_Next(first.get()))) {
    Ref p2 = Ref::steal(PyIter_Next(second.get()));
    if (!p2) break;
    if (!equal(p1.get(), p2.get())) return boolean(false);
  }
  if (PyErr_Occurred()) throw PyError{};
  return boolean(true);
}
constexpr Member is_equal_to_member = method("is_equal_to", "(other: Polyline) -> bool", is_equal_to,
                                             "The same number of points, pairwise equal, in the same order.");

Ref get_start_point(const Args& a) {
  Ref points = points_of(a.self());
  return getitem(points.get(), 0);
}
constexpr Member start_point_member = property("start_point", "() -> Point", get_start_point, "The first point.");

Ref get_end_point(const Args& a) {
  Ref points = points_of(a.self());
  return getitem(points.get(), -1);
}
constexpr Member end_point_member = property("end_point", "() -> Point", get_end_point, "The last point.");

Ref lines(const Args& a) {
  Ref result = check(PyList_New(0));
  Ref points = points_of(a.self());
  Ref pairs = pairs_of(points.get());
  Ref p1, p2;
  while (next_pair(pairs.get(), p1, p2))
    if (Ref line = line_or_nothing(p1.get(), p2.get())) check(PyList_Append(result.get(), line.get()));
  return result;
}
constexpr Member lines_member =
    property("lines", "() -> List[Line]", lines, "New lines between neighbouring points; equal neighbours give none.");

// The least (or greatest) coordinate of the points by exact comparison; None for none.
template <Literal C, int Op>
Ref extent(const Args& a) {
  Ref found = none();
  Ref points = points_of(a.self());
  Ref items = check(PyObject_GetIter(points.get()));
  while (Ref point = Ref::steal(PyIter_Next(items.get()))) {
    if (found.get() != Py_None) {
      Ref value = getattr(point.get(), id<C>());
      if (!compares(value.get(), found.get(), Op)) continue;
    }
    found = getattr(point.get(), id<C>());
  }
  if (PyErr_Occurred()) throw PyError{};
  return found;
}
constexpr Member x_min_member = property("x_min", "() -> Optional[float]", extent<"x", Py_LT>, "The least x.");
constexpr Member x_max_member = property("x_max", "() -> Optional[float]", extent<"x", Py_GT>, "The greatest x.");
constexpr Member y_min_member = property("y_min", "() -> Optional[float]", extent<"y", Py_LT>, "The least y.");
constexpr Member y_max_member = property("y_max", "() -> Optional[float]", extent<"y", Py_GT>, "The greatest y.");
constexpr Member z_min_member = property("z_min", "() -> Optional[float]", extent<"z", Py_LT>, "The least z.");
constexpr Member z_max_member = property("z_max", "() -> Optional[float]", extent<"z", Py_GT>, "The greatest z.");

Ref get_reversed_polyline(const Args& a) {
  Ref points = points_of(a.self());
  Ref reversed = call(reinterpret_cast<PyObject*>(&PyReversed_Type), {points.get()});
  Ref items = check(PySequence_List(reversed.get()));
  return new_polyline(items.get());
}
constexpr Member get_reversed_polyline_member = method("get_reversed_polyline", "() -> Polyline", get_reversed_polyline,
                                                       "A new polyline through the same points in reverse order.");

Ref serialize(const Args& a) {
  Ref result = check(PyList_New(0));
  Ref points = points_of(a.self());
  Ref items = check(PyObject_GetIter(points.get()));
  while (Ref point = Ref::steal(PyIter_Next(items.get()))) {
    Ref entry = check(PyDict_New());
    Ref x = getattr(point.get(), id<"x">());
    check(PyDict_SetItem(entry.get(), id<"x">(), x.get()));
    Ref y = getattr(point.get(), id<"y">());
    check(PyDict_SetItem(entry.get(), id<"y">(), y.get()));
    check(PyList_Append(result.get(), entry.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return result;
}
constexpr Member serialize_member = method(
    "serialize", "() -> List", serialize, "A list of dictionaries {\"x\": x, \"y\": y}, one per point; z is left out.");

Ref filter_duplicate_points(const Args& a) {
  Ref points = points_of(a.self());
  Ref first = getitem(points.get(), 0);
  Ref kept = list({first.get()});
  Ref all = points_of(a.self());
  Ref items = check(PyObject_GetIter(all.get()));
  for (Py_ssize_t i = 0;; ++i) {
    Ref point = Ref::steal(PyIter_Next(items.get()));
    if (!point) break;
    if (i == 0) continue;
    Ref now = points_of(a.self());
    Ref previous = getitem(now.get(), i - 1);
    if (!equal(point.get(), previous.get())) check(PyList_Append(kept.get(), point.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return new_polyline(kept.get());
}
constexpr Member filter_duplicate_points_member =
    method("filter_duplicate_points", "() -> Polyline", filter_duplicate_points,
           "A new polyline without the points equal to their predecessor in this one.");

// Whether the coordinate never steps back (strict: never stays either), by plain
// math.isclose, abs_tol 0.
enum class Monotonic { self, strict };
template <Literal C>
Ref monotonic(const Args& a) {
  Ref previous = none();
  Ref points = points_of(a.self());
  Ref items = check(PyObject_GetIter(points.get()));
  while (Ref point = Ref::steal(PyIter_Next(items.get()))) {
    if (previous.get() != Py_None) {
      const bool strict = truth(a[Monotonic::strict]);
      Ref value = getattr(point.get(), id<C>());
      const bool close = kernel::isclose(as_double(value.get()), as_double(previous.get()), kernel::plain_tolerance);
      if (strict && close) return boolean(false);
      if (!close || strict) {
        Ref again = getattr(point.get(), id<C>());
        if (compares(again.get(), previous.get(), Py_LT)) return boolean(false);
      }
    }
    previous = getattr(point.get(), id<C>());
  }
  if (PyErr_Occurred()) throw PyError{};
  return boolean(true);
}
constexpr Member monotonic_x_member =
    method("is_monotonic_ascending_x", "(strict: bool = True) -> bool", monotonic<"x">,
           "Whether x never decreases along the points (strict: and never repeats), by plain math.isclose.");
constexpr Member monotonic_y_member =
    method("is_monotonic_ascending_y", "(strict: bool = True) -> bool", monotonic<"y">,
           "Whether y never decreases along the points (strict: and never repeats), by plain math.isclose.");

enum class PointIsOnPolyline { self, point };
Ref point_is_on_polyline(const Args& a) {
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain c;
        kernel::Node q;
        if (!native || !native->read(a.self(), c) || !native->read_point(a[PointIsOnPolyline::point], q)) return Ref{};
        return boolean(native->kernel().point_is_on_polyline(c, {c, native->tolerances()}, q));
      }))
    return r;
  Ref lines = getattr(a.self(), id<"lines">());
  Ref items = check(PyObject_GetIter(lines.get()));
  while (Ref line = Ref::steal(PyIter_Next(items.get()))) {
    Ref function = global<"point_is_on_bounded_line">();
    Ref on = call(function.get(), {a[PointIsOnPolyline::point], line.get()});
    if (truth(on.get())) return boolean(true);
  }
  if (PyErr_Occurred()) throw PyError{};
  return boolean(false);
}
constexpr Member point_is_on_polyline_member = method("point_is_on_polyline", "(point: Point) -> bool",
                                                      point_is_on_polyline, "Whether the point lies on a segment.");

}  // namespace

const ClassGuard& polyline_class() { return guard; }

namespace {

// The classes whose members the documented steps of Polyline use, directly or through
// the line functions.
Natives natives{{&polyline_class(), &point_class(), &line_class(), &vector_class()}};

}  // namespace

const Natives& polyline_natives() { return natives; }

std::optional<NativePolylines> NativePolylines::start() {
  const auto t = native_tolerances();
  if (!t) return std::nullopt;
  return NativePolylines(*t);
}

bool NativePolylines::read(PyObject* polyline, kernel::Chain& out) {
  if (!polyline_class().admits(polyline) || !holds_only_fields(polyline, 1)) return false;
  Ref dict = Ref::borrow(instance_dict(polyline));
  Ref points = Ref::borrow(dict ? PyDict_GetItemWithError(dict.get(), id<"points">()) : nullptr);
  if (!points || !PyList_CheckExact(points.get())) {
    PyErr_Clear();
    return false;
  }
  // Held: the list is the caller's, and reading a point may run a key's __eq__.
  const Py_ssize_t n = PyList_GET_SIZE(points.get());
  std::vector<Ref> items;
  items.reserve(static_cast<std::size_t>(n));
  for (Py_ssize_t i = 0; i < n && i < PyList_GET_SIZE(points.get()); ++i)
    items.push_back(Ref::borrow(PyList_GET_ITEM(points.get(), i)));
  out.clear();
  out.reserve(items.size());
  const int source = static_cast<int>(sources_.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto p = ostrel::read_point(items[i].get());
    if (!p) return false;
    out.push_back({*p, source, static_cast<std::int64_t>(i)});
  }
  if (!kernel::tame(out)) return false;
  sources_.push_back(std::move(items));
  return true;
}

bool NativePolylines::read_point(PyObject* point, kernel::Node& out) {
  kernel::Chain one;
  const auto p = ostrel::read_point(point);
  if (!p) return false;
  one.push_back({*p, static_cast<int>(sources_.size()), 0});
  if (!kernel::tame(one)) return false;
  sources_.push_back({Ref::borrow(point)});
  out = one.front();
  return true;
}

Ref NativePolylines::point(const kernel::Node& n) {
  if (n.source != kernel::fresh) return sources_[static_cast<std::size_t>(n.source)][static_cast<std::size_t>(n.index)];
  Ref& made = made_[n.index];
  if (!made) made = make_point(n.at);
  return made;
}

Ref NativePolylines::list(const kernel::Chain& c) {
  // The new points of a long result cannot form cycles; the collector, which would walk
  // the growing heap again and again while they are made, waits till the end.
  CollectorPause pause;
  Ref items = check(PyList_New(static_cast<Py_ssize_t>(c.size())));
  for (std::size_t i = 0; i < c.size(); ++i)
    PyList_SET_ITEM(items.get(), static_cast<Py_ssize_t>(i), point(c[i]).release());
  return items;
}

Ref NativePolylines::polyline(const kernel::Chain& c) {
  Ref points = list(c);
  return new_instance(polyline_class(), {{id<"points">(), points.get()}});
}


Ref new_polyline(PyObject* points) {
  Ref cls = global<"Polyline">();
  return call(cls.get(), {points});
}

Ref pairs_of(PyObject* items) {
  Ref function = global<"_current_next">();
  Ref pairs = call(function.get(), {items});
  return check(PyObject_GetIter(pairs.get()));
}

bool next_pair(PyObject* pairs, Ref& first, Ref& second) {
  Ref pair = Ref::steal(PyIter_Next(pairs));
  if (!pair) {
    if (PyErr_Occurred()) throw PyError{};
    return false;
  }
  Ref both[2];
  unpack(pair.get(), 2, both);
  first = both[0];
  second = both[1];
  return true;
}

Ref line_or_nothing(PyObject* a, PyObject* b) {
  Ref line;
  raises(PyExc_ValueError, [&] {
    Ref cls = global<"Line">();
    line = call(cls.get(), {a, b});
  });
  return line;
}

namespace {

// The sort keys `start.vector_to(point).squared_magnitude` and the same of `piece[1]`, as
// host functions bound to `start`, so that the list's own sort calls them.
Ref distance_from(PyObject* start, PyObject* point) {
  Ref v = call_method(start, id<"vector_to">(), {point});
  return getattr(v.get(), id<"squared_magnitude">());
}
PyObject* point_key(PyObject* start, PyObject* point) {
  return enter([&] { return distance_from(start, point); });
}
PyObject* piece_key(PyObject* start, PyObject* piece) {
  return enter([&] {
    Ref end = getitem(piece, 1);
    return distance_from(start, end.get());
  });
}
PyMethodDef point_key_def{"squared_distance", point_key, METH_O, nullptr};
PyMethodDef piece_key_def{"squared_distance", piece_key, METH_O, nullptr};

}  // namespace

void sort_by_distance(PyObject* list, PyObject* start, SortKey key) {
  Ref function = check(PyCFunction_New(key == SortKey::point ? &point_key_def : &piece_key_def, start));
  Ref sort = getattr(list, id<"sort">());
  call_kw(sort.get(), {}, {{id<"key">(), function.get()}});
}

void define_polyline() {
  define_class("Polyline", {},
               "A chain of straight segments through a list of points, in order. The points are\n"
               "shared, not copied; every operation returns new polylines and changes nothing.",
               {init_member,
                deserialize_member,
                from_lines_member,
                is_equal_to_member,
                start_point_member,
                end_point_member,
                lines_member,
                x_min_member,
                x_max_member,
                y_min_member,
                y_max_member,
                z_min_member,
                z_max_member,
                get_reversed_polyline_member,
                serialize_member,
                filter_duplicate_points_member,
                monotonic_x_member,
                monotonic_y_member,
                point_is_on_polyline_member,
                intersections_with_polyline_member,
                intersections_with_x_location_member,
                get_polyline_between_member,
                split_member,
                concatenate_member,
                find_overlaps_member,
                combine_with_member,
                lowest_or_highest_profile_member,
                find_lowest_or_highest_member},
               &guard);
}

}  // namespace ostrel
