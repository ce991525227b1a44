// Extrusion: a closed profile in the local plane z = 0 swept along a Line. The solid is
// built once in local coordinates, from z = 0 to z = the line's length, as a Group of a
// start cap, the side wall and an end cap; one matrix places the local frame on the
// line. Everything here runs once per solid, so it runs as written, through the host.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "scene/hidden_children.hpp"
#include "scene/line_placement.hpp"
#include "scene/shared_material.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

void warn(const char* message) {
  Ref text = new_str(message);
  call_method(global<"logger">().get(), id<"warning">(), {text.get()});
}

enum class Init { self, profile, line, profile_rotation, material };
Ref init(const Args& a) {
  PyObject *self = a.self(), *profile = a[Init::profile], *material = a[Init::material];
  Ref first = getitem(profile, 0), last = getitem(profile, -1);
  Ref closed = check(PyObject_RichCompare(first.get(), last.get(), Py_EQ));
  if (truth(closed.get())) {
    Ref clockwise = call(global<"circumference_is_clockwise">().get(), {profile});
    if (!truth(clockwise.get()))
      warn("An Extrusion is made with a counter-clockwise circumference. This is not supported.");
  } else {
    warn("An Extrusion is made with non-matching start and end-point. This is not supported.");
  }
  Ref uuid1 = getattr(global<"uuid">().get(), id<"uuid1">());
  Ref uuid = call(uuid1.get(), {});
  setattr(self, id<"_uuid">(), uuid.get());
  setattr(self, id<"_profile">(), profile);
  setattr(self, id<"_line">(), a[Init::line]);
  Ref rotation = new_float(a.num(Init::profile_rotation));
  setattr(self, id<"_profile_rotation">(), rotation.get());
  if (truth(material)) {
    setattr(self, id<"_material">(), material);
  } else {
    Ref name = new_str("default-material");
    Ref default_material = call(global<"Material">().get(), {name.get()});
    setattr(self, id<"_material">(), default_material.get());
  }
  Ref elements = call_method(self, id<"_create_visualisation_elements">(), {});
  Ref visualisation_elements = check(PySequence_List(elements.get()));
  Ref parent = super_of(guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {visualisation_elements.get()});
  Ref transformation = call_method(self, id<"_generate_transformation_matrix">(), {});
  setattr(self, id<"_transformation">(), transformation.get());
  return none();
}
constexpr Member init_member = method(
    "__init__", "(profile: List[Point], line: Line, profile_rotation: float = 0.0, *, material: Material = None)", init,
    "Build the solid: the profile (closed, clockwise in plan) swept along `line`, turned by\n"
    "`profile_rotation` degrees around it. Profile problems are logged as warnings.");

constexpr Member children_member =
    property("children", "() -> List[TransformableObject]", hidden_children, "Hidden: an extrusion shows no members.");

Ref profile(const Args& a) { return getattr(a.self(), id<"_profile">()); }
constexpr Member profile_member = property("profile", "() -> List[Point]", profile, "The profile as given.");

constexpr Member material_member =
    property("material", "() -> Material", get_shared_material, "(value: Material) -> None", set_shared_material,
             "The material; setting it reaches both caps and the side wall.");

Ref line(const Args& a) { return getattr(a.self(), id<"_line">()); }
constexpr Member line_member = property("line", "() -> Line", line, "The axis, from start to end.");

Ref uuid(const Args& a) {
  Ref value = getattr(a.self(), id<"_uuid">());
  return check(PyObject_Str(value.get()));
}
constexpr Member uuid_member = property("uuid", "() -> str", uuid, "The identifier made at construction, as text.");

Ref length(const Args& a) {
  Ref axis = getattr(a.self(), id<"_line">());
  return getattr(axis.get(), id<"length">());
}
constexpr Member length_member = property("length", "() -> float", length, "The length of the line.");

Ref geometries(const Args& a) { return getattr(a.self(), id<"_line">()); }
constexpr Member geometries_member = property("geometries", "() -> Line", geometries, "The line.");

Ref transformation(const Args& a) { return getattr(a.self(), id<"_transformation">()); }
constexpr Member transformation_member =
    property("transformation", "() -> np.ndarray", transformation, "The matrix from local to world coordinates.");

Ref extrusion_name(const Args&) { return new_str("extrusion"); }
constexpr Member name_member = property("_name", "() -> str", extrusion_name, "\"extrusion\"");

Ref generate_transformation_matrix(const Args& a) {
  PyObject* self = a.self();
  Ref xax = axis(1, 0, 0), yax = axis(0, 1, 0), zax = axis(0, 0, 1);
  Ref line = getattr(self, id<"line">());
  Ref end = getattr(line.get(), id<"end_point">());
  Ref end_array = as_array(end.get());
  line = getattr(self, id<"line">());
  Ref start = getattr(line.get(), id<"start_point">());
  Ref start_array = as_array(start.get());
  const Heading h = heading(end_array.get(), start_array.get());
  Ref rotation_matrix = global<"rotation_matrix">();
  Ref rot0 = call(rotation_matrix.get(), {h.alpha.get(), yax.get()});
  Ref minus_beta = neg(h.beta.get());
  Ref rot1 = call(rotation_matrix.get(), {minus_beta.get(), xax.get()});
  Ref degrees = getattr(self, id<"_profile_rotation">());
  Ref radians = math_call(id<"radians">(), {degrees.get()});
  Ref rot2 = call(rotation_matrix.get(), {radians.get(), zax.get()});
  Ref partial = check(PyNumber_MatrixMultiply(rot0.get(), rot1.get()));
  Ref transformation = check(PyNumber_MatrixMultiply(partial.get(), rot2.get()));
  line = getattr(self, id<"line">());
  start = getattr(line.get(), id<"start_point">());
  translate_to(transformation.get(), start.get());
  return transformation;
}
constexpr Member generate_transformation_matrix_member =
    method("_generate_transformation_matrix", "() -> np.ndarray", generate_transformation_matrix,
           "The matrix that turns local +z onto the line (heading, then elevation, after the profile\n"
           "rotation) and moves the local origin to the line's start.");

// Point(point.x, point.y, point.z + top)
Ref lifted(PyObject* point, PyObject* top) {
  Ref x = getattr(point, id<"x">()), y = getattr(point, id<"y">()), z = getattr(point, id<"z">());
  Ref raised = add(z.get(), top);
  return call(global<"Point">().get(), {x.get(), y.get(), raised.get()});
}

Ref polygon(PyObject* points, PyObject* material) {
  return call_kw(global<"Polygon">().get(), {points},
                 {{id<"surface_orientation">(), Py_True}, {id<"material">(), material}});
}

Ref create_visualisation_elements(const Args& a) {
  PyObject* self = a.self();
  Ref profile = getattr(self, id<"_profile">());
  Ref points = check(PySequence_GetSlice(profile.get(), 0, -1));
  Ref step = new_int(-1);
  Ref reverse = check(PySlice_New(nullptr, nullptr, step.get()));
  Ref reversed = check(PyObject_GetItem(points.get(), reverse.get()));
  Ref material = getattr(self, id<"_material">());
  Ref start_polygon = polygon(reversed.get(), material.get());
  material = getattr(self, id<"_material">());
  Ref end_polygon = polygon(points.get(), material.get());
  Ref axis_line = getattr(self, id<"_line">());
  Ref top = getattr(axis_line.get(), id<"length">());
  Ref zero = new_int(0);
  Ref offset = tuple({zero.get(), zero.get(), top.get()});
  call_method(end_polygon.get(), id<"translate">(), {offset.get()});

  Ref side_triangles = check(PyList_New(0));
  profile = getattr(self, id<"_profile">());
  Ref pairs = call(global<"_current_next">().get(), {profile.get()});
  Ref it = check(PyObject_GetIter(pairs.get()));
  while (Ref pair = Ref::steal(PyIter_Next(it.get()))) {
    Ref ends[2];
    unpack(pair.get(), 2, ends);
    PyObject *current_point = ends[0].get(), *next_point = ends[1].get();
    axis_line = getattr(self, id<"_line">());
    Ref length = getattr(axis_line.get(), id<"length">());
    Ref next_top = lifted(next_point, length.get());
    Ref current_top = lifted(current_point, length.get());
    Ref triangle = global<"Triangle">();
    Ref lower = call(triangle.get(), {next_point, current_point, next_top.get()});
    check(PyList_Append(side_triangles.get(), lower.get()));
    Ref upper = call(triangle.get(), {next_top.get(), current_point, current_top.get()});
    check(PyList_Append(side_triangles.get(), upper.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  material = getattr(self, id<"_material">());
  Ref side = call_kw(global<"TriangleAssembly">().get(), {side_triangles.get()}, {{id<"material">(), material.get()}});
  return tuple({start_polygon.get(), side.get(), end_polygon.get()});
}
constexpr Member create_visualisation_elements_member = method(
    "_create_visualisation_elements", "() -> Tuple[Polygon, TriangleAssembly, Polygon]", create_visualisation_elements,
    "The start cap (the profile reversed), the side wall and the end cap moved up by the line's length,\n"
    "all in local coordinates.");

}  // namespace

void define_extrusion() {
  define_class("Extrusion", {global<"Group">().get()},
               "A solid made by sweeping a closed profile (local plane z = 0, clockwise in plan, first point\n"
               "repeated at the end) along a straight line. `profile_rotation` is in degrees.",
               {init_member, children_member, profile_member, material_member, line_member, uuid_member, length_member,
                geometries_member, transformation_member, name_member, generate_transformation_matrix_member,
                create_visualisation_elements_member},
               &guard);
}

}  // namespace ostrel
