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

namespace {

// Every name of the namespace at the end of import and the object it held, both held
// for the life of the process.
std::vector<std::pair<PyObject*, PyObject*>>& imported() {
  static std::vector<std::pair<PyObject*, PyObject*>> entries;
  return entries;
}

}  // namespace

bool globals_as_imported() {
  // Compared again only when the namespace has changed since the last comparison.
  static unsigned long long compared = 0;
  static bool same = false;
  const unsigned long long now = globals_generation();
  if (now == compared) return same;
  PyObject* dict = module_dict();
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

bool Natives::hold() const {
  if (!complete_ || !globals_as_imported()) return false;
  for (const ClassGuard* guard : all_classes_)
    if (!guard->intact()) return false;
  return true;
}

void capture_natives() {
  PyObject* dict = module_dict();
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
