// mirror_object: a deep copy of an object, with a new uuid, mirrored by its own
// `mirror` method.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

enum class MirrorObject { obj, point, normal };
Ref mirror_object(const Args& a) {
  Ref deepcopy = getattr(global<"copy">().get(), id<"deepcopy">());
  Ref mirror_obj = call(deepcopy.get(), {a[MirrorObject::obj]});
  // Every copy gets a fresh uuid, before its capability is looked at.
  Ref uuid1 = getattr(global<"uuid">().get(), id<"uuid1">());
  Ref fresh = call(uuid1.get(), {});
  setattr(mirror_obj.get(), id<"_uuid">(), fresh.get());
  Ref names = check(PyObject_Dir(mirror_obj.get()));
  if (!check(PySequence_Contains(names.get(), id<"mirror">())))
    raise(PyExc_AttributeError, "Target object has no mirror method");
  call_method(mirror_obj.get(), id<"mirror">(), {a[MirrorObject::point], a[MirrorObject::normal]});
  return mirror_obj;
}
constexpr Member mirror_object_member =
    function("mirror_object", "(obj: TransformableObject, point: Point, normal: Vector-like) -> TransformableObject",
             mirror_object,
             "A mirrored deep copy of `obj`, with a new uuid, mirrored in the plane through `point`\n"
             "with normal `normal`; `obj` itself is left as it is.");

}  // namespace

void define_mirror_object() {
  for (const Member& m : {mirror_object_member}) define_function(m);
}

}  // namespace ostrel
