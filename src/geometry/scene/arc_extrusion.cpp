// ArcExtrusion: a profile swept along an Arc, approximated by one straight Extrusion per
// chord of the discretised arc, each with its own flat caps. Built once per solid, as
// written, through the host.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "scene/hidden_children.hpp"

namespace ostrel {

namespace {

ClassGuard guard;

enum class Init { self, profile, arc, profile_rotation, n_segments, material };
Ref init(const Args& a) {
  PyObject* self = a.self();
  setattr(self, id<"_profile">(), a[Init::profile]);
  setattr(self, id<"_arc">(), a[Init::arc]);
  Ref rotation = new_float(a.num(Init::profile_rotation));
  setattr(self, id<"_profile_rotation">(), rotation.get());
  Ref segments = call_method(self, id<"_construct_segments">(), {a[Init::n_segments], a[Init::material]});
  Ref parent = super_of(guard.cls(), self);
  call_method(parent.get(), id<"__init__">(), {segments.get()});
  return none();
}
constexpr Member init_member =
    method("__init__",
           "(profile: List[Point], arc: Arc, profile_rotation: float = 0.0, n_segments: int = 50, *, "
           "material: Material = None)",
           init, "Sweep the profile along the arc in n_segments straight extrusions; profile_rotation in degrees.");

constexpr Member children_member = property("children", "() -> List[TransformableObject]", hidden_children,
                                            "Hidden: an arc extrusion shows no members.");

Ref arc_extrusion_name(const Args&) { return new_str("arc-extrusion"); }
constexpr Member name_member = property("_name", "() -> str", arc_extrusion_name, "\"arc-extrusion\"");

enum class ConstructSegments { self, n_segments, material };
Ref construct_segments(const Args& a) {
  PyObject *self = a.self(), *n_segments = a[ConstructSegments::n_segments];
  Ref segments = check(PyList_New(0));
  Ref arc = getattr(self, id<"_arc">());
  Ref one = new_int(1);
  Ref count = check(PyNumber_Add(n_segments, one.get()));
  Ref arc_points = call_method(arc.get(), id<"discretize">(), {count.get()});
  Ref indices = check(PyObject_CallFunctionObjArgs(reinterpret_cast<PyObject*>(&PyRange_Type), n_segments, nullptr));
  Ref it = check(PyObject_GetIter(indices.get()));
  while (Ref i = Ref::steal(PyIter_Next(it.get()))) {
    Ref point_start = check(PyObject_GetItem(arc_points.get(), i.get()));
    Ref next = check(PyNumber_Add(i.get(), one.get()));
    Ref point_end = check(PyObject_GetItem(arc_points.get(), next.get()));
    Ref line = call(global<"Line">().get(), {point_start.get(), point_end.get()});
    Ref profile = getattr(self, id<"_profile">());
    Ref rotation = getattr(self, id<"_profile_rotation">());
    Ref segment =
        call_kw(global<"Extrusion">().get(), {profile.get(), line.get()},
                {{id<"profile_rotation">(), rotation.get()}, {id<"material">(), a[ConstructSegments::material]}});
    check(PyList_Append(segments.get(), segment.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return segments;
}
constexpr Member construct_segments_member =
    method("_construct_segments", "(n_segments: int, material: Material = None) -> List[Extrusion]", construct_segments,
           "One Extrusion of the profile along each chord of the arc, in arc order.");

}  // namespace

void define_arc_extrusion() {
  define_class("ArcExtrusion", {global<"Group">().get()},
               "A profile swept along an arc, as a chain of straight extrusions, one per chord.",
               {init_member, children_member, name_member, construct_segments_member}, &guard);
}

}  // namespace ostrel
