// When a native path may run. A native path stands in for documented steps that call
// module globals by name and members of the module's classes; it may run only while
// those globals still hold what they held at the end of import and those classes are
// as the module built them. A caller who replaces one (a patched function, class,
// module or member) sends the call down the documented steps, which then meet the
// replacement.
#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include "module/instance.hpp"

namespace ostrel {

// Declared as a static object beside the native path it guards; the objects the names
// hold are recorded at the end of import. A set can include other sets, so that a path
// that stands in for another's steps names only what it adds; they are folded into one
// list then.
class Natives {
 public:
  // `globals`: module globals by name; `classes`: classes that must be intact and still
  // be the module global of their own name.
  Natives(std::initializer_list<const char*> globals, std::initializer_list<const ClassGuard*> classes = {},
          std::initializer_list<const Natives*> includes = {});
  // Whether the native path may run now.
  bool hold() const;

 private:
  friend void capture_natives();
  void capture(PyObject* dict);
  void collect(std::vector<const char*>& names, std::vector<const ClassGuard*>& classes) const;

  std::vector<const char*> names_;
  std::vector<const ClassGuard*> classes_;
  std::vector<const Natives*> includes_;
  std::vector<const ClassGuard*> all_classes_;             // classes_ and those of the included sets
  std::vector<std::pair<PyObject*, PyObject*>> entries_;  // interned name, strong reference
  bool complete_ = false;                                 // every name was defined
  mutable unsigned long long checked_generation_ = 0;     // of the namespace, when last found holding
};

// Records the globals of every Natives and starts following changes of the module's
// namespace; called once, at the end of import.
void capture_natives();

// A number that changes whenever the module's namespace does; never 0.
unsigned long long globals_generation();

}  // namespace ostrel
