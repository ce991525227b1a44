"""A GLB file read back with pygltflib, node by node."""
import numpy as np
import pygltflib


def mesh_nodes(gltf, roots=None):
    """(path of ostrel-names, node, world vertices, triangle count) of every node that holds a mesh,
    walking down from `roots` (the scene's root nodes by default)."""
    found = []

    def walk(index, path, parent):
        node = gltf.nodes[index]
        path = path + ((node.extras or {}).get("ostrel-name"),) if node.extras else path
        matrix = parent @ (np.array(node.matrix).reshape(4, 4).T if node.matrix else np.identity(4))
        if node.mesh is not None:
            primitive = gltf.meshes[node.mesh].primitives[0]
            accessor = gltf.accessors[primitive.attributes.POSITION]
            assert accessor.componentType == pygltflib.FLOAT and accessor.type == "VEC3"
            view = gltf.bufferViews[accessor.bufferView]
            start = (view.byteOffset or 0) + (accessor.byteOffset or 0)
            local = np.frombuffer(gltf.binary_blob(), "<f4", 3 * accessor.count, start).reshape(-1, 3)
            world = (np.hstack([local, np.ones((len(local), 1))]) @ matrix.T)[:, :3]
            found.append((path, node, world, gltf.accessors[primitive.indices].count // 3))
        for child in node.children:
            walk(child, path, matrix)

    for root in gltf.scenes[gltf.scene or 0].nodes if roots is None else roots:
        walk(root, (), np.identity(4))
    return found
