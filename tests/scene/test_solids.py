import math
import uuid

import numpy as np
import pytest

from ostrel.geometry import trimesh
from ostrel.geometry import Arc, ArcRevolve, Line, LineRevolve, Material, Point, Revolve

PI = math.pi
O = Point(0, 0, 0)


class MarkedRevolve(ArcRevolve):
    """Adds a member, so that the module takes the documented steps one by one."""
    marked = True


def line_revolve(*ends, **kwargs):
    return LineRevolve(Line(Point(*ends[0]), Point(*ends[1])), **kwargs)


def test_line_revolve_worked_numbers():
    up = line_revolve((1, 1), (3, 2))
    assert up.height == 1.0 and up.surface_area == pytest.approx(4 * PI * math.sqrt(5))
    assert up.inner_volume == pytest.approx(PI * 13 / 3)
    down = line_revolve((3, 2), (1, 1))
    assert down.height == -1.0 and down.surface_area == pytest.approx(-4 * PI * math.sqrt(5))
    with pytest.raises(ValueError, match="^Inner volume of line-revolve is not defined with inner oriented surface$"):
        down.inner_volume
    flat = line_revolve((1, 0), (3, 0))
    assert flat.surface_area == pytest.approx(8 * PI)
    with pytest.raises(ValueError, match=r"^Horizontal line-revolve \(equal y\) does not have an inner volume$"):
        flat.inner_volume
    wall = line_revolve((2, 0), (2, 5))
    assert wall.surface_area == pytest.approx(20 * PI) and wall.inner_volume == pytest.approx(20 * PI)
    with pytest.raises(ValueError, match=r"^Point revolve \(two equal points\) does not have a surface area$"):
        point = line_revolve((1, 0), (2, 0))
        point.line._end_point = Point(1, 0)
        point.surface_area


def test_line_revolve_members_and_construction():
    line = Line(Point(1, 0), Point(2, 3))
    revolved = line.revolve(rotation_angle=1.0, anything=2)
    assert type(revolved) is LineRevolve and revolved.line is line and revolved.geometries == (line,)
    assert revolved._rotation_angle == 2 * PI and revolved._thickness == 0.0 and revolved._name == "line-revolve"
    assert isinstance(revolved.uuid, uuid.UUID) and revolved._trimesh_linestring == [(1.0, 0.0), (2.0, 3.0)]
    assert revolved.material.name == "default-material"
    with pytest.raises(NotImplementedError, match=r"^Line revolve only implemented in xy plane \(z=0\)$"):
        LineRevolve(Line(Point(0, 0), Point(1, 1, 1e-300)))
    with pytest.raises(TypeError):
        Revolve()


def test_mass_needs_a_density_and_a_thickness():
    revolved = line_revolve((2, 0), (2, 5), material=Material("steel", 7850))
    assert revolved.mass == 0.0
    revolved.thickness = 1
    assert type(revolved.thickness) is float and revolved.mass == pytest.approx(7850 * 20 * PI)
    with pytest.raises(ValueError, match="^Mass can not be calculated, since material does not have a density"):
        line_revolve((2, 0), (2, 5)).mass
    with pytest.raises(TypeError):
        revolved.thickness = "thick"


HALF_SPHERE = (O, Point(0, 2), Point(2, 0))


@pytest.mark.parametrize("cls", [ArcRevolve, MarkedRevolve])
def test_arc_revolve_worked_numbers(cls):
    revolved = cls(Arc(*HALF_SPHERE))
    assert revolved.inner_volume == pytest.approx(16.755, abs=1e-3) and revolved.height == 2.0
    assert cls(Arc(*HALF_SPHERE), rotation_angle=PI).inner_volume == pytest.approx(16.755 / 2, abs=1e-3)
    assert revolved.surface_area == pytest.approx(8 * PI)  # the half sphere's dome
    assert type(revolved.uuid) is str and revolved.uuid == revolved.uuid and revolved._name == "arc-revolve"


@pytest.mark.parametrize("cls", [ArcRevolve, MarkedRevolve])
@pytest.mark.parametrize("points, short, message", [
    ((O, Point(2, 0), Point(0, 2)), True, "^Inner volume of arc-revolve is not defined with inner oriented surface$"),
    ((Point(-3, 0), Point(-3, 2), Point(-1, 0)), True, "inner oriented"),  # a centre left of x = 0 turns the rule
    ((O, Point(1, 0), Point(-1, 0)), True, "^Start- and end-point should lie on the same vertical side from the c"),
    ((O, Point(1, 0), Point(-1, 0)), False, "^Inner volume of arc-revolve is not defined when using long arc$"),
    ((O, Point(2, 0), Point(0, 2)), False, "long arc"),
])
def test_arc_revolve_inner_volume_checks_in_order(cls, points, short, message):
    with pytest.raises(ValueError, match=message):
        cls(Arc(*points, short)).inner_volume


def test_arc_revolve_native_paths_match_the_documented_steps():
    arcs = [Arc(Point(3, 1), Point(3, 3), Point(5, 1)), Arc(Point(-3, 0), Point(-5, 0), Point(-3, 2)),
            Arc(Point(4, 0), Point(4, -1), Point(5, 0), False), Arc(Point(2, 0), Point(2, 1), Point(2, -1))]
    for arc in arcs:
        native, steps = ArcRevolve(arc, rotation_angle=1.25), MarkedRevolve(arc, rotation_angle=1.25)
        assert native._trimesh_linestring == steps._trimesh_linestring
        for member in ("inner_volume", "surface_area", "height"):
            try:
                assert getattr(native, member) == getattr(steps, member)
            except ValueError as error:
                with pytest.raises(ValueError, match=str(error)):
                    getattr(steps, member)


def test_linestring_runs_counter_clockwise_and_a_partial_turn_drops_a_face():
    for arc in (Arc(Point(3, 0), Point(4, 0), Point(3, 1)), Arc(Point(3, 0), Point(3, 1), Point(4, 0))):
        ring = ArcRevolve(arc)._trimesh_linestring
        assert len(ring) == 20 and sum((b[0] - a[0]) * (b[1] + a[1]) for a, b in zip(ring, ring[1:] + ring[:1])) < 0
    arc = Arc(Point(3, 0), Point(4, 0), Point(3, 1))
    full, half = ArcRevolve(arc)._to_trimesh(), ArcRevolve(arc, rotation_angle=PI)._to_trimesh()
    ring = ArcRevolve(arc)._trimesh_linestring
    assert len(full.faces) == len(trimesh.creation.revolve(ring, angle=2 * PI, sections=60).faces)
    assert len(half.faces) == len(trimesh.creation.revolve(ring, angle=PI, sections=60).faces) - 1
    radii = np.hypot(full.vertices[:, 0], full.vertices[:, 2])  # around the y-axis
    assert np.allclose(np.hypot(radii - 3, full.vertices[:, 1]), 1)
