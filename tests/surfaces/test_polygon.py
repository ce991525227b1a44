import math

import pytest
from hypothesis import given, settings, strategies as st

from ostrel.geometry import Material, Point, Polygon, Triangle

import polygon_steps as steps


def corners(triangles):
    return [tuple(id(p) for p in t.profile) for t in triangles]


def outcome(call):
    try:
        return call()
    except (ValueError, IndexError, ZeroDivisionError) as error:
        return type(error), str(error)


class Documented(Polygon):
    """Runs every member through the instance: the documented steps, not the native paths."""


def star(n, seed, grid=None, clockwise=False):
    """A star-shaped ring of n corners around the origin; on a coarse grid, with collinear and
    touching corners."""
    import random
    rng = random.Random(seed)
    angles = sorted(rng.uniform(0, 2 * math.pi) for _ in range(n))
    points = []
    for a in angles:
        r = rng.uniform(0.3, 1.0)
        x, y = r * math.cos(a), r * math.sin(a)
        if grid:
            x, y = round(x * grid) / grid, round(y * grid) / grid
        points.append(Point(x, y))
    return points[::-1] if clockwise else points


@settings(max_examples=300, deadline=None)
@given(st.integers(3, 40), st.integers(0, 10**6), st.sampled_from([None, 4, 8, 1e7]), st.booleans())
def test_native_checks_and_clipping_match_the_documented_steps(n, seed, grid, clockwise):
    points = star(n, seed, grid, clockwise)
    expected = outcome(lambda: (steps.check_duplicate_points(points), steps.is_simple(points)))
    built = outcome(lambda: Polygon(points))
    if not isinstance(built, Polygon):
        assert built == outcome(lambda: Documented(points))
        if expected[1] is True:
            assert built == (ValueError, "All points of the polygon are collinear.")
        elif expected[1] is False:
            assert built == (ValueError, "Constructed polygon has self-intersecting lines, which is not supported.")
        else:
            assert built == expected
        return
    assert expected == (None, True)
    reference = outcome(lambda: steps.triangulate(points))
    native = outcome(built._triangles)
    if isinstance(reference, list):
        assert corners(native) == corners(reference)
        assert built.cross_sectional_area == sum(t.area() for t in reference)
        documented = Documented(points)
        assert built.centroid == documented.centroid
        assert built.moment_of_inertia == documented.moment_of_inertia
    else:
        assert native == reference


@settings(max_examples=200, deadline=None)
@given(st.lists(st.tuples(st.integers(-3, 3), st.integers(-3, 3)), min_size=1, max_size=12))
def test_is_simple_matches_the_documented_steps_on_any_ring(coordinates):
    points = [Point(x, y) for x, y in coordinates]
    assert outcome(lambda: Polygon._is_simple(points)) == outcome(lambda: steps.is_simple(points))
    assert outcome(lambda: Polygon._check_duplicate_points(type("P", (), {"points": points})())) == \
        outcome(lambda: steps.check_duplicate_points(points))
