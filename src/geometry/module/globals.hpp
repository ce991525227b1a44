// The module's global namespace. Code looks imported names and classes up here at the
// moment of use, so that a caller who replaces one sees the effect.
#pragma once

#include "module/ref.hpp"

namespace ostrel {

// Set once, by the exec step of the module.
void set_module_dict(PyObject* dict);
PyObject* module_dict();

// The global `name`, or the builtin of that name; NameError otherwise.
Ref global(PyObject* name);

template <Literal L>
Ref global() {
  return global(id<L>());
}

// Stores a module global.
void set_global(const char* name, PyObject* value);

}  // namespace ostrel
