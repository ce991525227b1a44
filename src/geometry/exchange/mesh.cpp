// _Mesh, a raw indexed mesh from vertex and face lists. The lists go to trimesh
// unprocessed, so that indices stay valid and vertices the faces do not use stay in
// the mesh.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// The class as built, for super() in __init__.
ClassGuard mesh_guard;

enum class MeshInit { self, vertices, faces, material };
Ref mesh_init(const Args& a) {
  PyObject* self = a.self();
  Ref parent = super_of(mesh_guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  setattr(self, id<"_vertices">(), a[MeshInit::vertices]);
  setattr(self, id<"_faces">(), a[MeshInit::faces]);
  if (truth(a[MeshInit::material])) {
    setattr(self, id<"material">(), a[MeshInit::material]);
  } else {
    Ref name = new_str("default-material");
    Ref material = call(global<"Material">().get(), {name.get()});
    setattr(self, id<"material">(), material.get());
  }
  return none();
}
constexpr Member mesh_init_member =
    method("__init__", "(vertices, faces, material=None)", mesh_init,
           "A mesh of [x, y, z] vertices and [i, j, k] faces (0-based), both kept as given, not\n"
           "copied; a falsy material becomes Material(\"default-material\").");

enum class MeshFromObj { cls, file, material };
Ref mesh_from_obj(const Args& a) {
  Ref parse = global<"_parse_vertices_and_faces_from_obj">();
  Ref parsed = call(parse.get(), {a[MeshFromObj::file]});
  Ref vertices_faces[2];
  unpack(parsed.get(), 2, vertices_faces);
  return call_kw(a[MeshFromObj::cls], {},
                 {{id<"vertices">(), vertices_faces[0].get()},
                  {id<"faces">(), vertices_faces[1].get()},
                  {id<"material">(), a[MeshFromObj::material]}});
}
constexpr Member mesh_from_obj_member =
    class_method("from_obj", "(file, material=None)", mesh_from_obj,
                 "The mesh of all vertices and faces of the OBJ text that file.readlines() gives.");

Ref mesh_name(const Args&) { return new_str("mesh"); }
constexpr Member mesh_name_member = property("_name", "() -> str", mesh_name, "\"mesh\"");

Ref mesh_to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref mesh_class = getattr(global<"trimesh">().get(), id<"Trimesh">());
  Ref vertices = getattr(self, id<"_vertices">()), faces = getattr(self, id<"_faces">());
  Ref material = getattr(self, id<"material">());
  Ref visual = call_method(material.get(), id<"_to_trimesh">(), {});
  return call_kw(mesh_class.get(), {},
                 {{id<"vertices">(), vertices.get()},
                  {id<"faces">(), faces.get()},
                  {id<"visual">(), visual.get()},
                  {id<"process">(), Py_False}});
}
constexpr Member mesh_to_trimesh_member =
    method("_to_trimesh", "() -> trimesh.Trimesh", mesh_to_trimesh,
           "A new unprocessed trimesh mesh of the lists, with the material's visual.");

}  // namespace

void define_mesh() {
  define_class("_Mesh", {global<"TransformableObject">().get()},
               "A raw indexed triangle mesh: vertex and face lists as given, and a material.",
               {mesh_init_member, mesh_from_obj_member, mesh_name_member, mesh_to_trimesh_member}, &mesh_guard);
}

}  // namespace ostrel
