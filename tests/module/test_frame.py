"""The module frame: import, class tree, native functions and the argument rules."""
import copy
import importlib
import inspect
import pickle
import subprocess
import sys

import pytest

from ostrel import geometry
from ostrel.geometry import Point, Vector


def test_second_initialisation_is_refused():
    module_spec = importlib.util.find_spec("ostrel.geometry")
    other = importlib.util.module_from_spec(module_spec)
    with pytest.raises(RuntimeError, match=r"^Module 'geometry' has already been imported\. "
                                           r"Re-initialisation is not supported\.$"):
        module_spec.loader.exec_module(other)
    assert sys.modules["ostrel.geometry"] is geometry


def test_import_with_numpy_warnings_as_errors():
    code = ("import warnings; warnings.filterwarnings('error');"
            "import numpy; from ostrel import geometry; print(geometry.Point(1, 2))")
    out = subprocess.run([sys.executable, "-W", "error", "-c", code], capture_output=True, text=True)
    assert out.returncode == 0, out.stderr
    assert out.stdout.strip() == "Point(1.000e+00, 2.000e+00, 0.000e+00)"


def test_loggers_and_classes_of_the_module():
    import logging

    assert all(cls.__module__ == "ostrel.geometry" for cls in (Vector, Point, geometry.VisualisationError))
    assert geometry.trimesh_logger is logging.getLogger("trimesh") and geometry.logger is logging.getLogger("ostrel")
    assert geometry.logger.level == logging.NOTSET and not geometry.logger.handlers


@pytest.mark.parametrize("obj, qualname", [
    (Vector.__init__, "Vector.__init__"), (Point.x.fget, "Point.x"),
    (geometry.cartesian_to_spherical, "cartesian_to_spherical"),
])
def test_function_objects_look_like_functions(obj, qualname):
    assert obj.__module__ == "ostrel.geometry" and obj.__qualname__ == qualname
    assert obj.__name__ == qualname.rsplit(".", 1)[-1]
    obj.marker = 1  # functions have a __dict__
    assert obj.__dict__["marker"] == 1
    del obj.marker
    bound = Point(1, 2, 3).copy
    assert bound.__func__ is Point.copy and Point.copy(bound.__self__) == bound.__self__


def test_signatures_and_annotations():
    # Names, kinds and defaults of all signatures are checked against the stub in test_stub.py.
    assert str(inspect.signature(Vector.__init__)) == "(self, x: 'float', y: 'float', z: 'float' = 0.0)"
    assert Vector.__init__.__defaults__ == (0.0,) and Vector.__init__.__kwdefaults__ is None
    assert str(inspect.signature(Point(0, 0).get_local_coordinates)) == (
        "(local_origin: 'Union[Tuple[float, float, float], Point]', spherical: 'bool' = False) -> 'np.ndarray'")
    assert Point.vector_to.__annotations__ == {"point": "Union[Tuple[float, float, float], Point]", "return": "Vector"}
    assert str(inspect.signature(Point)) == "(x: 'float', y: 'float', z: 'float' = 0.0)"


@pytest.mark.parametrize("call, message", [
    (lambda: Vector(1), "__init__() takes at least 3 positional arguments (2 given)"),
    (lambda: Vector(1, 2, 3, 4), "__init__() takes at most 4 positional arguments (5 given)"),
    (lambda: Point(0, 0).copy(1), "copy() takes exactly 1 positional argument (2 given)"),
    (lambda: Point(0, 0).vector_to(), "vector_to() takes exactly 2 positional arguments (1 given)"),
    (lambda: Vector(1, z=2), "__init__() takes at least 3 positional arguments (2 given)"),
    (lambda: Vector(1, 2, x=3), "__init__() got multiple values for keyword argument 'x'"),
    (lambda: Vector(1, 2, w=3), "__init__() got an unexpected keyword argument 'w'"),
    (lambda: Point(1, "2"), "must be real number, not str"),
])
def test_argument_errors(call, message):
    with pytest.raises(TypeError) as info:
        call()
    assert str(info.value) == message


def test_float_conversion_accepts_numbers_and_dunder_methods():
    class Floaty:
        def __float__(self):
            return 2.5

    class Indexy:
        def __index__(self):
            return 7

    v = Vector(True, Floaty(), Indexy())
    assert (v.x, v.y, v.z) == (1.0, 2.5, 7.0) and all(type(c) is float for c in v)
    assert Vector(y=2, x=1).coordinates == (1.0, 2.0, 0.0)


def test_instances_are_ordinary_objects():
    p = Point(1, 2)
    assert vars(p) == {"_x": 1.0, "_y": 2.0, "_z": 0.0}
    p.label = "a"
    q = copy.deepcopy(p)
    assert q == p and q is not p and q.label == "a"
    r = pickle.loads(pickle.dumps(Vector(1, 2, 3)))
    assert type(r) is Vector and r == Vector(1, 2, 3)

