"""Every exception raised inside the module reaches the caller as the Python exception
the same Python code would raise, whichever kind of entry point it passes: a function
call, a property, a lazy iterator, the signature of a function, an allocation that fails."""
import inspect
import math
import os
import subprocess
import sys
import textwrap

import pytest

from ostrel import geometry
from ostrel.geometry import Line, Point, Vector


def raised(call):
    with pytest.raises(Exception) as info:
        call()
    return type(info.value), str(info.value), type(info.value.__cause__)


@pytest.mark.parametrize("native, host", [
    # Faults of the kernels, repeated with the host's arithmetic for its exact exception.
    (lambda: Vector(1e200, 0, 0).magnitude, lambda: 1e200 ** 2),
    (lambda: geometry.volume_cone(1e200, 1.0), lambda: 1e200 ** 2),
    (lambda: geometry.spherical_to_cartesian((1.0, math.inf, 0.0)), lambda: math.sin(math.inf)),
    (lambda: Line(Point(0, 0), Point(1e200, 1e200)).collinear((0, 1e-300)), lambda: 1e200 ** 2),
])
def test_kernel_faults_become_the_hosts_exceptions(native, host):
    assert raised(native) == raised(host)


def test_a_null_vector_chains_the_division_error():
    assert raised(Vector(0, 0, 0).normalize) == (ValueError, "Null vector can't be normalized", ZeroDivisionError)


def test_errors_of_a_lazy_iterator_and_of_a_signature_reach_the_caller(monkeypatch):
    class Bare(Point):
        def __init__(self):
            pass

    items = iter(Bare())  # nothing is read before the first next()
    with pytest.raises(AttributeError):
        next(items)
    with pytest.raises(StopIteration):
        next(items)
    monkeypatch.setitem(sys.modules, "inspect", None)
    with pytest.raises(ImportError):
        Point.vector_to.__signature__
    monkeypatch.undo()
    assert list(inspect.signature(Point.vector_to).parameters) == ["self", "point"]


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""),
                    reason="the address sanitizer needs more address space than the limit leaves")
def test_memory_exhaustion_raises_memory_error():
    # Under an address-space limit just above what the process uses, the native mesh
    # path (a C++ vector) and the host's lists both run out: MemoryError, not an abort.
    code = textwrap.dedent("""
        import resource
        from ostrel.geometry import Point, Triangle, get_vertices_faces
        p, q, r = Point(0, 0), Point(1, 0), Point(0, 1)
        triangles = [Triangle(p, q, r)] * 400_000
        with open("/proc/self/statm") as f:
            size = int(f.read().split()[0]) * resource.getpagesize()
        resource.setrlimit(resource.RLIMIT_AS, (size + (8 << 20), resource.RLIM_INFINITY))
        outcomes = set()
        for _ in range(3):
            try:
                get_vertices_faces(triangles)
                outcomes.add("value")
            except MemoryError:
                outcomes.add("MemoryError")
        print(sorted(outcomes))
    """)
    out = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=120)
    assert out.returncode == 0, out.stderr[-2000:]
    assert "MemoryError" in out.stdout
