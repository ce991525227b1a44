#include "module/natives.hpp"

#include <algorithm>

#include "module/globals.hpp"

namespace ostrel {

namespace {

// Function-local, so that static objects of any source file can register themselves.
std::vector<Natives*>& registry() {
  static std::vector<Natives*> r;
  return r;
}

#if PY_VERSION_HEX >= 0x030C0000
unsigned long long generation = 1;

int count_change(PyDict_WatchEvent, PyObject*, PyObject*, PyObject*) {
  ++generation;
  return 0;
}
#endif

}  // namespace

unsigned long long globals_generation() {
#if PY_VERSION_HEX >= 0x030C0000
  return generation;
#else
  // The host gives a dict a new, process-wide unique tag on every change.
  return reinterpret_cast<PyDictObject*>(module_dict())->ma_version_tag + 1;
#endif
}

Natives::Natives(std::initializer_list<const char*> globals, std::initializer_list<const ClassGuard*> classes,
                 std::initializer_list<const Natives*> includes)
    : names_(globals), classes_(classes), includes_(includes) {
  registry().push_back(this);
}

void Natives::collect(std::vector<const char*>& names, std::vector<const ClassGuard*>& classes) const {
  for (const Natives* included : includes_) included->collect(names, classes);
  for (const char* name : names_)
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  for (const ClassGuard* guard : classes_)
    if (std::find(classes.begin(), classes.end(), guard) == classes.end()) classes.push_back(guard);
}

void Natives::capture(PyObject* dict) {
  // The included sets are folded in, so that hold() walks one flat list.
  std::vector<const char*> names;
  collect(names, all_classes_);
  complete_ = true;
  // A class's own name must hold the class as built.
  for (const ClassGuard* guard : all_classes_) {
    names.push_back(guard->name());
    if (!guard->cls()) complete_ = false;
  }
  for (const char* name : names) {
    // Both references are kept for the life of the process.
    PyObject* key = check(PyUnicode_InternFromString(name)).release();
    PyObject* value = PyDict_GetItemWithError(dict, key);
    if (!value) {
      if (PyErr_Occurred()) throw PyError{};
      complete_ = false;
    }
    Py_XINCREF(value);
    entries_.emplace_back(key, value);
  }
}

bool Natives::hold() const {
  if (!complete_) return false;
  for (const ClassGuard* guard : all_classes_)
    if (!guard->intact()) return false;
  const unsigned long long now = globals_generation();
  if (now == checked_generation_) return true;
  PyObject* dict = module_dict();
  for (const auto& [key, value] : entries_) {
    // An interned str key: the lookup cannot fail.
    if (PyDict_GetItemWithError(dict, key) != value) return false;
  }
  checked_generation_ = now;
  return true;
}

void capture_natives() {
  PyObject* dict = module_dict();
#if PY_VERSION_HEX >= 0x030C0000
  const int watcher = static_cast<int>(check(PyDict_AddWatcher(count_change)));
  check(PyDict_Watch(watcher, dict));
#endif
  for (Natives* n : registry()) n->capture(dict);
}

}  // namespace ostrel
