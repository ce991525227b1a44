import numpy as np
import pygltflib
import pytest

from ostrel import geometry
from ostrel.core import Color, File
from ostrel.geometry import Material, _GLTF, _Mesh, _MeshAssembly

SQUARE_OBJ = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 5 5 5\nf 1 2 3 4\n"

GROUPS_OBJ = """\
v 0 0 0
v 1 0 0
v 1 1 0
v 0 1 0
v 0 0 1
g red
usemtl red
f 1 2 3
g unknown
usemtl blue
f 1 3 4
g plain
f 1 2 5
"""

LIBRARY = "newmtl red\nKd 1.0 0.5 0.0\nnewmtl blue-is-not-here\nKd 0 0 1\n"


class MyMesh(_Mesh):
    pass


def test_mesh_fields_and_default_material():
    vertices, faces = [[0.0, 0.0, 0.0], [1.0, 0.0, 0.0], [0.0, 1.0, 0.0]], [[0, 1, 2]]
    mesh = _Mesh(vertices, faces)
    assert mesh._vertices is vertices and mesh._faces is faces and mesh._name == "mesh"
    assert mesh.material.name == "default-material" and (mesh._transformation == np.identity(4)).all()
    assert list(vars(mesh)) == ["_transformation", "_vertices", "_faces", "material"]
    red = Material("red")
    assert _Mesh(vertices, faces, red).material is red
    assert _Mesh(vertices, faces, material=0).material.name == "default-material"


def test_mesh_from_obj_keeps_unused_vertices():
    mesh = MyMesh.from_obj(File.from_data(SQUARE_OBJ), material=Material("m"))
    assert type(mesh) is MyMesh and mesh.material.name == "m"
    assert mesh._faces == [[0, 1, 2], [0, 2, 3]]
    trimesh_mesh = mesh._to_trimesh()
    assert trimesh_mesh.vertices.shape == (5, 3) and trimesh_mesh.faces.tolist() == mesh._faces


def test_assembly_with_a_material_library():
    assembly = _MeshAssembly.from_obj(File.from_data(GROUPS_OBJ), File.from_data(LIBRARY),
                                      default_material=Material("ignored"))
    red, unknown, plain = assembly.children
    assert isinstance(assembly, geometry.Group) and assembly._name == "group"
    assert red.material.name == "mesh_material" and red.material.color == Color(255, 127, 0)
    assert unknown.material.name == "default-material" and plain.material.name == "default-material"
    assert red._vertices is unknown._vertices is plain._vertices and len(red._vertices) == 5
    assert [m._faces for m in assembly.children] == [[[0, 1, 2]], [[0, 2, 3]], [[0, 1, 4]]]


def test_assembly_without_a_library_uses_the_default_material():
    default = Material("default")
    assembly = _MeshAssembly.from_obj(File.from_data(GROUPS_OBJ), default_material=default)
    assert [m.material for m in assembly.children] == [default] * 3
    assert [m.material.name for m in _MeshAssembly.from_obj(File.from_data(GROUPS_OBJ)).children] == [
        "default-material"] * 3


def test_a_named_material_without_diffuse_colour():
    with pytest.raises(KeyError, match="'Kd'"):
        _MeshAssembly.from_obj(File.from_data(GROUPS_OBJ), File.from_data("newmtl red\nd 1\n"))


def test_assembly_exported_to_glb_and_read_back():
    assembly = _MeshAssembly.from_obj(File.from_data(GROUPS_OBJ), File.from_data(LIBRARY)).translate((0, 0, 2))
    gltf = pygltflib.GLTF2.load_from_bytes(_GLTF.to_gltf(assembly).getvalue_binary())
    names = sorted((node.extras or {}).get("ostrel-name") or "" for node in gltf.nodes)
    assert names.count("mesh") == 3 and names.count("group") == 1
    colours = sorted(tuple(np.round(m.pbrMetallicRoughness.baseColorFactor, 3)) for m in gltf.materials)
    assert (1.0, 0.498, 0.0, 1.0) in colours and len(gltf.meshes) == 3
    accessor = gltf.accessors[gltf.meshes[0].primitives[0].attributes.POSITION]
    assert accessor.count == 5 and accessor.max == [1, 1, 1]  # unused vertices stay in each mesh
