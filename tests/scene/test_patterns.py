import pytest

from ostrel.geometry import BidirectionalPattern, Group, LinearPattern, Pattern, Vector
from scene_objects import Box


def offsets(pattern):
    return [tuple(child._transformation[:3, 3]) for child in pattern.children[1:]]


@pytest.mark.parametrize("count", [0, 1])
def test_linear_pattern_without_duplicates(count):
    base = Box()
    pattern = LinearPattern(base, [1, 0, 0], count, 5)
    assert pattern.children == [base] and pattern.base_object is base


def test_linear_and_bidirectional_translations():
    assert offsets(LinearPattern(Box(), [1, 0, 0], 3, 2)) == [(2, 0, 0), (4, 0, 0)]
    grid = BidirectionalPattern(Box(), [1, 0, 0], [0, 1, 0], 2, 2, 1, 1)
    assert offsets(grid) == [(0, 1, 0), (1, 0, 0), (1, 1, 0)]
    assert grid._name == "pattern" and isinstance(grid, Group)


def test_copies_deepcopy_leaves_and_duplicate_groups():
    leaf = Box()
    pattern = Pattern(leaf, [[1, 0, 0]])
    assert pattern.children[1] is not leaf and type(pattern.children[1]) is Box
    group = Group([leaf])
    pattern = Pattern(group, [[0, 1, 0]])
    assert type(pattern.children[1]) is Group and pattern.children[1].children[0] is leaf


def test_add_base_object_copy_goes_through_self():
    seen = []

    class Logged(Pattern):
        def _add_base_object_copy(self, translation_vector):
            seen.append(translation_vector)

    Logged(Box(), [[1, 2, 3]])
    assert seen == [Vector(1, 2, 3)]


def test_plain_mesh_copies_share_one_geometry():
    scene = LinearPattern(Box(), [1, 0, 0], 4, 2)._to_trimesh()
    assert len(scene.geometry) == 1
    nodes = scene.graph.nodes_geometry
    assert len(nodes) == 4
    positions = sorted(scene.graph[n][0][0, 3] for n in nodes)
    assert positions == [0, 2, 4, 6]


def test_nested_scene_copies_get_new_node_names():
    base = Group([Box(), Box().translate((0, 0, 1))])
    scene = Pattern(base, [[5, 0, 0], [10, 0, 0]])._to_trimesh()
    nodes = scene.graph.nodes_geometry
    assert len(nodes) == 6 and len(set(nodes)) == 6
    positions = sorted(round(scene.graph[n][0][0, 3]) for n in nodes)
    assert positions == [0, 0, 5, 5, 10, 10]
