"""Wrong objects thrown at every class, function and method end in Python exceptions."""
import itertools
import math

import numpy as np
import pytest

from ostrel import geometry


class BadFloat:
    def __float__(self):
        raise RuntimeError("no float")


class BadIter:
    def __iter__(self):
        raise RuntimeError("no iter")

    def __getitem__(self, index):
        raise RuntimeError("no item")


WRONG = [None, "text", b"bytes", [], [1, 2], (1, 2, 3, 4), {}, math.nan, math.inf, 10**400, 1e308,
         -0.0, BadFloat(), BadIter(), np.zeros(5), np.array([np.nan] * 3), object(), geometry.Point(1, 2)]


def module_callables():
    for name, value in sorted(vars(geometry).items()):
        if getattr(value, "__module__", None) == "ostrel.geometry" and callable(value):
            yield name, value


def calls(function):
    for arity in range(4):
        combos = itertools.product(WRONG, repeat=arity) if arity <= 2 else ([w] * arity for w in WRONG)
        for args in combos:
            try:
                function(*args)
            except Exception:
                pass


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("name, function", list(module_callables()))
def test_module_callables(name, function):
    calls(function)


def instances():
    p, q, r = geometry.Point(0, 0), geometry.Point(1, 0), geometry.Point(0, 1)
    triangle = geometry.Triangle(p, q, r)
    assembly = geometry.TriangleAssembly([triangle])
    return [p, geometry.Vector(1, 2, 3), geometry.Line(p, q), triangle, geometry.Material("m"), assembly,
            geometry.Group([assembly]), geometry.LinearPattern(assembly, [1, 0, 0], 2, 1.0),
            geometry.Polyline([p, q, r, q])]


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("instance", instances(), ids=lambda o: type(o).__name__)
def test_methods(instance):
    for name in dir(type(instance)):
        if name in ("__class__", "__init_subclass__", "__subclasshook__", "__new__", "__reduce__",
                    "__reduce_ex__", "__setattr__", "__delattr__"):
            continue
        try:
            attribute = getattr(instance, name)
        except Exception:  # a property of an instance that an earlier call filled with wrong points
            continue
        if callable(attribute):
            calls(attribute)
