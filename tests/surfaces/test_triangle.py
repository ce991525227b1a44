import itertools
import math

import numpy as np
import pytest
from hypothesis import example, given, settings, strategies as st

from ostrel.geometry import Point, Triangle, Vector


def documented_moments(v, area):
    """The second moments, step by step as the class documents them."""
    base = (v[0][0] - v[1][0], v[0][1] - v[1][1])
    theta = np.pi + np.arctan2(base[1], base[0])
    width = np.sqrt(base[0] ** 2 + base[1] ** 2)
    height = 2.0 * area / width
    inertia_base = width * height ** 3 / 36.0
    side_1 = (v[0][0] - v[2][0], v[0][1] - v[2][1])
    length_side_1 = np.sqrt(side_1[0] ** 2 + side_1[1] ** 2)
    side_2 = (v[1][0] - v[2][0], v[1][1] - v[2][1])
    length_side_2 = np.sqrt(side_2[0] ** 2 + side_2[1] ** 2)
    a = width - np.sqrt(max(length_side_1, length_side_2) ** 2 - height ** 2)
    inertia_height = width * height * (width ** 2 - a * width + a ** 2) / 36.0
    return (np.cos(theta) ** 2 * inertia_base + np.sin(theta) ** 2 * inertia_height,
            np.sin(theta) ** 2 * inertia_base + np.cos(theta) ** 2 * inertia_height)


def right_triangle():
    return Triangle(Point(0, 0), Point(4, 0), Point(0, 3))


def test_right_triangle():
    t = right_triangle()
    assert t.area() == 6.0 and type(t.area()) is float
    assert t.centroid == (4 / 3, 1.0, 0.0) and all(type(c) is float for c in t.centroid)
    moments = t.moment_of_inertia
    assert type(moments) is tuple and all(type(m) is np.float64 for m in moments)
    assert moments == pytest.approx((3.0, 16 / 3), rel=1e-12)  # through NumPy's trigonometry
    other = Triangle(Point(4, 0), Point(0, 3), Point(0, 0))  # another order changes the moments only
    assert other.area() == 6.0 and other.moment_of_inertia != moments


def test_profile_by_reference_and_vertices_as_snapshot():
    p = [Point(0, 0), Point(4, 0), Point(0, 3)]
    t = Triangle(*p)
    assert all(a is b for a, b in zip(t.profile, p)) and type(t.profile) is list
    assert t.vertices == [[0.0, 0.0, 0.0], [4.0, 0.0, 0.0], [0.0, 3.0, 0.0]]
    centroid, moments = t.centroid, t.moment_of_inertia
    t.profile[2] = Point(0, 3.3)
    # The moments read the coordinates from the snapshot, but the area from the profile.
    assert t.area() == 6.6 and t.centroid == centroid
    assert t.moment_of_inertia != moments and t.moment_of_inertia == documented_moments(t.vertices, 6.6)


def test_repr():
    assert repr(Triangle(Point(0, 0), Point(1, 0), Point(0, 1.5))) == (
        "<Triangle (Point(0.000e+00, 0.000e+00, 0.000e+00), Point(1.000e+00, 0.000e+00, 0.000e+00), "
        "Point(0.000e+00, 1.500e+00, 0.000e+00))>")
    t = right_triangle()
    t.profile.pop()
    with pytest.raises(ValueError, match="not enough values to unpack"):
        repr(t)


@pytest.mark.parametrize("corners, area", [
    ([(0, 0, 0), (4, 0, 0), (0, 0, 3)], 6.0),  # the area in 3D; the moments take it unchecked
    ([(0, 0), (4, 0), (2, 0)], 0.0),  # collinear
    ([(0, 0), (4, 0), (1, 3)], 6.0),
])
def test_area_and_moments(corners, area):
    t = Triangle(*(Point(*c) for c in corners))
    assert t.area() == area and t.moment_of_inertia == documented_moments(t.vertices, area)


def test_coinciding_base_gives_nan_with_numpy_semantics():
    t = Triangle(Point(1, 1), Point(1, 1, 5), Point(0, 3))
    with pytest.warns(RuntimeWarning) as warned:
        assert all(math.isnan(m) for m in t.moment_of_inertia)
    assert "divide by zero" in str(warned[0].message)
    with np.errstate(divide="ignore", invalid="raise"), pytest.raises(FloatingPointError):
        t.moment_of_inertia


def test_overflows_as_python_floats_do():
    # A square too large for a float raises; a product too large is infinite.
    with pytest.raises(OverflowError):
        Triangle(Point(0, 0), Point(1e200, 0), Point(0, 1)).area()
    assert Triangle(Point(0, 0), Point(1e160, 1e160), Point(-1e160, 1e160)).area() == math.inf
    t = right_triangle()
    t.vertices[1][0] = 1e200
    with pytest.raises(OverflowError):
        t.moment_of_inertia


def test_non_float_vertices_take_python_semantics():
    t = right_triangle()
    t.vertices = [[0, 0, 0], [4, 0, 0], [0, 3, 0]]
    assert t.centroid == (4 / 3, 1.0, 0.0)
    t.vertices = np.array(t.vertices)
    assert all(type(c) is np.float64 for c in t.centroid)
    assert t.moment_of_inertia == right_triangle().moment_of_inertia


class Coordinate(float):
    """Not an exact float: the vertices of a triangle of FloatPoints take the documented steps."""


class FloatPoint(Point):
    x = property(lambda p: Coordinate(p._x))
    y = property(lambda p: Coordinate(p._y))
    z = property(lambda p: Coordinate(p._z))


@pytest.mark.parametrize("point", [Point, FloatPoint])
def test_centroid_sums_left_to_right(point):
    # (v0 + v1 + v2) / 3.0 per coordinate, summed left to right. Each coordinate tells another
    # grouping apart: x from v0 + (v1 + v2) or a compensated sum, y from (v0 + v2) + v1, z
    # from summing thirds and from a product with 1 / 3.0.
    t = Triangle(point(1.0, 1e16, 9.0), point(1e16, 1.0, 0.3), point(-1e16, -1e16, 0.3))
    assert type(t.vertices[0][0]) is (Coordinate if point is FloatPoint else float)
    assert t.centroid == (0.0, 0.0, 3.2000000000000006) and all(type(c) is float for c in t.centroid)


class ShiftedPoint(Point):
    def vector_to(self, point):
        return Vector(1, 0, 0)


class DoubleArea(Triangle):
    def area(self):
        return 2 * super().area()


def test_overrides_are_honoured():
    assert Triangle(ShiftedPoint(0, 0), Point(4, 0), Point(0, 3)).area() == 0.0
    t = DoubleArea(Point(0, 0), Point(10, 0), Point(1, 1))
    assert t.area() == 10.0 and t.moment_of_inertia == documented_moments(t.vertices, 10.0)
    mixed = right_triangle()
    mixed.profile[1] = (4.0, 0.0, 0.0)
    assert mixed.area() == 6.0


coordinate = st.floats(-1e6, 1e6, allow_nan=False)
points = st.lists(st.tuples(coordinate, coordinate, coordinate), min_size=3, max_size=3)


@given(points)
def test_area_invariant_under_permutation_and_centroid_exact(coordinates):
    triangle = Triangle(*(Point(*c) for c in coordinates))
    area = triangle.area()
    for order in itertools.permutations(coordinates):
        assert math.isclose(Triangle(*(Point(*c) for c in order)).area(), area, rel_tol=1e-9, abs_tol=1e-3)
    a, b, c = coordinates  # the centroid exactly: per coordinate, summed left to right, then / 3.0
    assert triangle.centroid == tuple((a[i] + b[i] + c[i]) / 3.0 for i in range(3))


@settings(max_examples=1000)
@given(points)
# The C library's square of a differs here from a * a in the last bit.
@example([(29.69295370093559, -2.0, 3.08226933858528e-14), (-73.96446615024846, 7.84683158876409, -8.028138907529936),
          (-93.09003359694843, -35.09887562621252, -58.3960693750135)])
def test_moments_are_exactly_the_documented_steps(coordinates):
    triangle = Triangle(*(Point(*c) for c in coordinates))
    with np.errstate(all="ignore"):
        expected = documented_moments(triangle.vertices, triangle.area())
        assert np.array_equal(triangle.moment_of_inertia, expected, equal_nan=True)


GARBAGE = [None, 1, "abc", [], [1, 2], [[1, 2, 3]] * 2, [[None] * 3] * 3, [["a"] * 3] * 3, np.zeros((3, 3)),
           np.full((3, 3), np.nan), [[1e308] * 3, [-1e308] * 3, [0] * 3], (Point(0, 0),) * 3, [object()] * 3]


@pytest.mark.filterwarnings("ignore::RuntimeWarning")
@pytest.mark.parametrize("attribute", ["profile", "vertices"])
@pytest.mark.parametrize("value", GARBAGE)
def test_garbage_fields_end_in_python_exceptions(attribute, value):
    t = right_triangle()
    setattr(t, attribute, value)
    for use in (t.area, lambda: t.centroid, lambda: t.moment_of_inertia, lambda: repr(t)):
        try:
            use()
        except Exception:
            pass
