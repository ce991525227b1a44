import math

import pytest
from hypothesis import given, strategies as st

from ostrel import geometry
from ostrel.core import ISCLOSE_ATOL
from ostrel.geometry import (Line, Point, calculate_intersection_bounded_line_extended_line,
                             calculate_intersection_bounded_line_with_y, calculate_intersection_bounded_lines,
                             calculate_intersection_extended_line_with_x, calculate_intersection_extended_line_with_y,
                             calculate_intersection_extended_lines, point_is_on_bounded_line)

from differential import steps, xyz

between = geometry._between_bounds


@pytest.mark.parametrize("args, expected", [
    ((1, 2, 0), True), ((1, 0, 2), True), ((0, 0, 2), True), ((0, 0, 2, False), False), ((3, 0, 2), False),
((2 + ISCLOSE_ATOL / 2, 0, 2, False), False), ((math.nan, 0, 2), False),
    ((1e-10, 1e-10 + 5e-10, 2), True),
])
def test_between_bounds(args, expected):
    for function in (between, geometry.x_between_bounds, geometry.y_between_bounds):
        assert function(*args) is expected


def test_between_bounds_gives_the_inclusive_object_itself():
    marker = object()
    assert between(0, 0, 2, marker) is marker
    assert between(1, 0, 2, marker) is True
    assert geometry.point_is_on_bounded_line((2, 2), Line((0, 0), (2, 2)), marker) is marker


@pytest.mark.parametrize("point, expected", [
    ((1, 1), True), ((0, 0), True), ((2, 2, 0), True), ((3, 3), False), ((-1, -1), False), ((1, 0), False),
    ((1, 1, 1), False),
])
def test_point_is_on_bounded_line(point, expected):
    line = Line((0, 0), (2, 2))
    assert point_is_on_bounded_line(point, line) is expected
    assert point_is_on_bounded_line(point, ((0, 0, 0), (2, 2, 0))) is expected
    at_end = point in ((0, 0), (2, 2, 0))
    assert point_is_on_bounded_line(point, line, inclusive=False) is (expected and not at_end)


def test_point_is_on_bounded_line_rebuilds_the_line():
    with pytest.raises(ValueError, match="^Start and end point may not coincide$"):
        point_is_on_bounded_line((0, 0), ((1, 1, 0), (1, 1, 0)))


def test_intersections_with_y():
    assert calculate_intersection_extended_line_with_y(Line((0, 0), (2, 2)), 5) == 5.0
    assert calculate_intersection_bounded_line_with_y(Line((0, 0), (2, 2)), 1) == 1.0
    assert calculate_intersection_bounded_line_with_y(Line((0, 0), (2, 2)), 3) is None
    assert math.isnan(calculate_intersection_extended_line_with_y(Line((1, 0), (1, 2)), 1))
    assert calculate_intersection_bounded_line_with_y(Line((1, 0), (1, 2)), 1) is None
    for function in (calculate_intersection_extended_line_with_y, calculate_intersection_bounded_line_with_y):
        with pytest.raises(ZeroDivisionError, match="^float division by zero$"):
            function(Line((0, 1), (2, 1)), 1)


def test_intersection_with_x():
    assert xyz(calculate_intersection_extended_line_with_x(Line((0, 1, 7), (1, 3, 7)), 2)) == (2.0, 5.0, 0.0)
    assert math.isnan(calculate_intersection_extended_line_with_x(Line((1, 0), (1, 2)), 1).y)


@pytest.mark.parametrize("first, second, expected", [
    (((0, 0), (0, 1)), ((1, 0), (1, 1)), None),
    (((0, 0), (0, 1)), ((0, 0), (0, 5)), None),  # two verticals on top of each other
    (((0, 0), (1, 1)), ((0, 1), (1, 2)), None),
    (((2, 0), (2, 1)), ((0, 0), (1, 1)), (2.0, 2.0, 0.0)),
    (((0, 0), (1, 1)), ((2, 0), (2, 1)), (2.0, 2.0, 0.0)),
    (((0, 0, 3), (1, 1, 3)), ((0, 2), (1, 1)), (1.0, 1.0, 0.0)),
])
def test_extended_lines(first, second, expected):
    result = calculate_intersection_extended_lines(Line(*first), Line(*second))
    assert (result if result is None else xyz(result)) == expected


@pytest.mark.parametrize("first, second, inclusive, expected", [
    (((0, 0), (2, 2)), ((0, 2), (2, 0)), True, (1.0, 1.0, 0.0)),
    (((0, 0), (2, 2)), ((2, 2), (3, 0)), True, (2.0, 2.0, 0.0)),  # touching at an end
    (((0, 0), (2, 2)), ((2, 2), (3, 0)), False, None),
    (((0, 0), (2, 2)), ((2, 0), (1, 1)), True, (1.0, 1.0, 0.0)),  # an end on the other's inside
    (((0, 0), (2, 2)), ((2, 0), (1, 1)), False, None),
    (((0, 0), (2, 2)), ((1, 1), (3, 3)), True, None),  # collinear: parallel
    (((0, 0), (2, 0)), ((1, -1), (1, 1)), True, (1.0, 0.0, 0.0)),
    (((0, 0, 4), (2, 2, 4)), ((0, 2, -4), (2, 0, -4)), True, (1.0, 1.0, 0.0)),
])
def test_bounded_lines(first, second, inclusive, expected):
    result = calculate_intersection_bounded_lines(Line(*first), Line(*second), inclusive)
    assert (result if result is None else xyz(result)) == expected


def test_box_test_comes_before_the_tolerant_steps():
    # Exact rejection on the bounding boxes, though the tolerant steps would take the point.
    horizontal, vertical = Line((0, 0), (1, 0)), Line((1 + ISCLOSE_ATOL / 2, -1), (1 + ISCLOSE_ATOL / 2, 1))
    assert calculate_intersection_bounded_lines(horizontal, vertical) is None
    assert xyz(calculate_intersection_bounded_line_extended_line(horizontal, vertical)) == (1 + ISCLOSE_ATOL / 2, 0, 0)


StepLine = steps(Line)


@pytest.mark.parametrize("cls", [Line, StepLine])
@pytest.mark.parametrize("ends", [((0, 0), (1, 1)), ((1, 1), (0, 0))])
def test_end_of_segment_by_point_equality(monkeypatch, cls, ends):
    """The last step of the bounded-extended intersection: inclusive, an intersection outside the
    segment's bounds (abs_tol=ISCLOSE_ATOL) is still returned when it equals the start or the end
    point, by Point equality with both module tolerances. Only its rel_tol can exceed the bounds
    1e-9, so the step is reached with a larger ISCLOSE_RTOL alone. Catches that step missing,
    testing one end only, taken when exclusive, or with the bounds' tolerances."""
    monkeypatch.setattr(geometry, "ISCLOSE_RTOL", 1e-3)
    beyond = 1 + 2 ** -12  # P = (beyond, beyond): outside [0, 1] on both axes, equal to (1, 1)
    segment, across = cls(*ends), cls((beyond + 0.5, beyond - 0.5), (beyond - 0.5, beyond + 0.5))
    functions = [calculate_intersection_bounded_line_extended_line, calculate_intersection_bounded_lines]
    for function in functions:
        assert xyz(function(segment, across)) == (beyond, beyond, 0.0)
        assert function(segment, across, False) is None
    monkeypatch.setattr(geometry, "ISCLOSE_RTOL", 1e-9)
    assert [function(segment, across) for function in functions] == [None, None]


def test_differing_one_sided_intersections_raise_a_bare_value_error():
    # Lines crossing near y = 0 far out: the two sides round to points further apart
    # than the absolute tolerance.
    first = Line((4841190.888957689, -19.072162012404725), (4841210.888957689, 19.072162012404725))
    second = Line((4841190.888957689, -19.08185015590592), (4841210.888957689, 19.08185035590592))
    with pytest.raises(ValueError) as error:
        calculate_intersection_bounded_lines(first, second)
    assert error.value.args == ()


def test_results_are_built_with_the_global_point(monkeypatch):
    class MyPoint(Point):
        pass

    monkeypatch.setattr(geometry, "Point", MyPoint)
    result = calculate_intersection_bounded_lines(Line((0, 0), (2, 2)), Line((0, 2), (2, 0)))
    assert type(result) is MyPoint


def test_tolerance_is_read_at_call_time(monkeypatch):
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", 0.5)
    assert between(2.4, 0, 2, "at bound") == "at bound"
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", -1.0)
    with pytest.raises(ValueError):
        calculate_intersection_bounded_lines(Line((0, 0), (2, 2)), Line((0, 2), (2, 0)))


@pytest.mark.parametrize("name, value, call, expected", [
    # _between_bounds: abs_tol=ISCLOSE_ATOL alone, rel_tol 1e-9 whatever ISCLOSE_RTOL is
    ("ISCLOSE_RTOL", 0.5, lambda: between(1.4, 0, 1), False),
    ("ISCLOSE_ATOL", 0.5, lambda: between(1.4, 0, 1, "at"), "at"),
    # slopes of two infinite lines: the same form
    ("ISCLOSE_RTOL", 0.5, lambda: calculate_intersection_extended_lines(Line((0, 0), (1, 1)), Line((0, 1), (1, 2.2))),
     Point(-5, -5)),
    ("ISCLOSE_ATOL", 0.5, lambda: calculate_intersection_extended_lines(Line((0, 0), (1, 1)), Line((0, 1), (1, 2.2))),
     None),
    # orientation: plain math.isclose, no tolerance of the module at all
    ("ISCLOSE_ATOL", 0.5, lambda: geometry.line_is_horizontal(Line((0, 0), (1, 0.1))), False),
    # point equality: both module tolerances
    ("ISCLOSE_RTOL", 0.5, lambda: point_is_on_bounded_line((1.4, 1.4), Line((0, 0), (1, 1)), "end"), "end"),
])
def test_tolerance_forms(monkeypatch, name, value, call, expected):
    monkeypatch.setattr(geometry, name, value)
    assert call() == expected


@st.composite
def crossing_segments(draw):
    """Two segments through one point, each reaching beyond it on both sides."""
    x, y = draw(st.floats(-100, 100)), draw(st.floats(-100, 100))
    first = draw(st.floats(0, math.pi))
    angles = (first, first + draw(st.floats(0.05, math.pi - 0.05)))  # never parallel
    lengths = draw(st.lists(st.floats(0.1, 10), min_size=4, max_size=4))
    lines = []
    for angle, (before, after) in zip(angles, (lengths[:2], lengths[2:])):
        dx, dy = math.cos(angle), math.sin(angle)
        lines.append(Line((x - before * dx, y - before * dy), (x + after * dx, y + after * dy)))
    return lines, Point(x, y)


@given(crossing_segments(), st.booleans())
def test_bounded_lines_is_symmetric_for_crossing_segments(segments, inclusive):
    (first, second), crossing = segments
    forward = calculate_intersection_bounded_lines(first, second, inclusive)
    backward = calculate_intersection_bounded_lines(second, first, inclusive)
    assert forward == backward
    # Exclusive, a crossing within the tolerance of a steep segment's x bounds counts
    # as at the bound, and is refused.
    if inclusive or forward is not None:
        assert math.dist(xyz(forward), xyz(crossing)) < 1e-6
