// Line: the directed segment between two points that do not coincide. The ends are
// the line's own points, copied from its arguments. The numeric members run on
// doubles in line_kernel; each takes the documented steps through the host instead
// wherever a caller has replaced something those steps call (a subclass override, a
// patched module global, coordinates that are no floats).
#include "curves/line.hpp"

#include <limits>

#include "foundations/indexing.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vector.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/lazy_iterator.hpp"
#include "module/objects.hpp"
#include "module/star_call.hpp"

namespace ostrel {

namespace {

using kernel::Segment;

ClassGuard guard;
Natives natives{{&guard, &point_class()}};
// What the native collinear stands in for: base.vector_to(p).normalize() and friends.
Natives collinear_natives{{&vector_class()}, {&point_natives()}};
// What the native find_overlap stands in for.
Natives overlap_natives{{}, {&natives}};

Ref start_of(PyObject* line) { return getattr(line, id<"_start_point">()); }
Ref end_of(PyObject* line) { return getattr(line, id<"_end_point">()); }

// Point(*point).
Ref copy_point(PyObject* point) {
  if (Ref r = native_path(point_natives(), [&] {
        const auto p = read_point_like(point);
        return p ? make_point(*p) : Ref{};
      }))
    return r;
  Ref cls = global<"Point">();
  return star_call(cls.get(), point);
}

// The truth of `a == b` for two points.
bool points_equal(PyObject* a, PyObject* b) {
  Ref equal = native_path(point_natives(), [&] {
    const auto pa = read_point(a), pb = pa ? read_point(b) : std::nullopt;
    return pb ? boolean(kernel::coincide(*pa, *pb, module_tolerance())) : Ref{};
  });
  return equal ? equal.get() == Py_True : compares(a, b, Py_EQ);
}

enum class Init { self, start_point, end_point };
Ref init(const Args& a) {
  Ref start = copy_point(a[Init::start_point]);
  Ref end = copy_point(a[Init::end_point]);
  if (points_equal(start.get(), end.get())) raise(PyExc_ValueError, "Start and end point may not coincide");
  setattr(a.self(), id<"_start_point">(), start.get());
  setattr(a.self(), id<"_end_point">(), end.get());
  return none();
}
constexpr Member init_member =
    method("__init__", "(start_point: Point-like, end_point: Point-like)", init,
           "Make a line between copies of two points, or of two sequences of two or three numbers;\n"
           "ValueError when they coincide.");

enum class GetEnd { self, index };
Ref get_end(const Args& a) { return item_index(a[GetEnd::index], 2) == 0 ? start_of(a.self()) : end_of(a.self()); }
constexpr Member get_end_member =
    method("__getitem__", "(index: int) -> Point", get_end, "The start point at 0, the end point at 1.");

Ref start_iteration(PyObject* self) {
  Ref start = start_of(self), end = end_of(self);
  Ref items = tuple({start.get(), end.get()});
  return check(PyObject_GetIter(items.get()));
}

Ref iter(const Args& a) { return make_lazy_iterator(a.self(), start_iteration); }
constexpr Member iter_member =
    method("__iter__", "() -> Iterator[Point]", iter, "Iterate over the start and end point.");

enum class Eq { self, other };
Ref eq(const Args& a) {
  PyObject *self = a.self(), *other = a[Eq::other];
  if (!isinstance(other, global<"Line">().get())) return Ref::borrow(Py_NotImplemented);
  Ref mine = start_of(self), theirs = start_of(other);
  Ref starts = compare(mine.get(), theirs.get(), Py_EQ);
  if (!truth(starts.get())) return starts;
  Ref my_end = end_of(self), their_end = end_of(other);
  return compare(my_end.get(), their_end.get(), Py_EQ);
}
constexpr Member eq_member =
    method("__eq__", "(other: object) -> bool", eq, "Equal start points and equal end points.");

Ref get_start_point(const Args& a) { return start_of(a.self()); }
constexpr Member get_start_point_member =
    property("start_point", "() -> Point", get_start_point, "The first end of the line.");
Ref get_end_point(const Args& a) { return end_of(a.self()); }
constexpr Member get_end_point_member =
    property("end_point", "() -> Point", get_end_point, "The second end of the line.");

// self._start_point.vector_to(self._end_point)
Ref span(PyObject* self) {
  Ref start = start_of(self), end = end_of(self);
  return call_method(start.get(), id<"vector_to">(), {end.get()});
}

Ref length(const Args& a) {
  Ref v = span(a.self());
  return getattr(v.get(), id<"magnitude">());
}
constexpr Member length_member =
    property("length", "() -> float", length, "Distance from the start point to the end point.");

enum class Direction { self, normalize };
Ref direction(const Args& a) {
  Ref v = span(a.self());
  if (truth(a[Direction::normalize])) return call_method(v.get(), id<"normalize">(), {});
  return v;
}
constexpr Member direction_member =
    method("direction", "(normalize: bool = True) -> Vector", direction,
           "The vector from the start point to the end point, of length one when normalize is true.");

enum class Collinear { self, point };
Ref collinear(const Args& a) {
  PyObject *self = a.self(), *point = a[Collinear::point];
  if (Ref r = native_path(collinear_natives, [&] {
        // base.vector_to(p) is called on one of the line's own points.
        const auto p = read_point_like(point);
        HeldLine held;
        const bool read = p && hold_line_xy(self, held) && read_z(held) && holds_only_fields(held.start.get(), 3) &&
                          holds_only_fields(held.end.get(), 3);
        const auto t = read ? native_tolerances() : std::nullopt;
        return t ? boolean(kernel::collinear(held.segment, *p, t->module)) : Ref{};
      }))
    return r;
  Ref cls = global<"Point">();
  Ref p = star_call(cls.get(), point);
  Ref start = start_of(self);
  Ref base = compares(start.get(), p.get(), Py_NE) ? start_of(self) : end_of(self);
  Ref to_point = call_method(base.get(), id<"vector_to">(), {p.get()});
  Ref vec = call_method(to_point.get(), id<"normalize">(), {});
  Ref along = call_method(self, id<"direction">(), {});
  Ref same = compare(along.get(), vec.get(), Py_EQ);
  if (truth(same.get())) return same;
  Ref opposite = check(PyNumber_Negative(vec.get()));
  return compare(along.get(), opposite.get(), Py_EQ);
}
constexpr Member collinear_member = method("collinear", "(point: Point-like) -> bool", collinear,
                                           "Whether the point lies on the unbounded line through this one.");

// Point(*(projection_length * direction + Vector(*self._start_point))), with the
// names looked up where the expression looks them up.
enum class ProjectPoint { self, point };
Ref project_point(const Args& a) {
  PyObject* self = a.self();
  Ref along = call_method(self, id<"direction">(), {});
  Ref start = start_of(self);
  Ref to_point = call_method(start.get(), id<"vector_to">(), {a[ProjectPoint::point]});
  Ref projection_length = call_method(along.get(), id<"dot">(), {to_point.get()});
  Ref point_cls = global<"Point">();
  Ref scaled = check(PyNumber_Multiply(projection_length.get(), along.get()));
  Ref vector_cls = global<"Vector">();
  Ref start_again = start_of(self);
  Ref origin = star_call(vector_cls.get(), start_again.get());
  Ref foot = check(PyNumber_Add(scaled.get(), origin.get()));
  return star_call(point_cls.get(), foot.get());
}
constexpr Member project_point_member = method("project_point", "(point: Point-like) -> Point", project_point,
                                               "The foot of the perpendicular from the point on the unbounded line.");

enum class DistanceToPoint { self, point };
Ref distance_to_point(const Args& a) {
  Ref foot = call_method(a.self(), id<"project_point">(), {a[DistanceToPoint::point]});
  Ref v = call_method(foot.get(), id<"vector_to">(), {a[DistanceToPoint::point]});
  return getattr(v.get(), id<"magnitude">());
}
constexpr Member distance_to_point_member = method("distance_to_point", "(point: Point-like) -> float",
                                                   distance_to_point, "Distance from the point to the unbounded line.");

Ref length_vector(const Args& a) {
  Ref array = getattr(global<"np">().get(), id<"array">());
  Ref v = span(a.self());
  Ref coordinates = getattr(v.get(), id<"coordinates">());
  return call(array.get(), {coordinates.get()});
}
constexpr Member length_vector_member =
    property("length_vector", "() -> np.ndarray", length_vector, "The array from the start point to the end point.");

Ref unit_vector(const Args& a) {
  Ref one = new_int(1);
  Ref size = getattr(a.self(), id<"length">());
  Ref inverse = check(PyNumber_TrueDivide(one.get(), size.get()));
  Ref vector = getattr(a.self(), id<"length_vector">());
  return check(PyNumber_Multiply(inverse.get(), vector.get()));
}
constexpr Member unit_vector_member =
    property("unit_vector", "() -> np.ndarray", unit_vector, "The length vector divided by the length.");

Ref geometries(const Args& a) {
  Ref start = start_of(a.self()), end = end_of(a.self());
  return tuple({start.get(), end.get()});
}
constexpr Member geometries_member =
    property("geometries", "() -> Tuple[Point, Point]", geometries, "The tuple of the start and end point.");

// math.isclose(self.start_point.<c>, self.end_point.<c>), no tolerance arguments.
bool ends_close(PyObject* self, PyObject* coordinate) {
  Ref start = getattr(self, id<"start_point">());
  Ref s = getattr(start.get(), coordinate);
  Ref end = getattr(self, id<"end_point">());
  Ref e = getattr(end.get(), coordinate);
  const double sv = as_double(s.get());
  return kernel::isclose(sv, as_double(e.get()), kernel::plain_tolerance);
}

Ref horizontal(const Args& a) {
  if (const auto s = read_line_xy(a.self())) return boolean(kernel::is_horizontal(*s));
  if (!ends_close(a.self(), id<"y">())) return boolean(false);
  return boolean(!ends_close(a.self(), id<"x">()));
}
constexpr Member horizontal_member = property("horizontal", "() -> bool", horizontal,
                                              "Equal y and different x at both ends (plain math.isclose).");

Ref vertical(const Args& a) {
  if (const auto s = read_line_xy(a.self())) return boolean(kernel::is_vertical(*s));
  if (!ends_close(a.self(), id<"x">())) return boolean(false);
  return boolean(!ends_close(a.self(), id<"y">()));
}
constexpr Member vertical_member =
    property("vertical", "() -> bool", vertical, "Equal x and different y at both ends (plain math.isclose).");

enum class Discretize { self, num };
Ref discretize(const Args& a) {
  Ref two = new_int(2);
  if (compares(a[Discretize::num], two.get(), Py_NE))
    raise(PyExc_NotImplementedError, "Discretization of line not support for num != 2 ");
  Ref start = start_of(a.self()), end = end_of(a.self());
  return list({start.get(), end.get()});
}
constexpr Member discretize_member = method("discretize", "(num: int = 2) -> List[Point]", discretize,
                                            "The start and end point; other numbers of points are not supported.");

Ref get_line_function_parameters(const Args& a) {
  PyObject* self = a.self();
  if (const auto s = read_line_xy(self)) {
    if (s->end.x - s->start.x != 0.0) {
      const kernel::LineFunction f = kernel::line_function(*s);
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
  if (raises(PyExc_ZeroDivisionError, [&] {
        Ref ey = end_coordinate(self, id<"end_point">(), id<"y">());
        Ref sy = end_coordinate(self, id<"start_point">(), id<"y">());
        Ref dy = sub(ey.get(), sy.get());
        Ref ex = end_coordinate(self, id<"end_point">(), id<"x">());
        Ref sx = end_coordinate(self, id<"start_point">(), id<"x">());
        Ref dx = sub(ex.get(), sx.get());
        slope = div(dy.get(), dx.get());
      }))
    slope = getattr(global<"np">().get(), id<"nan">());
  Ref sy = end_coordinate(self, id<"start_point">(), id<"y">());
  Ref sx = end_coordinate(self, id<"start_point">(), id<"x">());
  Ref product = mul(slope.get(), sx.get());
  Ref intercept = sub(sy.get(), product.get());
  return tuple({slope.get(), intercept.get()});
}
constexpr Member get_line_function_parameters_member =
    method("get_line_function_parameters", "() -> Tuple[float, float]", get_line_function_parameters,
           "(a, b) of y = a * x + b in the xy plane; both NaN for an x difference of exactly zero.");

// _check_overlap_sign_x and _y: the pair turned round when exactly one of it and the
// line runs towards larger values of the coordinate.
enum class CheckOverlapSign { self, overlap };
template <Literal C>
Ref check_overlap_sign(const Args& a) {
  PyObject* overlap = a[CheckOverlapSign::overlap];
  Ref zero = new_int(0);
  Ref last = getitem(overlap, 1), first = getitem(overlap, 0);
  Ref width = sub(last.get(), first.get());
  const bool ascending = compares(width.get(), zero.get(), Py_GT);
  Ref end = end_coordinate(a.self(), id<"end_point">(), id<C>());
  Ref start = end_coordinate(a.self(), id<"start_point">(), id<C>());
  Ref run = sub(end.get(), start.get());
  const bool forward = compares(run.get(), zero.get(), Py_GT);
  if (ascending == forward) return Ref::borrow(overlap);
  Ref second = getitem(overlap, 1), first_again = getitem(overlap, 0);
  return tuple({second.get(), first_again.get()});
}
constexpr Member check_overlap_sign_x_member =
    method("_check_overlap_sign_x", "(overlap: Tuple[float, float]) -> Tuple[float, float]", check_overlap_sign<"x">,
           "The x pair of an overlap, turned to run along this line.");
constexpr Member check_overlap_sign_y_member =
    method("_check_overlap_sign_y", "(overlap: Tuple[float, float]) -> Tuple[float, float]", check_overlap_sign<"y">,
           "The y pair of an overlap, turned to run along this line.");

// Line(Point(x0, ys[0]), Point(x1, ys[1])), or Point(x0, ys[0]) when that raises
// ValueError: the two ends coincide.
Ref line_or_point(PyObject* x0, PyObject* x1, PyObject* ys) {
  Ref line;
  if (!raises(PyExc_ValueError, [&] {
        Ref line_cls = global<"Line">();
        Ref point_cls = global<"Point">();
        Ref y0 = getitem(ys, 0);
        Ref start = call(point_cls.get(), {x0, y0.get()});
        Ref point_cls_again = global<"Point">();
        Ref y1 = getitem(ys, 1);
        Ref end = call(point_cls_again.get(), {x1, y1.get()});
        line = call(line_cls.get(), {start.get(), end.get()});
      }))
    return line;
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
  if (!kernel::isclose(x, other_x, abs_tolerance())) return none();
  Ref overlap_x = end_coordinate(self, id<"start_point">(), id<"x">());
  Ref overlap_y = interval_overlap(self, other, id<"y">(), inclusive);
  if (overlap_y.get() == Py_None) return none();
  overlap_y = call_method(self, id<"_check_overlap_sign_y">(), {overlap_y.get()});
  return line_or_point(overlap_x.get(), overlap_x.get(), overlap_y.get());
}

// math.isclose(a, b, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
bool module_close(PyObject* a, PyObject* b) {
  const double x = as_double(a), y = as_double(b);
  return kernel::isclose(x, y, module_tolerance());
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

enum class FindOverlap { self, other, inclusive };
Ref find_overlap(const Args& a) {
  PyObject *self = a.self(), *other = a[FindOverlap::other], *inclusive = a[FindOverlap::inclusive];
  if (Ref r = native_path(overlap_natives, [&] {
        const auto include = plain_truth(inclusive);
        const auto mine = include ? read_line_xy(self) : std::nullopt;
        const auto theirs = mine ? read_line_xy(other) : std::nullopt;
        const auto t = theirs ? native_tolerances() : std::nullopt;
        if (!t) return Ref{};
        using kernel::Overlap;
        const Overlap o = kernel::find_overlap(*mine, *theirs, *include, *t);
        if (o.kind == Overlap::Kind::point) return make_point(o.start);
        if (o.kind == Overlap::Kind::line) return make_line({o.start, o.end});
        return none();
      }))
    return r;
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
constexpr Member find_overlap_member =
    method("find_overlap", "(other: Line, inclusive: bool = False) -> Optional[Union[Point, Line]]", find_overlap,
           "The part of the xy plane both parallel lines cover: None, a Point for a length of zero,\n"
           "or a Line in the direction of this one, at z = 0.");

enum class Revolve { self, material, kwargs };
Ref revolve(const Args& a) {
  Ref keywords = check(PyDict_New());
  check(PyDict_SetItem(keywords.get(), id<"material">(), a[Revolve::material]));
  check(PyDict_Update(keywords.get(), a[Revolve::kwargs]));
  Ref arguments = tuple({a.self()});
  return check(PyObject_Call(global<"LineRevolve">().get(), arguments.get(), keywords.get()));
}
constexpr Member revolve_member = method("revolve", "(*, material: Material = None, **kwargs: Any) -> LineRevolve",
                                         revolve, "The LineRevolve of this line: its full turn around the y-axis.");

}  // namespace

const ClassGuard& line_class() { return guard; }

bool holds_only_fields(PyObject* o, Py_ssize_t n) {
  Ref dict = Ref::borrow(instance_dict(o));
  if (!dict) PyErr_Clear();
  return dict && PyDict_GET_SIZE(dict.get()) == n;
}

bool hold_line_xy(PyObject* line, HeldLine& held) {
  if (!guard.admits(line)) return false;
  Ref dict = Ref::borrow(instance_dict(line));
  if (!dict || PyDict_GET_SIZE(dict.get()) != 2) {
    PyErr_Clear();
    return false;
  }
  held.start = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_start_point">()));
  held.end = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_end_point">()));
  if (!held.start || !held.end) {
    PyErr_Clear();
    return false;
  }
  auto read_xy = [](PyObject* point, Vec3& p) {
    return read_floats(point_class(), point, {id<"_x">(), id<"_y">()}, &p.x);
  };
  return read_xy(held.start.get(), held.segment.start) && read_xy(held.end.get(), held.segment.end);
}

bool read_z(HeldLine& held) {
  return read_floats(point_class(), held.start.get(), {id<"_z">()}, &held.segment.start.z) &&
         read_floats(point_class(), held.end.get(), {id<"_z">()}, &held.segment.end.z);
}

std::optional<kernel::Segment> read_line(PyObject* line) {
  HeldLine held;
  if (hold_line_xy(line, held) && read_z(held)) return held.segment;
  return std::nullopt;
}

std::optional<kernel::Segment> read_line_xy(PyObject* line) {
  HeldLine held;
  if (!hold_line_xy(line, held)) return std::nullopt;
  held.segment.start.z = held.segment.end.z = std::numeric_limits<double>::quiet_NaN();
  return held.segment;
}

const Natives& line_natives() { return natives; }
const Natives& line_collinear_natives() { return collinear_natives; }

Ref make_line(const kernel::Segment& s) {
  Ref start = make_point(s.start), end = make_point(s.end);
  return new_instance(guard, {{id<"_start_point">(), start.get()}, {id<"_end_point">(), end.get()}});
}

std::optional<bool> plain_truth(PyObject* o) {
  if (o == Py_True) return true;
  if (o == Py_False || o == Py_None) return false;
  if (PyLong_CheckExact(o)) return PyObject_IsTrue(o) != 0;  // cannot fail for an int
  return std::nullopt;
}

Ref end_coordinate(PyObject* line, PyObject* end, PyObject* c) {
  Ref point = getattr(line, end);
  return getattr(point.get(), c);
}

void define_line() {
  define_class("Line", {},
               "A straight segment from start_point to end_point, two points that do not coincide.\n"
               "A line is directed: a line and its reverse are not equal.",
               {init_member,
                get_end_member,
                iter_member,
                eq_member,
                get_start_point_member,
                get_end_point_member,
                length_member,
                direction_member,
                collinear_member,
                project_point_member,
                distance_to_point_member,
                length_vector_member,
                unit_vector_member,
                geometries_member,
                horizontal_member,
                vertical_member,
                discretize_member,
                get_line_function_parameters_member,
                find_overlap_member,
                check_overlap_sign_x_member,
                check_overlap_sign_y_member,
                revolve_member},
               &guard);
}

}  // namespace ostrel
