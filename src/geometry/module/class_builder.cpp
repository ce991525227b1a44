#include "module/class_builder.hpp"

#include <string>

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

Ref wrapped(PyObject* wrapper, PyObject* f) { return call(wrapper, {f}); }

// The namespace entry of one member.
Ref entry(const std::string& class_name, const Member& m) {
  const std::string qualname = class_name + "." + m.name;
  auto make = [&](const char* first, const char* signature, Body body) {
    return make_function(m.name, qualname.c_str(), first, signature, body, m.doc);
  };
  PyObject* property_type = reinterpret_cast<PyObject*>(&PyProperty_Type);
  switch (m.kind) {
    case Member::Kind::function:
    case Member::Kind::method:
      return make("self", m.signature, m.body);
    case Member::Kind::static_method:
      return check(PyStaticMethod_New(make("", m.signature, m.body).get()));
    case Member::Kind::class_method:
      return check(PyClassMethod_New(make("cls", m.signature, m.body).get()));
    case Member::Kind::abstract_method:
      return wrapped(global<"abstractmethod">().get(), make("self", m.signature, m.body).get());
    case Member::Kind::property: {
      Ref getter = make("self", m.signature, m.body);
      if (!m.setter) return wrapped(property_type, getter.get());
      Ref setter = make("self", m.setter_signature, m.setter);
      return call(property_type, {getter.get(), setter.get()});
    }
    case Member::Kind::abstract_property: {
      Ref abstract = wrapped(global<"abstractmethod">().get(), make("self", m.signature, m.body).get());
      return wrapped(property_type, abstract.get());
    }
  }
  raise(PyExc_SystemError, "unknown kind of member");
}

}  // namespace

Ref define_class(const char* name, std::initializer_list<PyObject*> bases, const char* doc,
                 std::initializer_list<Member> members, ClassGuard* guard) {
  return define_class(name, bases, doc, {}, members, guard);
}

Ref define_class(const char* name, std::initializer_list<PyObject*> bases, const char* doc,
                 std::initializer_list<ClassValue> values, std::initializer_list<Member> members, ClassGuard* guard) {
  Ref namespace_ = check(PyDict_New());
  Ref module_name = new_str("ostrel.geometry"), qualname = new_str(name);
  check(PyDict_SetItemString(namespace_.get(), "__module__", module_name.get()));
  check(PyDict_SetItemString(namespace_.get(), "__qualname__", qualname.get()));
  if (doc) {
    Ref text = new_str(doc);
    check(PyDict_SetItemString(namespace_.get(), "__doc__", text.get()));
  }
  for (const ClassValue& v : values) check(PyDict_SetItemString(namespace_.get(), v.name, v.value));
  for (const Member& m : members) {
    Ref value = entry(name, m);
    check(PyDict_SetItemString(namespace_.get(), m.name, value.get()));
  }
  // The most derived metaclass of the bases, as a class statement picks it.
  Ref base_tuple = tuple(bases);
  PyTypeObject* meta = &PyType_Type;
  for (PyObject* base : bases)
    if (PyType_IsSubtype(Py_TYPE(base), meta)) meta = Py_TYPE(base);
  Ref class_name = new_str(name);
  Ref cls = call(reinterpret_cast<PyObject*>(meta), {class_name.get(), base_tuple.get(), namespace_.get()});
  set_global(name, cls.get());
  if (guard) guard->set(cls.get());
  return cls;
}

Ref define_function(const Member& m) {
  Ref f = make_function(m.name, m.name, "", m.signature, m.body, m.doc);
  set_global(m.name, f.get());
  return f;
}

}  // namespace ostrel
