import json
import struct

import numpy as np
import pygltflib
import pytest

from ostrel import geometry
from ostrel.core import File
from ostrel.geometry import Group, _GLTF
from scene_objects import Box


def glb_json(file):
    data = file.getvalue_binary()
    length, kind = struct.unpack_from("<I4s", data, 12)
    assert kind == b"JSON"
    return json.loads(data[20:20 + length])


def load(file):
    return pygltflib.GLTF2.load_from_bytes(file.getvalue_binary())


def world_matrices(gltf):
    """Node index -> world matrix, walking the node tree from the scene roots."""
    result = {}

    def local(node):
        if node.matrix:
            return np.array(node.matrix).reshape(4, 4).T
        return np.identity(4)

    def walk(index, parent):
        node = gltf.nodes[index]
        world = parent @ local(node)
        result[index] = world
        for child in node.children or []:
            walk(child, world)

    for root in gltf.scenes[gltf.scene or 0].nodes:
        walk(root, np.identity(4))
    return result


def test_add_geometry_to_scene_names_nodes():
    scene = geometry.trimesh.Scene(base_frame="root")
    mesh = geometry.trimesh.creation.box()
    first = _GLTF.add_geometry_to_scene(scene, mesh, name="box")
    second = _GLTF.add_geometry_to_scene(scene, mesh, name="box", transform=np.identity(4))
    assert first != second and len(first) == 32 and int(first, 16) >= 0
    nested = geometry.trimesh.Scene(base_frame="inner")
    nested.add_geometry(mesh, node_name="leaf", geom_name="leaf")
    assert _GLTF.add_geometry_to_scene(scene, nested, name="group") == "inner"
    with pytest.raises(TypeError, match=r"^add_geometry_to_scene\(\) needs keyword-only argument name$"):
        _GLTF.add_geometry_to_scene(scene, mesh)
    with pytest.raises(TypeError, match=r"expected str, got int"):
        _GLTF.add_geometry_to_scene(scene, mesh, name=3)


def test_export_marks_every_node_and_keeps_nesting():
    leaf = Box().translate((1, 0, 0))
    inner = Group([leaf]).translate((0, 2, 0))
    outer = Group([inner, Box()])
    file = _GLTF.to_gltf(outer, Box().translate((0, 0, 5)))
    assert isinstance(file, File)
    assert geometry.trimesh_logger.disabled is False
    gltf = load(file)
    names = {i: (n.extras or {}).get("ostrel-name") for i, n in enumerate(gltf.nodes)}
    roots = gltf.scenes[0].nodes
    if len(roots) == 1 and not gltf.nodes[roots[0]].extras:
        roots = gltf.nodes[roots[0]].children  # trimesh 3 also writes the base frame itself
    names = {i: name for i, name in names.items() if gltf.nodes[i].extras}
    assert sorted(names[c] for c in roots) == ["box", "group"]
    outer_index = next(c for c in roots if names[c] == "group")
    inner_kinds = sorted(names[c] for c in gltf.nodes[outer_index].children)
    assert inner_kinds == ["box", "group"]
    assert set(names.values()) == {"box", "group"}
    worlds = world_matrices(gltf)
    mesh_positions = sorted(tuple(worlds[i][:3, 3].round(9)) for i, n in enumerate(gltf.nodes) if n.mesh is not None)
    assert mesh_positions == [(0, 0, 0), (0, 0, 5), (1, 2, 0)]


def test_failed_export_leaves_logger_disabled():
    class Broken(Box):
        def _to_trimesh(self):
            raise RuntimeError("no mesh")

    with pytest.raises(RuntimeError, match="no mesh"):
        _GLTF.to_gltf(Box(), Broken())
    assert geometry.trimesh_logger.disabled is True
    _GLTF.to_gltf()
    assert geometry.trimesh_logger.disabled is False


def test_same_object_twice_gives_two_nodes():
    box = Box()
    gltf = load(_GLTF.to_gltf(box, box))
    assert sum(1 for n in gltf.nodes if (n.extras or {}).get("ostrel-name") == "box") == 2
