#include "module/function.hpp"

#include <structmember.h>

#include <cstddef>
#include <memory>

#include "module/boundary.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "module/recursion.hpp"

namespace ostrel {

namespace {

struct Function {
  PyObject_HEAD
  vectorcallfunc vectorcall;
  PyObject* dict;
  PyObject* weakrefs;
  PyObject* name;
  PyObject* qualname;
  PyObject* module;
  PyObject* doc;
  PyObject* annotations;
  Signature* signature;
  Body body;
};

PyTypeObject function_type = {PyVarObject_HEAD_INIT(nullptr, 0)};

Function* as_function(PyObject* o) { return reinterpret_cast<Function*>(o); }

PyObject* function_vectorcall(PyObject* callable, PyObject* const* args, size_t nargsf, PyObject* kwnames) {
  Function* f = as_function(callable);
  return enter([&] {
    // A native function is a frame of its own, as a Python function is: calls that
    // reach it again count against the recursion limit.
    RecursionLevel level;
    Args parsed;
    parse_arguments(*f->signature, f->name, args, PyVectorcall_NARGS(nargsf), kwnames, parsed);
    Ref result = f->body(parsed);
    if (result && f->signature->returns_str && result.get() != Py_None && !PyUnicode_CheckExact(result.get()))
      raise_format(PyExc_TypeError, "Expected %.16s, got %.200s", "unicode", Py_TYPE(result.get())->tp_name);
    return result;
  });
}

// Bound to an instance it becomes a method, as a Python function does.
PyObject* function_get(PyObject* self, PyObject* obj, PyObject*) {
  if (obj == nullptr || obj == Py_None) return new_ref(self);
  return PyMethod_New(self, obj);
}

int function_traverse(PyObject* self, visitproc visit, void* arg) {
  Function* f = as_function(self);
  Py_VISIT(f->dict);
  Py_VISIT(f->doc);
  Py_VISIT(f->annotations);
  return 0;
}

int function_clear(PyObject* self) {
  Function* f = as_function(self);
  Py_CLEAR(f->dict);
  Py_CLEAR(f->doc);
  Py_CLEAR(f->annotations);
  return 0;
}

void function_dealloc(PyObject* self) {
  Function* f = as_function(self);
  PyObject_GC_UnTrack(self);
  if (f->weakrefs) PyObject_ClearWeakRefs(self);
  function_clear(self);
  Py_CLEAR(f->name);
  Py_CLEAR(f->qualname);
  Py_CLEAR(f->module);
  delete f->signature;
  PyObject_GC_Del(self);
}

PyObject* function_repr(PyObject* self) {
  return PyUnicode_FromFormat("<function %U at %p>", as_function(self)->qualname, self);
}

PyObject* get_defaults(PyObject* self, void*) {
  return enter([&] {
    const Signature& sig = *as_function(self)->signature;
    Ref values = check(PyList_New(0));
    for (Py_ssize_t i = 0; i < sig.positional; ++i)
      if (sig.params[i].default_value) check(PyList_Append(values.get(), sig.params[i].default_value.get()));
    if (PyList_GET_SIZE(values.get()) == 0) return none();
    return check(PyList_AsTuple(values.get()));
  });
}

PyObject* get_kwdefaults(PyObject* self, void*) {
  return enter([&] {
    const Signature& sig = *as_function(self)->signature;
    Ref values = check(PyDict_New());
    for (const Parameter& p : sig.params)
      if (p.kind == ParamKind::keyword_only && p.default_value)
        check(PyDict_SetItem(values.get(), p.name_object.get(), p.default_value.get()));
    if (PyDict_GET_SIZE(values.get()) == 0) return none();
    return values;
  });
}

// inspect.signature reads this before anything else.
PyObject* get_signature(PyObject* self, void*) {
  return enter([&] {
    const Signature& sig = *as_function(self)->signature;
    Ref inspect = check(PyImport_ImportModule("inspect"));
    Ref parameter_class = getattr(inspect.get(), id<"Parameter">());
    Ref empty = getattr(parameter_class.get(), id<"empty">());
    static const char* const kind_names[] = {"POSITIONAL_OR_KEYWORD", "VAR_POSITIONAL", "KEYWORD_ONLY", "VAR_KEYWORD"};
    Ref parameters = check(PyList_New(0));
    Ref kwnames = tuple({id<"kind">(), id<"default">(), id<"annotation">()});
    for (const Parameter& p : sig.params) {
      Ref kind = check(PyObject_GetAttrString(parameter_class.get(), kind_names[static_cast<int>(p.kind)]));
      Ref annotation = p.annotation.empty() ? empty : new_str(p.annotation.c_str());
      PyObject* default_value = p.default_value ? p.default_value.get() : empty.get();
      Ref parameter = call(parameter_class.get(),
                           {p.name_object.get(), kind.get(), default_value, annotation.get()}, kwnames.get());
      check(PyList_Append(parameters.get(), parameter.get()));
    }
    Ref signature_class = getattr(inspect.get(), id<"Signature">());
    Ref returns = sig.return_annotation.empty() ? empty : new_str(sig.return_annotation.c_str());
    Ref return_kw = tuple({id<"return_annotation">()});
    return call(signature_class.get(), {parameters.get(), returns.get()}, return_kw.get());
  });
}

PyObject* get_annotations(PyObject* self, void*) { return new_ref(as_function(self)->annotations); }

PyGetSetDef function_getset[] = {
    {"__dict__", PyObject_GenericGetDict, PyObject_GenericSetDict, nullptr, nullptr},
    {"__defaults__", get_defaults, nullptr, nullptr, nullptr},
    {"__kwdefaults__", get_kwdefaults, nullptr, nullptr, nullptr},
    {"__signature__", get_signature, nullptr, nullptr, nullptr},
    {"__annotations__", get_annotations, nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMemberDef function_members[] = {
    {"__name__", T_OBJECT, offsetof(Function, name), READONLY, nullptr},
    {"__qualname__", T_OBJECT, offsetof(Function, qualname), READONLY, nullptr},
    {"__module__", T_OBJECT, offsetof(Function, module), 0, nullptr},
    {"__doc__", T_OBJECT, offsetof(Function, doc), 0, nullptr},
    {nullptr, 0, 0, 0, nullptr},
};

Ref annotations_of(const Signature& sig) {
  Ref annotations = check(PyDict_New());
  for (const Parameter& p : sig.params) {
    if (p.annotation.empty()) continue;
    Ref text = new_str(p.annotation.c_str());
    check(PyDict_SetItem(annotations.get(), p.name_object.get(), text.get()));
  }
  if (!sig.return_annotation.empty()) {
    Ref text = new_str(sig.return_annotation.c_str());
    check(PyDict_SetItemString(annotations.get(), "return", text.get()));
  }
  return annotations;
}

}  // namespace

void ready_function_type() {
  PyTypeObject& t = function_type;
  t.tp_name = "ostrel.geometry.function";
  t.tp_basicsize = sizeof(Function);
  t.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC | Py_TPFLAGS_HAVE_VECTORCALL | Py_TPFLAGS_METHOD_DESCRIPTOR;
  t.tp_doc = "A function of ostrel.geometry, implemented natively.";
  t.tp_vectorcall_offset = offsetof(Function, vectorcall);
  t.tp_call = PyVectorcall_Call;
  t.tp_descr_get = function_get;
  t.tp_dictoffset = offsetof(Function, dict);
  t.tp_weaklistoffset = offsetof(Function, weakrefs);
  t.tp_traverse = function_traverse;
  t.tp_clear = function_clear;
  t.tp_dealloc = function_dealloc;
  t.tp_repr = function_repr;
  t.tp_getset = function_getset;
  t.tp_members = function_members;
  check(PyType_Ready(&t));
}

Ref make_function(const char* name, const char* qualname, std::string_view first, std::string_view signature,
                  Body body, const char* doc) {
  auto sig = std::make_unique<Signature>(parse_signature(first, signature));
  if (sig->params.size() > max_parameters) raise(PyExc_SystemError, "too many parameters");
  Ref annotations = annotations_of(*sig);
  Ref name_object = check(PyUnicode_InternFromString(name));
  Ref qualname_object = new_str(qualname);
  Ref doc_object = doc ? new_str(doc) : none();

  Function* f = PyObject_GC_New(Function, &function_type);
  if (!f) throw PyError{};
  f->vectorcall = function_vectorcall;
  f->dict = nullptr;
  f->weakrefs = nullptr;
  f->name = name_object.release();
  f->qualname = qualname_object.release();
  f->module = new_str("ostrel.geometry").release();
  f->doc = doc_object.release();
  f->annotations = annotations.release();
  f->signature = sig.release();
  f->body = body;
  PyObject_GC_Track(f);
  return Ref::steal(reinterpret_cast<PyObject*>(f));
}

}  // namespace ostrel
