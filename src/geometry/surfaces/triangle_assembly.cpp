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
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"
#include "surfaces/triangle.hpp"
#include "surfaces/unprocessed_mesh.hpp"
#include "surfaces/vertex_merge_kernel.hpp"

namespace ostrel {

namespace {

// The class as built, for super() in __init__.
ClassGuard guard;

enum class Init { self, triangles, material, skip_duplicate_vertices_check };
Ref init(const Args& a) {
  PyObject *self = a.self(), *material = a[Init::material];
  setattr(self, id<"_triangles">(), a[Init::triangles]);
  if (truth(material)) {
    setattr(self, id<"material">(), material);
  } else {
    Ref name = new_str("default-material");
    Ref default_material = call(global<"Material">().get(), {name.get()});
    setattr(self, id<"material">(), default_material.get());
  }
  setattr(self, id<"_skip_duplicate_vertices_check">(), a[Init::skip_duplicate_vertices_check]);
  Ref parent = super_of(guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  return none();
}
constexpr Member init_member =
    method("__init__",
           "(triangles: List[Triangle], *, material: Material = None, "
           "skip_duplicate_vertices_check: bool = False)",
           init, "Make the assembly; a falsy material becomes Material(\"default-material\").");

Ref assembly_name(const Args&) { return new_str("assembly"); }
constexpr Member assembly_name_member = property("_name", "() -> str", assembly_name, "\"assembly\"");

// ---- the native path ----

struct Corners {
  std::vector<Vec3> points;  // three per triangle
  bool skip_check;
  kernel::Tolerance tolerance;  // of Point.__eq__, where the check is made
};

bool exact_sequence(PyObject* o) { return PyList_CheckExact(o) || PyTuple_CheckExact(o); }

// The corners of a profile of exactly three points of the unchanged Point class.
bool read_profile(PyObject* triangle, std::vector<Vec3>& out) {
  if (!triangle_class().admits(triangle)) return false;
  Ref profile = getattr(triangle, id<"profile">());
  if (!exact_sequence(profile.get())) return false;
  for (Py_ssize_t i = 0; i < 3; ++i) {
    // Reading a point can run a caller's code, which can change the profile.
    if (PySequence_Fast_GET_SIZE(profile.get()) != 3) return false;
    Ref point = Ref::borrow(PySequence_Fast_GET_ITEM(profile.get(), i));
    const auto p = read_point(point.get());
    if (!p) return false;
    out.push_back(*p);
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

// Everything the scan reads, where reading it runs no Python code and every comparison
// would be the module's own Point.__eq__ on floats: a list or tuple of unchanged
// Triangles, a bool flag, plain tolerances and unchanged Points (Point.__eq__ also
// tests against the global `Point`, so that must be the class too). A failed read is cleared: the scan on
// the objects raises it in its own order.
std::optional<Corners> read_corners(PyObject* self) {
  if (!plain_fields(self)) return std::nullopt;
  return or_take_steps([&]() -> std::optional<Corners> {
    Corners corners;
    Ref triangles = getattr(self, id<"_triangles">());
    if (!exact_sequence(triangles.get())) return std::nullopt;
    // With no triangles the flag is never read.
    const Py_ssize_t count = PySequence_Fast_GET_SIZE(triangles.get());
    if (count == 0) return Corners{{}, false, {}};
    Ref skip = getattr(self, id<"_skip_duplicate_vertices_check">());
    if (!PyBool_Check(skip.get())) return std::nullopt;
    corners.skip_check = skip.get() == Py_True;
    if (!corners.skip_check) {
      // Plain numbers, which every comparison would read alike.
      const auto t = native_tolerances();
      if (!t) return std::nullopt;
      corners.tolerance = t->module;
    }
    corners.points.reserve(3 * static_cast<std::size_t>(count));
    for (Py_ssize_t t = 0; t < count; ++t) {
      // Reading a triangle can run a caller's code, which can change the list.
      if (PySequence_Fast_GET_SIZE(triangles.get()) != count) return std::nullopt;
      Ref triangle = Ref::borrow(PySequence_Fast_GET_ITEM(triangles.get(), t));
      if (!read_profile(triangle.get(), corners.points)) return std::nullopt;
    }
    return corners;
  });
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

Ref native_vertices_and_faces(const Corners& corners) {
  const std::size_t triangle_count = corners.points.size() / 3;
  kernel::IndexedMesh mesh;
  if (corners.skip_check) {
    mesh = kernel::separate_vertices(corners.points.size());
  } else {
    mesh = kernel::merge_vertices(corners.points, corners.tolerance);
  }
  // The result lists hold numbers only, and the collections that so many new lists
  // would set off pass over everything the process holds: held off meanwhile.
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
  if (Ref r = native_path(point_natives(), [&] {
        const auto corners = read_corners(a.self());
        return corners ? native_vertices_and_faces(*corners) : Ref{};
      }))
    return r;
  return scanned_vertices_and_faces(a.self());
}
constexpr Member get_vertices_and_faces_member =
    method("_get_vertices_and_faces", "() -> Tuple", get_vertices_and_faces,
           "([x, y, z] per vertex, [i, j, k] per triangle), in the corner order of each\n"
           "triangle's profile.");

Ref to_trimesh(const Args& a) { return unprocessed_mesh(a.self(), id<"_get_vertices_and_faces">()); }
constexpr Member to_trimesh_member =
    method("_to_trimesh", "() -> trimesh.Trimesh", to_trimesh,
           "A new unprocessed trimesh mesh of the triangles, with the material's visual.");

}  // namespace

void define_triangle_assembly() {
  define_class("TriangleAssembly", {global<"TransformableObject">().get()},
               "A mesh object made of triangles. Corners that are equal points become one\n"
               "vertex, unless the duplicate check is skipped: that check compares every corner\n"
               "with every vertex so far, and skipping it gives every triangle three vertices.",
               {init_member, assembly_name_member, get_vertices_and_faces_member, to_trimesh_member}, &guard);
}

}  // namespace ostrel
