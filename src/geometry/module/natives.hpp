// When a native path may run. A native path stands in for documented steps that look up
// module globals by name and call members of the module's classes; it may run only while
// the module's namespace holds every name as import left it and those classes are as the
// module built them. A caller who replaces one (a patched function, class, module or
// member) sends the call down the documented steps, which then meet the replacement.
//
// The globals are not listed per path: any name replaced sends every native path down
// the steps, so no list can miss a name the steps look up. The classes are listed, as
// the members the steps call; a test patches each member of each class in turn and
// checks that the native path steps aside wherever the steps call it.
#pragma once

#include <initializer_list>
#include <vector>

#include "module/instance.hpp"

namespace ostrel {

// Records the module's namespace as import left it and folds the sets; called once, at
// the end of import.
void capture_natives();

// What follows the module's namespace: the dict, a number that changes whenever it
// does, and the outcome of its last comparison with what import left there.
namespace natives_state {
inline PyObject* dict = nullptr;
#if PY_VERSION_HEX >= 0x030C0000
inline unsigned long long generation = 1;  // counted by a dict watcher
#endif
inline unsigned long long compared = 0;
inline bool same = false;
bool compare_with_imported();
}  // namespace natives_state

// A number that changes whenever the module's namespace does; never 0.
inline unsigned long long globals_generation() {
#if PY_VERSION_HEX >= 0x030C0000
  return natives_state::generation;
#else
  // The host gives a dict a new, process-wide unique tag on every change.
  return reinterpret_cast<PyDictObject*>(natives_state::dict)->ma_version_tag + 1;
#endif
}

// Whether the module's namespace holds every name as import left it, the tolerances
// aside: the native paths read those themselves. Compared again only when the namespace
// has changed since the last comparison.
inline bool globals_as_imported() {
  if (globals_generation() == natives_state::compared) return natives_state::same;
  return natives_state::compare_with_imported();
}

// Declared as a static object beside the native path it guards. A set can include other
// sets, so that a path that stands in for another's steps names only what it adds; they
// are folded into one list at the end of import.
class Natives {
 public:
  // `classes`: classes that must be intact.
  Natives(std::initializer_list<const ClassGuard*> classes = {}, std::initializer_list<const Natives*> includes = {});
  // Whether the native path may run now. Inline: it stands before every native path.
  bool hold() const {
    if (!complete_ || !globals_as_imported()) return false;
    for (const ClassGuard* guard : all_classes_)
      if (!guard->intact()) return false;
    return true;
  }

 private:
  friend void capture_natives();
  void capture();
  void collect(std::vector<const ClassGuard*>& classes) const;

  std::vector<const ClassGuard*> classes_;
  std::vector<const Natives*> includes_;
  std::vector<const ClassGuard*> all_classes_;  // classes_ and those of the included sets
  bool complete_ = false;                       // every class was built
};

}  // namespace ostrel
