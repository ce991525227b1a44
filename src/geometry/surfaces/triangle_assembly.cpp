// TriangleAssembly: a mesh object made of Triangles. Its vertex and face lists merge
// corners that compare equal (Point.__eq__, the stored point on the left) unless the
// duplicate check is skipped; the mesh goes to trimesh unprocessed, so that vertex
// order and merging stay as computed here.
//
// The vertices and faces come from the merging kernel when every input is of the
// module's own, unchanged classes with float coordinates: then the scan runs no Python
// code and the kernel gives its very result. Anything else runs the scan itself on the
// objects, comparison by comparison.
#include <optional>
#include <vector>

#include "foundations/point.hpp"
#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "surfaces/triangle.hpp"
#include "surfaces/vertex_merge.hpp"

namespace ostrel {

namespace {

// The class as built, for super() in __init__.
PyObject* assembly_class = nullptr;

Ref init(const Args& a) {
  PyObject *self = a.self(), *material = a[2];
  setattr(self, id<"_triangles">(), a[1]);
  if (truth(material)) {
    setattr(self, id<"material">(), material);
  } else {
    Ref name = new_str("default-material");
    Ref default_material = call(global<"Material">().get(), {name.get()});
    setattr(self, id<"material">(), default_material.get());
  }
  setattr(self, id<"_skip_duplicate_vertices_check">(), a[3]);
  Ref parent = super_of(assembly_class, self);
  call_method(parent.get(), id<"__init__">(), {});
  return none();
}

Ref assembly_name(const Args&) { return new_str("assembly"); }

// ---- the native path ----

struct Corners {
  std::vector<Vec3> points;  // three per triangle
  bool skip_check;
};

bool exact_sequence(PyObject* o) { return PyList_CheckExact(o) || PyTuple_CheckExact(o); }

// The corners of a profile of exactly three points of the unchanged Point class.
bool read_profile(PyObject* triangle, std::vector<Vec3>& out) {
  if (!triangle_class().admits(triangle)) return false;
  Ref profile = field(triangle_class(), triangle, id<"profile">());
  if (!exact_sequence(profile.get()) || PySequence_Fast_GET_SIZE(profile.get()) != 3) return false;
  for (Py_ssize_t i = 0; i < 3; ++i) {
    Ref point = Ref::borrow(PySequence_Fast_GET_ITEM(profile.get(), i));
    double c[3];
    if (!read_floats(point_class(), point.get(), {id<"_x">(), id<"_y">(), id<"_z">()}, c)) return false;
    out.push_back({c[0], c[1], c[2]});
  }
  return true;
}

// Reading `_triangles` and the flag of `self` runs no Python code: its class looks
// attributes up generically and defines neither name, so both come from the instance.
bool plain_fields(PyObject* self) {
  PyTypeObject* type = Py_TYPE(self);
  return type->tp_getattro == PyObject_GenericGetAttr && !_PyType_Lookup(type, id<"_triangles">()) &&
         !_PyType_Lookup(type, id<"_skip_duplicate_vertices_check">());
}

// The module tolerances are plain numbers, which every comparison would read alike.
bool plain_tolerances() {
  auto plain = [](const Ref& t) { return PyFloat_CheckExact(t.get()) || PyLong_CheckExact(t.get()); };
  return plain(global<"ISCLOSE_RTOL">()) && plain(global<"ISCLOSE_ATOL">());
}

// Everything the scan reads, where reading it runs no Python code and every comparison
// would be the module's own Point.__eq__ on floats: a list or tuple of unchanged
// Triangles, a bool flag, plain tolerances and unchanged Points (Point.__eq__ also
// tests against the global `Point`, so that must be the class too). A failed read is cleared: the scan on
// the objects raises it in its own order.
std::optional<Corners> read_corners(PyObject* self) {
  if (!plain_fields(self)) return std::nullopt;
  Corners corners;
  try {
    Ref point_global = global<"Point">();
    if (point_global.get() != point_class().cls() || !point_class().intact()) return std::nullopt;
    Ref triangles = getattr(self, id<"_triangles">());
    if (!exact_sequence(triangles.get())) return std::nullopt;
    // With no triangles the flag is never read.
    if (PySequence_Fast_GET_SIZE(triangles.get()) == 0) return Corners{{}, false};
    Ref skip = getattr(self, id<"_skip_duplicate_vertices_check">());
    if (!PyBool_Check(skip.get())) return std::nullopt;
    corners.skip_check = skip.get() == Py_True;
    if (!corners.skip_check && !plain_tolerances()) return std::nullopt;
    corners.points.reserve(3 * static_cast<std::size_t>(PySequence_Fast_GET_SIZE(triangles.get())));
    for (Py_ssize_t t = 0; t < PySequence_Fast_GET_SIZE(triangles.get()); ++t) {
      Ref triangle = Ref::borrow(PySequence_Fast_GET_ITEM(triangles.get(), t));
      if (!read_profile(triangle.get(), corners.points)) return std::nullopt;
    }
  } catch (const PyError&) {
    PyErr_Clear();
    return std::nullopt;
  }
  return corners;
}

Ref int_list(const std::array<std::size_t, 3>& face) {
  Ref items = check(PyList_New(3));
  for (Py_ssize_t k = 0; k < 3; ++k)
    PyList_SET_ITEM(items.get(), k, check(PyLong_FromSize_t(face[static_cast<std::size_t>(k)])).release());
  return items;
}

Ref float_list(const Vec3& p) {
  Ref x = new_float(p.x), y = new_float(p.y), z = new_float(p.z);
  return list({x.get(), y.get(), z.get()});
}

// Holds the cycle collector off while the result lists are made. They hold numbers
// only, and the collections that so many new lists would set off pass over everything
// the process holds, at a cost far above that of making them.
class CollectorPause {
 public:
  CollectorPause() {
#if PY_VERSION_HEX >= 0x030A0000
    was_enabled_ = PyGC_Disable();
#endif
  }
  ~CollectorPause() {
#if PY_VERSION_HEX >= 0x030A0000
    if (was_enabled_) PyGC_Enable();
#endif
  }
  CollectorPause(const CollectorPause&) = delete;
  CollectorPause& operator=(const CollectorPause&) = delete;

 private:
  int was_enabled_ = 0;
};

Ref native_vertices_and_faces(const Corners& corners) {
  const std::size_t triangle_count = corners.points.size() / 3;
  vertex_merge::IndexedMesh mesh;
  if (corners.skip_check) {
    mesh = vertex_merge::separate(corners.points.size());
  } else {
    // Read as the first comparison reads them, which comes with the second triangle.
    const Tolerance tolerance = triangle_count >= 2 ? module_tolerance() : Tolerance{};
    mesh = vertex_merge::merge(corners.points, tolerance);
  }
  CollectorPause pause;
  Ref vertices = check(PyList_New(static_cast<Py_ssize_t>(mesh.sources.size())));
  for (std::size_t v = 0; v < mesh.sources.size(); ++v)
    PyList_SET_ITEM(vertices.get(), static_cast<Py_ssize_t>(v), float_list(corners.points[mesh.sources[v]]).release());
  Ref faces = check(PyList_New(static_cast<Py_ssize_t>(triangle_count)));
  for (std::size_t t = 0; t < triangle_count; ++t)
    PyList_SET_ITEM(faces.get(), static_cast<Py_ssize_t>(t), int_list(mesh.faces[t]).release());
  return tuple({vertices.get(), faces.get()});
}

// ---- the scan on the objects ----

bool equal(PyObject* stored, PyObject* point) {
  Ref result = check(PyObject_RichCompare(stored, point, Py_EQ));
  return truth(result.get());
}

// unique_points[index] = point, numbering a new vertex.
Py_ssize_t store(PyObject* unique_points, Py_ssize_t& vertex_index, PyObject* point) {
  check(PySequence_SetItem(unique_points, vertex_index, point));
  return vertex_index++;
}

Ref scanned_vertices_and_faces(PyObject* self) {
  Ref faces = check(PyList_New(0));
  Py_ssize_t vertex_index = 0;
  Ref nothing = list({Py_None});
  Ref counted = getattr(self, id<"_triangles">());
  const Py_ssize_t count = check(PyObject_Size(counted.get()));
  Ref per_triangle = check(PySequence_Repeat(nothing.get(), count));
  Ref unique_points = check(PySequence_Repeat(per_triangle.get(), 3));

  Ref triangles = getattr(self, id<"_triangles">());
  Ref it = check(PyObject_GetIter(triangles.get()));
  while (Ref triangle = Ref::steal(PyIter_Next(it.get()))) {
    Ref profile = getattr(triangle.get(), id<"profile">());
    Ref p[3];
    unpack(profile.get(), 3, p);
    Py_ssize_t index[3] = {-1, -1, -1};
    Ref skip = getattr(self, id<"_skip_duplicate_vertices_check">());
    if (!truth(skip.get())) {
      // Stops at the first empty slot; the last equal stored point wins.
      for (Py_ssize_t i = 0; i < PyList_GET_SIZE(unique_points.get()); ++i) {
        Ref point = Ref::borrow(PyList_GET_ITEM(unique_points.get(), i));
        if (point.get() == Py_None) break;
        if (equal(point.get(), p[0].get()))
          index[0] = i;
        else if (equal(point.get(), p[1].get()))
          index[1] = i;
        else if (equal(point.get(), p[2].get()))
          index[2] = i;
      }
    }
    for (int k = 0; k < 3; ++k)
      if (index[k] < 0) index[k] = store(unique_points.get(), vertex_index, p[k].get());
    Ref i0 = new_int(index[0]), i1 = new_int(index[1]), i2 = new_int(index[2]);
    Ref face = list({i0.get(), i1.get(), i2.get()});
    check(PyList_Append(faces.get(), face.get()));
  }
  if (PyErr_Occurred()) throw PyError{};

  Ref vertices = check(PyList_New(0));
  for (Py_ssize_t i = 0; i < PyList_GET_SIZE(unique_points.get()); ++i) {
    Ref point = Ref::borrow(PyList_GET_ITEM(unique_points.get(), i));
    if (point.get() == Py_None) continue;
    Ref c[3];
    PyObject* const names[] = {id<"x">(), id<"y">(), id<"z">()};
    for (int k = 0; k < 3; ++k) {
      Ref value = getattr(point.get(), names[k]);
      c[k] = check(PyNumber_Float(value.get()));
    }
    Ref vertex = list({c[0].get(), c[1].get(), c[2].get()});
    check(PyList_Append(vertices.get(), vertex.get()));
  }
  return tuple({vertices.get(), faces.get()});
}

Ref get_vertices_and_faces(const Args& a) {
  if (std::optional<Corners> corners = read_corners(a.self())) return native_vertices_and_faces(*corners);
  return scanned_vertices_and_faces(a.self());
}

Ref to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref result = call_method(self, id<"_get_vertices_and_faces">(), {});
  Ref parts[2];
  unpack(result.get(), 2, parts);
  Ref material = getattr(self, id<"material">());
  Ref visual = call_method(material.get(), id<"_to_trimesh">(), {});
  Ref mesh_class = getattr(global<"trimesh">().get(), id<"Trimesh">());
  return call_kw(mesh_class.get(), {},
                 {{id<"vertices">(), parts[0].get()},
                  {id<"faces">(), parts[1].get()},
                  {id<"visual">(), visual.get()},
                  {id<"process">(), Py_False}});
}

Ref get_vertices_faces(const Args& a) {
  Ref assembly = call_kw(global<"TriangleAssembly">().get(), {a[0]}, {{id<"skip_duplicate_vertices_check">(), Py_False}});
  return call_method(assembly.get(), id<"_get_vertices_and_faces">(), {});
}

}  // namespace

void define_get_vertices_faces() {
  define_function("get_vertices_faces", "(triangles: List[Triangle]) -> Tuple", get_vertices_faces,
                  "The vertex list and face list of the triangles, equal corners merged into one vertex.");
}

void define_triangle_assembly() {
  Ref cls = ClassBuilder("TriangleAssembly", {global<"TransformableObject">().get()},
                         "A mesh object made of triangles. Corners that are equal points become one\n"
                         "vertex, unless the duplicate check is skipped: that check compares every corner\n"
                         "with every vertex so far, and skipping it gives every triangle three vertices.")
                .method("__init__",
                        "(triangles: List[Triangle], *, material: Material = None, "
                        "skip_duplicate_vertices_check: bool = False)",
                        init, "Make the assembly; a falsy material becomes Material(\"default-material\").")
                .property("_name", "() -> str", assembly_name, "\"assembly\"")
                .method("_get_vertices_and_faces", "() -> Tuple", get_vertices_and_faces,
                        "([x, y, z] per vertex, [i, j, k] per triangle), in the corner order of each\n"
                        "triangle's profile.")
                .method("_to_trimesh", "() -> trimesh.Trimesh", to_trimesh,
                        "A new unprocessed trimesh mesh of the triangles, with the material's visual.")
                .build();
  assembly_class = cls.release();
}

}  // namespace ostrel
