// _GLTF: scene objects to one binary glTF file. Every leaf geometry and every nested
// scene hangs under the base frame by its own matrix, named at random so that scenes
// merge without collisions, and carries the object's kind in its node extras.
#include "exchange/gltf.hpp"

#include "foundations/arrays.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

Ref random_hex() {
  Ref uuid4 = getattr(global<"uuid">().get(), id<"uuid4">());
  Ref value = call(uuid4.get(), {});
  return getattr(value.get(), id<"hex">());
}

Ref node_extras(PyObject* name) {
  Ref extras = check(PyDict_New());
  check(PyDict_SetItemString(extras.get(), "ostrel-name", name));
  return extras;
}

PyObject* node_data_keyword() {
  static PyObject* keyword = nullptr;
  if (!keyword) {
    Ref vendor = check(PyImport_ImportModule("ostrel._vendor"));
    PyObject* value = getattr(vendor.get(), id<"NODE_DATA_KEYWORD">()).release();
    PyUnicode_InternInPlace(&value);
    keyword = value;
  }
  return keyword;
}

Ref new_scene() {
  Ref scene_class = getattr(global<"trimesh">().get(), id<"Scene">());
  Ref base_frame = random_hex();
  return call_kw(scene_class.get(), {}, {{id<"base_frame">(), base_frame.get()}});
}

Ref add_to_scene(PyObject* scene, PyObject* geometry, PyObject* transform, PyObject* name) {
  Ref add = getattr(global<"_GLTF">().get(), id<"add_geometry_to_scene">());
  return call_kw(add.get(), {scene, geometry}, {{id<"transform">(), transform}, {id<"name">(), name}});
}

namespace {

enum class AddGeometryToScene { scene, geometry, name, transform };
Ref add_geometry_to_scene(const Args& a) {
  PyObject *scene = a[AddGeometryToScene::scene], *geometry = a[AddGeometryToScene::geometry],
           *name = a[AddGeometryToScene::name], *transform = a[AddGeometryToScene::transform];
  Ref scene_class = getattr(global<"trimesh">().get(), id<"Scene">());
  if (isinstance(geometry, scene_class.get())) {
    Ref scene_geometry = getattr(scene, id<"geometry">());
    Ref nested_geometry = getattr(geometry, id<"geometry">());
    call_method(scene_geometry.get(), id<"update">(), {nested_geometry.get()});
    Ref graph = getattr(scene, id<"graph">());
    Ref nested_graph = getattr(geometry, id<"graph">());
    Ref edges = call_method(nested_graph.get(), id<"to_edgelist">(), {});
    call_method(graph.get(), id<"from_edgelist">(), {edges.get()});
    Ref n = getattr(nested_graph.get(), id<"base_frame">());
    Ref update = getattr(graph.get(), id<"update">());
    Ref extras = node_extras(name);
    call_kw(update.get(), {},
            {{id<"frame_to">(), n.get()}, {id<"matrix">(), transform}, {node_data_keyword(), extras.get()}});
    return n;
  }
  Ref n = random_hex();
  Ref add = getattr(scene, id<"add_geometry">());
  Ref extras = node_extras(name);
  call_kw(add.get(), {geometry},
          {{id<"node_name">(), n.get()},
           {id<"geom_name">(), n.get()},
           {id<"transform">(), transform},
           {node_data_keyword(), extras.get()}});
  return n;
}
constexpr Member add_geometry_to_scene_member =
    static_method("add_geometry_to_scene",
                  "(scene: trimesh.Scene, geometry: trimesh.parent.Geometry3D, *, name: str, "
                  "transform: np.ndarray = None) -> str",
                  add_geometry_to_scene,
                  "Put a geometry or a nested scene below the base frame of `scene`, marked with `name` in "
                  "its node extras; return the name of the new node.");

// `with file.open_binary() as w: w.write(content)`, with the context manager protocol's
// handling of an exception raised inside the block.
void write_binary(PyObject* file, PyObject* content) {
  Ref manager = call_method(file, id<"open_binary">(), {});
  // Both looked up on the type, as the with statement does.
  PyObject* manager_type = reinterpret_cast<PyObject*>(Py_TYPE(manager.get()));
  Ref enter = getattr(manager_type, id<"__enter__">());
  Ref exit = getattr(manager_type, id<"__exit__">());
  Ref stream = call(enter.get(), {manager.get()});
  try {
    call_method(stream.get(), id<"write">(), {content});
  } catch (const PyError&) {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    Ref t = Ref::steal(type), v = Ref::steal(value), tb = Ref::steal(traceback);
    Ref suppressed = call(exit.get(), {manager.get(), t.get(), v.get(), tb ? tb.get() : Py_None});
    if (truth(suppressed.get())) return;
    PyErr_Restore(t.release(), v.release(), tb.release());
    throw;
  }
  call(exit.get(), {manager.get(), Py_None, Py_None, Py_None});
}

// Every face index of every mesh in the scene names one of its vertices. The GLB stores
// indices as 32-bit unsigned integers and the exporter casts without a word, so an index
// out of range (a face line of an OBJ file that names no vertex, say) would be written
// wrapped, as a corrupt file.
void require_faces_name_vertices(PyObject* scene) {
  Ref geometries = getattr(scene, id<"geometry">());
  Ref values = call_method(geometries.get(), id<"values">(), {});
  Ref it = check(PyObject_GetIter(values.get()));
  while (Ref geometry = Ref::steal(PyIter_Next(it.get()))) {
    Ref faces = Ref::steal(PyObject_GetAttr(geometry.get(), id<"faces">()));
    if (!faces) {
      if (!PyErr_ExceptionMatches(PyExc_AttributeError)) throw PyError{};
      PyErr_Clear();  // a geometry without faces (a path, a point cloud)
      continue;
    }
    Ref vertices = getattr(geometry.get(), id<"vertices">());
    const Py_ssize_t count = check(PyObject_Length(vertices.get()));
    Ref lowest, highest;
    if (const auto extent = integer_extent(faces.get())) {  // the usual: trimesh's own int64 array
      lowest = new_int(extent->first), highest = new_int(extent->second);
    } else {
      Ref indices = call(getattr(global<"np">().get(), id<"asarray">()).get(), {faces.get()});
      Ref size = getattr(indices.get(), id<"size">());
      if (!truth(size.get())) continue;
      lowest = call_method(indices.get(), id<"min">(), {}), highest = call_method(indices.get(), id<"max">(), {});
    }
    Ref zero = new_int(0), end = new_int(count);
    PyObject* stray = compares(highest.get(), end.get(), Py_GE) ? highest.get()
                      : compares(lowest.get(), zero.get(), Py_LT) ? lowest.get()
                                                                   : nullptr;
    if (stray)
      raise_format(PyExc_ValueError, "A face of a mesh names vertex %S, which does not exist: the mesh has %zd vertices",
                   stray, count);
  }
  if (PyErr_Occurred()) throw PyError{};
}

enum class ToGltf { cls, objects };
Ref to_gltf(const Args& a) {
  PyObject *cls = a[ToGltf::cls], *objects = a[ToGltf::objects];
  Ref logger = global<"trimesh_logger">();
  setattr(logger.get(), id<"disabled">(), Py_True);
  Ref scene = new_scene();
  Ref add = getattr(cls, id<"add_geometry_to_scene">());
  for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(objects); ++i) {
    PyObject* o = PyTuple_GET_ITEM(objects, i);
    Ref geometry = call_method(o, id<"_to_trimesh">(), {});
    Ref transform = getattr(o, id<"_transformation">());
    Ref name = getattr(o, id<"_name">());
    call_kw(add.get(), {scene.get(), geometry.get()},
            {{id<"transform">(), transform.get()}, {id<"name">(), name.get()}});
  }
  require_faces_name_vertices(scene.get());
  Ref file = call(global<"File">().get(), {});
  Ref exchange = getattr(global<"trimesh">().get(), id<"exchange">());
  Ref gltf = getattr(exchange.get(), id<"gltf">());
  Ref content = call_method(gltf.get(), id<"export_glb">(), {scene.get()});
  write_binary(file.get(), content.get());
  setattr(logger.get(), id<"disabled">(), Py_False);
  return file;
}
constexpr Member to_gltf_member = class_method("to_gltf", "(*objects: TransformableObject) -> File", to_gltf,
                                               "Export the objects as one GLB file, held in a new File.");

}  // namespace

void define_gltf() {
  define_class("_GLTF", {}, "Export of scene objects as one binary glTF (GLB) file.",
               {add_geometry_to_scene_member, to_gltf_member});
}

}  // namespace ostrel
