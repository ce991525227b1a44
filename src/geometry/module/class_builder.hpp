// Classes are made as the interpreter makes them from a class statement: a namespace
// of functions, wrapped in property, staticmethod, classmethod or abstractmethod where
// the documented class has them, handed to the metaclass with the bases. Instances are
// then ordinary objects with a __dict__, and ABCMeta, subclassing, deepcopy, pickling
// and unhashability without __hash__ come from the interpreter.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "module/function.hpp"

namespace ostrel {

class ClassBuilder {
 public:
  ClassBuilder(const char* name, std::initializer_list<PyObject*> bases, const char* doc);

  ClassBuilder& method(const char* name, std::string_view signature, Body body, const char* doc);
  ClassBuilder& abstract_method(const char* name, std::string_view signature, Body body, const char* doc);
  ClassBuilder& static_method(const char* name, std::string_view signature, Body body, const char* doc);
  ClassBuilder& class_method(const char* name, std::string_view signature, Body body, const char* doc);
  // A read-only property; `signature` is that of the getter, such as "() -> float".
  ClassBuilder& property(const char* name, std::string_view signature, Body getter, const char* doc);
  ClassBuilder& property(const char* name, std::string_view signature, Body getter, std::string_view setter_signature,
                         Body setter, const char* doc);
  ClassBuilder& abstract_property(const char* name, std::string_view signature, Body getter, const char* doc);
  // Class-level data.
  ClassBuilder& attribute(const char* name, PyObject* value);

  // Calls the metaclass, stores the class as a module global and returns it.
  Ref build();

 private:
  Ref function(const char* name, std::string_view first, std::string_view signature, Body body, const char* doc);
  void put(const char* name, PyObject* value);

  std::string name_;
  Ref bases_;
  Ref namespace_;
};

// A module-level function, stored as a module global.
Ref define_function(const char* name, std::string_view signature, Body body, const char* doc);

}  // namespace ostrel
