// The `material` property of composite solids that share one material with all their
// parts: it reads `_material`; setting it stores the value and gives it to every child.
#pragma once

#include "module/function.hpp"
#include "module/objects.hpp"

namespace ostrel {

inline Ref get_shared_material(const Args& a) { return getattr(a.self(), id<"_material">()); }

enum class SetSharedMaterial { self, value };
inline Ref set_shared_material(const Args& a) {
  PyObject* self = a.self();
  setattr(self, id<"_material">(), a[SetSharedMaterial::value]);
  Ref members = getattr(self, id<"_children">());
  Ref it = check(PyObject_GetIter(members.get()));
  while (Ref child = Ref::steal(PyIter_Next(it.get())))
    setattr(child.get(), id<"material">(), a[SetSharedMaterial::value]);
  if (PyErr_Occurred()) throw PyError{};
  return none();
}

}  // namespace ostrel
