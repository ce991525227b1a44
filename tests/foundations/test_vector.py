import copy
import math

import pytest
from hypothesis import given, strategies as st

from ostrel import geometry
from ostrel.core import ISCLOSE_ATOL
from ostrel.geometry import Line, Point, Vector

finite = st.floats(min_value=-1e6, max_value=1e6, allow_nan=False)


class MyVector(Vector):
    pass


def test_fields_are_plain_writable_floats_read_at_each_use():
    v = Vector(1, 2)
    assert vars(v) == {"x": 1.0, "y": 2.0, "z": 0.0} and all(type(c) is float for c in (v.x, v.y, v.z))
    v.x, v.y = 3, 4
    assert v.magnitude == 5.0
    v.z = 12
    assert v.squared_magnitude == 169 and v.magnitude == 13.0 and v.coordinates == (3, 4, 12)
    assert repr(Vector(0.1, -1e-20, 1e300)) == "Vector(0.1, -1e-20, 1e+300)"


@pytest.mark.parametrize("other, expected", [
    (Vector(1, 2, 3 + ISCLOSE_ATOL / 2), True), (Vector(1, 2, 3 + 10 * ISCLOSE_ATOL), False), ((1, 2, 3), False),
    (Point(1, 2, 3), False),
])
def test_equality_by_tolerance(other, expected):
    assert (Vector(1, 2, 3) == other) is expected and (Vector(1, 2, 3) != other) is (not expected)


def test_equality_reads_module_tolerances_at_call_time(monkeypatch):
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", 0.5)
    assert Vector(0, 0, 0) == Vector(0.4, 0, 0)
    monkeypatch.setattr(geometry, "ISCLOSE_ATOL", -1.0)
    with pytest.raises(ValueError, match="tolerances must be non-negative"):
        Vector(0, 0, 0) == Vector(0.4, 0, 0)


@pytest.mark.parametrize("index, expected", [
    (1, 2.0), (True, 2.0), (False, 1.0), (3, IndexError("list index out of range")),
    (-1, IndexError("list index out of range")), (10**30, IndexError("list index out of range")),
    (1.0, TypeError("list indices must be integers, not float")),
    ("x", TypeError("list indices must be integers, not str")),
])
def test_indexing(index, expected):
    if isinstance(expected, Exception):
        with pytest.raises(type(expected)) as info:
            Vector(1, 2, 3)[index]
        assert str(info.value) == str(expected)
    else:
        assert Vector(1, 2, 3)[index] == expected


def test_iteration_reads_at_first_next():
    v = Vector(1, 2, 3)
    it = iter(v)
    v.x = 10.0  # before the first next: seen
    assert next(it) == 10.0
    v.y = 20.0  # after: not seen
    assert list(it) == [2.0, 3.0]


def test_arithmetic():
    v, w = Vector(1, 2, 3), Vector(4, 5, 6)
    assert -v == Vector(-1, -2, -3) and v + w == Vector(5, 7, 9) and w - v == Vector(3, 3, 3)
    assert v * 3 == 3 * v == Vector(3, 6, 9) and v.dot(w) == 32.0 and v.cross(w) == Vector(-3, 6, -3)
    assert type(v + Point(1, 1, 1)) is Vector
    with pytest.raises(AttributeError):
        v + (1, 2, 3)
    with pytest.raises(AttributeError):
        v.cross(object())


@pytest.mark.parametrize("factor", [None, "2", Vector(1, 1, 1)])
def test_multiplication_refuses_non_numbers(factor):
    with pytest.raises(TypeError, match="must be real number"):
        Vector(1, 2, 3) * factor


@pytest.mark.parametrize("operation", [
    lambda v, w: -v, lambda v, w: v + w, lambda v, w: v - w, lambda v, w: v * 2, lambda v, w: 2 * v,
    lambda v, w: v.normalize(), lambda v, w: v.cross(w),
])
def test_subclass_survives(operation):
    assert type(operation(MyVector(1, 2, 3), Vector(3, 1, 2))) is MyVector


def test_rmul_goes_through_mul():
    class Doubling(Vector):
        def __mul__(self, other):
            return "overridden"

    assert 2 * Doubling(1, 2, 3) == "overridden"


def test_normalize():
    assert Vector(3, 0, 4).normalize() == Vector(0.6, 0, 0.8)
    with pytest.raises(ValueError, match="^Null vector can't be normalized$") as info:
        Vector(0, 0, 0).normalize()
    assert isinstance(info.value.__cause__, ZeroDivisionError)
    with pytest.raises(ValueError):
        Vector(1e-300, 0, 0).normalize()  # the square underflows to zero
    with pytest.raises(OverflowError):  # the square overflows as a float power does
        Vector(1e200, 0, 0).magnitude


def test_unhashable_and_deep_copyable():
    with pytest.raises(TypeError):
        hash(Vector(1, 2, 3))
    v = MyVector(1, 2, 3)
    assert copy.deepcopy(v) == v and type(copy.deepcopy(v)) is MyVector


@given(finite, finite, finite, finite, finite, finite)
def test_cross_and_dot_are_the_documented_products(a, b, c, d, e, f):
    # Exactly these products and differences, in this order: no fused multiply-add, no regrouping.
    for cls in (Vector, MyVector):
        v, w = cls(a, b, c), Vector(d, e, f)
        assert v.cross(w).coordinates == (b * f - c * e, c * d - a * f, a * e - b * d)
        assert v.dot(w) == a * d + b * e + c * f


# Values whose square by the C library's pow differs in the last bit from x * x: float
# powers must go through pow, as the host computes `x ** 2`.
POW_DIFFERS = [x for x in (1.5261283972998259, 1.1 + 2 ** -40, 3.3, 7.7, 123.456) if x ** 2 != x * x]


@pytest.mark.parametrize("x", POW_DIFFERS)
def test_squares_are_the_hosts(x):
    assert Vector(x, 0, 0).squared_magnitude == x ** 2 + 0.0 ** 2 + 0.0 ** 2
    assert Line(Point(0, 0), Point(x, 0)).length == math.sqrt(x ** 2 + 0.0 ** 2 + 0.0 ** 2)
