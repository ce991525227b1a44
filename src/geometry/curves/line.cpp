// Line: the directed segment between two points that do not coincide. The ends are
// the line's own points, copied from its arguments. The numeric members run on
// doubles in line_kernel; each takes the documented steps through the host instead
// wherever a caller has replaced something those steps call (a subclass override, a
// patched module global, coordinates that are no floats).
#include "curves/line_access.hpp"
#include "foundations/arithmetic_fault.hpp"
#include "foundations/indexing.hpp"
#include "foundations/point_access.hpp"
#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/globals.hpp"
#include "module/lazy_iterator.hpp"
#include "module/objects.hpp"
#include "module/own_globals.hpp"
#include "module/star_call.hpp"

namespace ostrel {

namespace {

// What the native find_overlap stands in for, besides the Line and Point classes.
OwnGlobals overlap_globals{"find_overlap", "np"};

Ref start_of(PyObject* line) { return getattr(line, id<"_start_point">()); }
Ref end_of(PyObject* line) { return getattr(line, id<"_end_point">()); }

// Point(*point).
Ref copy_point(PyObject* point) {
  if (point_class_native())
    if (const auto p = read_point_like(point)) return make_point(*p);
  Ref cls = global<"Point">();
  return star_call(cls.get(), point);
}

// The truth of `a == b` for two points.
bool points_equal(PyObject* a, PyObject* b) {
  if (point_class_native()) {
    const auto pa = read_point(a), pb = read_point(b);
    if (pa && pb) return coincide(*pa, *pb, module_tolerance());
  }
  return truth(compare(a, b, Py_EQ).get());
}

Ref init(const Args& a) {
  Ref start = copy_point(a[1]);
  Ref end = copy_point(a[2]);
  if (points_equal(start.get(), end.get())) raise(PyExc_ValueError, "Start and end point may not coincide");
  setattr(a.self(), id<"_start_point">(), start.get());
  setattr(a.self(), id<"_end_point">(), end.get());
  return none();
}

Ref get_end(const Args& a) { return item_index(a[1], 2) == 0 ? start_of(a.self()) : end_of(a.self()); }

Ref start_iteration(PyObject* self) {
  Ref start = start_of(self), end = end_of(self);
  Ref items = tuple({start.get(), end.get()});
  return check(PyObject_GetIter(items.get()));
}

Ref iter(const Args& a) { return make_lazy_iterator(a.self(), start_iteration); }

Ref eq(const Args& a) {
  PyObject *self = a.self(), *other = a[1];
  if (!isinstance(other, global<"Line">().get())) return Ref::borrow(Py_NotImplemented);
  Ref mine = start_of(self), theirs = start_of(other);
  Ref starts = compare(mine.get(), theirs.get(), Py_EQ);
  if (!truth(starts.get())) return starts;
  Ref my_end = end_of(self), their_end = end_of(other);
  return compare(my_end.get(), their_end.get(), Py_EQ);
}

Ref get_start_point(const Args& a) { return start_of(a.self()); }
Ref get_end_point(const Args& a) { return end_of(a.self()); }

// self._start_point.vector_to(self._end_point)
Ref span(PyObject* self) {
  Ref start = start_of(self), end = end_of(self);
  return call_method(start.get(), id<"vector_to">(), {end.get()});
}

Ref length(const Args& a) {
  Ref v = span(a.self());
  return getattr(v.get(), id<"magnitude">());
}

Ref direction(const Args& a) {
  Ref v = span(a.self());
  if (truth(a[1])) return call_method(v.get(), id<"normalize">(), {});
  return v;
}

Ref collinear(const Args& a) {
  PyObject *self = a.self(), *point = a[1];
  if (point_class_native() && vector_class_native()) {
    // base.vector_to(p) is called on one of the line's own points.
    const auto p = read_point_like(point);
    HeldLine held;
    const bool read = p && hold_line_xy(self, held) && read_z(held) && holds_only_fields(held.start.get(), 3) &&
                      holds_only_fields(held.end.get(), 3);
    const auto t = read ? current_tolerances() : std::nullopt;
    if (t) try {
        return boolean(ostrel::collinear(held.segment, *p, t->module));
      } catch (const ArithmeticFault& fault) {
        raise_host_error(fault);
      }
  }
  Ref cls = global<"Point">();
  Ref p = star_call(cls.get(), point);
  Ref start = start_of(self);
  Ref base = truth(compare(start.get(), p.get(), Py_NE).get()) ? start_of(self) : end_of(self);
  Ref to_point = call_method(base.get(), id<"vector_to">(), {p.get()});
  Ref vec = call_method(to_point.get(), id<"normalize">(), {});
  Ref along = call_method(self, id<"direction">(), {});
  Ref same = compare(along.get(), vec.get(), Py_EQ);
  if (truth(same.get())) return same;
  Ref opposite = check(PyNumber_Negative(vec.get()));
  return compare(along.get(), opposite.get(), Py_EQ);
}

// Point(*(projection_length * direction + Vector(*self._start_point))), with the
// names looked up where the expression looks them up.
Ref project_point(const Args& a) {
  PyObject* self = a.self();
  Ref along = call_method(self, id<"direction">(), {});
  Ref start = start_of(self);
  Ref to_point = call_method(start.get(), id<"vector_to">(), {a[1]});
  Ref projection_length = call_method(along.get(), id<"dot">(), {to_point.get()});
  Ref point_cls = global<"Point">();
  Ref scaled = check(PyNumber_Multiply(projection_length.get(), along.get()));
  Ref vector_cls = global<"Vector">();
  Ref start_again = start_of(self);
  Ref origin = star_call(vector_cls.get(), start_again.get());
  Ref foot = check(PyNumber_Add(scaled.get(), origin.get()));
  return star_call(point_cls.get(), foot.get());
}

Ref distance_to_point(const Args& a) {
  Ref foot = call_method(a.self(), id<"project_point">(), {a[1]});
  Ref v = call_method(foot.get(), id<"vector_to">(), {a[1]});
  return getattr(v.get(), id<"magnitude">());
}

Ref length_vector(const Args& a) {
  Ref array = getattr(global<"np">().get(), id<"array">());
  Ref v = span(a.self());
  Ref coordinates = getattr(v.get(), id<"coordinates">());
  return call(array.get(), {coordinates.get()});
}

Ref unit_vector(const Args& a) {
  Ref one = new_int(1);
  Ref size = getattr(a.self(), id<"length">());
  Ref inverse = check(PyNumber_TrueDivide(one.get(), size.get()));
  Ref vector = getattr(a.self(), id<"length_vector">());
  return check(PyNumber_Multiply(inverse.get(), vector.get()));
}

Ref geometries(const Args& a) {
  Ref start = start_of(a.self()), end = end_of(a.self());
  return tuple({start.get(), end.get()});
}

// math.isclose(self.start_point.<c>, self.end_point.<c>), no tolerance arguments.
bool ends_close(PyObject* self, PyObject* coordinate) {
  Ref start = getattr(self, id<"start_point">());
  Ref s = getattr(start.get(), coordinate);
  Ref end = getattr(self, id<"end_point">());
  Ref e = getattr(end.get(), coordinate);
  const double sv = as_double(s.get());
  return isclose(sv, as_double(e.get()), plain_tolerance);
}

Ref horizontal(const Args& a) {
  if (const auto s = read_line_xy(a.self())) return boolean(is_horizontal(*s));
  if (!ends_close(a.self(), id<"y">())) return boolean(false);
  return boolean(!ends_close(a.self(), id<"x">()));
}

Ref vertical(const Args& a) {
  if (const auto s = read_line_xy(a.self())) return boolean(is_vertical(*s));
  if (!ends_close(a.self(), id<"x">())) return boolean(false);
  return boolean(!ends_close(a.self(), id<"y">()));
}

Ref discretize(const Args& a) {
  Ref two = new_int(2);
  if (truth(compare(a[1], two.get(), Py_NE).get()))
    raise(PyExc_NotImplementedError, "Discretization of line not support for num != 2 ");
  Ref start = start_of(a.self()), end = end_of(a.self());
  return list({start.get(), end.get()});
}

Ref get_line_function_parameters(const Args& a) {
  PyObject* self = a.self();
  if (const auto s = read_line_xy(self)) {
    if (s->end.x - s->start.x != 0.0) {
      const LineFunction f = line_function(*s);
      Ref slope = new_float(f.a), intercept = new_float(f.b);
      return tuple({slope.get(), intercept.get()});
    }
    // The slope is the object np.nan itself.
    Ref nan = getattr(global<"np">().get(), id<"nan">());
    if (PyFloat_CheckExact(nan.get())) {
      Ref intercept = new_float(s->start.y - PyFloat_AS_DOUBLE(nan.get()) * s->start.x);
      return tuple({nan.get(), intercept.get()});
    }
  }
  Ref slope;
  try {
    Ref ey = end_coordinate(self, id<"end_point">(), id<"y">());
    Ref sy = end_coordinate(self, id<"start_point">(), id<"y">());
    Ref dy = sub(ey.get(), sy.get());
    Ref ex = end_coordinate(self, id<"end_point">(), id<"x">());
    Ref sx = end_coordinate(self, id<"start_point">(), id<"x">());
    Ref dx = sub(ex.get(), sx.get());
    slope = div(dy.get(), dx.get());
  } catch (const PyError&) {
    if (!PyErr_ExceptionMatches(PyExc_ZeroDivisionError)) throw;
    PyErr_Clear();
    slope = getattr(global<"np">().get(), id<"nan">());
  }
  Ref sy = end_coordinate(self, id<"start_point">(), id<"y">());
  Ref sx = end_coordinate(self, id<"start_point">(), id<"x">());
  Ref product = mul(slope.get(), sx.get());
  Ref intercept = sub(sy.get(), product.get());
  return tuple({slope.get(), intercept.get()});
}

// _check_overlap_sign_x and _y: the pair turned round when exactly one of it and the
// line runs towards larger values of the coordinate.
template <Literal C>
Ref check_overlap_sign(const Args& a) {
  PyObject* overlap = a[1];
  Ref zero = new_int(0);
  Ref last = getitem(overlap, 1), first = getitem(overlap, 0);
  Ref width = sub(last.get(), first.get());
  const bool ascending = truth(compare(width.get(), zero.get(), Py_GT).get());
  Ref end = end_coordinate(a.self(), id<"end_point">(), id<C>());
  Ref start = end_coordinate(a.self(), id<"start_point">(), id<C>());
  Ref run = sub(end.get(), start.get());
  const bool forward = truth(compare(run.get(), zero.get(), Py_GT).get());
  if (ascending == forward) return Ref::borrow(overlap);
  Ref second = getitem(overlap, 1), first_again = getitem(overlap, 0);
  return tuple({second.get(), first_again.get()});
}

// Line(Point(x0, ys[0]), Point(x1, ys[1])), or Point(x0, ys[0]) when that raises
// ValueError: the two ends coincide.
Ref line_or_point(PyObject* x0, PyObject* x1, PyObject* ys) {
  try {
    Ref line_cls = global<"Line">();
    Ref point_cls = global<"Point">();
    Ref y0 = getitem(ys, 0);
    Ref start = call(point_cls.get(), {x0, y0.get()});
    Ref point_cls_again = global<"Point">();
    Ref y1 = getitem(ys, 1);
    Ref end = call(point_cls_again.get(), {x1, y1.get()});
    return call(line_cls.get(), {start.get(), end.get()});
  } catch (const PyError&) {
    if (!PyErr_ExceptionMatches(PyExc_ValueError)) throw;
    PyErr_Clear();
  }
  Ref point_cls = global<"Point">();
  Ref y0 = getitem(ys, 0);
  return call(point_cls.get(), {x0, y0.get()});
}

// find_overlap((line.<end>.<c>, ...), (other.<end>.<c>, ...), inclusive) of the module.
Ref interval_overlap(PyObject* self, PyObject* other, PyObject* c, PyObject* inclusive) {
  Ref function = global<"find_overlap">();
  Ref s0 = end_coordinate(self, id<"start_point">(), c), s1 = end_coordinate(self, id<"end_point">(), c);
  Ref mine = tuple({s0.get(), s1.get()});
  Ref o0 = end_coordinate(other, id<"start_point">(), c), o1 = end_coordinate(other, id<"end_point">(), c);
  Ref theirs = tuple({o0.get(), o1.get()});
  return call(function.get(), {mine.get(), theirs.get(), inclusive});
}

Ref vertical_overlap(PyObject* self, PyObject* other, PyObject* inclusive) {
  Ref sx = end_coordinate(self, id<"start_point">(), id<"x">());
  Ref ox = end_coordinate(other, id<"start_point">(), id<"x">());
  const double x = as_double(sx.get()), other_x = as_double(ox.get());
  if (!isclose(x, other_x, abs_tolerance())) return none();
  Ref overlap_x = end_coordinate(self, id<"start_point">(), id<"x">());
  Ref overlap_y = interval_overlap(self, other, id<"y">(), inclusive);
  if (overlap_y.get() == Py_None) return none();
  overlap_y = call_method(self, id<"_check_overlap_sign_y">(), {overlap_y.get()});
  return line_or_point(overlap_x.get(), overlap_x.get(), overlap_y.get());
}

// math.isclose(a, b, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
bool module_close(PyObject* a, PyObject* b) {
  const double x = as_double(a), y = as_double(b);
  return isclose(x, y, module_tolerance());
}

Ref sloped_overlap(PyObject* self, PyObject* other, PyObject* inclusive) {
  Ref mine[2], theirs[2];
  Ref my_function = call_method(self, id<"get_line_function_parameters">(), {});
  unpack(my_function.get(), 2, mine);
  Ref their_function = call_method(other, id<"get_line_function_parameters">(), {});
  unpack(their_function.get(), 2, theirs);
  if (!module_close(mine[0].get(), theirs[0].get()) || !module_close(mine[1].get(), theirs[1].get())) return none();
  Ref overlap_x = interval_overlap(self, other, id<"x">(), inclusive);
  Ref zero = new_int(0);
  Ref overlap_y = module_close(mine[0].get(), zero.get()) ? tuple({mine[1].get(), mine[1].get()})
                                                          : interval_overlap(self, other, id<"y">(), inclusive);
  if (overlap_x.get() == Py_None || overlap_y.get() == Py_None) return none();
  overlap_x = call_method(self, id<"_check_overlap_sign_x">(), {overlap_x.get()});
  overlap_y = call_method(self, id<"_check_overlap_sign_y">(), {overlap_y.get()});
  Ref x0 = getitem(overlap_x.get(), 0), x1 = getitem(overlap_x.get(), 1);
  return line_or_point(x0.get(), x1.get(), overlap_y.get());
}

Ref find_overlap(const Args& a) {
  PyObject *self = a.self(), *other = a[1], *inclusive = a[2];
  if (overlap_globals.hold() && line_class_native()) {
    const auto include = plain_truth(inclusive);
    const auto mine = include ? read_line_xy(self) : std::nullopt;
    const auto theirs = mine ? read_line_xy(other) : std::nullopt;
    const auto t = theirs ? current_tolerances() : std::nullopt;
    if (t) {
      const Overlap o = ostrel::find_overlap(*mine, *theirs, *include, *t);
      if (o.kind == Overlap::Kind::point) return make_point(o.start);
      if (o.kind == Overlap::Kind::line) return make_line({o.start, o.end});
      return none();
    }
  }
  Ref self_vertical = getattr(self, id<"vertical">());
  if (truth(self_vertical.get())) {
    Ref other_vertical = getattr(other, id<"vertical">());
    if (truth(other_vertical.get())) return vertical_overlap(self, other, inclusive);
  }
  Ref self_vertical_again = getattr(self, id<"vertical">());
  if (truth(self_vertical_again.get())) return none();
  Ref other_vertical = getattr(other, id<"vertical">());
  if (truth(other_vertical.get())) return none();
  return sloped_overlap(self, other, inclusive);
}

}  // namespace

void define_line() {
  Ref cls = ClassBuilder("Line", {},
               "A straight segment from start_point to end_point, two points that do not coincide.\n"
               "A line is directed: a line and its reverse are not equal.")
      .method("__init__", "(start_point: Point-like, end_point: Point-like)", init,
              "Make a line between copies of two points, or of two sequences of two or three numbers;\n"
              "ValueError when they coincide.")
      .method("__getitem__", "(index: int) -> Point", get_end, "The start point at 0, the end point at 1.")
      .method("__iter__", "() -> Iterator[Point]", iter, "Iterate over the start and end point.")
      .method("__eq__", "(other: object) -> bool", eq, "Equal start points and equal end points.")
      .property("start_point", "() -> Point", get_start_point, "The first end of the line.")
      .property("end_point", "() -> Point", get_end_point, "The second end of the line.")
      .property("length", "() -> float", length, "Distance from the start point to the end point.")
      .method("direction", "(normalize: bool = True) -> Vector", direction,
              "The vector from the start point to the end point, of length one when normalize is true.")
      .method("collinear", "(point: Point-like) -> bool", collinear,
              "Whether the point lies on the unbounded line through this one.")
      .method("project_point", "(point: Point-like) -> Point", project_point,
              "The foot of the perpendicular from the point on the unbounded line.")
      .method("distance_to_point", "(point: Point-like) -> float", distance_to_point,
              "Distance from the point to the unbounded line.")
      .property("length_vector", "() -> np.ndarray", length_vector, "The array from the start point to the end point.")
      .property("unit_vector", "() -> np.ndarray", unit_vector, "The length vector divided by the length.")
      .property("geometries", "() -> Tuple[Point, Point]", geometries, "The tuple of the start and end point.")
      .property("horizontal", "() -> bool", horizontal, "Equal y and different x at both ends (plain math.isclose).")
      .property("vertical", "() -> bool", vertical, "Equal x and different y at both ends (plain math.isclose).")
      .method("discretize", "(num: int = 2) -> List[Point]", discretize,
              "The start and end point; other numbers of points are not supported.")
      .method("get_line_function_parameters", "() -> Tuple[float, float]", get_line_function_parameters,
              "(a, b) of y = a * x + b in the xy plane; both NaN for an x difference of exactly zero.")
      .method("find_overlap", "(other: Line, inclusive: bool = False) -> Optional[Union[Point, Line]]", find_overlap,
              "The part of the xy plane both parallel lines cover: None, a Point for a length of zero,\n"
              "or a Line in the direction of this one, at z = 0.")
      .method("_check_overlap_sign_x", "(overlap: Tuple[float, float]) -> Tuple[float, float]", check_overlap_sign<"x">,
              "The x pair of an overlap, turned to run along this line.")
      .method("_check_overlap_sign_y", "(overlap: Tuple[float, float]) -> Tuple[float, float]", check_overlap_sign<"y">,
              "The y pair of an overlap, turned to run along this line.")
      .build();
  line_class().set(cls.get());
}

}  // namespace ostrel
