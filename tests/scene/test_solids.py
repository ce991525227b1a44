import io
import math
import uuid

import numpy as np
import pygltflib
import pytest

from ostrel.geometry import (Arc, ArcExtrusion, ArcRevolve, CartesianAxes, CircularExtrusion, Cone, Extrusion, Group,
                             Line, LineRevolve, Material, Point, Revolve, Sphere, Torus, Vector, _GLTF, trimesh)

from differential import steps
from glb_nodes import mesh_nodes

PI = math.pi
O = Point(0, 0, 0)


MarkedRevolve = steps(ArcRevolve)


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


# Round bars, cones, spheres, tori, axes and arc extrusions.

SQUARE = [Point(0, 0), Point(0, 0.1), Point(0.1, 0.1), Point(0.1, 0), Point(0, 0)]


def test_circular_extrusion_members_and_pieces():
    bar = CircularExtrusion(2, Line(Point(0, 0, 0), Point(0, 0, 4)))
    assert (bar.diameter, bar.radius, bar.cross_sectional_area, bar.length) == (2.0, 1.0, PI, 4.0)
    assert bar._name == "circular-extrusion" and bar.material.name == "default-material"
    assert list(bar._construct_circular_extrusion()) == ["cylinder", "top", "bottom"]
    cylinder = bar._construct_circular_extrusion()["cylinder"]
    assert cylinder._trimesh_linestring == [(1.0, 0.0), (1.0, 4.0)]
    scene = CircularExtrusion(2, bar.line, open_ends=True)._to_trimesh()
    assert len(scene.geometry) == 1
    assert np.allclose(bar._transformation @ [0, 4, 0, 1], [0, 0, 4, 1])  # local y onto the line
    assert bar.translate((1, 0, 0)).line.start_point == Point(0, 0, 0)


def test_cone_checks_orientation_and_from_line():
    with pytest.raises(ValueError, match="^Cone diameter should be larger than 0$"):
        Cone(-1, -1)
    with pytest.raises(ValueError, match="^Cone height should be larger than 0$"):
        Cone(1, 0)
    apex = lambda cone: cone._create_cone()["cone"]._transformation @ [0, cone._height, 0, 1]
    assert np.allclose(apex(Cone(1, 2)), [0, 0, 2, 1])
    assert np.allclose(apex(Cone(1, 2, orientation=Vector(0, 1, 0))), [0, 2, 0, 1])
    assert np.allclose(apex(Cone(1, 2, orientation=Vector(0, -1, 0))), [0, 2, 0, 1])  # left pointing up
    line = Line(Point(1, 1, 0), Point(1, 1, 3))
    cone = Cone.from_line(1, line)
    assert cone._height == 3.0 and cone._origin is line.start_point and np.allclose(apex(cone), [1, 1, 3, 1])
    assert Cone(1, 2)._to_trimesh().metadata["ostrel_name"] == "cone"


def test_sphere_and_torus_numbers():
    sphere = Sphere(Point(1, 2, 3), 2)
    assert (sphere.diameter(), sphere.circumference(), sphere.surface_area()) == (4.0, 4 * PI, 16 * PI)
    assert sphere.volume() == pytest.approx(32 / 3 * PI) and list(sphere._transformation[:3, 3]) == [1, 2, 3]
    assert type(sphere.width_segments) is float
    assert Torus(1, 3).inner_volume == 2 * PI ** 2 * 3
    assert Torus(1, 3, rotation_angle=PI).inner_volume == pytest.approx(PI ** 2 * 3)
    torus, steel = Torus(1, 3), Material("steel")
    bottom, top = torus._children
    assert bottom.arc.angle == pytest.approx(1.5 * PI) and top.arc.angle == pytest.approx(0.5 * PI)
    torus.material = steel
    assert bottom.material is steel and top.material is steel and torus.material is steel
    with pytest.raises(AttributeError, match="^'Torus' has no attribute 'children'$"):
        torus.children
    assert type(torus.duplicate()) is Group


def test_cartesian_axes_and_arc_extrusion():
    axes = CartesianAxes(Point(1, 2, 3), 2, 0.1)
    x, y, z = axes.children
    assert y.line.end_point == Point(1, 4, 3) and x.diameter == 0.1 and axes._name == "group"
    assert [bar.material.color.rgb for bar in (x, y, z)] == [(255, 0, 0), (0, 255, 0), (0, 0, 255)]
    assert CartesianAxes().children[2].line.end_point == Point(0, 0, 1)
    arc = Arc(Point(0, 0), Point(2, 0), Point(0, 2))
    with pytest.raises(ValueError, match="^Provides at least two points"):
        ArcExtrusion(SQUARE, arc, n_segments=0)  # discretize(1) refuses
    one = ArcExtrusion(SQUARE, arc, 45, 1)._children
    assert len(one) == 1 and type(one[0]) is Extrusion and one[0]._profile_rotation == 45.0
    assert one[0].line.end_point == Point(0, 2)
    with pytest.raises(AttributeError, match="^'ArcExtrusion' has no attribute 'children'$"):
        ArcExtrusion(SQUARE, arc).children


def test_glb_of_one_of_each_solid_reads_back():
    bar = CircularExtrusion(0.2, Line(Point(1, 2, 3), Point(4, 6, 3)))
    solids = [bar, Cone(1, 2), Sphere(Point(5, 0, 0), 2, 12, 8), Torus(1, 3, rotation_angle=PI).translate((0, 10, 0)),
              CartesianAxes(), line_revolve((1, 1), (3, 2)), ArcRevolve(Arc(Point(3, 0), Point(4, 0), Point(3, 1))),
              ArcExtrusion(SQUARE, Arc(Point(0, 0), Point(2, 0), Point(0, 2)), n_segments=4)]
    glb = _GLTF.to_gltf(*solids).getvalue_binary()
    found = [(path, world, faces) for path, _, world, faces in mesh_nodes(pygltflib.GLTF2.load_from_bytes(glb))]
    paths = sorted({path for path, _, _ in found})
    assert paths == sorted([
        ("arc-extrusion", "extrusion", "assembly"), ("arc-extrusion", "extrusion", "polygon"), ("arc-revolve",),
        ("circular-extrusion", "circular-extrusion-bottom"), ("circular-extrusion", "circular-extrusion-cylinder"),
        ("circular-extrusion", "circular-extrusion-top"), ("cone", "cone-base"), ("cone", "cone-cone"),
        ("group", "circular-extrusion", "circular-extrusion-bottom"),
        ("group", "circular-extrusion", "circular-extrusion-cylinder"),
        ("group", "circular-extrusion", "circular-extrusion-top"), ("line-revolve",), ("sphere",),
        ("torus", "arc-revolve")])
    assert sum(path[0] == "arc-extrusion" for path, _, _ in found) == 4 * 3
    by_path = {}
    for path, world, faces in found:
        by_path.setdefault(path, []).append((world, faces))

    (cylinder, _), = by_path[("circular-extrusion", "circular-extrusion-cylinder")]
    a, b = np.array([1, 2, 3]), np.array([4, 6, 3])
    along = (cylinder - a) @ (b - a) / 5
    assert np.allclose(np.linalg.norm(cylinder - a - np.outer(along, (b - a) / 5), axis=1), 0.1, atol=1e-6)
    assert np.isclose(along.min(), 0, atol=1e-6) and np.isclose(along.max(), 5, atol=1e-6)
    (mantle, _), = by_path[("cone", "cone-cone")]
    assert np.isclose(mantle[:, 2].max(), 2) and np.allclose(mantle[mantle[:, 2] > 1.999][:, :2], 0, atol=1e-6)
    (sphere, faces), = by_path[("sphere",)]
    assert np.allclose(np.linalg.norm(sphere - [5, 0, 0], axis=1), 2, atol=1e-5)
    assert faces == len(trimesh.creation.uv_sphere(2, (12, 8)).faces)
    for world, faces in by_path[("torus", "arc-revolve")]:
        radius = np.hypot(world[:, 0], world[:, 2])
        assert np.allclose(np.hypot(radius - 3, world[:, 1] - 10), 1, atol=1e-5)
    halves = Torus(1, 3, rotation_angle=PI)._children
    assert sorted(f for _, f in by_path[("torus", "arc-revolve")]) == sorted(len(h._to_trimesh().faces) for h in halves)
    (cone_band, faces), = by_path[("line-revolve",)]
    assert np.allclose(np.hypot(cone_band[:, 0], cone_band[:, 2]), 1 + 2 * (cone_band[:, 1] - 1), atol=1e-5)
    assert faces == len(trimesh.creation.revolve([(1, 1), (3, 2)], sections=60).faces)

    scene = trimesh.load(io.BytesIO(glb), file_type="glb")
    assert sum(len(g.faces) for g in scene.geometry.values()) == sum(f for _, _, f in found)


class Wedge(Revolve):
    """A revolve of the module's abstract base with a profile of its own."""

    surface_area = property(lambda self: 1.0)
    inner_volume = property(lambda self: 2.0)
    _trimesh_linestring = property(lambda self: [(1, 0), (2, 0), (2, 1)])


class Falsy(Material):
    def __bool__(self):
        return False


def test_revolve_base_for_subclasses():
    wedge = Wedge("ignored", 3, rotation_angle=PI, material=Falsy("mine"), anything=True)
    assert wedge._rotation_angle == PI and wedge.material.name == "default-material" and wedge._name == "revolve"
    made = trimesh.creation.revolve([(1, 0), (2, 0), (2, 1)], angle=PI, sections=60)
    assert len(wedge._to_trimesh().faces) == len(made.faces) - 1
    assert Wedge(rotation_angle=0)._rotation_angle == 0
    full = Wedge(rotation_angle=2 * PI * (1 + 1e-12))._to_trimesh()  # within plain isclose of a full turn
    assert len(full.faces) == len(trimesh.creation.revolve([(1, 0), (2, 0), (2, 1)], sections=60).faces)
    with pytest.raises(NotImplementedError):
        Revolve.surface_area.fget(wedge)

