// The material rule every scene object shares: a falsy `material` argument becomes a new
// Material("default-material").
#pragma once

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

inline Ref material_or_default(PyObject* material) {
  if (truth(material)) return Ref::borrow(material);
  Ref name = new_str("default-material");
  return call(global<"Material">().get(), {name.get()});
}

}  // namespace ostrel
