import copy
import math

import numpy as np
import pytest

from ostrel import geometry
from ostrel.core import ISCLOSE_ATOL
from ostrel.geometry import Point, Vector


class MyPoint(Point):
    pass


def test_construction_repr_and_read_only_coordinates():
    p = Point(1, 2)
    assert (p.x, p.y, p.z, p[2]) == (1.0, 2.0, 0.0, 0.0) and Point(*p) == p and tuple(p) == (1.0, 2.0, 0.0)
    assert repr(Point(-0.00012345, 1e300, math.inf)) == "Point(-1.234e-04, 1.000e+300, inf)"
    with pytest.raises(AttributeError):
        p.x = 5
    with pytest.raises(TypeError, match="must be real number, not NoneType"):
        Point(None, 1)
    with pytest.raises(IndexError, match="list index out of range"):
        p[-1]
    with pytest.raises(TypeError, match="list indices must be integers, not NoneType"):
        p[None]


@pytest.mark.parametrize("other, expected", [
    (Point(1, 2, 3 + ISCLOSE_ATOL / 2), True), (Point(1, 2, 3.1), False), ((1, 2, 3), False), (Vector(1, 2, 3), False),
])
def test_equality_and_coincides_with(other, expected):
    p = Point(1, 2, 3)
    assert (p == other) is expected and p.coincides_with(other) is expected


def test_nan_never_coincides():
    p = Point(math.nan, 0)
    assert p != p


def test_coordinates_is_a_new_array_made_through_the_module_np(monkeypatch):
    p = Point(1, 2, 3)
    a = p.coordinates
    assert isinstance(a, np.ndarray) and a.dtype == float and a.tolist() == [1.0, 2.0, 3.0]
    a[0] = 99
    assert p.x == 1.0 and p.coordinates is not a
    calls = []
    spy = type("Spy", (), {"array": lambda self, values, dtype=None: calls.append((values, dtype))})
    monkeypatch.setattr(geometry, "np", spy())
    p.coordinates
    assert calls == [([1.0, 2.0, 3.0], float)]


def test_copy_keeps_class_vector_to_does_not():
    p = MyPoint(1, 2, 3)
    assert type(p.copy()) is MyPoint and p.copy() == p and p.copy() is not p
    assert type(p.vector_to((0, 0, 0))) is Vector


@pytest.mark.parametrize("target", [(1, 2, 3), [1, 2, 3], Point(1, 2, 3), Vector(1, 2, 3)])
def test_vector_to(target):
    assert Point(0, 1).vector_to(target) == Vector(1, 1, 3)


def test_vector_to_reads_three_items_and_uses_the_module_vector(monkeypatch):
    with pytest.raises(IndexError, match="tuple index out of range"):
        Point(0, 0).vector_to((1, 2))
    monkeypatch.setattr(geometry, "Vector", lambda *c: ("patched",) + c)
    assert Point(0, 0).vector_to((1, 2, 3)) == ("patched", 1.0, 2.0, 3.0)


def test_local_coordinates():
    p = Point(1, 1, 1)
    local = p.get_local_coordinates((1, 1, 1))
    assert isinstance(local, np.ndarray) and local.tolist() == [0, 0, 0]
    assert Point(1, 2, 3).get_local_coordinates(Point(1, 2, 1), spherical=True).tolist() == [2.0, 0.0, 0.0]
    with np.errstate(invalid="ignore"):
        r, theta, phi = p.get_local_coordinates(p, spherical=True)
    assert r == 0.0 and math.isnan(theta) and phi == 0.0


def test_unhashable_deep_copyable_subclassable():
    with pytest.raises(TypeError):
        hash(Point(0, 0))
    p = MyPoint(1, 2)
    p.tag = [1]
    q = copy.deepcopy(p)
    assert type(q) is MyPoint and q == p and q.tag == [1] and q.tag is not p.tag
