// The thirteen module functions that find where lines meet in the xy plane. Each reads
// its lines once and calls intersections_kernel; where a caller has replaced a module
// function, a class member or the coordinates that the documented steps go through,
// it takes those steps through the host instead, calling the module functions by
// their global names.
#include "curves/intersections_kernel.hpp"
#include "curves/line_access.hpp"
#include "foundations/arithmetic_fault.hpp"
#include "foundations/point_access.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "module/own_globals.hpp"
#include "module/star_call.hpp"

namespace ostrel {

namespace {

// The globals each native path stands in for, beside the Line, Point and Vector classes.
OwnGlobals line_function_globals{"get_line_function_parameters", "np"};
OwnGlobals bounded_with_y_globals{"calculate_intersection_extended_line_with_y", "get_line_function_parameters",
                                  "_between_bounds", "np"};
OwnGlobals between_bounds_global{"_between_bounds"};
OwnGlobals extended_lines_globals{"line_is_vertical", "calculate_intersection_extended_line_with_x",
                                  "get_line_function_parameters", "np"};
OwnGlobals bounded_extended_globals{"calculate_intersection_extended_lines",
                                    "line_is_horizontal",
                                    "line_is_vertical",
                                    "_between_bounds",
                                    "calculate_intersection_extended_line_with_x",
                                    "get_line_function_parameters",
                                    "np"};
OwnGlobals bounded_lines_globals{"calculate_intersection_bounded_line_extended_line",
                                 "calculate_intersection_extended_lines",
                                 "line_is_horizontal",
                                 "line_is_vertical",
                                 "_between_bounds",
                                 "calculate_intersection_extended_line_with_x",
                                 "get_line_function_parameters",
                                 "np"};

// Everything a native path needs: its lines read (in the xy plane alone where the
// computation never looks at z), the tolerances, and where it takes one, the truth of
// `inclusive`.
struct NativeInputs {
  Segment first, second;
  Tolerances tolerances;
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
  const auto t = current_tolerances();
  if (!t) return std::nullopt;
  return NativeInputs{*a, *b, *t, *include};
}

Ref point_or_none(const std::optional<Vec3>& p) { return p ? make_point(*p) : none(); }

// `a, b = get_line_function_parameters(line)`
void line_function_of(PyObject* line, Ref (&ab)[2]) {
  Ref function = global<"get_line_function_parameters">();
  Ref result = call(function.get(), {line});
  unpack(result.get(), 2, ab);
}

Ref between_result(Bound b, PyObject* inclusive) {
  if (b == Bound::at_bound) return Ref::borrow(inclusive);
  return boolean(b == Bound::inside);
}

Ref extended_line_with_y(const Args& a) {
  if (line_function_globals.hold())
    if (const auto in = native_inputs(Reading::xy, a[0])) try {
        return new_float(intersection_extended_line_with_y(in->first, a.num(1)));
      } catch (const ArithmeticFault& fault) {
        raise_host_error(fault);
      }
  Ref ab[2];
  line_function_of(a[0], ab);
  Ref y = new_float(a.num(1));
  Ref difference = sub(y.get(), ab[1].get());
  return div(difference.get(), ab[0].get());
}

Ref bounded_line_with_y(const Args& a) {
  if (bounded_with_y_globals.hold())
    if (const auto in = native_inputs(Reading::xy, a[0])) try {
        const auto x = intersection_bounded_line_with_y(in->first, a.num(1), in->tolerances.abs);
        return x ? new_float(*x) : none();
      } catch (const ArithmeticFault& fault) {
        raise_host_error(fault);
      }
  Ref extended = global<"calculate_intersection_extended_line_with_y">();
  Ref y = new_float(a.num(1));
  Ref x = call(extended.get(), {a[0], y.get()});
  Ref between = global<"_between_bounds">();
  Ref x1 = end_coordinate(a[0], id<"start_point">(), id<"x">());
  Ref x2 = end_coordinate(a[0], id<"end_point">(), id<"x">());
  Ref inside = call(between.get(), {x.get(), x1.get(), x2.get()});
  return truth(inside.get()) ? x : none();
}

Ref line_is_horizontal(const Args& a) { return getattr(a[0], id<"horizontal">()); }
Ref line_is_vertical(const Args& a) { return getattr(a[0], id<"vertical">()); }

Ref between_bounds_function(const Args& a) {
  const Tolerance t = abs_tolerance();
  return between_result(between_bounds(a.num(0), a.num(1), a.num(2), t), a[3]);
}

// x_between_bounds and y_between_bounds: `_between_bounds(v, v1, v2, inclusive)`.
Ref between_bounds_by_name(const Args& a) {
  if (between_bounds_global.hold()) return between_bounds_function(a);
  Ref between = global<"_between_bounds">();
  Ref v = new_float(a.num(0)), v1 = new_float(a.num(1)), v2 = new_float(a.num(2));
  return call(between.get(), {v.get(), v1.get(), v2.get(), a[3]});
}

// `Line(*line)` read natively: a line, or a pair of point-likes.
std::optional<Segment> read_line_like(PyObject* line) {
  if (!PyTuple_CheckExact(line) && !PyList_CheckExact(line)) return read_line(line);
  if (PySequence_Fast_GET_SIZE(line) != 2) return std::nullopt;
  const auto start = read_point_like(PySequence_Fast_GET_ITEM(line, 0));
  if (!start) return std::nullopt;
  const auto end = read_point_like(PySequence_Fast_GET_ITEM(line, 1));
  if (!end) return std::nullopt;
  return Segment{*start, *end};
}

Ref point_is_on_bounded_line(const Args& a) {
  PyObject *point = a[0], *line = a[1], *inclusive = a[2];
  if (line_class_native() && vector_class_native()) {
    const auto p = read_point_like(point);
    const auto s = p ? read_line_like(line) : std::nullopt;
    const auto t = s ? current_tolerances() : std::nullopt;
    if (t) {
      if (coincide(s->start, s->end, t->module)) raise(PyExc_ValueError, "Start and end point may not coincide");
      try {
        const OnSegment on = point_on_bounded_line(*p, *s, t->module);
        if (on == OnSegment::at_end) return Ref::borrow(inclusive);
        return boolean(on == OnSegment::within);
      } catch (const ArithmeticFault& fault) {
        raise_host_error(fault);
      }
    }
  }
  Ref point_cls = global<"Point">();
  Ref p = star_call(point_cls.get(), point);
  Ref line_cls = global<"Line">();
  Ref l = star_call(line_cls.get(), line);
  Ref start = getattr(l.get(), id<"start_point">());
  if (truth(compare(p.get(), start.get(), Py_EQ).get())) return Ref::borrow(inclusive);
  Ref end = getattr(l.get(), id<"end_point">());
  if (truth(compare(p.get(), end.get(), Py_EQ).get())) return Ref::borrow(inclusive);
  Ref start_again = getattr(l.get(), id<"start_point">());
  Ref v = call_method(start_again.get(), id<"vector_to">(), {p.get()});
  Ref unit = call_method(v.get(), id<"normalize">(), {});
  Ref along = call_method(l.get(), id<"direction">(), {});
  if (!truth(compare(unit.get(), along.get(), Py_EQ).get())) return boolean(false);
  Ref distance = getattr(v.get(), id<"magnitude">());
  Ref direction = getattr(l.get(), id<"direction">());
  Ref keyword = tuple({id<"normalize">()});
  Ref span = call(direction.get(), {Py_False}, keyword.get());
  Ref size = getattr(span.get(), id<"magnitude">());
  return boolean(truth(compare(distance.get(), size.get(), Py_LT).get()));
}

Ref extended_line_with_x(const Args& a) {
  if (line_function_globals.hold() && point_class_native())
    if (const auto in = native_inputs(Reading::xy, a[0]))
      return make_point(intersection_extended_line_with_x(in->first, a.num(1)));
  Ref ab[2];
  line_function_of(a[0], ab);
  Ref point_cls = global<"Point">();
  Ref x = new_float(a.num(1));
  Ref ax = mul(ab[0].get(), x.get());
  Ref y = add(ax.get(), ab[1].get());
  return call(point_cls.get(), {x.get(), y.get()});
}

Ref get_line_function_parameters(const Args& a) {
  return call_method(a[0], id<"get_line_function_parameters">(), {});
}

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

Ref extended_lines(const Args& a) {
  PyObject *line1 = a[0], *line2 = a[1];
  if (extended_lines_globals.hold() && point_class_native())
    if (const auto in = native_inputs(Reading::xy, line1, line2)) try {
        return point_or_none(intersection_extended_lines(in->first, in->second, in->tolerances.abs));
      } catch (const ArithmeticFault& fault) {
        raise_host_error(fault);
      }
  if (is_vertical_by_name(line1) && is_vertical_by_name(line2)) return none();
  if (is_vertical_by_name(line1)) return at_x_of(line2, line1);
  if (is_vertical_by_name(line2)) return at_x_of(line1, line2);
  Ref f1[2], f2[2];
  line_function_of(line1, f1);
  line_function_of(line2, f2);
  const double a1 = as_double(f1[0].get()), a2 = as_double(f2[0].get());
  if (isclose(a1, a2, abs_tolerance())) return none();
  Ref db = sub(f1[1].get(), f2[1].get()), da = sub(f2[0].get(), f1[0].get());
  Ref x = div(db.get(), da.get());
  Ref point_cls = global<"Point">();
  Ref ax = mul(f1[0].get(), x.get());
  Ref y = add(ax.get(), f1[1].get());
  return call(point_cls.get(), {x.get(), y.get()});
}

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

Ref bounded_line_extended_line(const Args& a) {
  PyObject *s = a[0], *extended = a[1], *inclusive = a[2];
  if (bounded_extended_globals.hold() && point_class_native())
    if (const auto in = native_inputs(Reading::xyz, s, extended, inclusive)) try {
        return point_or_none(
            intersection_bounded_line_extended_line(in->first, in->second, in->inclusive, in->tolerances));
      } catch (const ArithmeticFault& fault) {
        raise_host_error(fault);
      }
  Ref lines = global<"calculate_intersection_extended_lines">();
  Ref p = call(lines.get(), {s, extended});
  if (p.get() == Py_None) return p;
  PyObject *x = id<"x">(), *y = id<"y">();
  if (orientation_by_name(id<"line_is_horizontal">(), s) && between_by_name(p.get(), s, x, inclusive)) return p;
  if (orientation_by_name(id<"line_is_vertical">(), s) && between_by_name(p.get(), s, y, inclusive)) return p;
  if (between_by_name(p.get(), s, x, inclusive) && between_by_name(p.get(), s, y, inclusive)) return p;
  if (truth(inclusive)) {
    Ref start = getattr(s, id<"start_point">());
    if (truth(compare(p.get(), start.get(), Py_EQ).get())) return p;
    Ref end = getattr(s, id<"end_point">());
    if (truth(compare(p.get(), end.get(), Py_EQ).get())) return p;
  }
  return none();
}

// [line.start_point.<c>, line.end_point.<c>]
Ref values(PyObject* line, PyObject* c) {
  Ref start = end_coordinate(line, id<"start_point">(), c), end = end_coordinate(line, id<"end_point">(), c);
  return list({start.get(), end.get()});
}

// max(first) < min(second) or min(first) > max(second), or with <= and >=.
bool boxes_apart(PyObject* first, PyObject* second, bool inclusive) {
  Ref max = global<"max">(), min = global<"min">();
  Ref max_first = call(max.get(), {first}), min_second = call(min.get(), {second});
  if (truth(compare(max_first.get(), min_second.get(), inclusive ? Py_LT : Py_LE).get())) return true;
  Ref min_first = call(min.get(), {first}), max_second = call(max.get(), {second});
  return truth(compare(min_first.get(), max_second.get(), inclusive ? Py_GT : Py_GE).get());
}

Ref bounded_lines(const Args& a) {
  PyObject *line1 = a[0], *line2 = a[1], *inclusive = a[2];
  if (bounded_lines_globals.hold() && point_class_native())
    if (const auto include = plain_truth(inclusive)) {
      // Most pairs part at the bounding boxes, which need no z.
      HeldLine first, second;
      if (hold_line_xy(line1, first) && hold_line_xy(line2, second)) {
        if (bounding_boxes_apart(first.segment, second.segment, *include)) return none();
        const auto t = read_z(first) && read_z(second) ? current_tolerances() : std::nullopt;
        if (t) {
          const Crossing c = intersection_bounded_lines(first.segment, second.segment, *include, *t);
          if (c.kind == Crossing::Kind::mismatch) {
            PyErr_SetNone(PyExc_ValueError);
            throw PyError{};
          }
          return c.kind == Crossing::Kind::point ? make_point(c.point) : none();
        }
      }
    }
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
  if (truth(compare(first.get(), second.get(), Py_EQ).get())) return first;
  PyErr_SetNone(PyExc_ValueError);
  throw PyError{};
}

}  // namespace

void define_line_intersections() {
  define_function("calculate_intersection_bounded_line_with_y",
                  "(line: Line, y_intersection: float) -> Optional[float]",
                  bounded_line_with_y,
                  "The x at which the segment meets the horizontal y = y_intersection, or None outside its x\n"
                  "extent. ZeroDivisionError for a horizontal line.");
  define_function("calculate_intersection_extended_line_with_y", "(line: Line, y_intersection: float) -> float",
                  extended_line_with_y,
                  "The x at which the infinite line meets the horizontal y = y_intersection: NaN for a\n"
                  "vertical line, ZeroDivisionError for a horizontal one.");
  define_function("line_is_horizontal", "(line: Line) -> bool", line_is_horizontal, "The line's horizontal.");
  define_function("line_is_vertical", "(line: Line) -> bool", line_is_vertical, "The line's vertical.");
  define_function("_between_bounds", "(x: float, x1: float, x2: float, inclusive: bool = True) -> bool",
                  between_bounds_function,
                  "Whether x lies between x1 and x2, in either order; at a bound (abs_tol=ISCLOSE_ATOL)\n"
                  "the result is the inclusive argument itself.");
  define_function("x_between_bounds", "(x: float, x1: float, x2: float, inclusive: bool = True) -> bool",
                  between_bounds_by_name, "_between_bounds for x values.");
  define_function("y_between_bounds", "(y: float, y1: float, y2: float, inclusive: bool = True) -> bool",
                  between_bounds_by_name, "_between_bounds for y values.");
  define_function("point_is_on_bounded_line",
                  "(point: Point-like, line: Union[Line, Tuple[Tuple[float, float, float], Tuple[float, float, "
                  "float]]], inclusive: bool = True) -> bool",
                  point_is_on_bounded_line,
                  "Whether the point lies on the segment, in 3D; at an end the result is the inclusive\n"
                  "argument itself.");
  define_function("calculate_intersection_extended_line_with_x", "(line: Line, x: float) -> Point",
                  extended_line_with_x,
                  "The point of the infinite line at x, at z = 0; its y is NaN for a vertical line.");
  define_function("get_line_function_parameters", "(line: Line) -> Tuple[float, float]", get_line_function_parameters,
                  "The line's get_line_function_parameters(): (a, b) of y = a * x + b.");
  define_function("calculate_intersection_extended_lines",
                  "(extended_line1: Line, extended_line2: Line) -> Optional[Point]", extended_lines,
                  "Where two infinite lines meet in the xy plane, or None when they are parallel.");
  define_function("calculate_intersection_bounded_line_extended_line",
                  "(bounded_line: Line, extended_line: Line, inclusive: bool = True) -> Optional[Point]",
                  bounded_line_extended_line,
                  "Where the infinite extended_line meets the segment bounded_line, or None.");
  define_function("calculate_intersection_bounded_lines",
                  "(bounded_line1: Line, bounded_line2: Line, inclusive: bool = True) -> Optional[Point]",
                  bounded_lines,
                  "Where two segments meet in the xy plane, or None; ends count when inclusive is true.\n"
                  "ValueError when the two segments' answers differ.");
}

}  // namespace ostrel
