import json
import struct

import numpy as np

from ostrel._vendor import NODE_DATA_KEYWORD, trimesh


def glb_json(data):
    """Return the JSON chunk of a GLB file."""
    magic, version, length = struct.unpack_from("<4sII", data, 0)
    assert (magic, version, length) == (b"glTF", 2, len(data))
    chunk_length, chunk_type = struct.unpack_from("<I4s", data, 12)
    assert chunk_type == b"JSON"
    return json.loads(data[20 : 20 + chunk_length])


def test_node_data_reaches_gltf_extras():
    mesh = trimesh.Trimesh(
        vertices=[[0, 0, 0], [1, 0, 0], [0, 1, 0]], faces=[[0, 1, 2]], process=False
    )
    scene = trimesh.Scene(base_frame="root")
    moved = np.eye(4)
    moved[:3, 3] = [1, 2, 3]
    scene.add_geometry(
        mesh,
        node_name="a",
        geom_name="mesh",
        parent_node_name="root",
        transform=moved,
        **{NODE_DATA_KEYWORD: {"ostrel-name": "x"}},
    )
    # graph.update ignores keywords it does not know, so a wrong name would
    # silently lose the data rather than fail.
    scene.graph.update(
        frame_to="b",
        frame_from="a",
        matrix=np.eye(4),
        geometry="mesh",
        **{NODE_DATA_KEYWORD: {"ostrel-name": "y"}},
    )
    tree = glb_json(trimesh.exchange.gltf.export_glb(scene))
    nodes = {node["name"]: node for node in tree["nodes"]}
    assert nodes["a"]["extras"] == {"ostrel-name": "x"}
    assert nodes["b"]["extras"] == {"ostrel-name": "y"}
