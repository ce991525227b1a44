// Classes are made as the interpreter makes them from a class statement: a namespace
// of functions, wrapped in property, staticmethod, classmethod or abstractmethod where
// the documented class has them, handed to the metaclass with the bases. Instances are
// then ordinary objects with a __dict__, and ABCMeta, subclassing, deepcopy, pickling
// and unhashability without __hash__ come from the interpreter.
//
// Each member is defined beside its body, as a Member constant:
//
//   enum class VectorTo { self, point };
//   Ref vector_to(const Args& a) { ... a[VectorTo::point] ... }
//   constexpr Member vector_to_member = method("vector_to", "(point: Point-like) -> Vector", vector_to,
//                                              "The Vector from this point to another point.");
//
// and a class is the list of its members, in the order of the class body.
#pragma once

#include <initializer_list>

#include "module/function.hpp"
#include "module/instance.hpp"

namespace ostrel {

struct Member {
  enum class Kind { function, method, static_method, class_method, abstract_method, property, abstract_property };
  Kind kind;
  const char* name;
  const char* signature;  // as documented, without self or cls; a property's getter is "() -> T"
  Body body;
  const char* doc;
  const char* setter_signature = nullptr;  // a property with a setter
  Body setter = nullptr;
};

constexpr Member function(const char* name, const char* signature, Body body, const char* doc) {
  return {Member::Kind::function, name, signature, body, doc};
}
constexpr Member method(const char* name, const char* signature, Body body, const char* doc) {
  return {Member::Kind::method, name, signature, body, doc};
}
constexpr Member static_method(const char* name, const char* signature, Body body, const char* doc) {
  return {Member::Kind::static_method, name, signature, body, doc};
}
constexpr Member class_method(const char* name, const char* signature, Body body, const char* doc) {
  return {Member::Kind::class_method, name, signature, body, doc};
}
constexpr Member abstract_method(const char* name, const char* signature, Body body, const char* doc) {
  return {Member::Kind::abstract_method, name, signature, body, doc};
}
constexpr Member property(const char* name, const char* signature, Body getter, const char* doc) {
  return {Member::Kind::property, name, signature, getter, doc};
}
constexpr Member property(const char* name, const char* signature, Body getter, const char* setter_signature,
                          Body setter, const char* doc) {
  return {Member::Kind::property, name, signature, getter, doc, setter_signature, setter};
}
constexpr Member abstract_property(const char* name, const char* signature, Body getter, const char* doc) {
  return {Member::Kind::abstract_property, name, signature, getter, doc};
}

// A data attribute of a class body, such as `X0 = 155000`; `value` is borrowed.
struct ClassValue {
  const char* name;
  PyObject* value;
};

// Calls the metaclass with the bases and a namespace of the members, stores the class
// as a module global, sets `guard` to it where one is given, and returns it.
Ref define_class(const char* name, std::initializer_list<PyObject*> bases, const char* doc,
                 std::initializer_list<Member> members, ClassGuard* guard = nullptr);

// The same for a class body that starts with data attributes, in their order.
Ref define_class(const char* name, std::initializer_list<PyObject*> bases, const char* doc,
                 std::initializer_list<ClassValue> values, std::initializer_list<Member> members,
                 ClassGuard* guard = nullptr);

// A module-level function, stored as a module global.
Ref define_function(const Member& member);

}  // namespace ostrel
