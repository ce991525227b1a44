"""Coplanarity, point forms, closed forms, colour text, orientation, add_point,
find_overlap and _current_next."""
import math

import numpy as np
import pytest
from hypothesis import given, strategies as st

from ostrel.core import ISCLOSE_ATOL
from ostrel.geometry import (Point, _current_next, add_point, calculate_distance_vector, circumference_is_clockwise,
                             convert_points_for_lathe, find_overlap, hex_to_rgb, lines_in_same_plane,
                             points_are_coplanar, rgb_to_hex, surface_area_dome, surface_cone_without_base,
                             volume_cone)

size = st.floats(min_value=-1e100, max_value=1e100, allow_nan=False)
end = st.sampled_from([0.0, 1.0, 2.0, -1.0, 0.5]) | st.floats(min_value=-10, max_value=10, allow_nan=False)


class Line:
    """Stand-in with the attributes lines_in_same_plane reads."""

    def __init__(self, start_point, end_point):
        self.start_point, self.end_point = start_point, end_point


class MyPoint(Point):
    pass


@pytest.mark.parametrize("points, expected", [
    ([None, None, None], True),  # three points are not looked at
    ([(1, 1, 1)] * 4, True),
    ([(0, 0, 0), (1, 1, 1), (2, 2, 2), (5, 5, 5)], True),
    ([Point(0, 0), Point(1, 0), Point(0, 1), Point(0, 0, 1)], False),
])
def test_points_are_coplanar(points, expected):
    result = points_are_coplanar(points)
    assert result == expected and type(result) is (bool if len(points) == 3 else np.bool_)
    with pytest.raises(ValueError, match="^Need at least 3 points$"):
        points_are_coplanar(points[:2])


def test_lines_in_same_plane():
    a = Line(Point(0, 0), Point(1, 0))
    assert lines_in_same_plane(a, Line(Point(0, 1), Point(1, 1, 0)))
    assert not lines_in_same_plane(a, Line(Point(0, 1, 1), Point(0, 2, 1)))


def test_point_forms():
    assert calculate_distance_vector(Point(1, 2, 3), (2, 2, 2)).tolist() == [1, 0, -1]
    lathe = convert_points_for_lathe(iter([Point(3, 4, 5)]))
    assert lathe == [{"x": 3.0, "y": 4.0}] and list(lathe[0]) == ["x", "y"]

    class Raw:
        x, y = 1, "2.5"

    assert convert_points_for_lathe((Raw(),)) == [{"x": 1.0, "y": 2.5}]


@given(size, size)
def test_cone_forms_keep_their_grouping(r, h):
    assert volume_cone(r, h) == ((1 / 3 * math.pi) * r ** 2) * h
    assert surface_cone_without_base(r, h) == (math.pi * r) * math.sqrt(r ** 2 + h ** 2)


@given(end, end, size, size)
def test_dome_keeps_its_grouping(t1, t2, r, big_r):
    if math.isclose(t1, t2):
        return
    expected = abs(2 * math.pi * r * ((big_r * t2 + r * math.sin(t2)) - (big_r * t1 + r * math.sin(t1))))
    assert surface_area_dome(t1, t2, r, big_r) == expected


@pytest.mark.parametrize("call, error", [
    (lambda: volume_cone(1e200, 1), OverflowError),
    (lambda: surface_cone_without_base(1, 1e200), OverflowError),
    (lambda: surface_area_dome(1.0, 1.0 + 1e-12, 1, 1), ValueError),
    (lambda: surface_area_dome(0, math.inf, 1, 1), ValueError),
])
def test_closed_form_errors(call, error):
    with pytest.raises(error):
        call()
    assert surface_area_dome(0.0, 1e-300, 1, 1) > 0  # no absolute tolerance near zero


@pytest.mark.parametrize("text, expected", [
    ("#ff8000", (255, 128, 0)), ("f80", (15, 8, 0)), ("##FF8000", (255, 128, 0)), ("1234567", (18, 52, 86, 7)),
    ("#ab", ValueError("^range\\(\\) arg 3 must not be zero$")),
    ("zz0000", ValueError("invalid literal for int\\(\\) with base 16: 'zz'")),
    (255, TypeError("^Argument 'value' has incorrect type \\(expected str, got int\\)$")),
])
def test_hex_to_rgb(text, expected):
    if isinstance(expected, Exception):
        with pytest.raises(type(expected), match=str(expected)):
            hex_to_rgb(text)
    else:
        assert hex_to_rgb(text) == expected


@given(st.tuples(*[st.integers(0, 255)] * 3))
def test_rgb_round_trip(rgb):
    text = rgb_to_hex(*rgb)
    assert text == "#" + rgb_to_hex(*rgb, include_hashtag=0) == text.lower() and len(text) == 7
    assert hex_to_rgb(text) == rgb


SQUARE = [(0, 0), (0, 1), (1, 1), (1, 0), (0, 0)]


@pytest.mark.parametrize("ring, expected", [(SQUARE, True), (SQUARE[::-1], False), ([(2, 3), (2, 3)], True)])
@pytest.mark.parametrize("kind", [Point, MyPoint])
def test_circumference_orientation(ring, expected, kind):
    assert circumference_is_clockwise([kind(*p) for p in ring]) is expected


@pytest.mark.parametrize("ring, message", [
    ([(0, 0), (1, 0), (1, 1)], "^Startpoint is not equal to endpoint$"),
    ([(0, 0), (1, 0, 1e-300), (0, 0)], "^Points should line in x,y-plane$"),
])
def test_circumference_errors(ring, message):
    with pytest.raises(ValueError, match=message):
        circumference_is_clockwise([Point(*p) for p in ring])


@given(st.lists(st.tuples(end, end), min_size=1, max_size=8))
def test_native_and_python_orientation_agree(corners):
    ring = [Point(*c) for c in corners + corners[:1]]
    expected = circumference_is_clockwise([MyPoint(*p) for p in ring])
    assert circumference_is_clockwise(ring) is expected
    assert circumference_is_clockwise(tuple(ring)) is expected


def test_add_point():
    p = Point(1, 2)
    assert add_point([], p) == ([p], 0)
    existing = [Point(0, 0), Point(1, 2 + ISCLOSE_ATOL / 2)]
    points, index = add_point(existing, p)
    assert index == 1 and points is not existing and len(points) == 2 and all(a is b for a, b in zip(points, existing))
    points, index = add_point(existing, Point(5, 5))
    assert index == 2 and points[2] == Point(5, 5) and len(existing) == 2


@pytest.mark.parametrize("a, b, inclusive, expected", [
    ((0, 1), (1, 2), False, None),
    ((0, 1), (1, 2), True, (1, 1)),
    ((1, 0), (0.5, 2), False, (0.5, 1)),
    ((0.0, 1.0), (1.0 + 1e-12, 2.0), True, (1.0 + 1e-12, 1.0)),
    ((0.0, 1.0), (1.0 - 1e-12, 2.0), False, None),
    ((0.0, 1.0), (2.0, 3.0), True, None),
    ((-0.0, 1.0), (0.0, 2.0), False, (-0.0, 1.0)),
])
def test_find_overlap(a, b, inclusive, expected):
    result = find_overlap(a, b, inclusive)
    assert result == expected
    if expected:
        assert math.copysign(1, result[0]) == math.copysign(1, expected[0])


def test_find_overlap_unpacks_a_descending_region_twice():
    with pytest.raises(ValueError, match="not enough values to unpack"):
        find_overlap(iter([1.0, 0.0]), (0.0, 1.0))
    with pytest.raises(ValueError, match="too many values to unpack"):
        find_overlap((0, 1, 2), (0, 1))


@given(end, end, end, end, st.booleans())
def test_find_overlap_is_symmetric_and_kernel_matches_host_arithmetic(a0, a1, b0, b1, inclusive):
    result = find_overlap((a0, a1), (b0, b1), inclusive)
    assert result == find_overlap((b1, b0), (a0, a1), inclusive)
    f = np.float64  # not an exact float: compared as the host compares
    assert result == find_overlap((f(a0), f(a1)), (f(b0), f(b1)), inclusive)
    if result is not None:
        assert max(min(a0, a1), min(b0, b1)) == result[0] and result[1] == min(max(a0, a1), max(b0, b1))


def test_current_next_reads_one_item_ahead_at_the_call_and_returns_a_zip():
    read = []

    def items():
        for i in range(4):
            read.append(i)
            yield i

    pairs = _current_next(items())
    assert type(pairs) is zip and read == [0]
    assert next(pairs) == (0, 1) and read == [0, 1]
    assert list(pairs) == [(1, 2), (2, 3)]
    assert list(_current_next([1])) == [] and list(_current_next("")) == []
    with pytest.raises(TypeError, match="not iterable"):
        _current_next(5)
