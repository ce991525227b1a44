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
int count_change(PyDict_WatchEvent, PyObject*, PyObject*, PyObject*) {
  ++natives_state::generation;
  return 0;
}
#endif

// Every name of the namespace at the end of import and the object it held, both held
// for the life of the process.
std::vector<std::pair<PyObject*, PyObject*>>& imported() {
  static std::vector<std::pair<PyObject*, PyObject*>> entries;
  return entries;
}

}  // namespace

namespace natives_state {

bool compare_with_imported() {
  const unsigned long long now = globals_generation();
  same = true;
  for (const auto& [key, value] : imported()) {
    // A str key: the lookup cannot run a caller's code or fail.
    if (PyDict_GetItem(dict, key) != value) {
      same = false;
      break;
    }
  }
  compared = now;
  return same;
}

}  // namespace natives_state

Natives::Natives(std::initializer_list<const ClassGuard*> classes, std::initializer_list<const Natives*> includes)
    : classes_(classes), includes_(includes) {
  registry().push_back(this);
}

void Natives::collect(std::vector<const ClassGuard*>& classes) const {
  for (const Natives* included : includes_) included->collect(classes);
  for (const ClassGuard* guard : classes_)
    if (std::find(classes.begin(), classes.end(), guard) == classes.end()) classes.push_back(guard);
}

void Natives::capture() {
  collect(all_classes_);
  complete_ = std::all_of(all_classes_.begin(), all_classes_.end(), [](const ClassGuard* g) { return g->cls(); });
}

void capture_natives() {
  PyObject* dict = natives_state::dict = module_dict();
#if PY_VERSION_HEX >= 0x030C0000
  const int watcher = static_cast<int>(check(PyDict_AddWatcher(count_change)));
  check(PyDict_Watch(watcher, dict));
#endif
  Py_ssize_t position = 0;
  PyObject *key, *value;
  while (PyDict_Next(dict, &position, &key, &value)) {
    // The tolerances are values the native paths read at each call, as the steps do.
    if (PyUnicode_CompareWithASCIIString(key, "ISCLOSE_ATOL") == 0 ||
        PyUnicode_CompareWithASCIIString(key, "ISCLOSE_RTOL") == 0)
      continue;
    imported().emplace_back(new_ref(key), new_ref(value));
  }
  for (Natives* n : registry()) n->capture();
}

}  // namespace ostrel
