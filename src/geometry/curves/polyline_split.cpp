// Polyline: where it meets another polyline or a vertical line, cutting it at a point,
// the part between two points, and joining two polylines end to end.
#include "curves/line.hpp"
#include "curves/polyline.hpp"
#include "foundations/tolerance.hpp"
#include "module/globals.hpp"

namespace ostrel {

namespace {

// Whether `point` equals the last item of a non-empty list.
bool repeats_last(PyObject* items, PyObject* point) {
  if (PyList_GET_SIZE(items) == 0) return false;
  Ref last = getitem(items, -1);
  return equal(point, last.get());
}

enum class IntersectionsWithPolyline { self, other_polyline };
Ref intersections_with_polyline(const Args& a) {
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain self, other;
        if (!native || !native->read(a.self(), self) ||
            !native->read(a[IntersectionsWithPolyline::other_polyline], other))
          return Ref{};
        return native->list(native->kernel().intersections_with_polyline(self, other));
      }))
    return r;
  Ref intersections = check(PyList_New(0));
  Ref lines = getattr(a.self(), id<"lines">());
  Ref own = check(PyObject_GetIter(lines.get()));
  while (Ref line = Ref::steal(PyIter_Next(own.get()))) {
    Ref line_intersections = check(PyList_New(0));
    Ref other_lines = getattr(a[IntersectionsWithPolyline::other_polyline], id<"lines">());
    Ref others = check(PyObject_GetIter(other_lines.get()));
    while (Ref other_line = Ref::steal(PyIter_Next(others.get()))) {
      Ref function = global<"calculate_intersection_bounded_lines">();
      Ref intersection = call_kw(function.get(), {line.get(), other_line.get()}, {{id<"inclusive">(), Py_True}});
      if (intersection.get() == Py_None) continue;
      if (repeats_last(intersections.get(), intersection.get())) continue;
      if (repeats_last(line_intersections.get(), intersection.get())) continue;
      check(PyList_Append(line_intersections.get(), intersection.get()));
    }
    if (PyErr_Occurred()) throw PyError{};
    if (PyList_GET_SIZE(line_intersections.get()) == 0) continue;
    Ref start = getattr(line.get(), id<"start_point">());
    sort_by_distance(line_intersections.get(), start.get(), SortKey::point);
    Ref extended = check(PySequence_InPlaceConcat(intersections.get(), line_intersections.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return intersections;
}

enum class IntersectionsWithX { self, x };
Ref intersections_with_x_location(const Args& a) {
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain self, at{{{a.num(IntersectionsWithX::x), 0.0, 0.0}, kernel::fresh, 0}};
        if (!native || !native->read(a.self(), self) || !kernel::tame(at)) return Ref{};
        return native->list(native->kernel().intersections_with_x_location(self, a.num(IntersectionsWithX::x)));
      }))
    return r;
  Ref x = new_float(a.num(IntersectionsWithX::x));
  Ref zero = new_int(0), one = new_int(1);
  Ref point_cls = global<"Point">();
  Ref bottom = call(point_cls.get(), {x.get(), zero.get()});
  Ref point_cls_again = global<"Point">();
  Ref top = call(point_cls_again.get(), {x.get(), one.get()});
  Ref line_cls = global<"Line">();
  Ref x_line = call(line_cls.get(), {bottom.get(), top.get()});
  Ref intersections = check(PyList_New(0));
  Ref points = points_of(a.self());
  Ref pairs = pairs_of(points.get());
  Ref start, end;
  while (next_pair(pairs.get(), start, end)) {
    Ref line = line_or_nothing(start.get(), end.get());
    if (!line) continue;
    Ref function = global<"calculate_intersection_bounded_line_extended_line">();
    Ref intersection = call(function.get(), {line.get(), x_line.get()});
    if (intersection.get() != Py_None) {
      if (!repeats_last(intersections.get(), intersection.get()))
        check(PyList_Append(intersections.get(), intersection.get()));
      continue;
    }
    // A segment along the vertical gives both its ends.
    Ref start_x = getattr(start.get(), id<"x">());
    if (!kernel::isclose(as_double(start_x.get()), a.num(IntersectionsWithX::x), abs_tolerance())) continue;
    Ref end_x = getattr(end.get(), id<"x">());
    if (!kernel::isclose(as_double(end_x.get()), a.num(IntersectionsWithX::x), abs_tolerance())) continue;
    if (!repeats_last(intersections.get(), start.get())) check(PyList_Append(intersections.get(), start.get()));
    if (!repeats_last(intersections.get(), end.get())) check(PyList_Append(intersections.get(), end.get()));
  }
  return intersections;
}

enum class Split { self, point };
Ref split(const Args& a) {
  PyObject *self = a.self(), *point = a[Split::point];
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain c;
        kernel::Node q;
        if (!native || !native->read(self, c) || !native->read_point(point, q)) return Ref{};
        auto [before, after] = native->kernel().split(c, {c, native->tolerances()}, q);
        Ref first = native->polyline(before);
        Ref second = native->polyline(after);
        return tuple({first.get(), second.get()});
      }))
    return r;
  Ref on = call_method(self, id<"point_is_on_polyline">(), {point});
  if (!truth(on.get())) {
    Ref points = points_of(self);
    raise_format(PyExc_ValueError, "Trying to split a polyline on point %S that is not on the polyline %S", point,
                 points.get());
  }
  Ref before = check(PyList_New(0)), after = check(PyList_New(0));
  bool found = false;
  Ref points = points_of(self);
  Ref pairs = pairs_of(points.get());
  Ref start, end;
  for (Py_ssize_t i = 0; next_pair(pairs.get(), start, end); ++i) {
    if (i == 0) check(PyList_Append(before.get(), start.get()));
    bool on_segment = false;
    if (raises(PyExc_ValueError, [&] {
          Ref line_cls = global<"Line">();
          Ref line = call(line_cls.get(), {start.get(), end.get()});
          Ref function = global<"point_is_on_bounded_line">();
          Ref result = call(function.get(), {point, line.get()});
          on_segment = truth(result.get());
        }))
      on_segment = equal(start.get(), point);
    if (on_segment) {
      if (equal(point, start.get()) && equal(point, end.get())) continue;
      if (!equal(point, end.get()) && !equal(point, start.get())) {
        check(PyList_Append(before.get(), point));
        check(PyList_Append(after.get(), point));
        found = true;
      } else if (equal(point, start.get()) && !equal(point, end.get())) {
        check(PyList_Append(after.get(), point));
        found = true;
      }
    }
    check(PyList_Append(found ? after.get() : before.get(), end.get()));
  }
  Ref first = new_polyline(before.get());
  Ref second = new_polyline(after.get());
  return tuple({first.get(), second.get()});
}

enum class Between { self, start_point, end_point, inclusive };
Ref get_polyline_between(const Args& a) {
  PyObject *self = a.self(), *start = a[Between::start_point], *end = a[Between::end_point];
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain c;
        kernel::Node from, to;
        const auto inclusive = plain_truth(a[Between::inclusive]);
        if (!native || !inclusive || !native->read(self, c) || !native->read_point(start, from) ||
            !native->read_point(end, to))
          return Ref{};
        return native->polyline(native->kernel().polyline_between(c, {c, native->tolerances()}, from, to, *inclusive));
      }))
    return r;
  Ref start_on = call_method(self, id<"point_is_on_polyline">(), {start});
  if (!truth(start_on.get())) raise(PyExc_ValueError, kernel::polyline_errors::start_not_on);
  Ref end_on = call_method(self, id<"point_is_on_polyline">(), {end});
  if (!truth(end_on.get())) raise(PyExc_ValueError, kernel::polyline_errors::end_not_on);
  Ref parts = call_method(self, id<"split">(), {start});
  Ref after_start = getitem(parts.get(), 1);
  Ref between;
  if (raises(PyExc_ValueError, [&] {
        Ref pieces = call_method(after_start.get(), id<"split">(), {end});
        between = getitem(pieces.get(), 0);
      })) {
    Ref empty = check(PyList_New(0));
    return new_polyline(empty.get());
  }
  if (truth(a[Between::inclusive])) return between;
  Ref points = points_of(between.get());
  Ref inner = check(PySequence_GetSlice(points.get(), 1, -1));
  return new_polyline(inner.get());
}

// _concatenate

// `len(polyline.points) > 0`
bool has_points(PyObject* polyline) {
  Ref points = points_of(polyline);
  return length_of(points.get()) > 0;
}

enum class Concatenate { polyline_1, polyline_2 };
Ref concatenate(const Args& a) {
  PyObject *first = a[Concatenate::polyline_1], *second = a[Concatenate::polyline_2];
  if (has_points(first) && has_points(second)) {
    Ref end = getattr(first, id<"end_point">());
    Ref start = getattr(second, id<"start_point">());
    if (!equal(end.get(), start.get()))
      raise(PyExc_ValueError, kernel::polyline_errors::not_concatenable);
  }
  if (has_points(first)) {
    Ref mine = points_of(first), theirs = points_of(second);
    Ref rest = check(PySequence_GetSlice(theirs.get(), 1, PY_SSIZE_T_MAX));
    Ref points = check(PyNumber_Add(mine.get(), rest.get()));
    return new_polyline(points.get());
  }
  Ref theirs = points_of(second);
  Ref points = check(PySequence_List(theirs.get()));
  return new_polyline(points.get());
}

}  // namespace

constexpr Member intersections_with_polyline_member =
    method("intersections_with_polyline", "(other_polyline: Polyline) -> List[Point]", intersections_with_polyline,
           "Where the segments of the other polyline cross this one's, in the order of travel along this one.");
constexpr Member intersections_with_x_location_member =
    method("intersections_with_x_location", "(x: float) -> List[Point]", intersections_with_x_location,
           "Where the polyline meets the vertical at x, in the order of travel; a segment along it gives both ends.");
constexpr Member split_member = method("split", "(point: Point) -> Tuple[Polyline, Polyline]", split,
                                       "The parts before and after a point on the polyline.");
constexpr Member get_polyline_between_member =
    method("get_polyline_between", "(start_point: Point, end_point: Point, inclusive: bool = False) -> Polyline",
           get_polyline_between,
           "The part from start_point to end_point, both points on the polyline; without them unless inclusive.");
constexpr Member concatenate_member =
    static_method("_concatenate", "(polyline_1: Polyline, polyline_2: Polyline) -> Polyline", concatenate,
                  "The first polyline followed by the second, which must start where the first ends.");

}  // namespace ostrel
