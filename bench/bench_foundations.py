"""Times Vector, Point and the coordinate conversions against the same classes written
in plain Python. Run by hand: python bench/bench_foundations.py"""
import math
import os
import timeit

os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")  # idle BLAS threads would take a core

import numpy as np

from ostrel import geometry
from ostrel.core import ISCLOSE_ATOL, ISCLOSE_RTOL


class PyVector:
    def __init__(self, x: float, y: float, z: float = 0.0):
        self.x = float(x)
        self.y = float(y)
        self.z = float(z)

    def __eq__(self, other):
        if not isinstance(other, PyVector):
            return NotImplemented
        return (math.isclose(self.x, other.x, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self.y, other.y, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self.z, other.z, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL))

    def __add__(self, other):
        return self.__class__(self.x + other.x, self.y + other.y, self.z + other.z)

    def __mul__(self, other: float):
        other = float(other)
        return self.__class__(self.x * other, self.y * other, self.z * other)

    def cross(self, other):
        return self.__class__(self.y * other.z - self.z * other.y, self.z * other.x - self.x * other.z,
                              self.x * other.y - self.y * other.x)

    @property
    def squared_magnitude(self):
        return self.x ** 2 + self.y ** 2 + self.z ** 2

    @property
    def magnitude(self):
        return math.sqrt(self.squared_magnitude)

    def normalize(self):
        magnitude = self.magnitude
        try:
            return self.__class__(self.x / magnitude, self.y / magnitude, self.z / magnitude)
        except ZeroDivisionError as e:
            raise ValueError("Null vector can't be normalized") from e


class PyPoint:
    def __init__(self, x: float, y: float, z: float = 0.0):
        x, y, z = float(x), float(y), float(z)
        if None == x or None == y or None == z:  # noqa: E711
            raise TypeError("Cannot instantiate a Point with None.")
        self._x = x
        self._y = y
        self._z = z

    def __eq__(self, other):
        if not isinstance(other, PyPoint):
            return NotImplemented
        return (math.isclose(self._x, other._x, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self._y, other._y, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL)
                and math.isclose(self._z, other._z, rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL))

    def vector_to(self, point):
        return PyVector(point[0] - self._x, point[1] - self._y, point[2] - self._z)

    def __getitem__(self, index):
        if not isinstance(index, int):
            raise TypeError(f"list indices must be integers, not {type(index).__name__}")
        if index == 0:
            return self._x
        if index == 1:
            return self._y
        if index == 2:
            return self._z
        raise IndexError("list index out of range")


def py_cartesian_to_spherical(c):
    r = math.sqrt(c[0] ** 2 + c[1] ** 2 + c[2] ** 2)
    theta = math.acos(c[2] / r)
    phi = math.atan2(c[1], c[0])
    return np.array([r, theta, phi], dtype=float)


def py_spherical_to_cartesian(s):
    r, theta, phi = s
    x = r * math.sin(theta) * math.cos(phi)
    y = r * math.sin(theta) * math.sin(phi)
    z = r * math.cos(theta)
    return np.array([x, y, z], dtype=float)


def py_cartesian_to_cylindrical(c):
    x, y, z = c
    return np.array([math.sqrt(x ** 2 + y ** 2), math.atan2(y, x), z], dtype=float)


def measure(statement, namespace, number=200_000):
    return min(timeit.repeat(statement, globals=namespace, number=number, repeat=9)) / number


def main():
    cases = [
        ("Point(1, 2, 3)", "Point(1.0, 2.0, 3.0)"),
        ("p == q", "p == q"),
        ("p.vector_to(q)", "p.vector_to(q)"),
        ("v + w", "v + w"),
        ("v * 2.5", "v * 2.5"),
        ("v.cross(w)", "v.cross(w)"),
        ("v.normalize()", "v.normalize()"),
        ("cartesian_to_spherical", "cartesian_to_spherical(c)"),
        ("spherical_to_cartesian", "spherical_to_cartesian(s)"),
        ("cartesian_to_cylindrical", "cartesian_to_cylindrical(c)"),
    ]
    native = dict(Point=geometry.Point, p=geometry.Point(1, 2, 3), q=geometry.Point(1, 2, 3.5),
                  v=geometry.Vector(1, 2, 3), w=geometry.Vector(4, 5, 6), c=(1.0, 2.0, 3.0), s=(1.0, 0.5, 0.25),
                  cartesian_to_spherical=geometry.cartesian_to_spherical,
                  spherical_to_cartesian=geometry.spherical_to_cartesian,
                  cartesian_to_cylindrical=geometry.cartesian_to_cylindrical)
    plain = dict(Point=PyPoint, p=PyPoint(1, 2, 3), q=PyPoint(1, 2, 3.5), v=PyVector(1, 2, 3), w=PyVector(4, 5, 6),
                 c=(1.0, 2.0, 3.0), s=(1.0, 0.5, 0.25), cartesian_to_spherical=py_cartesian_to_spherical,
                 spherical_to_cartesian=py_spherical_to_cartesian,
                 cartesian_to_cylindrical=py_cartesian_to_cylindrical)
    print(f"{'operation':28} {'plain Python':>14} {'ostrel':>10} {'speed-up':>9}")
    for label, statement in cases:
        slow = measure(statement, plain)
        fast = measure(statement, native)
        print(f"{label:28} {slow * 1e9:11.0f} ns {fast * 1e9:7.0f} ns {slow / fast:8.2f}x")


if __name__ == "__main__":
    main()
