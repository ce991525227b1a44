#include "module/pristine.hpp"

#include <string_view>

#include "module/globals.hpp"

namespace ostrel {

namespace {

struct Registry {
  std::vector<OwnGlobals*> globals;
  std::vector<OwnClass*> classes;
};

// Function-local, so that static objects of any source file can register themselves.
Registry& registry() {
  static Registry r;
  return r;
}

// The type's version tag, assigned now if it has none. The host gives a type a new tag
// after any change to it or to one of its bases, so an equal tag means "unchanged".
unsigned int tag_of(PyTypeObject* type) {
#if PY_VERSION_HEX >= 0x030C0000
  PyUnstable_Type_AssignVersionTag(type);
#else
  _PyType_Lookup(type, id<"__init__">());  // a cached lookup assigns the tag
#endif
#if PY_VERSION_HEX < 0x030C0000
  if (!PyType_HasFeature(type, Py_TPFLAGS_VALID_VERSION_TAG)) return 0;
#endif
  return type->tp_version_tag;
}

bool one_of(PyObject* key, std::initializer_list<std::string_view> names) {
  Py_ssize_t size = 0;
  const char* text = PyUnicode_Check(key) ? PyUnicode_AsUTF8AndSize(key, &size) : nullptr;
  if (!text) {
    PyErr_Clear();
    return false;
  }
  for (std::string_view name : names)
    if (name == std::string_view(text, static_cast<size_t>(size))) return true;
  return false;
}

// What the host adds to a class by itself after its creation: copyreg caches the slot
// names there at the first copy or pickle of an instance.
bool cache_entry(PyObject* key) { return one_of(key, {"__slotnames__"}); }

// Names a subclass may define without changing how its instances behave once made.
bool bookkeeping(PyObject* key) {
  return cache_entry(key) || one_of(key, {"__module__", "__qualname__", "__doc__", "__dict__", "__weakref__",
                                          "__init__", "__annotations__", "__firstlineno__",
                                          "__static_attributes__", "__orig_bases__"});
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

OwnGlobals::OwnGlobals(std::initializer_list<const char*> names) : names_(names) {
  registry().globals.push_back(this);
}

void OwnGlobals::capture(PyObject* dict) {
  complete_ = true;
  for (const char* name : names_) {
    PyObject* key = check(PyUnicode_InternFromString(name)).release();  // kept for the process
    PyObject* value = PyDict_GetItemWithError(dict, key);
    if (!value) {
      if (PyErr_Occurred()) throw PyError{};
      complete_ = false;
    }
    Py_XINCREF(value);
    entries_.emplace_back(key, value);
  }
}

bool OwnGlobals::hold() const {
  if (!complete_) return false;
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

OwnClass::OwnClass(const char* name) : name_(name) { registry().classes.push_back(this); }

void OwnClass::capture(PyObject* dict) {
  PyObject* cls = PyDict_GetItemString(dict, name_);
  if (!cls || !PyType_Check(cls)) return;
  cls_ = new_ref(cls);  // kept for the process, whatever happens to the global
  PyObject *key, *value;
  Py_ssize_t pos = 0;
  while (PyDict_Next(type()->tp_dict, &pos, &key, &value))
    namespace_.emplace_back(Ref::borrow(key), Ref::borrow(value));
  class_tag_ = tag_of(type());
}

bool OwnClass::current(PyTypeObject* type, unsigned int tag) {
#if PY_VERSION_HEX < 0x030C0000
  if (!PyType_HasFeature(type, Py_TPFLAGS_VALID_VERSION_TAG)) return false;
#endif
  return tag != 0 && type->tp_version_tag == tag;
}

// The class's own namespace holds what it held at capture, and nothing more but the
// host's own cache entries. A change that was undone (a patch taken back) counts as no
// change.
bool OwnClass::unchanged() {
  if (!cls_) return false;
  if (current(type(), class_tag_)) return true;
  PyObject* dict = type()->tp_dict;
  for (const auto& [key, value] : namespace_)
    if (PyDict_GetItemWithError(dict, key.get()) != value.get()) {
      PyErr_Clear();
      return false;
    }
  Py_ssize_t extra = PyDict_Size(dict) - static_cast<Py_ssize_t>(namespace_.size());
  PyObject *key, *value;
  Py_ssize_t pos = 0;
  while (extra > 0 && PyDict_Next(dict, &pos, &key, &value))
    if (cache_entry(key)) --extra;
  if (extra != 0) return false;
  class_tag_ = tag_of(type());
  return true;
}

bool OwnClass::verify(PyTypeObject* type) {
  if (!unchanged()) return false;
  if (type == this->type()) return true;
  if (!adds_nothing(type)) {
    rejected_ = type;
    rejected_tag_ = tag_of(type);
    return false;
  }
  subclass_ = type;
  subclass_tag_ = tag_of(type);
  return true;
}

// Same metaclass, the class's own bases after it, and nothing but bookkeeping in the
// namespaces in front of it.
bool OwnClass::adds_nothing(PyTypeObject* type) const {
  if (Py_TYPE(type) != Py_TYPE(cls_)) return false;
  PyObject* mro = type->tp_mro;
  PyObject* own_mro = this->type()->tp_mro;
  if (!mro || !own_mro) return false;
  const Py_ssize_t n = PyTuple_GET_SIZE(mro), m = PyTuple_GET_SIZE(own_mro);
  if (n <= m) return false;
  for (Py_ssize_t i = 0; i < m; ++i)
    if (PyTuple_GET_ITEM(mro, n - m + i) != PyTuple_GET_ITEM(own_mro, i)) return false;
  for (Py_ssize_t i = 0; i < n - m; ++i) {
    PyObject* base = PyTuple_GET_ITEM(mro, i);
    if (!PyType_Check(base)) return false;
    PyObject *key, *value;
    Py_ssize_t pos = 0;
    while (PyDict_Next(reinterpret_cast<PyTypeObject*>(base)->tp_dict, &pos, &key, &value))
      if (!bookkeeping(key)) return false;
  }
  return true;
}

void capture_own_state() {
  PyObject* dict = module_dict();
#if PY_VERSION_HEX >= 0x030C0000
  const int watcher = check(PyDict_AddWatcher(count_change));
  check(PyDict_Watch(watcher, dict));
#endif
  for (OwnGlobals* g : registry().globals) g->capture(dict);
  for (OwnClass* c : registry().classes) c->capture(dict);
}

}  // namespace ostrel
