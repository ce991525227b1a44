// Native paths stand in for documented steps that call module globals by name. They
// may be taken only while those globals still hold what they held at the end of
// import; a caller who replaces one (a patched function, class or module) sends the
// call down the documented steps, which then call the replacement.
#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include "module/ref.hpp"

namespace ostrel {

// A set of module globals that a native path depends on. Declared as a static object;
// the objects the names hold are recorded at the end of import.
class OwnGlobals {
 public:
  OwnGlobals(std::initializer_list<const char*> names);
  // Whether every name still holds its object of the end of import (and had one).
  bool hold() const;

 private:
  friend void capture_own_globals();
  void capture(PyObject* dict);

  std::vector<const char*> names_;
  std::vector<std::pair<PyObject*, PyObject*>> entries_;  // interned name, strong reference
  bool complete_ = false;                                  // every name was defined
  mutable unsigned long long checked_generation_ = 0;      // of the namespace, when last found holding
};

// Records the globals of every OwnGlobals and starts following changes of the module's
// namespace; called once, at the end of import.
void capture_own_globals();

// A number that changes whenever the module's namespace does; never 0.
unsigned long long globals_generation();

}  // namespace ostrel
