// Native paths stand in for documented steps that call through module globals and
// through the members of the module's classes. They may be taken only while nothing a
// caller could observe has been replaced: the globals still hold what they held at the
// end of import, and the classes (or subclasses that add no behaviour) are as the
// module defined them. Everything else goes through the host, step by step.
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
  friend void capture_own_state();
  void capture(PyObject* dict);

  std::vector<const char*> names_;
  std::vector<std::pair<PyObject*, PyObject*>> entries_;  // interned name, strong reference
  bool complete_ = false;                                  // every name was defined
  mutable unsigned long long checked_generation_ = 0;      // of the module dict, when last found holding
};

// A class of the module, by its global name, as it stood at the end of import.
class OwnClass {
 public:
  explicit OwnClass(const char* name);

  // The class as defined, null before capture.
  PyObject* get() const { return cls_; }
  PyTypeObject* type() const { return reinterpret_cast<PyTypeObject*>(cls_); }

  // Whether instances of `type` behave as instances of the class did at the end of
  // import: `type` is the class, unchanged, or a subclass with the same metaclass and
  // bases after it whose own namespaces add nothing but an __init__ and bookkeeping.
  bool admits(PyTypeObject* t) {
    if (t == type() && current(t, class_tag_)) return true;
    if (t == subclass_ && current(t, subclass_tag_)) return true;
    if (t == rejected_ && current(t, rejected_tag_) && current(type(), class_tag_)) return false;
    return verify(t);
  }
  bool admits(PyObject* instance) { return admits(Py_TYPE(instance)); }

 private:
  friend void capture_own_state();
  void capture(PyObject* dict);
  bool verify(PyTypeObject* type);
  bool unchanged();
  bool adds_nothing(PyTypeObject* type) const;
  static bool current(PyTypeObject* type, unsigned int tag);

  const char* name_;
  PyObject* cls_ = nullptr;
  std::vector<std::pair<Ref, Ref>> namespace_;  // the class's own dict at capture
  unsigned int class_tag_ = 0;
  PyTypeObject* subclass_ = nullptr;  // the last subclass found to add nothing
  unsigned int subclass_tag_ = 0;
  PyTypeObject* rejected_ = nullptr;  // the last subclass found to add something
  unsigned int rejected_tag_ = 0;
};

// Records the globals and classes declared above and starts following changes of the
// module's namespace; called once, at the end of import.
void capture_own_state();

// A number that changes whenever the module's namespace does; never 0.
unsigned long long globals_generation();

}  // namespace ostrel
