#include "module/instance.hpp"

namespace ostrel {

namespace {

// The entries of a class namespace less those the host adds by itself after the class
// is built: copyreg caches __slotnames__ there when an instance is first copied or
// pickled, which changes nothing about how instances behave.
Py_ssize_t own_entries(PyObject* dict) {
  const Py_ssize_t n = PyDict_Size(dict);
  return PyDict_GetItemWithError(dict, id<"__slotnames__">()) ? n - 1 : n;
}

}  // namespace

// A lookup through the type gives it a version tag if it has none yet.
unsigned int current_tag(PyTypeObject* type) {
  Ref init = getattr(reinterpret_cast<PyObject*>(type), id<"__init__">());
#if PY_VERSION_HEX < 0x030C0000
  if (!PyType_HasFeature(type, Py_TPFLAGS_VALID_VERSION_TAG)) return 0;
#endif
  return type->tp_version_tag;
}

void ClassGuard::set(PyObject* cls) {
  type_ = reinterpret_cast<PyTypeObject*>(cls);
  mro_ = new_ref(type_->tp_mro);
  namespaces_ = check(PyList_New(0)).release();
  for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(type_->tp_mro); ++i) {
    PyTypeObject* base = reinterpret_cast<PyTypeObject*>(PyTuple_GET_ITEM(type_->tp_mro, i));
    Ref copy = (base->tp_flags & Py_TPFLAGS_HEAPTYPE) ? check(PyDict_Copy(base->tp_dict)) : none();
    check(PyList_Append(namespaces_, copy.get()));
  }
  tag_ = current_tag(type_);
}

bool ClassGuard::revalidate() const {
  if (!type_ || (type_->tp_version_tag != 0 && type_->tp_version_tag == rejected_tag_)) return false;
  PyObject* mro = type_->tp_mro;
  bool same = PyTuple_GET_SIZE(mro) == PyTuple_GET_SIZE(mro_);
  for (Py_ssize_t i = 0; same && i < PyTuple_GET_SIZE(mro); ++i) {
    same = PyTuple_GET_ITEM(mro, i) == PyTuple_GET_ITEM(mro_, i);
    PyObject* saved = PyList_GET_ITEM(namespaces_, i);
    if (!same || saved == Py_None) continue;
    PyObject* now = reinterpret_cast<PyTypeObject*>(PyTuple_GET_ITEM(mro, i))->tp_dict;
    same = own_entries(now) == own_entries(saved);
    Py_ssize_t position = 0;
    PyObject *key, *value;
    while (same && PyDict_Next(saved, &position, &key, &value)) same = PyDict_GetItem(now, key) == value;
  }
  try {
    const unsigned int tag = current_tag(type_);
    if (same) tag_ = tag;
    else rejected_tag_ = tag;
  } catch (const PyError&) {
    PyErr_Clear();
    return false;
  }
  return same && tag_ != 0;
}

PyObject* instance_dict(PyObject* o) {
  // Making the dict out of the compact values allocates, and an allocation can start a
  // collection whose callbacks see the object half converted: held off meanwhile.
  CollectorPause pause;
  PyObject** slot = _PyObject_GetDictPtr(o);
  if (!slot) return nullptr;
  if (!*slot) *slot = PyDict_New();
  return *slot;
}

bool read_floats(const ClassGuard& guard, PyObject* o, std::initializer_list<PyObject*> names, double* out) {
  if (!guard.admits(o)) return false;
  // Held: a key's __eq__ below could replace the instance's __dict__.
  Ref dict = Ref::borrow(instance_dict(o));
  if (!dict) {
    PyErr_Clear();
    return false;
  }
  // Fields that __init__ stored first are found by walking the dict from its start.
  Py_ssize_t position = 0;
  for (PyObject* name : names) {
    PyObject *key, *value;
    if (!PyDict_Next(dict.get(), &position, &key, &value) || key != name) {
      value = PyDict_GetItemWithError(dict.get(), name);  // may run a key's __eq__
      if (!value) {
        PyErr_Clear();
        return false;
      }
    }
    if (!PyFloat_CheckExact(value)) return false;
    *out++ = PyFloat_AS_DOUBLE(value);
  }
  return true;
}

// The generic store keeps the interpreter's compact instance values; the dict is made
// only when a native read first needs it.
void store_fields(PyObject* o, std::initializer_list<std::pair<PyObject*, PyObject*>> fields) {
  for (auto [name, value] : fields) check(PyObject_GenericSetAttr(o, name, value));
}

Ref new_instance(const ClassGuard& guard, std::initializer_list<std::pair<PyObject*, PyObject*>> fields) {
  static PyObject* no_arguments_tuple = nullptr;
  PyObject* no_arguments = kept(no_arguments_tuple, [] { return PyTuple_New(0); });
  PyTypeObject* type = reinterpret_cast<PyTypeObject*>(guard.cls());
  Ref o = check(PyBaseObject_Type.tp_new(type, no_arguments, nullptr));
  store_fields(o.get(), fields);
  return o;
}

}  // namespace ostrel
