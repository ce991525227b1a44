// Cone: a right circular cone. It holds only its sizes and placement; at export it
// makes two LineRevolve pieces around the y-axis (the base disc and the mantle), turns
// them from y onto its orientation and moves them to its origin. Everything runs once
// per solid, as written, through the host.
#include "exchange/gltf.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "scene/default_material.hpp"
#include "scene/piece_name.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

Ref vector(long x, long y, long z) {
  Ref a = new_int(x), b = new_int(y), c = new_int(z);
  return call(global<"Vector">().get(), {a.get(), b.get(), c.get()});
}

Ref point(PyObject* x, PyObject* y) { return call(global<"Point">().get(), {x, y}); }

enum class Init { self, diameter, height, origin, orientation, material };
Ref init(const Args& a) {
  PyObject* self = a.self();
  Ref parent = super_of(guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {});
  const double diameter = a.num(Init::diameter), height = a.num(Init::height);
  if (diameter <= 0) raise(PyExc_ValueError, "Cone diameter should be larger than 0");
  if (height <= 0) raise(PyExc_ValueError, "Cone height should be larger than 0");
  Ref d = new_float(diameter), h = new_float(height);
  setattr(self, id<"_diameter">(), d.get());
  setattr(self, id<"_height">(), h.get());
  Ref origin;
  if (truth(a[Init::origin])) {
    origin = Ref::borrow(a[Init::origin]);
  } else {
    Ref zero = new_int(0);
    origin = call(global<"Point">().get(), {zero.get(), zero.get(), zero.get()});
  }
  setattr(self, id<"_origin">(), origin.get());
  Ref orientation = truth(a[Init::orientation]) ? Ref::borrow(a[Init::orientation]) : vector(0, 0, 1);
  setattr(self, id<"_orientation">(), orientation.get());
  Ref material = material_or_default(a[Init::material]);
  setattr(self, id<"material">(), material.get());
  return none();
}
constexpr Member init_member = method(
    "__init__",
    "(diameter: float, height: float, *, origin: Point = None, orientation: Vector = None, material: Material = None)",
    init,
    "A cone standing on the centre of its base at origin (the world origin by default), its apex\n"
    "along orientation (+z by default); diameter and height must be larger than 0.");

enum class FromLine { cls, diameter, line, material };
Ref from_line(const Args& a) {
  PyObject* line = a[FromLine::line];
  Ref diameter = new_float(a.num(FromLine::diameter));
  Ref length = getattr(line, id<"length">());
  Ref origin = getattr(line, id<"start_point">());
  Ref orientation = call_method(line, id<"direction">(), {});
  return call_kw(a[FromLine::cls], {diameter.get(), length.get()},
                 {{id<"origin">(), origin.get()},
                  {id<"orientation">(), orientation.get()},
                  {id<"material">(), a[FromLine::material]}});
}
constexpr Member from_line_member =
    class_method("from_line", "(diameter: float, line: Line, *, material: Material = None) -> Cone", from_line,
                 "The cone on the line's start point with its apex at the line's end point.");

Ref cone_name(const Args&) { return new_str("cone"); }
constexpr Member name_member = property("_name", "() -> str", cone_name, "\"cone\"");

// Line(start, end).revolve(material=self.material)
Ref revolved(PyObject* self, PyObject* start, PyObject* end) {
  Ref piece_line = call(global<"Line">().get(), {start, end});
  Ref material = getattr(self, id<"material">());
  Ref method = getattr(piece_line.get(), id<"revolve">());
  return call_kw(method.get(), {}, {{id<"material">(), material.get()}});
}

Ref create_cone(const Args& a) {
  PyObject* self = a.self();
  Ref zero = new_int(0), two = new_int(2);
  Ref diameter = getattr(self, id<"_diameter">());
  Ref radius = div(diameter.get(), two.get());
  Ref centre = point(zero.get(), zero.get()), rim = point(radius.get(), zero.get());
  Ref base = revolved(self, centre.get(), rim.get());
  diameter = getattr(self, id<"_diameter">());
  radius = div(diameter.get(), two.get());
  Ref height = getattr(self, id<"_height">());
  Ref foot = point(radius.get(), zero.get()), apex = point(zero.get(), height.get());
  Ref cone = revolved(self, foot.get(), apex.get());

  Ref up = vector(0, 1, 0);
  Ref orientation = getattr(self, id<"_orientation">());
  Ref wanted = call_method(orientation.get(), id<"normalize">(), {});
  Ref rotation_axis = call_method(up.get(), id<"cross">(), {wanted.get()});
  Ref null = vector(0, 0, 0);
  if (compares(rotation_axis.get(), null.get(), Py_NE)) {
    Ref np = global<"np">();
    Ref cosine = call_method(up.get(), id<"dot">(), {wanted.get()});
    Ref low = new_float(-1.0), high = new_float(1.0);
    Ref clipped = call_method(np.get(), id<"clip">(), {cosine.get(), low.get(), high.get()});
    Ref angle = call_method(global<"np">().get(), id<"arccos">(), {clipped.get()});
    call_method(base.get(), id<"rotate">(), {angle.get(), rotation_axis.get()});
    call_method(cone.get(), id<"rotate">(), {angle.get(), rotation_axis.get()});
  }
  Ref world_origin = call(global<"Point">().get(), {zero.get(), zero.get(), zero.get()});
  Ref origin = getattr(self, id<"_origin">());
  Ref translation_vector = call_method(world_origin.get(), id<"vector_to">(), {origin.get()});
  call_method(base.get(), id<"translate">(), {translation_vector.get()});
  call_method(cone.get(), id<"translate">(), {translation_vector.get()});
  Ref pieces = check(PyDict_New());
  check(PyDict_SetItemString(pieces.get(), "base", base.get()));
  check(PyDict_SetItemString(pieces.get(), "cone", cone.get()));
  return pieces;
}
constexpr Member create_cone_member =
    method("_create_cone", "() -> Dict[str, LineRevolve]", create_cone,
           "The base disc and the mantle, turned from +y onto the orientation (not for an orientation\n"
           "along -y, which leaves them pointing up) and moved to the origin.");

Ref to_trimesh(const Args& a) {
  PyObject* self = a.self();
  Ref scene_class = getattr(global<"trimesh">().get(), id<"Scene">());
  Ref base_frame = random_hex();
  Ref metadata = check(PyDict_New());
  Ref own_name = getattr(self, id<"_name">());
  check(PyDict_SetItemString(metadata.get(), "ostrel_name", own_name.get()));
  Ref scene =
      call_kw(scene_class.get(), {}, {{id<"base_frame">(), base_frame.get()}, {id<"metadata">(), metadata.get()}});
  Ref pieces = call_method(self, id<"_create_cone">(), {});
  Ref items = call_method(pieces.get(), id<"items">(), {});
  Ref it = check(PyObject_GetIter(items.get()));
  while (Ref item = Ref::steal(PyIter_Next(it.get()))) {
    Ref entry[2];
    unpack(item.get(), 2, entry);
    Ref piece_kind = getattr(self, id<"_name">());
    Ref name = piece_name(piece_kind.get(), entry[0].get());
    Ref geometry = call_method(entry[1].get(), id<"_to_trimesh">(), {});
    Ref transform = getattr(entry[1].get(), id<"_transformation">());
    add_to_scene(scene.get(), geometry.get(), transform.get(), name.get());
  }
  if (PyErr_Occurred()) throw PyError{};
  return scene;
}
constexpr Member to_trimesh_member =
    method("_to_trimesh", "() -> trimesh.Scene", to_trimesh,
           "A scene of cone-base and cone-cone, with \"ostrel_name\" in the scene's metadata.");

}  // namespace

void define_cone() {
  define_class("Cone", {global<"TransformableObject">().get()},
               "A right circular cone, made of a revolved base disc and mantle at export.",
               {init_member, from_line_member, name_member, create_cone_member, to_trimesh_member}, &guard);
}

}  // namespace ostrel
