#include "module/instance.hpp"

namespace ostrel {

namespace {

PyObject* instance_dict(PyObject* o) {
  PyObject** slot = _PyObject_GetDictPtr(o);
  if (!slot) raise(PyExc_SystemError, "instance has no __dict__");
  if (!*slot) *slot = check(PyDict_New()).release();
  return *slot;
}

}  // namespace

void ClassGuard::set(PyObject* cls) {
  type_ = reinterpret_cast<PyTypeObject*>(cls);
  // A lookup through the type gives it a version tag if it has none yet.
  Ref init = getattr(cls, id<"__init__">());
  tag_ = (type_->tp_flags & Py_TPFLAGS_VALID_VERSION_TAG) ? type_->tp_version_tag : 0;
}

Ref field(const ClassGuard& guard, PyObject* o, PyObject* name) {
  if (guard.admits(o)) {
    PyObject* value = PyDict_GetItemWithError(instance_dict(o), name);
    if (value) return Ref::borrow(value);
    if (PyErr_Occurred()) throw PyError{};
  }
  return getattr(o, name);
}

bool read_floats(const ClassGuard& guard, PyObject* o, std::initializer_list<PyObject*> names, double* out) {
  if (!guard.admits(o)) return false;
  PyObject* dict = instance_dict(o);
  Py_ssize_t position = 0;
  size_t i = 0;
  for (PyObject* name : names) {
    PyObject *key, *value;
    if (!PyDict_Next(dict, &position, &key, &value) || key != name) {
      value = PyDict_GetItemWithError(dict, name);
      if (!value) {
        if (PyErr_Occurred()) throw PyError{};
        return false;
      }
    }
    if (!PyFloat_CheckExact(value)) return false;
    out[i++] = PyFloat_AS_DOUBLE(value);
  }
  return true;
}

// The generic store keeps the interpreter's compact instance values; the dict is made
// only when a fast read first needs it.
void store_fields(PyObject* o, std::initializer_list<std::pair<PyObject*, PyObject*>> fields) {
  for (auto [name, value] : fields) check(PyObject_GenericSetAttr(o, name, value));
}

Ref new_instance(const ClassGuard& guard, std::initializer_list<std::pair<PyObject*, PyObject*>> fields) {
  static PyObject* const no_arguments = PyTuple_New(0);
  PyTypeObject* type = reinterpret_cast<PyTypeObject*>(guard.cls());
  Ref o = check(PyBaseObject_Type.tp_new(type, no_arguments, nullptr));
  store_fields(o.get(), fields);
  return o;
}

}  // namespace ostrel
