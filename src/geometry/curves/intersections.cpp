// The thirteen module functions that find where lines meet in the xy plane. Each reads
// its lines once and calls intersections_kernel; where a caller has replaced a module
// function, a class member or the coordinates that the documented steps go through,
// it takes those steps through the host instead, calling the module functions by
// their global names.
#include "curves/intersections.hpp"
#include "curves/intersections_kernel.hpp"
#include "curves/line.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vector.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"
#include "module/star_call.hpp"

namespace ostrel {

namespace {

using kernel::Segment;

// What each native path stands in for: the classes whose members its documented steps
// use (the module globals they look up are guarded for all paths at once). A path that
// calls another's function names that path's set instead of repeating it.
Natives line_function_natives;
Natives with_x_natives{{&point_class()}};
Natives extended_lines_natives{{}, {&with_x_natives}};
Natives between_bounds_natives;
Natives bounded_with_y_natives;
Natives bounded_extended_natives{{}, {&extended_lines_natives}};
Natives bounded_lines_natives_set{{}, {&bounded_extended_natives}};
// point_is_on_bounded_line makes a Line and a Point and calls their members.
Natives on_bounded_line_natives_set{{&vector_class()}, {&line_natives()}};

// Everything a native path needs: its lines read (in the xy plane alone where the
// computation never looks at z), the tolerances, and where it takes one, the truth of
// `inclusive`.
struct NativeInputs {
  Segment first, second;
  kernel::Tolerances tolerances;
  bool inclusive;
};

enum class Reading { xy, xyz };

std::optional<NativeInputs> native_inputs(Reading reading, PyObject* first, PyObject* second = nullptr,
                                          PyObject* inclusive = Py_True) {
  const auto include = plain_truth(inclusive);
  if (!include) return std::nullopt;
  const auto read = reading == Reading::xy ? read_line_xy : read_line;
  const auto a = read(first);
  if (!a) return std::nullopt;
  const auto b = second ? read(second) : a;
  if (!b) return std::nullopt;
  const auto t = native_tolerances();
  if (!t) return std::nullopt;
  return NativeInputs{*a, *b, *t, *include};
}

Ref point_or_none(const std::optional<kernel::Vec3>& p) { return p ? make_point(*p) : none(); }

// `a, b = get_line_function_parameters(line)`
void line_function_of(PyObject* line, Ref (&ab)[2]) {
  Ref function = global<"get_line_function_parameters">();
  Ref result = call(function.get(), {line});
  unpack(result.get(), 2, ab);
}

Ref between_result(kernel::Bound b, PyObject* inclusive) {
  if (b == kernel::Bound::at_bound) return Ref::borrow(inclusive);
  return boolean(b == kernel::Bound::inside);
}

enum class ExtendedLineWithY { line, y_intersection };
Ref extended_line_with_y(const Args& a) {
  if (Ref r = native_path(line_function_natives, [&] {
        const auto in = native_inputs(Reading::xy, a[ExtendedLineWithY::line]);
        return in ? new_float(kernel::intersection_extended_line_with_y(in->first,
                                                                        a.num(ExtendedLineWithY::y_intersection)))
                  : Ref{};
      }))
    return r;
  Ref ab[2];
  line_function_of(a[ExtendedLineWithY::line], ab);
  Ref y = new_float(a.num(ExtendedLineWithY::y_intersection));
  Ref difference = sub(y.get(), ab[1].get());
  return div(difference.get(), ab[0].get());
}
constexpr Member extended_line_with_y_member = function(
    "calculate_intersection_extended_line_with_y", "(line: Line, y_intersection: float) -> float", extended_line_with_y,
    "The x at which the infinite line meets the horizontal y = y_intersection: NaN for a\n"
    "vertical line, ZeroDivisionError for a horizontal one.");

enum class BoundedLineWithY { line, y_intersection };
Ref bounded_line_with_y(const Args& a) {
  if (Ref r = native_path(bounded_with_y_natives, [&] {
        const auto in = native_inputs(Reading::xy, a[BoundedLineWithY::line]);
        if (!in) return Ref{};
        const auto x = kernel::intersection_bounded_line_with_y(in->first, a.num(BoundedLineWithY::y_intersection),
                                                                in->tolerances.abs);
        return x ? new_float(*x) : none();
      }))
    return r;
  Ref extended = global<"calculate_intersection_extended_line_with_y">();
  Ref y = new_float(a.num(BoundedLineWithY::y_intersection));
  Ref x = call(extended.get(), {a[BoundedLineWithY::line], y.get()});
  Ref between = global<"_between_bounds">();
  Ref x1 = end_coordinate(a[BoundedLineWithY::line], id<"start_point">(), id<"x">());
  Ref x2 = end_coordinate(a[BoundedLineWithY::line], id<"end_point">(), id<"x">());
  Ref inside = call(between.get(), {x.get(), x1.get(), x2.get()});
  return truth(inside.get()) ? x : none();
}
constexpr Member bounded_line_with_y_member =
    function("calculate_intersection_bounded_line_with_y", "(line: Line, y_intersection: float) -> Optional[float]",
             bounded_line_with_y,
             "The x at which the segment meets the horizontal y = y_intersection, or None outside its x\n"
             "extent. ZeroDivisionError for a horizontal line.");

enum class LineIsHorizontal { line };
Ref line_is_horizontal(const Args& a) { return getattr(a[LineIsHorizontal::line], id<"horizontal">()); }
constexpr Member line_is_horizontal_member =
    function("line_is_horizontal", "(line: Line) -> bool", line_is_horizontal, "The line's horizontal.");
enum class LineIsVertical { line };
Ref line_is_vertical(const Args& a) { return getattr(a[LineIsVertical::line], id<"vertical">()); }
constexpr Member line_is_vertical_member =
    function("line_is_vertical", "(line: Line) -> bool", line_is_vertical, "The line's vertical.");

enum class BetweenBoundsFunction { x, x1, x2, inclusive };
Ref between_bounds_function(const Args& a) {
  using P = BetweenBoundsFunction;
  const kernel::Tolerance t = abs_tolerance();
  return between_result(kernel::between_bounds(a.num(P::x), a.num(P::x1), a.num(P::x2), t), a[P::inclusive]);
}
constexpr Member between_bounds_function_member = function(
    "_between_bounds", "(x: float, x1: float, x2: float, inclusive: bool = True) -> bool", between_bounds_function,
    "Whether x lies between x1 and x2, in either order; at a bound (abs_tol=ISCLOSE_ATOL)\n"
    "the result is the inclusive argument itself.");

// x_between_bounds and y_between_bounds: `_between_bounds(v, v1, v2, inclusive)`.
enum class BetweenBoundsByName { value, bound1, bound2, inclusive };
Ref between_bounds_by_name(const Args& a) {
  using P = BetweenBoundsByName;
  if (Ref r = native_path(between_bounds_natives, [&] { return between_bounds_function(a); })) return r;
  Ref between = global<"_between_bounds">();
  Ref v = new_float(a.num(P::value)), v1 = new_float(a.num(P::bound1)), v2 = new_float(a.num(P::bound2));
  return call(between.get(), {v.get(), v1.get(), v2.get(), a[P::inclusive]});
}
constexpr Member x_between_bounds_member =
    function("x_between_bounds", "(x: float, x1: float, x2: float, inclusive: bool = True) -> bool",
             between_bounds_by_name, "_between_bounds for x values.");
constexpr Member y_between_bounds_member =
    function("y_between_bounds", "(y: float, y1: float, y2: float, inclusive: bool = True) -> bool",
             between_bounds_by_name, "_between_bounds for y values.");

// `Line(*line)` read natively: a line, or a pair of point-likes.
std::optional<Segment> read_line_like(PyObject* line) {
  if (!PyTuple_CheckExact(line) && !PyList_CheckExact(line)) return read_line(line);
  if (PySequence_Fast_GET_SIZE(line) != 2) return std::nullopt;
  // Held: reading the first can run a caller's code that empties the sequence.
  Ref first = Ref::borrow(PySequence_Fast_GET_ITEM(line, 0)), second = Ref::borrow(PySequence_Fast_GET_ITEM(line, 1));
  const auto start = read_point_like(first.get());
  if (!start) return std::nullopt;
  const auto end = read_point_like(second.get());
  if (!end) return std::nullopt;
  return Segment{*start, *end};
}

enum class PointIsOnBoundedLine { point, line, inclusive };
Ref point_is_on_bounded_line(const Args& a) {
  PyObject *point = a[PointIsOnBoundedLine::point], *line = a[PointIsOnBoundedLine::line],
           *inclusive = a[PointIsOnBoundedLine::inclusive];
  if (Ref r = native_path(on_bounded_line_natives_set, [&] {
        const auto p = read_point_like(point);
        const auto s = p ? read_line_like(line) : std::nullopt;
        const auto t = s ? native_tolerances() : std::nullopt;
        if (!t) return Ref{};
        if (kernel::coincide(s->start, s->end, t->module))
          raise(PyExc_ValueError, "Start and end point may not coincide");
        const kernel::OnSegment on = kernel::point_on_bounded_line(*p, *s, t->module);
        return on == kernel::OnSegment::at_end ? Ref::borrow(inclusive) : boolean(on == kernel::OnSegment::within);
      }))
    return r;
  Ref point_cls = global<"Point">();
  Ref p = star_call(point_cls.get(), point);
  Ref line_cls = global<"Line">();
  Ref l = star_call(line_cls.get(), line);
  Ref start = getattr(l.get(), id<"start_point">());
  if (compares(p.get(), start.get(), Py_EQ)) return Ref::borrow(inclusive);
  Ref end = getattr(l.get(), id<"end_point">());
  if (compares(p.get(), end.get(), Py_EQ)) return Ref::borrow(inclusive);
  Ref start_again = getattr(l.get(), id<"start_point">());
  Ref v = call_method(start_again.get(), id<"vector_to">(), {p.get()});
  Ref unit = call_method(v.get(), id<"normalize">(), {});
  Ref along = call_method(l.get(), id<"direction">(), {});
  if (!compares(unit.get(), along.get(), Py_EQ)) return boolean(false);
  Ref distance = getattr(v.get(), id<"magnitude">());
  Ref direction = getattr(l.get(), id<"direction">());
  Ref keyword = tuple({id<"normalize">()});
  Ref span = call(direction.get(), {Py_False}, keyword.get());
  Ref size = getattr(span.get(), id<"magnitude">());
  return boolean(compares(distance.get(), size.get(), Py_LT));
}
constexpr Member point_is_on_bounded_line_member =
    function("point_is_on_bounded_line",
             "(point: Point-like, line: Union[Line, Tuple[Tuple[float, float, float], Tuple[float, float, "
             "float]]], inclusive: bool = True) -> bool",
             point_is_on_bounded_line,
             "Whether the point lies on the segment, in 3D; at an end the result is the inclusive\n"
             "argument itself.");

enum class ExtendedLineWithX { line, x };
Ref extended_line_with_x(const Args& a) {
  if (Ref r = native_path(with_x_natives, [&] {
        const auto in = native_inputs(Reading::xy, a[ExtendedLineWithX::line]);
        return in ? make_point(kernel::intersection_extended_line_with_x(in->first, a.num(ExtendedLineWithX::x)))
                  : Ref{};
      }))
    return r;
  Ref ab[2];
  line_function_of(a[ExtendedLineWithX::line], ab);
  Ref point_cls = global<"Point">();
  Ref x = new_float(a.num(ExtendedLineWithX::x));
  Ref ax = mul(ab[0].get(), x.get());
  Ref y = add(ax.get(), ab[1].get());
  return call(point_cls.get(), {x.get(), y.get()});
}
constexpr Member extended_line_with_x_member =
    function("calculate_intersection_extended_line_with_x", "(line: Line, x: float) -> Point", extended_line_with_x,
             "The point of the infinite line at x, at z = 0; its y is NaN for a vertical line.");

enum class GetLineFunctionParameters { line };
Ref get_line_function_parameters(const Args& a) {
  return call_method(a[GetLineFunctionParameters::line], id<"get_line_function_parameters">(), {});
}
constexpr Member get_line_function_parameters_member =
    function("get_line_function_parameters", "(line: Line) -> Tuple[float, float]", get_line_function_parameters,
             "The line's get_line_function_parameters(): (a, b) of y = a * x + b.");

bool is_vertical_by_name(PyObject* line) {
  Ref function = global<"line_is_vertical">();
  Ref result = call(function.get(), {line});
  return truth(result.get());
}

// calculate_intersection_extended_line_with_x(line, other.start_point.x)
Ref at_x_of(PyObject* line, PyObject* other) {
  Ref function = global<"calculate_intersection_extended_line_with_x">();
  Ref x = end_coordinate(other, id<"start_point">(), id<"x">());
  return call(function.get(), {line, x.get()});
}

enum class ExtendedLines { extended_line1, extended_line2 };
Ref extended_lines(const Args& a) {
  PyObject *line1 = a[ExtendedLines::extended_line1], *line2 = a[ExtendedLines::extended_line2];
  if (Ref r = native_path(extended_lines_natives, [&] {
        const auto in = native_inputs(Reading::xy, line1, line2);
        return in ? point_or_none(kernel::intersection_extended_lines(in->first, in->second, in->tolerances.abs))
                  : Ref{};
      }))
    return r;
  if (is_vertical_by_name(line1) && is_vertical_by_name(line2)) return none();
  if (is_vertical_by_name(line1)) return at_x_of(line2, line1);
  if (is_vertical_by_name(line2)) return at_x_of(line1, line2);
  Ref f1[2], f2[2];
  line_function_of(line1, f1);
  line_function_of(line2, f2);
  const double a1 = as_double(f1[0].get()), a2 = as_double(f2[0].get());
  if (kernel::isclose(a1, a2, abs_tolerance())) return none();
  Ref db = sub(f1[1].get(), f2[1].get()), da = sub(f2[0].get(), f1[0].get());
  Ref x = div(db.get(), da.get());
  Ref point_cls = global<"Point">();
  Ref ax = mul(f1[0].get(), x.get());
  Ref y = add(ax.get(), f1[1].get());
  return call(point_cls.get(), {x.get(), y.get()});
}
constexpr Member extended_lines_member =
    function("calculate_intersection_extended_lines", "(extended_line1: Line, extended_line2: Line) -> Optional[Point]",
             extended_lines, "Where two infinite lines meet in the xy plane, or None when they are parallel.");

// _between_bounds(P.<c>, S.start_point.<c>, S.end_point.<c>, inclusive)
bool between_by_name(PyObject* p, PyObject* s, PyObject* c, PyObject* inclusive) {
  Ref function = global<"_between_bounds">();
  Ref v = getattr(p, c);
  Ref v1 = end_coordinate(s, id<"start_point">(), c), v2 = end_coordinate(s, id<"end_point">(), c);
  Ref result = call(function.get(), {v.get(), v1.get(), v2.get(), inclusive});
  return truth(result.get());
}

bool orientation_by_name(PyObject* name, PyObject* line) {
  Ref function = global(name);
  Ref result = call(function.get(), {line});
  return truth(result.get());
}

enum class BoundedLineExtendedLine { bounded_line, extended_line, inclusive };
Ref bounded_line_extended_line(const Args& a) {
  PyObject *s = a[BoundedLineExtendedLine::bounded_line], *extended = a[BoundedLineExtendedLine::extended_line],
           *inclusive = a[BoundedLineExtendedLine::inclusive];
  if (Ref r = native_path(bounded_extended_natives, [&] {
        const auto in = native_inputs(Reading::xyz, s, extended, inclusive);
        return in ? point_or_none(kernel::intersection_bounded_line_extended_line(in->first, in->second,
                                                                                  in->inclusive, in->tolerances))
                  : Ref{};
      }))
    return r;
  Ref lines = global<"calculate_intersection_extended_lines">();
  Ref p = call(lines.get(), {s, extended});
  if (p.get() == Py_None) return p;
  PyObject *x = id<"x">(), *y = id<"y">();
  if (orientation_by_name(id<"line_is_horizontal">(), s) && between_by_name(p.get(), s, x, inclusive)) return p;
  if (orientation_by_name(id<"line_is_vertical">(), s) && between_by_name(p.get(), s, y, inclusive)) return p;
  if (between_by_name(p.get(), s, x, inclusive) && between_by_name(p.get(), s, y, inclusive)) return p;
  if (truth(inclusive)) {
    Ref start = getattr(s, id<"start_point">());
    if (compares(p.get(), start.get(), Py_EQ)) return p;
    Ref end = getattr(s, id<"end_point">());
    if (compares(p.get(), end.get(), Py_EQ)) return p;
  }
  return none();
}
constexpr Member bounded_line_extended_line_member =
    function("calculate_intersection_bounded_line_extended_line",
             "(bounded_line: Line, extended_line: Line, inclusive: bool = True) -> Optional[Point]",
             bounded_line_extended_line, "Where the infinite extended_line meets the segment bounded_line, or None.");

// [line.start_point.<c>, line.end_point.<c>]
Ref values(PyObject* line, PyObject* c) {
  Ref start = end_coordinate(line, id<"start_point">(), c), end = end_coordinate(line, id<"end_point">(), c);
  return list({start.get(), end.get()});
}

// max(first) < min(second) or min(first) > max(second), or with <= and >=.
bool boxes_apart(PyObject* first, PyObject* second, bool inclusive) {
  Ref max = global<"max">(), min = global<"min">();
  Ref max_first = call(max.get(), {first}), min_second = call(min.get(), {second});
  if (compares(max_first.get(), min_second.get(), inclusive ? Py_LT : Py_LE)) return true;
  Ref min_first = call(min.get(), {first}), max_second = call(max.get(), {second});
  return compares(min_first.get(), max_second.get(), inclusive ? Py_GT : Py_GE);
}

enum class BoundedLines { bounded_line1, bounded_line2, inclusive };
Ref bounded_lines(const Args& a) {
  PyObject *line1 = a[BoundedLines::bounded_line1], *line2 = a[BoundedLines::bounded_line2],
           *inclusive = a[BoundedLines::inclusive];
  if (Ref r = native_path(bounded_lines_natives_set, [&] {
        const auto include = plain_truth(inclusive);
        // Most pairs part at the bounding boxes, which need no z.
        HeldLine first, second;
        if (!include || !hold_line_xy(line1, first) || !hold_line_xy(line2, second)) return Ref{};
        if (kernel::bounding_boxes_apart(first.segment, second.segment, *include)) return none();
        const auto t = read_z(first) && read_z(second) ? native_tolerances() : std::nullopt;
        if (!t) return Ref{};
        using kernel::Crossing;
        const Crossing c = kernel::intersection_bounded_lines(first.segment, second.segment, *include, *t);
        if (c.kind == Crossing::Kind::mismatch) {
          PyErr_SetNone(PyExc_ValueError);
          throw PyError{};
        }
        return c.kind == Crossing::Kind::point ? make_point(c.point) : none();
      }))
    return r;
  Ref x_vals1 = values(line1, id<"x">()), y_vals1 = values(line1, id<"y">());
  Ref x_vals2 = values(line2, id<"x">()), y_vals2 = values(line2, id<"y">());
  const bool include = truth(inclusive);
  if (boxes_apart(x_vals1.get(), x_vals2.get(), include)) return none();
  if (boxes_apart(y_vals1.get(), y_vals2.get(), include)) return none();
  Ref function = global<"calculate_intersection_bounded_line_extended_line">();
  Ref first = call(function.get(), {line1, line2, inclusive});
  Ref function_again = global<"calculate_intersection_bounded_line_extended_line">();
  Ref second = call(function_again.get(), {line2, line1, inclusive});
  if (first.get() == Py_None || second.get() == Py_None) return none();
  if (compares(first.get(), second.get(), Py_EQ)) return first;
  PyErr_SetNone(PyExc_ValueError);
  throw PyError{};
}
constexpr Member bounded_lines_member =
    function("calculate_intersection_bounded_lines",
             "(bounded_line1: Line, bounded_line2: Line, inclusive: bool = True) -> Optional[Point]", bounded_lines,
             "Where two segments meet in the xy plane, or None; ends count when inclusive is true.\n"
             "ValueError when the two segments' answers differ.");

}  // namespace

const Natives& bounded_lines_natives() { return bounded_lines_natives_set; }
const Natives& on_bounded_line_natives() { return on_bounded_line_natives_set; }

void define_intersections() {
  for (const Member& m :
       {bounded_line_with_y_member, extended_line_with_y_member, line_is_horizontal_member, line_is_vertical_member,
        between_bounds_function_member, x_between_bounds_member, y_between_bounds_member,
        point_is_on_bounded_line_member, extended_line_with_x_member, get_line_function_parameters_member,
        extended_lines_member, bounded_line_extended_line_member, bounded_lines_member})
    define_function(m);
}

}  // namespace ostrel
