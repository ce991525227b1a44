import math

import numpy as np
import pytest

from ostrel import geometry
from ostrel.geometry import Group, TransformableObject, Vector
from scene_objects import Box


def moved(obj, point=(0, 0, 0)):
    return (obj._transformation @ np.array([*point, 1.0]))[:3]


def test_abstract_base():
    assert type(TransformableObject) is type(geometry.ABC)
    with pytest.raises(TypeError):
        TransformableObject()

    class Half(TransformableObject):
        @property
        def _name(self):
            return super()._name

        def _to_trimesh(self):
            return super()._to_trimesh()

    half = Half()
    assert np.array_equal(half._transformation, np.identity(4))
    for reach in (lambda: half._name, half._to_trimesh):
        with pytest.raises(NotImplementedError) as info:
            reach()
        assert str(info.value) == ""


def test_transformations_compose_in_world_axes():
    a = Box()
    assert a.translate((1, 0, 0)) is a
    a.rotate(math.pi / 2, (0, 0, 1))
    assert np.allclose(moved(a), (0, 1, 0))
    b = Box().rotate(math.pi / 2, Vector(0, 0, 1)).translate(Vector(1, 0, 0))
    assert np.allclose(moved(b), (1, 0, 0))
    c = Box().scale((2, 3, 4)).mirror((0, 0, 0), (1, 0, 0))
    assert np.allclose(moved(c, (1, 1, 1)), (-2, 3, 4))


def test_transformation_replaces_the_array():
    a = Box()
    before = a._transformation
    a.translate((1, 2, 3))
    assert a._transformation is not before and np.array_equal(before, np.identity(4))


def test_failed_helper_leaves_matrix_alone():
    a = Box()
    before = a._transformation
    with pytest.raises(TypeError, match="must be real number"):
        a.rotate("pi", (0, 0, 1))
    with pytest.raises(Exception):
        a.translate((1, 2))
    assert a._transformation is before


def test_group_membership():
    a, b, c, d, e = (Box() for _ in range(5))
    g = Group([a])
    g.add(b)
    g.add([c, d])
    g.add((e,))
    assert g.children == [a, b, c, d, e] and g.children is g._children
    g.children.append(a)
    assert len(g._children) == 6
    with pytest.raises(TypeError):
        Group(5)


def test_duplicate_shares_leaves_and_copies_groups():
    leaf = Box()
    inner = Group([leaf])

    class Named(Group):
        extra = 1

    outer = Named([inner, leaf]).translate((1, 0, 0))
    copy = outer.duplicate()
    assert type(copy) is Group
    assert copy.children[1] is leaf
    assert copy.children[0] is not inner and copy.children[0].children[0] is leaf
    assert copy._transformation is outer._transformation
    copy.translate((0, 1, 0))
    assert np.allclose(moved(outer), (1, 0, 0))


def test_group_to_trimesh_nests_scenes():
    assert len(Group([])._to_trimesh().graph.nodes_geometry) == 0
    inner = Group([Box().translate((1, 0, 0))])
    scene = Group([inner, Box()])._to_trimesh()
    assert len(scene.geometry) == 2
    assert isinstance(scene, geometry.trimesh.Scene)
