// Fast paths for instances of the module's own classes. A guard remembers a class, the
// contents of its namespace and of its bases', and its version tag; the interpreter
// gives a class a new tag whenever it or a base changes (a patched method, a new
// property, a __setattr__). While the class is as the module built it, its instances
// keep their fields as instance attributes and its methods are the module's own, so the
// fast paths read and write those directly; for subclasses and changed classes they
// step aside for the generic protocol. A class patched and restored again (as a test's
// monkeypatch does) is recognised as intact once more.
#pragma once

#include <initializer_list>
#include <utility>

#include "module/objects.hpp"

namespace ostrel {

// Declared as a static object beside the class's face and handed to define_class, which
// sets it to the class it builds.
class ClassGuard {
 public:
  // Called once, right after the class is built.
  void set(PyObject* cls);
  // The class as built. A modified class loses its tag (0 is never valid) and gets a
  // fresh one at its next lookup; only then are the namespaces compared again.
  bool intact() const { return (tag_ != 0 && type_->tp_version_tag == tag_ && tag_valid()) || revalidate(); }
  // `o` is an instance of exactly that class, and the class is intact.
  bool admits(PyObject* o) const { return Py_TYPE(o) == type_ && intact(); }
  PyObject* cls() const { return reinterpret_cast<PyObject*>(type_); }

 private:
  bool revalidate() const;
  // Before 3.12 a modified class keeps its old tag, with this flag cleared, until its
  // next lookup.
  bool tag_valid() const {
#if PY_VERSION_HEX < 0x030C0000
    return PyType_HasFeature(type_, Py_TPFLAGS_VALID_VERSION_TAG);
#else
    return true;
#endif
  }

  PyTypeObject* type_ = nullptr;
  mutable unsigned int tag_ = 0;
  mutable unsigned int rejected_tag_ = 0;  // a tag already found to mean a changed class
  // Held for the life of the process (guards are static, and must not release
  // references after the interpreter has gone).
  PyObject* mro_ = nullptr;         // the method resolution order as built
  PyObject* namespaces_ = nullptr;  // a copy of the namespace of each class of mro_ that has one
};

// Holds the cycle collector off for its lifetime (the host's gc.disable() and enable()).
class CollectorPause {
 public:
  CollectorPause() {
#if PY_VERSION_HEX >= 0x030A0000
    was_enabled_ = PyGC_Disable();
#endif
  }
  ~CollectorPause() {
#if PY_VERSION_HEX >= 0x030A0000
    if (was_enabled_) PyGC_Enable();
#endif
  }
  CollectorPause(const CollectorPause&) = delete;
  CollectorPause& operator=(const CollectorPause&) = delete;

 private:
  int was_enabled_ = 0;
};

// The instance dict of `o` (borrowed), made where it has none yet; NULL where `o` has
// no __dict__ or the dict could not be made (an exception may be set).
PyObject* instance_dict(PyObject* o);

// Reads the float fields `names` of `o` into `out` when `guard` admits `o` and every
// one of them holds an exact float; false otherwise, with no exception set: the
// documented steps then read them and raise in their own order. Reading a field can
// run a caller's code (an instance-dict key's __eq__): hold what you read around it.
bool read_floats(const ClassGuard& guard, PyObject* o, std::initializer_list<PyObject*> names, double* out);

// A new instance of the guarded class holding `fields`, made as object.__new__ makes
// it and filled as its own __init__ would fill it. Only for an intact class.
Ref new_instance(const ClassGuard& guard, std::initializer_list<std::pair<PyObject*, PyObject*>> fields);

// Stores `fields` as instance attributes of `o`, whose class a guard admits (so no
// __setattr__ or descriptor of its own stands in the way).
void store_fields(PyObject* o, std::initializer_list<std::pair<PyObject*, PyObject*>> fields);

}  // namespace ostrel
