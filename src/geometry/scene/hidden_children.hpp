// The composite solids whose parts are no business of the caller's hide the `children`
// accessor of Group: reading it raises AttributeError naming the object's class.
#pragma once

#include "module/function.hpp"
#include "module/objects.hpp"

namespace ostrel {

inline Ref hidden_children(const Args& a) {
  Ref cls = getattr(a.self(), id<"__class__">());
  Ref name = getattr(cls.get(), id<"__name__">());
  PyErr_Format(PyExc_AttributeError, "'%U' has no attribute 'children'", name.get());
  throw PyError{};
}

}  // namespace ostrel
