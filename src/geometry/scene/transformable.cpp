// TransformableObject, the abstract base of everything that can stand in a scene, and
// Group, the container. An object keeps its geometry in local coordinates and one 4x4
// matrix; each transformation puts a new matrix on the left of the old one (acting
// after it, in world axes) and never writes into the old array.
#include "exchange/gltf.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// The class as built: super() in a method names the class that defines it.
ClassGuard group_guard;

Ref init(const Args& a) {
  Ref zero = new_int(0);
  Ref origin = tuple({zero.get(), zero.get(), zero.get()});
  Ref identity = call(global<"translation_matrix">().get(), {origin.get()});
  setattr(a.self(), id<"_transformation">(), identity.get());
  return none();
}
constexpr Member init_member = method("__init__", "() -> None", init, "Start with the identity matrix.");

// self._transformation = matrix @ self._transformation; return self
Ref compose(PyObject* self, PyObject* matrix) {
  Ref current = getattr(self, id<"_transformation">());
  Ref product = check(PyNumber_MatrixMultiply(matrix, current.get()));
  setattr(self, id<"_transformation">(), product.get());
  return Ref::borrow(self);
}

enum class Translate { self, translation_vector };
Ref translate(const Args& a) {
  Ref m = call(global<"translation_matrix">().get(), {a[Translate::translation_vector]});
  return compose(a.self(), m.get());
}
constexpr Member translate_member = method("translate", "(translation_vector: Vector-like) -> TransformableObject",
                                           translate, "Move the object by a vector.");

enum class Rotate { self, angle, direction, point };
Ref rotate(const Args& a) {
  Ref angle = new_float(a.num(Rotate::angle));
  Ref m = call(global<"rotation_matrix">().get(), {angle.get(), a[Rotate::direction], a[Rotate::point]});
  return compose(a.self(), m.get());
}
constexpr Member rotate_member =
    method("rotate", "(angle: float, direction: Vector-like, point: Point-like = None) -> TransformableObject", rotate,
           "Rotate by `angle` radians around `direction` (right-hand rule), through `point`.");

enum class Mirror { self, point, normal };
Ref mirror(const Args& a) {
  Ref m = call(global<"reflection_matrix">().get(), {a[Mirror::point], a[Mirror::normal]});
  return compose(a.self(), m.get());
}
constexpr Member mirror_member = method("mirror", "(point: Point-like, normal: Vector-like) -> TransformableObject",
                                        mirror, "Mirror in the plane through `point` with normal `normal`.");

enum class Scale { self, scaling_vector };
Ref scale(const Args& a) {
  Ref m = call(global<"scaling_matrix">().get(), {a[Scale::scaling_vector]});
  return compose(a.self(), m.get());
}
constexpr Member scale_member = method("scale", "(scaling_vector: Vector-like) -> TransformableObject", scale,
                                       "Scale along the axes by the components of a vector.");

Ref not_implemented(const Args&) {
  PyErr_SetNone(PyExc_NotImplementedError);
  throw PyError{};
}
constexpr Member not_implemented_member =
    abstract_property("_name", "() -> str", not_implemented, "The kind of object, as named in the scene.");
constexpr Member not_implemented_to_trimesh_member =
    abstract_method("_to_trimesh", "() -> trimesh.parent.Geometry3D", not_implemented,
                    "A new trimesh geometry or scene of the object, in local coordinates.");

enum class GroupInit { self, objects };
Ref group_init(const Args& a) {
  Ref parent = super_of(group_guard.cls(), a.self());
  call_method(parent.get(), id<"__init__">(), {});
  Ref children = check(PySequence_List(a[GroupInit::objects]));
  setattr(a.self(), id<"_children">(), children.get());
  return none();
}
constexpr Member group_init_member =
    method("__init__", "(objects: Sequence[TransformableObject])", group_init, "Make a group of the objects.");

enum class GroupAdd { self, objects };
Ref group_add(const Args& a) {
  PyObject* objects = a[GroupAdd::objects];
  Ref children = getattr(a.self(), id<"_children">());
  if (PyList_Check(objects) || PyTuple_Check(objects)) {
    Ref extended = call_method(children.get(), id<"extend">(), {objects});
  } else {
    Ref appended = call_method(children.get(), id<"append">(), {objects});
  }
  return none();
}
constexpr Member group_add_member = method("add", "(objects: Union[list, tuple, TransformableObject]) -> None",
                                           group_add, "Add one object, or each item of a list or tuple.");

Ref group_children(const Args& a) { return getattr(a.self(), id<"_children">()); }
constexpr Member group_children_member =
    property("children", "() -> List[TransformableObject]", group_children, "The list of members itself.");

Ref group_duplicate(const Args& a) {
  Ref group = global<"Group">();
  Ref new_children = check(PyList_New(0));
  Ref children = getattr(a.self(), id<"_children">());
  Ref it = check(PyObject_GetIter(children.get()));
  while (Ref child = Ref::steal(PyIter_Next(it.get()))) {
    if (isinstance(child.get(), group.get())) {
      Ref copy = call_method(child.get(), id<"duplicate">(), {});
      check(PyList_Append(new_children.get(), copy.get()));
    } else {
      check(PyList_Append(new_children.get(), child.get()));
    }
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref new_group = call(group.get(), {new_children.get()});
  Ref transformation = getattr(a.self(), id<"_transformation">());
  setattr(new_group.get(), id<"_transformation">(), transformation.get());
  return new_group;
}
constexpr Member group_duplicate_member =
    method("duplicate", "() -> Group", group_duplicate,
           "A new Group with the same matrix: nested groups are duplicated, leaves are shared.");

Ref group_name(const Args&) { return new_str("group"); }
constexpr Member group_name_member = property("_name", "() -> str", group_name, "\"group\"");

Ref group_to_trimesh(const Args& a) {
  Ref scene = new_scene();
  Ref children = getattr(a.self(), id<"_children">());
  Ref it = check(PyObject_GetIter(children.get()));
  while (Ref child = Ref::steal(PyIter_Next(it.get()))) {
    Ref add = getattr(global<"_GLTF">().get(), id<"add_geometry_to_scene">());
    Ref geometry = call_method(child.get(), id<"_to_trimesh">(), {});
    Ref transform = getattr(child.get(), id<"_transformation">());
    Ref name = getattr(child.get(), id<"_name">());
    call_kw(add.get(), {scene.get(), geometry.get()}, {{id<"transform">(), transform.get()}, {id<"name">(), name.get()}});
  }
  if (PyErr_Occurred()) throw PyError{};
  return scene;
}
constexpr Member group_to_trimesh_member = method("_to_trimesh", "() -> trimesh.parent.Geometry3D", group_to_trimesh,
                                                  "A trimesh scene holding each member under its own matrix and name.");

}  // namespace

void define_transformable() {
  define_class("TransformableObject", {global<"ABC">().get()},
               "Abstract base of everything that can stand in a scene: geometry in local coordinates and one\n"
               "4x4 matrix `_transformation` that places it. Transformations compose in world axes and return\n"
               "the object, so that calls can be chained.",
               {init_member, translate_member, rotate_member, mirror_member, scale_member, not_implemented_member,
                not_implemented_to_trimesh_member});
  define_class("Group", {global<"TransformableObject">().get()},
               "A scene object made of other scene objects; its matrix acts on all of them.",
               {group_init_member, group_add_member, group_children_member, group_duplicate_member, group_name_member,
                group_to_trimesh_member},
               &group_guard);
}

}  // namespace ostrel
