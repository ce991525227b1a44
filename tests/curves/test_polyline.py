"""Polyline: construction, extents, clean-up, monotonicity, intersections and splitting."""
import pytest

from ostrel.geometry import Line, Point, Polyline

A, B, C = Point(0, 0), Point(1, 1), Point(2, 0)


def coords(polyline):
    return [(p.x, p.y) for p in getattr(polyline, "points", polyline)]


def test_points_are_a_new_list_of_the_callers_objects():
    given = [A, B]
    polyline = Polyline(given)
    assert polyline.points == given and polyline.points is not given and polyline.points[0] is A
    assert Polyline(iter(given)).points[1] is B


@pytest.mark.parametrize("points, count", [([], 0), ([A], 0), ([A, A], 0), ([A, B, B, C], 2),
                                           ([A, Point(1e-12, 0), B], 1)])
def test_lines_skip_zero_length_segments(points, count):
    lines = Polyline(points).lines
    assert len(lines) == count and all(type(line) is Line for line in lines)


def test_extents_and_ends():
    empty = Polyline([])
    assert [empty.x_min, empty.x_max, empty.y_min, empty.y_max, empty.z_min, empty.z_max] == [None] * 6
    with pytest.raises(IndexError):
        empty.start_point
    with pytest.raises(IndexError):
        empty.filter_duplicate_points()
    polyline = Polyline([Point(1, -2, 3), Point(-1, 5, 0), Point(1, 0, 7)])
    assert [polyline.x_min, polyline.x_max, polyline.y_min, polyline.y_max, polyline.z_min, polyline.z_max] == \
        [-1, 1, -2, 5, 0, 7]
    assert polyline.start_point is polyline.points[0] and polyline.end_point is polyline.points[2]


def test_serialize_and_deserialize():
    class Own(Polyline):
        pass

    data = Polyline([Point(1, 2, 3), Point(4, 5)]).serialize()
    assert data == [{"x": 1.0, "y": 2.0}, {"x": 4.0, "y": 5.0}]
    back = Own._deserialize(data)
    assert type(back) is Own and [p.z for p in back.points] == [0.0, 0.0]
    with pytest.raises(KeyError):
        Polyline._deserialize([{"x": 1}])


def test_from_lines_names_the_line_that_does_not_follow():
    lines = [Line(A, B), Line(B, C), Line(Point(5, 5), Point(6, 6))]
    with pytest.raises(ValueError, match="^Start point of line 2 does not coincide with end point of previous line.$"):
        Polyline.from_lines(lines)
    polyline = Polyline.from_lines(lines[:2])
    assert polyline.points[1] is lines[0].end_point and coords(polyline) == [(0, 0), (1, 1), (2, 0)]
    assert Polyline.from_lines([]).points == []


def test_equality_and_reversal():
    polyline = Polyline([A, B, C])
    reversed_polyline = polyline.get_reversed_polyline()
    assert [p for p in reversed_polyline.points] == [C, B, A] and reversed_polyline.points[0] is C
    assert not polyline.is_equal_to(reversed_polyline)
    assert Polyline([A, B, A]).is_equal_to(Polyline([A, B, A]).get_reversed_polyline())
    assert not polyline.is_equal_to(Polyline([A, B]))


def test_filter_duplicates_compares_with_the_predecessor():
    drift = [Point(0, 0), Point(6e-10, 0), Point(1.2e-9, 0), Point(1.8e-9, 0), Point(1, 0)]
    assert coords(Polyline(drift).filter_duplicate_points()) == [(0, 0), (1, 0)]


@pytest.mark.parametrize("xs, strict, expected", [
    ([1, 1], True, False), ([1, 1], False, True), ([1, 0], True, False), ([1, 0], False, False),
    ([1, 1 - 1e-10], False, True), ([1e-12, 0], False, False), ([], True, True), ([3], True, True),
])
def test_monotonic_uses_plain_isclose(xs, strict, expected):
    polyline = Polyline([Point(x, x) for x in xs])
    assert polyline.is_monotonic_ascending_x(strict) is expected
    assert polyline.is_monotonic_ascending_y(strict=strict) is expected


def test_point_on_polyline():
    polyline = Polyline([A, B, C])
    assert polyline.point_is_on_polyline(B) and polyline.point_is_on_polyline(Point(1.5, 0.5))
    assert not polyline.point_is_on_polyline(Point(1, 0))
    assert not Polyline([A]).point_is_on_polyline(A)


def test_intersections_follow_own_segments_sorted_by_distance():
    zigzag = Polyline([Point(3, -1), Point(3, 1), Point(1, 1), Point(1, -1), Point(2, -1), Point(2, 1)])
    points = Polyline([Point(0, 0), Point(4, 0)]).intersections_with_polyline(zigzag)
    assert coords(points) == [(1, 0), (2, 0), (3, 0)]
    # A corner of self on the other polyline counts once; a shared stretch gives nothing.
    corner = Polyline([Point(0, -1), Point(1, 0), Point(2, -1)]).intersections_with_polyline(
        Polyline([Point(0, 0), Point(2, 0)]))
    assert coords(corner) == [(1, 0)] and type(corner) is list and corner[0].z == 0.0
    assert Polyline([A, C]).intersections_with_polyline(Polyline([Point(1, 0), Point(3, 0)])) == []


def test_intersections_with_x_location():
    vertical = Point(1, 0), Point(1, 2)
    polyline = Polyline([vertical[0], vertical[1], Point(3, 2), Point(1, 4)])
    found = polyline.intersections_with_x_location(1)
    assert found[0] is vertical[0] and found[1] is vertical[1] and coords(found) == [(1, 0), (1, 2), (1, 4)]
    # A crossing is a new point even where it meets a point of the polyline.
    assert Polyline([A, vertical[0]]).intersections_with_x_location(1)[0] is not vertical[0]
    assert coords(Polyline([A, B, C]).intersections_with_x_location(1)) == [(1, 1)]
    assert Polyline([A, B]).intersections_with_x_location(5) == []
    with pytest.raises(TypeError):
        polyline.intersections_with_x_location(None)


P = Point(0.5, 0.5)


@pytest.mark.parametrize("at, before, after", [
    (P, [A, P], [P, B, C]), (B, [A, B], [B, C]), (C, [A, B, C], []), (A, [A], [A, B, C]),
])
def test_split(at, before, after):
    first, second = Polyline([A, B, C]).split(at)
    assert (first.points, second.points) == (before, after)
    assert all(x is y for x, y in zip(first.points + second.points, before + after))


def test_split_twice_passed_point_and_lost_zero_length_pair():
    loop = Polyline([A, B, C, B, Point(0, 2)])
    assert [len(part.points) for part in loop.split(P)] == [2, 5]
    assert coords(loop.split(Point(1.5, 0.5))[1]) == [(1.5, 0.5), (2, 0), (1.5, 0.5), (1, 1), (0, 2)]
    assert coords(Polyline([A, B, B, C]).split(B)[1]) == [(1, 1), (2, 0)]


def test_split_off_the_polyline_names_point_and_points():
    with pytest.raises(ValueError) as error:
        Polyline([A, B]).split(Point(5, 5))
    assert str(error.value) == ("Trying to split a polyline on point Point(5.000e+00, 5.000e+00, 0.000e+00) that is "
                                f"not on the polyline {[A, B]}")


def test_polyline_between():
    polyline = Polyline([A, B, C])
    assert polyline.get_polyline_between(A, C, True).points == [A, B, C]
    assert polyline.get_polyline_between(A, C).points == [B]
    assert polyline.get_polyline_between(C, P).points == []
    assert polyline.get_polyline_between(P, Point(0.7, 0.7)).points == []
    for start, end, message in [(Point(9, 9), A, "start_point"), (A, Point(9, 9), "end_point")]:
        with pytest.raises(ValueError, match=f"^{message} not on given polyline$"):
            polyline.get_polyline_between(start, end)


def test_concatenate():
    empty, ab, bc = Polyline([]), Polyline([A, B]), Polyline([B, C])
    assert Polyline._concatenate(empty, ab).points == [A, B]
    assert Polyline._concatenate(ab, empty).points == [A, B]
    joined = Polyline._concatenate(ab, Polyline([Point(1, 1 + 1e-12), C]))
    assert joined.points[1] is B and joined.points == [A, B, C]
    with pytest.raises(ValueError, match="^Polylines can only be concatenated if the endpoint"):
        Polyline._concatenate(ab, Polyline([C, A]))


def test_methods_called_through_self_reach_overrides():
    class Wide(Polyline):
        def point_is_on_polyline(self, point):
            return True

    # split asks self whether the point is on it; the override says yes, so no error.
    before, after = Wide([A, B]).split(Point(7, 7))
    assert before.points == [A, B] and after.points == [] and type(before) is Polyline

