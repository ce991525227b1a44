import io
import logging
import math

import numpy as np
import pytest

from ostrel import geometry
from ostrel.geometry import (Extrusion, Line, Material, Point, Polygon, RectangularExtrusion, SquareBeam,
                             _GLTF)

CLOCKWISE = [Point(0, 0), Point(0, 1), Point(1, 1), Point(1, 0), Point(0, 0)]
AXIS = Line(Point(0, 0, 0), Point(0, 0, 5))


def test_profile_problems_are_logged_word_for_word_and_the_solid_is_built(caplog):
    with caplog.at_level(logging.WARNING, logger="ostrel"):
        Extrusion(CLOCKWISE, AXIS)
        assert caplog.messages == []
        Extrusion(CLOCKWISE[::-1], AXIS)
        Extrusion(CLOCKWISE[:-1] + [Point(0, 0.5)], AXIS)
    assert caplog.messages == [
        "An Extrusion is made with a counter-clockwise circumference. This is not supported.",
        "An Extrusion is made with non-matching start and end-point. This is not supported."]
    with pytest.raises(IndexError):
        Extrusion([], AXIS)


def test_members_and_hidden_children():
    material = Material("steel")
    solid = Extrusion(CLOCKWISE, AXIS, 90)
    assert solid._profile_rotation == 90.0 and type(solid._profile_rotation) is float
    assert solid.profile is CLOCKWISE and solid.line is AXIS and solid.geometries is AXIS and solid.length == 5.0
    assert solid.uuid == str(solid._uuid) and solid._name == "extrusion"
    start, side, end = solid._children
    assert type(start) is Polygon and type(end) is Polygon and len(side._triangles) == 8
    assert [p.x for p in start.points] == [p.x for p in CLOCKWISE[-2::-1]]
    assert end._transformation[2, 3] == 5.0
    assert solid.material.name == "default-material"
    solid.material = material
    assert all(child.material is material for child in solid._children) and solid.material is material
    with pytest.raises(AttributeError, match="^'SquareBeam' has no attribute 'children'$"):
        SquareBeam(1, 1, 1).children


def test_square_beam_numbers():
    beam = SquareBeam(2, 3, 4)
    assert (beam.width, beam.height, beam.length, beam.cross_sectional_area, beam.inner_volume) == \
        (2.0, 3.0, 4.0, 6.0, 24.0)
    assert beam._name == "rectangular-extrusion" and beam.line.start_point == Point(0, 0, -2)


def test_transformation_places_local_z_on_the_line():
    assert np.array_equal(Extrusion(CLOCKWISE, AXIS)._transformation, np.identity(4))
    along_x = Extrusion(CLOCKWISE, Line(Point(1, 2, 3), Point(3, 2, 3)))._transformation
    assert np.allclose(along_x @ [0, 0, 2, 1], [3, 2, 3, 1])
    turned = Extrusion(CLOCKWISE, AXIS, 90)._transformation
    assert np.allclose(turned @ [1, 0, 0, 1], [0, 1, 0, 1])


def test_extrude_needs_a_clockwise_polygon_and_drops_z():
    polygon = Polygon([Point(0, 0, 0), Point(0, 1, 0), Point(1, 1, 0), Point(1, 0, 0)])
    solid = polygon.extrude(AXIS, profile_rotation=45)
    assert len(solid.profile) == 5 and solid.profile[0] == solid.profile[-1]
    assert all(p is not q for p, q in zip(solid.profile, polygon.points)) and solid.material is not polygon.material
    with pytest.raises(ValueError, match="^Polygon must be defined in clockwise direction to support extrusion.$"):
        Polygon(polygon.points[::-1]).extrude(AXIS)
    with pytest.raises(TypeError):
        polygon.extrude(AXIS, profile_rotation="x")


@pytest.mark.parametrize("start, end", [((0, 0, 0), (3, 0, 0)), ((1, 0, 0), (1, -2, 0)), ((0, 0, 1), (0, 0, 4)),
                                        ((0, 0, 0), (0, 3, 0)), ((1, 2, 3), (-2, 4, 7))])
def test_exported_corners_stand_around_the_line(start, end):
    """Read back from the GLB, every corner of a 0.4 by 0.2 box lies half its diagonal from the
    axis, at one of the two ends."""
    solid = RectangularExtrusion(0.4, 0.2, Line(Point(*start), Point(*end)), 30)
    scene = geometry.trimesh.load(io.BytesIO(_GLTF.to_gltf(solid).getvalue_binary()), file_type="glb")
    a, b = np.array(start, float), np.array(end, float)
    axis = (b - a) / np.linalg.norm(b - a)
    corners = []
    for node in scene.graph.nodes_geometry:
        matrix, name = scene.graph[node]
        vertices = scene.geometry[name].vertices
        corners += list((np.hstack([vertices, np.ones((len(vertices), 1))]) @ matrix.T)[:, :3])
    along = [(c - a) @ axis for c in corners]
    across = [np.linalg.norm((c - a) - ((c - a) @ axis) * axis) for c in corners]
    assert len(corners) == 4 + 4 + 8  # two caps, and the side wall with equal corners merged
    assert np.allclose(sorted(set(np.round(along, 4))), [0, np.linalg.norm(b - a)], atol=1e-4)
    assert np.allclose(across, math.hypot(0.2, 0.1), atol=1e-5)
