"""Timing of segment intersection and Line.find_overlap against plain Python.

The plain-Python side below is a line-by-line transcription of the same documented
steps, on minimal Point, Vector and Line classes. Every case is first checked to give
the same answer on both sides, then timed; the script prints the time per call and the
ratio. Run it by hand:

    python bench/bench_lines.py [--repeat N]
"""
import argparse
import math
import os
import timeit

# Idle BLAS worker threads spin on one of the two cores and blur the timings.
os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")

import numpy as np  # noqa: E402

from ostrel import geometry  # noqa: E402
from ostrel.core import ISCLOSE_ATOL, ISCLOSE_RTOL  # noqa: E402


# ---- plain Python ----------------------------------------------------------------

class Vector:
    def __init__(self, x, y, z=0.0):
        self.x, self.y, self.z = float(x), float(y), float(z)

    def __eq__(self, other):
        if not isinstance(other, Vector):
            return NotImplemented
        return all(math.isclose(a, b, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                   for a, b in ((self.x, other.x), (self.y, other.y), (self.z, other.z)))


class Point:
    def __init__(self, x, y, z=0.0):
        self._x, self._y, self._z = float(x), float(y), float(z)

    x = property(lambda self: self._x)
    y = property(lambda self: self._y)
    z = property(lambda self: self._z)

    def __iter__(self):
        yield from (self._x, self._y, self._z)

    def __eq__(self, other):
        if not isinstance(other, Point):
            return NotImplemented
        return (math.isclose(self._x, other._x, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self._y, other._y, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self._z, other._z, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL))


def find_overlap(region_a, region_b, inclusive=False):
    start_a, end_a = region_a
    start_b, end_b = region_b
    if start_a > end_a:
        end_a, start_a = region_a
    if start_b > end_b:
        end_b, start_b = region_b
    if inclusive:
        if (not math.isclose(start_a, end_b) and not math.isclose(start_b, end_a)
                and (start_a > end_b or start_b > end_a)):
            return None
    elif math.isclose(start_a, end_b) or math.isclose(start_b, end_a) or start_a >= end_b or start_b >= end_a:
        return None
    return max(start_a, start_b), min(end_a, end_b)


class Line:
    def __init__(self, start_point, end_point):
        start_point = Point(*start_point)
        end_point = Point(*end_point)
        if start_point == end_point:
            raise ValueError("Start and end point may not coincide")
        self._start_point = start_point
        self._end_point = end_point

    start_point = property(lambda self: self._start_point)
    end_point = property(lambda self: self._end_point)

    @property
    def horizontal(self):
        return (math.isclose(self.start_point.y, self.end_point.y)
                and not math.isclose(self.start_point.x, self.end_point.x))

    @property
    def vertical(self):
        return (math.isclose(self.start_point.x, self.end_point.x)
                and not math.isclose(self.start_point.y, self.end_point.y))

    def get_line_function_parameters(self):
        try:
            a = (self.end_point.y - self.start_point.y) / (self.end_point.x - self.start_point.x)
        except ZeroDivisionError:
            a = np.nan
        b = self.start_point.y - a * self.start_point.x
        return a, b

    def find_overlap(self, other, inclusive=False):
        overlap = None
        if self.vertical and other.vertical:
            if math.isclose(self.start_point.x, other.start_point.x, abs_tol=ISCLOSE_ATOL):
                overlap_x = self.start_point.x
                overlap_y = find_overlap((self.start_point.y, self.end_point.y),
                                         (other.start_point.y, other.end_point.y), inclusive)
                if overlap_y is not None:
                    overlap_y = self._check_overlap_sign_y(overlap_y)
                    try:
                        overlap = Line(Point(overlap_x, overlap_y[0]), Point(overlap_x, overlap_y[1]))
                    except ValueError:
                        overlap = Point(overlap_x, overlap_y[0])
        elif not self.vertical and not other.vertical:
            my_a, my_b = self.get_line_function_parameters()
            other_a, other_b = other.get_line_function_parameters()
            if (math.isclose(my_a, other_a, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                    and math.isclose(my_b, other_b, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)):
                overlap_x = find_overlap((self.start_point.x, self.end_point.x),
                                         (other.start_point.x, other.end_point.x), inclusive)
                if math.isclose(my_a, 0, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL):
                    overlap_y = (my_b, my_b)
                else:
                    overlap_y = find_overlap((self.start_point.y, self.end_point.y),
                                             (other.start_point.y, other.end_point.y), inclusive)
                if overlap_x is not None and overlap_y is not None:
                    overlap_x = self._check_overlap_sign_x(overlap_x)
                    overlap_y = self._check_overlap_sign_y(overlap_y)
                    try:
                        overlap = Line(Point(overlap_x[0], overlap_y[0]), Point(overlap_x[1], overlap_y[1]))
                    except ValueError:
                        overlap = Point(overlap_x[0], overlap_y[0])
        return overlap

    def _check_overlap_sign_x(self, overlap):
        if (overlap[1] - overlap[0] > 0) != (self.end_point.x - self.start_point.x > 0):
            return overlap[1], overlap[0]
        return overlap

    def _check_overlap_sign_y(self, overlap):
        if (overlap[1] - overlap[0] > 0) != (self.end_point.y - self.start_point.y > 0):
            return overlap[1], overlap[0]
        return overlap


def get_line_function_parameters(line):
    return line.get_line_function_parameters()


def line_is_horizontal(line):
    return line.horizontal


def line_is_vertical(line):
    return line.vertical


def _between_bounds(x, x1, x2, inclusive=True):
    if math.isclose(x, x1, abs_tol=ISCLOSE_ATOL) or math.isclose(x, x2, abs_tol=ISCLOSE_ATOL):
        return inclusive
    return x1 < x < x2 or x2 < x < x1


def calculate_intersection_extended_line_with_x(line, x):
    a, b = get_line_function_parameters(line)
    return Point(x, a * x + b)


def calculate_intersection_extended_lines(extended_line1, extended_line2):
    if line_is_vertical(extended_line1) and line_is_vertical(extended_line2):
        return None
    if line_is_vertical(extended_line1):
        return calculate_intersection_extended_line_with_x(extended_line2, extended_line1.start_point.x)
    if line_is_vertical(extended_line2):
        return calculate_intersection_extended_line_with_x(extended_line1, extended_line2.start_point.x)
    a1, b1 = get_line_function_parameters(extended_line1)
    a2, b2 = get_line_function_parameters(extended_line2)
    if math.isclose(a1, a2, abs_tol=ISCLOSE_ATOL):
        return None
    x_intersection = (b1 - b2) / (a2 - a1)
    return Point(x_intersection, a1 * x_intersection + b1)


def calculate_intersection_bounded_line_extended_line(bounded_line, extended_line, inclusive=True):
    p = calculate_intersection_extended_lines(bounded_line, extended_line)
    if p is None:
        return None
    s = bounded_line
    if line_is_horizontal(s) and _between_bounds(p.x, s.start_point.x, s.end_point.x, inclusive):
        return p
    if line_is_vertical(s) and _between_bounds(p.y, s.start_point.y, s.end_point.y, inclusive):
        return p
    if (_between_bounds(p.x, s.start_point.x, s.end_point.x, inclusive)
            and _between_bounds(p.y, s.start_point.y, s.end_point.y, inclusive)):
        return p
    if inclusive and (p == s.start_point or p == s.end_point):
        return p
    return None


def calculate_intersection_bounded_lines(bounded_line1, bounded_line2, inclusive=True):
    x_vals1 = [bounded_line1.start_point.x, bounded_line1.end_point.x]
    y_vals1 = [bounded_line1.start_point.y, bounded_line1.end_point.y]
    x_vals2 = [bounded_line2.start_point.x, bounded_line2.end_point.x]
    y_vals2 = [bounded_line2.start_point.y, bounded_line2.end_point.y]
    if inclusive:
        if max(x_vals1) < min(x_vals2) or min(x_vals1) > max(x_vals2):
            return None
        if max(y_vals1) < min(y_vals2) or min(y_vals1) > max(y_vals2):
            return None
    else:
        if max(x_vals1) <= min(x_vals2) or min(x_vals1) >= max(x_vals2):
            return None
        if max(y_vals1) <= min(y_vals2) or min(y_vals1) >= max(y_vals2):
            return None
    intersection1 = calculate_intersection_bounded_line_extended_line(bounded_line1, bounded_line2, inclusive)
    intersection2 = calculate_intersection_bounded_line_extended_line(bounded_line2, bounded_line1, inclusive)
    if intersection1 is None or intersection2 is None:
        return None
    if intersection1 == intersection2:
        return intersection1
    raise ValueError


# ---- cases -------------------------------------------------------------------------

INTERSECTIONS = {
    "crossing": (((0, 0), (2, 2)), ((0, 2), (2, 0))),
    "non-crossing, boxes apart": (((0, 0), (2, 2)), ((0, 3), (2, 2.5))),
    "non-crossing, boxes overlap": (((0, 0), (2, 2)), ((0, 3), (3, 1.9))),
    "parallel": (((0, 0), (2, 2)), ((0, 1), (2, 3))),
}
OVERLAPS = {
    "collinear": (((0, 0), (2, 1)), ((1, 0.5), (3, 1.5))),
    "vertical": (((0, 0), (0, 2)), ((0, 1), (0, 3))),
    "parallel": (((0, 0), (2, 1)), ((0, 1), (2, 2))),
}


def outcome(value):
    if value is None:
        return None
    if hasattr(value, "start_point"):
        return outcome(value.start_point), outcome(value.end_point)
    return value.x, value.y, value.z


def measure(function, repeat):
    number = 2000
    return min(timeit.repeat(function, number=number, repeat=repeat)) / number


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--repeat", type=int, default=5)
    args = parser.parse_args()

    rows = []
    for name, (a, b) in INTERSECTIONS.items():
        native = (geometry.Line(*a), geometry.Line(*b))
        plain = (Line(*a), Line(*b))
        assert (outcome(geometry.calculate_intersection_bounded_lines(*native))
                == outcome(calculate_intersection_bounded_lines(*plain))), name
        rows.append((f"calculate_intersection_bounded_lines, {name}",
                     measure(lambda: geometry.calculate_intersection_bounded_lines(*native), args.repeat),
                     measure(lambda: calculate_intersection_bounded_lines(*plain), args.repeat)))
    for name, (a, b) in OVERLAPS.items():
        native = (geometry.Line(*a), geometry.Line(*b))
        plain = (Line(*a), Line(*b))
        assert outcome(native[0].find_overlap(native[1])) == outcome(plain[0].find_overlap(plain[1])), name
        rows.append((f"Line.find_overlap, {name}",
                     measure(lambda: native[0].find_overlap(native[1]), args.repeat),
                     measure(lambda: plain[0].find_overlap(plain[1]), args.repeat)))

    print(f"{'case':68} {'ostrel':>10} {'plain':>10} {'ratio':>7}")
    for name, native, plain in rows:
        print(f"{name:68} {native * 1e6:8.2f}us {plain * 1e6:8.2f}us {plain / native:6.1f}x")


if __name__ == "__main__":
    main()
