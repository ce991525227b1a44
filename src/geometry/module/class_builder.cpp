#include "module/class_builder.hpp"

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

ClassBuilder::ClassBuilder(const char* name, std::initializer_list<PyObject*> bases, const char* doc)
    : name_(name), bases_(tuple(bases)), namespace_(check(PyDict_New())) {
  Ref module_name = new_str("ostrel.geometry");
  put("__module__", module_name.get());
  Ref qualname = new_str(name);
  put("__qualname__", qualname.get());
  if (doc) {
    Ref text = new_str(doc);
    put("__doc__", text.get());
  }
}

void ClassBuilder::put(const char* name, PyObject* value) {
  check(PyDict_SetItemString(namespace_.get(), name, value));
}

Ref ClassBuilder::function(const char* name, std::string_view first, std::string_view signature, Body body,
                           const char* doc) {
  const std::string qualname = name_ + "." + name;
  return make_function(name, qualname.c_str(), first, signature, body, doc);
}

ClassBuilder& ClassBuilder::method(const char* name, std::string_view signature, Body body, const char* doc) {
  put(name, function(name, "self", signature, body, doc).get());
  return *this;
}

ClassBuilder& ClassBuilder::abstract_method(const char* name, std::string_view signature, Body body,
                                            const char* doc) {
  Ref f = function(name, "self", signature, body, doc);
  put(name, call(global<"abstractmethod">().get(), {f.get()}).get());
  return *this;
}

ClassBuilder& ClassBuilder::static_method(const char* name, std::string_view signature, Body body, const char* doc) {
  Ref f = function(name, "", signature, body, doc);
  put(name, check(PyStaticMethod_New(f.get())).get());
  return *this;
}

ClassBuilder& ClassBuilder::class_method(const char* name, std::string_view signature, Body body, const char* doc) {
  Ref f = function(name, "cls", signature, body, doc);
  put(name, check(PyClassMethod_New(f.get())).get());
  return *this;
}

ClassBuilder& ClassBuilder::property(const char* name, std::string_view signature, Body getter, const char* doc) {
  Ref f = function(name, "self", signature, getter, doc);
  put(name, call(reinterpret_cast<PyObject*>(&PyProperty_Type), {f.get()}).get());
  return *this;
}

ClassBuilder& ClassBuilder::property(const char* name, std::string_view signature, Body getter,
                                     std::string_view setter_signature, Body setter, const char* doc) {
  Ref get = function(name, "self", signature, getter, doc);
  Ref set = function(name, "self", setter_signature, setter, doc);
  put(name, call(reinterpret_cast<PyObject*>(&PyProperty_Type), {get.get(), set.get()}).get());
  return *this;
}

ClassBuilder& ClassBuilder::abstract_property(const char* name, std::string_view signature, Body getter,
                                              const char* doc) {
  Ref f = function(name, "self", signature, getter, doc);
  Ref abstract = call(global<"abstractmethod">().get(), {f.get()});
  put(name, call(reinterpret_cast<PyObject*>(&PyProperty_Type), {abstract.get()}).get());
  return *this;
}

ClassBuilder& ClassBuilder::attribute(const char* name, PyObject* value) {
  put(name, value);
  return *this;
}

Ref ClassBuilder::build() {
  // The most derived metaclass of the bases, as a class statement picks it.
  PyTypeObject* meta = &PyType_Type;
  for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(bases_.get()); ++i) {
    PyTypeObject* base_meta = Py_TYPE(PyTuple_GET_ITEM(bases_.get(), i));
    if (PyType_IsSubtype(base_meta, meta)) meta = base_meta;
  }
  Ref name = new_str(name_.c_str());
  Ref cls = call(reinterpret_cast<PyObject*>(meta), {name.get(), bases_.get(), namespace_.get()});
  set_global(name_.c_str(), cls.get());
  return cls;
}

Ref define_function(const char* name, std::string_view signature, Body body, const char* doc) {
  Ref f = make_function(name, name, "", signature, body, doc);
  set_global(name, f.get());
  return f;
}

}  // namespace ostrel
