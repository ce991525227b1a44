import math

import numpy as np
import pytest
from hypothesis import given, strategies as st

from ostrel.geometry import Arc, ArcRevolve, Point

from differential import steps

PI = math.pi
O = Point(0, 0, 0)


Marked = steps(Arc)


def on_circle(degrees, r=1.0, centre=(0.0, 0.0)):
    return Point(centre[0] + r * math.cos(math.radians(degrees)), centre[1] + r * math.sin(math.radians(degrees)))


def test_quarter_arc_and_its_members():
    start, end = Point(1, 0, 0), Point(0, 1, 0)
    arc = Arc(O, start, end)
    assert arc.theta1_theta2 == (PI / 2, 0.0) and (arc.theta1, arc.theta2) == (PI / 2, 0.0)
    assert arc.angle == PI / 2 and arc.length == PI / 2 and arc.radius == 1.0
    assert Arc(O, start, end, short_arc=False).angle == 3 * PI / 2
    assert arc.geometries == (start, end, O) and arc.geometries[0] is start and arc.centre_point is O
    flag = []  # stored as given, used by truth value
    assert Arc(O, start, end, flag).short_arc is flag and Arc(O, start, end, flag).angle == 3 * PI / 2


@pytest.mark.parametrize("points, message", [
    ((O, Point(1, 0), Point(0, 2)), "^Only circular arcs are possible. start_point and end-point should have the "
                                    "same distance to the centre.$"),
    ((O, Point(1, 0, 1), Point(0, 2)), "^Only circular arcs"),  # circularity is checked first
    ((O, Point(1, 0, 1e-300), Point(0, 1)), r"^Arc can only be drawn in xy plane \(z=0\)$"),
    ((Point(0, 0, 1e-300), Point(1, 0, 1e-300), Point(0, 1, 1e-300)), r"^Arc can only be drawn in xy plane"),
])
def test_constructor_checks_in_order(points, message):
    with pytest.raises(ValueError, match=message):
        Arc(*points)


def test_degenerate_and_opposite_arcs():
    assert Arc(O, Point(1, 0, -0.0), Point(1, 0)).angle == 0.0
    assert Arc(O, Point(1, 0), Point(1, 0), False).angle == 2 * PI
    assert [tuple(p) for p in Arc(O, Point(1, 0), Point(1, 0), False).discretize(4)] == [(1.0, 0.0, 6.123233995736766e-17)] * 4
    assert Arc(O, O, O).radius == 0.0
    for short in (True, False):
        opposite = Arc(O, Point(1, 0), Point(-1, 0), short)
        assert opposite.angle == PI
        assert opposite.discretize(3)[1].y == pytest.approx(-1.0)  # both take the same side


def test_short_arc_through_180_degrees():
    arc = Arc(O, on_circle(170), on_circle(-170))
    assert arc.angle == pytest.approx(math.radians(20))
    points = arc.discretize(3)
    assert points[1].x == pytest.approx(-1.0) and points[1].y == pytest.approx(0, abs=1e-15)
    assert [math.degrees(math.atan2(p.y, p.x)) for p in points] == pytest.approx([170, 180, -170])


def test_discretize_counts_points_and_keeps_rounding():
    arc = Arc(O, Point(0, 1), Point(1, 0, -0.0))
    with pytest.raises(ValueError, match=r"^Provides at least two points \(start and end\)$"):
        arc.discretize(1)
    with pytest.raises(ValueError):
        arc.discretize(0)
    two = arc.discretize()
    assert len(two) == 2 and two[0] is not arc.start_point
    assert all(type(p) is Point for p in two)
    assert two[1].z == 6.123233995736766e-17 and two[1].y == 0.0  # azimuth 0 enters as 2 pi, leaves as 0
    assert len(arc.discretize(1000)) == 1000


coordinate = st.floats(-1e3, 1e3, allow_nan=False)


@given(coordinate, coordinate, st.floats(0.1, 100), st.floats(-PI, PI), st.floats(-PI, PI), st.booleans(),
       st.integers(2, 40))
def test_native_discretize_matches_the_documented_steps(cx, cy, r, a, b, short, num):
    points = [Point(cx, cy), Point(cx + r * math.cos(a), cy + r * math.sin(a))]
    end = Point(cx + r * math.cos(b), cy + r * math.sin(b))
    try:
        native, steps = Arc(*points, end, short), Marked(*points, end, short)
    except ValueError:
        return
    assert [tuple(p) for p in native.discretize(num)] == [tuple(p) for p in steps.discretize(num)]
    assert (native.theta1_theta2, native.angle, native.length) == (steps.theta1_theta2, steps.angle, steps.length)


def test_discretize_on_the_centre_goes_through_numpy():
    with np.errstate(invalid="ignore"):
        points = Arc(O, O, O).discretize(3)
    assert all(math.isnan(p.z) for p in points)


def test_revolve_checks_the_y_axis_for_short_arcs_only():
    with pytest.raises(ValueError, match="^Arc cannot be revolved when it intersects the y-axis$"):
        Arc(O, Point(1, 0), Point(-1, 0)).revolve()
    assert type(Arc(O, Point(1, 0), Point(-1, 0), False).revolve()) is ArcRevolve
    assert type(Arc(Point(1, 0), Point(0, 0), Point(1, 1)).revolve()) is ArcRevolve  # a start x of 0 passes
    arc = Arc(Point(2, 0), Point(3, 0), Point(2, 1))
    revolved = arc.revolve(rotation_angle=1.5, extra=1)
    assert revolved.arc is arc and revolved._rotation_angle == 1.5


def test_native_paths_step_aside_for_replaced_globals_and_points(monkeypatch):
    from ostrel import geometry
    arc = Arc(Point(1, 1), Point(3, 1), Point(1, 3))
    expected = [tuple(p) for p in arc.discretize(5)]
    calls = []
    original = geometry.spherical_to_cartesian
    monkeypatch.setattr(geometry, "spherical_to_cartesian", lambda c: calls.append(1) or original(c))
    assert [tuple(p) for p in arc.discretize(5)] == expected and len(calls) == 5
    monkeypatch.undo()

    class Shifted(Point):
        """A point whose coordinates the module must read through its properties."""
        @property
        def x(self):
            return self._x + 1

    # The radius and the discretisation read coordinates by index, the angles through x and y.
    shifted = Arc(Point(1, 1), Shifted(2, 1), Point(1, 2))
    plain = Marked(Point(1, 1), Point(2, 1), Point(1, 2))
    assert shifted.theta1_theta2 == (PI / 2, 0.0) and shifted.radius == 1.0
    assert [tuple(p) for p in shifted.discretize(5)] == [tuple(p) for p in plain.discretize(5)]


def test_short_arc_is_read_by_truth_at_each_use():
    class Flag:
        def __init__(self):
            self.value = True

        def __bool__(self):
            if self.value is None:
                raise RuntimeError("no truth")
            return self.value

    flag = Flag()
    arc = Arc(O, Point(1, 0), Point(0, 1), flag)
    assert arc.angle == PI / 2 and arc.short_arc is flag
    flag.value = False
    assert arc.angle == 3 * PI / 2 and len(arc.discretize(3)) == 3
    flag.value = None
    for member in (lambda: arc.angle, lambda: arc.discretize(3), arc.revolve):
        with pytest.raises(RuntimeError, match="no truth"):
            member()
    with pytest.raises(TypeError):
        Arc(O, Point(1, 0), Point(0, 1)).discretize(3.0)  # the count reaches numpy unconverted
