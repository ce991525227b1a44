import numpy as np
import pygltflib
import pytest

from ostrel import geometry
from ostrel.core import File
from ostrel.geometry import Group, _GLTF
from scene_objects import Box


def names(file):
    """The ostrel names of all nodes, and of the exported objects' nodes (below the base frame
    that trimesh 3 also writes)."""
    gltf = pygltflib.GLTF2.load_from_bytes(file.getvalue_binary())
    roots = gltf.scenes[0].nodes
    if len(roots) == 1 and not gltf.nodes[roots[0]].extras:
        roots = gltf.nodes[roots[0]].children
    marked = [(n.extras or {}).get("ostrel-name") for n in gltf.nodes]
    return [name for name in marked if name], sorted(marked[r] for r in roots)


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


def test_export_of_leaves_and_groups_at_the_root():
    # Nesting, extras and world positions are read back in test_glb_client.py.
    file = _GLTF.to_gltf(Group([Group([Box()]), Box()]), Box().translate((0, 0, 5)))
    assert isinstance(file, File) and geometry.trimesh_logger.disabled is False
    marked, roots = names(file)
    assert sorted(marked) == ["box", "box", "box", "group", "group"] and roots == ["box", "group"]


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
    assert names(_GLTF.to_gltf(box, box)) == (["box", "box"], ["box", "box"])
