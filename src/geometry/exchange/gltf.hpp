// What the scene builders share with the glTF export: fresh random node names and the
// node data that marks each node with the kind of object it shows.
#pragma once

#include "module/ref.hpp"

namespace ostrel {

// uuid.uuid4().hex, through the module global `uuid`.
Ref random_hex();

// {"ostrel-name": name}
Ref node_extras(PyObject* name);

// The keyword under which the installed trimesh takes per-node data in
// Scene.add_geometry and graph.update ("extras" up to 3.20, "metadata" after).
PyObject* node_data_keyword();

// trimesh.Scene(base_frame=uuid.uuid4().hex)
Ref new_scene();

// _GLTF.add_geometry_to_scene(scene, geometry, transform=transform, name=name), through
// the module global `_GLTF`.
Ref add_to_scene(PyObject* scene, PyObject* geometry, PyObject* transform, PyObject* name);

}  // namespace ostrel
