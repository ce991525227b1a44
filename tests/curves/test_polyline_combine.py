"""Polyline overlaps, combination and the envelope of two profiles."""
import pytest
from hypothesis import given, settings, strategies as st

from ostrel.geometry import Point, Polyline

A, B, C, D = Point(0, 0), Point(1, 0), Point(2, 0), Point(3, 0)


def coords(polyline):
    return [(p.x, p.y) for p in polyline.points]


def line(*xys):
    return Polyline([Point(x, y) for x, y in xys])


@pytest.mark.parametrize("first, second", [([A, B], [B, C]), ([A, B], [C, B]), ([B, C], [A, B]), ([B, C], [B, A])])
def test_combine_end_to_end(first, second):
    assert coords(Polyline(first).combine_with(Polyline(second))) == [(0, 0), (1, 0), (2, 0)]


def test_combine_with_nothing_copies_the_other():
    ab = Polyline([A, B])
    for combined in (Polyline([]).combine_with(ab), ab.combine_with(Polyline([]))):
        assert combined.points == [A, B] and combined.points is not ab.points


def test_combine_without_contact_counts_no_overlap():
    with pytest.raises(ValueError, match="^Only polylines with exactly one overlapping region can be combined, "
                                         "0 were found.$"):
        Polyline([A, B]).combine_with(line((5, 5), (6, 6)))


@pytest.mark.parametrize("reverse", [False, True])
def test_combine_along_a_shared_stretch(reverse):
    second = line((1, 0), (2, 0), (3, 1))
    combined = Polyline([A, B, C]).combine_with(second.get_reversed_polyline() if reverse else second)
    assert coords(combined) == [(0, 0), (1, 0), (2, 0), (3, 1)]


def test_combine_branches_that_follow_the_other():
    # B: the overlap starts self; D: it is all of self, and the result runs along the other.
    assert coords(line((1, 0), (2, 0), (2, 5)).combine_with(line((0, 0), (2, 0)))) == [(0, 0), (1, 0), (2, 0), (2, 5)]
    assert coords(line((1, 0), (2, 0)).combine_with(line((3, 0), (0, 0)))) == [(0, 0), (1, 0), (2, 0), (3, 0)]


def test_combine_overlap_away_from_the_ends():
    with pytest.raises(ValueError, match="^The overlapping region of two combined polylines must lie at either end"):
        line((0, 1), (1, 0), (2, 0)).combine_with(line((0, -1), (1, 0), (2, 0), (3, -1)))
    middle = line((0, 1), (1, 0), (2, 0), (3, 1)).combine_with(line((0, -1), (1, 0), (2, 0), (3, -1)))
    assert middle.points == []


def test_find_overlaps():
    polyline = line((0, 0), (1, 0), (2, 1), (3, 1), (4, 0), (5, 0))
    overlaps = polyline.find_overlaps(line((5, 0), (4, 0), (3, 0), (1, 0), (0, 0)))
    assert [coords(o) for o in overlaps] == [[(0, 0), (1, 0)], [(4, 0), (5, 0)]]
    assert coords(polyline.find_overlaps(polyline)[0]) == coords(polyline)


def envelope(first, second, lowest=True):
    return coords(Polyline.get_lowest_or_highest_profile_x(line(*first), line(*second), lowest))


def test_envelope_of_crossing_profiles():
    rising, falling = [(0, 0), (4, 4)], [(0, 4), (4, 0)]
    assert envelope(rising, falling) == [(0, 0), (2, 2), (4, 0)]
    assert envelope(rising, falling, False) == [(0, 4), (2, 2), (4, 4)]


def test_envelope_of_parallel_profiles_with_different_extents():
    assert envelope([(0, 1), (10, 1)], [(2, 0), (5, 0), (8, 0)]) == [(2, 0), (5, 0), (8, 0)]
    assert envelope([(0, 1), (10, 1)], [(2, 0), (8, 0)], False) == [(2, 1), (8, 1)]


def test_envelope_of_identical_profiles_keeps_profile_1():
    first, second = line((0, 0), (1, 1), (2, 0)), line((0, 0), (1, 1), (2, 0))
    result = Polyline.get_lowest_or_highest_profile_x(first, second, True)
    assert coords(result) == [(0, 0), (1, 1), (2, 0)] and result.points[1] is first.points[1]


def test_envelope_vertical_steps_and_touching_start():
    # The last point at the left end of the stretch and the first at its right end.
    assert envelope([(0, 0), (0, 2), (3, 2), (3, 0)], [(0, 3), (3, 3)]) == [(0, 2), (3, 2)]
    assert envelope([(0, 0), (2, 2)], [(0, 0), (2, 1)]) == [(0, 0), (2, 1)]


def test_envelope_checks_and_empty_profiles():
    back = line((1, 0), (0, 0))
    for first, second, name in [(back, back, "profile_1"), (line((0, 0)), back, "profile_2")]:
        with pytest.raises(ValueError, match=f"^{name} is not monotonic ascending in x direction$"):
            Polyline.get_lowest_or_highest_profile_x(first, second, True)
    assert Polyline.get_lowest_or_highest_profile_x(Polyline([]), line((0, 0), (1, 0)), True).points == []
    # A step back in x within plain isclose is no step back.
    nearly = line((0, 1), (1, 1), (1 - 1e-12, 2), (3, 2))
    assert nearly.is_monotonic_ascending_x(strict=False) is True
    assert coords(Polyline.get_lowest_or_highest_profile_x(nearly, line((0, 0), (3, 0)), False))[-1] == (3.0, 2.0)
    with pytest.raises(IndexError):
        envelope([(0, 0), (1, 0)], [(2, 0), (3, 0)])


def test_envelope_of_a_subclass():
    class Profile(Polyline):
        pass

    result = Profile.get_lowest_or_highest_profile_x(line((0, 0), (4, 4)), line((0, 4), (4, 0)), True)
    assert type(result) is Polyline  # combine_with makes plain polylines
    assert type(Profile.get_lowest_or_highest_profile_x(line((0, 0), (1, 0)), line((1, 0), (2, 0)), True)) is Profile


@st.composite
def profile(draw, size=st.integers(2, 12)):
    """A ground profile: x never decreases, and a vertical step is a single step up or down."""
    n = draw(size)
    x, y = draw(st.sampled_from([0.0, 0.5, 1.0])), draw(st.integers(-3, 3))
    points = [Point(x, y)]
    for _ in range(n - 1):
        vertical = x == points[-2].x if len(points) > 1 else False
        step = draw(st.sampled_from([0.5, 1.0, 1.5] if vertical else [0.0, 0.5, 1.0, 1.5]))
        new_y = draw(st.integers(-3, 3).filter(lambda v: step or v != y))
        x, y = x + step, new_y
        points.append(Point(x, y))
    return Polyline(points)


def height_at(polyline, x):
    """The heights of a profile at x, from its vertical parts as well."""
    found = polyline.intersections_with_x_location(x)
    return min(p.y for p in found), max(p.y for p in found)


@settings(max_examples=150, deadline=None)
@given(profile(), profile(), st.booleans())
def test_envelope_properties(first, second, lowest):
    try:
        result = Polyline.get_lowest_or_highest_profile_x(first, second, lowest)
    except (IndexError, ValueError):
        return  # no common stretch, or a shape the steps cannot combine
    assert result.is_monotonic_ascending_x(strict=False)
    for point in result.points:
        for profile_ in (first, second):
            low, high = height_at(profile_, point.x)
            assert (point.y <= high + 1e-9) if lowest else (point.y >= low - 1e-9)
    try:
        swapped = Polyline.get_lowest_or_highest_profile_x(second, first, lowest)
    except (IndexError, ValueError):
        return
    if not first.find_overlaps(second):
        assert swapped.is_equal_to(result)
