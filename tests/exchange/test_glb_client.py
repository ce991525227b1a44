"""A GLB file of triangle assemblies as two independent readers see it."""
import io
import re

import numpy as np
import pygltflib
import pytest

from ostrel import geometry
from ostrel._vendor import NODE_DATA_KEYWORD
from ostrel.geometry import Group, LinearPattern, Point, Triangle, TriangleAssembly, _GLTF

from glb_nodes import mesh_nodes

HEX_NAME = re.compile(r"[0-9a-f]{32}")
SQUARE = [((0, 0, 0), (1, 0, 0), (0, 1, 0)), ((0, 1, 0), (1, 0, 0), (1, 1, 0))]


def assembly(triangles=SQUARE):
    return TriangleAssembly([Triangle(*(Point(*c) for c in t)) for t in triangles])


def world(offset, triangles=SQUARE):
    """The corners of the triangles moved by `offset`, as a sorted set of tuples."""
    return sorted({tuple(np.add(c, offset)) for t in triangles for c in t})


@pytest.fixture(scope="module")
def glb():
    leaf = assembly().translate((0, 0, 1))
    nested = Group([assembly(SQUARE[:1]).translate((5, 0, 0))]).translate((0, 2, 0))
    group = Group([leaf, nested])
    pattern = LinearPattern(assembly(), [1, 0, 0], 3, 10).translate((0, 0, -3))
    return _GLTF.to_gltf(group, pattern).getvalue_binary()


# Expected: kind of node -> world positions of its mesh's vertices.
EXPECTED = {
    ("group", "assembly"): world((0, 0, 1)),
    ("group", "group", "assembly"): world((5, 2, 0), SQUARE[:1]),
    ("pattern", "assembly"): world((0, 0, -3)),
    ("pattern", "assembly-1"): world((10, 0, -3)),
    ("pattern", "assembly-2"): world((20, 0, -3)),
}


def transformed(matrix, vertices):
    homogeneous = np.hstack([vertices, np.ones((len(vertices), 1))])
    return sorted(tuple(v) for v in (homogeneous @ matrix.T)[:, :3].round(5))


def object_roots(gltf):
    """The nodes of the exported objects, and the number of other nodes. trimesh 3.20 writes
    the scene's base frame as the one root, unmarked and unmoved; later versions leave it out."""
    roots = gltf.scenes[gltf.scene or 0].nodes
    if len(roots) == 1 and not gltf.nodes[roots[0]].extras:
        base_frame = gltf.nodes[roots[0]]
        assert HEX_NAME.fullmatch(base_frame.name) and base_frame.matrix is None and base_frame.mesh is None
        return base_frame.children, 1
    return roots, 0


def test_pygltflib_reads_names_extras_nesting_meshes_and_positions(glb):
    gltf = pygltflib.GLTF2.load_from_bytes(glb)
    roots, others = object_roots(gltf)
    objects = [node for node in gltf.nodes if node.extras]
    assert len(objects) == 8 == len(gltf.nodes) - others
    assert all(HEX_NAME.fullmatch(node.name) for node in objects)
    assert all(set(node.extras) == {"ostrel-name"} for node in objects)
    # The pattern stores its mesh once for all three of its nodes.
    assert len(gltf.meshes) == 3

    meshes = mesh_nodes(gltf, roots)
    assert not any(node.children for _, node, _, _ in meshes)
    found = {path: (node.mesh, sorted(tuple(v) for v in world.round(5))) for path, node, world, _ in meshes}
    assert sorted(gltf.nodes[r].extras["ostrel-name"] for r in roots) == ["group", "pattern"]
    assert {path: vertices for path, (_, vertices) in found.items()} == EXPECTED
    pattern_meshes = {mesh for path, (mesh, _) in found.items() if path[0] == "pattern"}
    assert len(pattern_meshes) == 1 and len({mesh for mesh, _ in found.values()}) == 3


def test_trimesh_loads_the_same_scene(glb):
    scene = geometry.trimesh.load(io.BytesIO(glb), file_type="glb")
    graph = scene.graph
    assert len(scene.geometry) == 3
    nodes = set(graph.nodes) - {graph.base_frame}
    assert len(nodes) in (8, 9) and all(HEX_NAME.fullmatch(n) for n in nodes)  # 9 with the exported base frame
    meshes = graph.nodes_geometry
    assert len(meshes) == 5
    positions_by_node = {}
    for node in meshes:
        matrix, geometry_name = graph[node]
        positions_by_node[node] = transformed(matrix, scene.geometry[geometry_name].vertices)
    assert sorted(positions_by_node.values()) == sorted(EXPECTED.values())
    # Node data comes back where the installed trimesh reads glTF node extras at all.
    # The edge to an exported base frame carries none.
    names = [attr.get(NODE_DATA_KEYWORD, {}).get("ostrel-name") for _, _, attr in graph.to_edgelist()]
    names = [name for name in names if name is not None]
    if names:
        assert sorted(names) == sorted(["group", "group", "assembly", "assembly", "pattern", "assembly",
                                        "assembly-1", "assembly-2"])
