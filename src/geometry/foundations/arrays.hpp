// NumPy arrays built as the module's documented steps build them, through the module
// global `np`.
#pragma once

#include <initializer_list>

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

// np.array([items...], dtype=float)
inline Ref float_array(std::initializer_list<PyObject*> items) {
  Ref values = list(items);
  Ref array = getattr(global<"np">().get(), id<"array">());
  Ref kwnames = tuple({id<"dtype">()});
  return call(array.get(), {values.get(), reinterpret_cast<PyObject*>(&PyFloat_Type)}, kwnames.get());
}

}  // namespace ostrel
