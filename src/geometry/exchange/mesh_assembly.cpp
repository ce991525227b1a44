// _MeshAssembly, a Group of _Mesh objects: one mesh per face group of an OBJ file, all
// holding the one vertex list of the file, each with the diffuse colour of its
// material where a material library is given.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// The class as built, for super() in __init__.
ClassGuard assembly_guard;

enum class AssemblyInit { self, meshes };
Ref assembly_init(const Args& a) {
  Ref parent = super_of(assembly_guard.cls(), a.self());
  Ref init = getattr(parent.get(), id<"__init__">());
  call_kw(init.get(), {}, {{id<"objects">(), a[AssemblyInit::meshes]}});
  return none();
}
constexpr Member assembly_init_member = method("__init__", "(meshes)", assembly_init, "A group of the meshes.");

// Material("mesh_material", color=Color(int(r * 255), int(g * 255), int(b * 255))) of
// the diffuse colour: each component truncated towards zero.
Ref diffuse_material(PyObject* properties) {
  Ref kd_key = new_str("Kd");
  Ref normalized_rgb = check(PyObject_GetItem(properties, kd_key.get()));
  Ref material_class = global<"Material">();
  Ref name = new_str("mesh_material");
  Ref color_class = global<"Color">();
  Ref full = new_int(255);
  Ref rgb[3];
  for (Py_ssize_t i = 0; i < 3; ++i) {
    Ref component = getitem(normalized_rgb.get(), i);
    Ref scaled = mul(component.get(), full.get());
    rgb[i] = check(PyNumber_Long(scaled.get()));
  }
  Ref color = call(color_class.get(), {rgb[0].get(), rgb[1].get(), rgb[2].get()});
  return call_kw(material_class.get(), {name.get()}, {{id<"color">(), color.get()}});
}

Ref new_mesh(PyObject* vertices, PyObject* faces, PyObject* material) {
  Ref mesh_class = global<"_Mesh">();
  if (!material) return call_kw(mesh_class.get(), {}, {{id<"vertices">(), vertices}, {id<"faces">(), faces}});
  return call_kw(mesh_class.get(), {},
                 {{id<"vertices">(), vertices}, {id<"faces">(), faces}, {id<"material">(), material}});
}

enum class AssemblyFromObj { cls, file, material_library, default_material };
Ref assembly_from_obj(const Args& a) {
  Ref parse = global<"_parse_vertices_and_grouped_faces_from_obj">();
  Ref parsed = call(parse.get(), {a[AssemblyFromObj::file]});
  Ref vertices_groups[2];
  unpack(parsed.get(), 2, vertices_groups);
  PyObject *vertices = vertices_groups[0].get(), *faces_groups = vertices_groups[1].get();
  Ref meshes = check(PyList_New(0));
  PyObject* library = a[AssemblyFromObj::material_library];
  const bool with_library = truth(library);
  Ref materials;
  if (with_library) materials = call(global<"_parse_obj_material_library">().get(), {library});
  Ref groups = check(PyObject_GetIter(faces_groups));
  while (Ref group = Ref::steal(PyIter_Next(groups.get()))) {
    Ref faces_name[2];
    unpack(group.get(), 2, faces_name);
    PyObject *faces = faces_name[0].get(), *name = faces_name[1].get();
    Ref mesh;
    if (!with_library) {
      mesh = new_mesh(vertices, faces, a[AssemblyFromObj::default_material]);
    } else if (name != Py_None && check(static_cast<Py_ssize_t>(PySequence_Contains(materials.get(), name)))) {
      Ref properties = check(PyObject_GetItem(materials.get(), name));
      Ref material = diffuse_material(properties.get());
      mesh = new_mesh(vertices, faces, material.get());
    } else {
      // Deliberately not default_material: a library was given, and this group names
      // nothing in it.
      mesh = new_mesh(vertices, faces, nullptr);
    }
    check(PyList_Append(meshes.get(), mesh.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return call_kw(a[AssemblyFromObj::cls], {}, {{id<"meshes">(), meshes.get()}});
}
constexpr Member assembly_from_obj_member =
    class_method("from_obj", "(file, material_library=None, default_material=None)", assembly_from_obj,
                 "One mesh per face group of the OBJ text, all sharing its vertex list. With a material\n"
                 "library, a group whose material it defines gets that diffuse colour and any other group\n"
                 "the default material of _Mesh; without one, every group gets default_material.");

}  // namespace

void define_mesh_assembly() {
  define_class("_MeshAssembly", {global<"Group">().get()},
               "A group of _Mesh objects, one per face group of an OBJ file, sharing one vertex list.",
               {assembly_init_member, assembly_from_obj_member}, &assembly_guard);
}

}  // namespace ostrel
