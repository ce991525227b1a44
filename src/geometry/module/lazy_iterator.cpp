#include "module/lazy_iterator.hpp"

#include "module/boundary.hpp"

namespace ostrel {

namespace {

struct LazyIterator {
  PyObject_HEAD
  PyObject* source;  // until the first next()
  StartIteration start;
  PyObject* items;   // from the first next() on
};

PyTypeObject lazy_iterator_type = {PyVarObject_HEAD_INIT(nullptr, 0)};

LazyIterator* as_lazy(PyObject* o) { return reinterpret_cast<LazyIterator*>(o); }

PyObject* lazy_next(PyObject* self) {
  LazyIterator* it = as_lazy(self);
  if (it->source) {
    Ref source = Ref::steal(it->source);
    it->source = nullptr;
    it->items = enter([&] { return it->start(source.get()); });
    if (!it->items) return nullptr;
  }
  if (!it->items) return nullptr;  // exhausted, or failed at the start
  PyObject* item = PyIter_Next(it->items);
  if (!item) Py_CLEAR(it->items);
  return item;
}

int lazy_traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(as_lazy(self)->source);
  Py_VISIT(as_lazy(self)->items);
  return 0;
}

int lazy_clear(PyObject* self) {
  Py_CLEAR(as_lazy(self)->source);
  Py_CLEAR(as_lazy(self)->items);
  return 0;
}

void lazy_dealloc(PyObject* self) {
  PyObject_GC_UnTrack(self);
  lazy_clear(self);
  PyObject_GC_Del(self);
}

}  // namespace

void ready_lazy_iterator_type() {
  PyTypeObject& t = lazy_iterator_type;
  t.tp_name = "ostrel.geometry.generator";
  t.tp_basicsize = sizeof(LazyIterator);
  t.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
  t.tp_doc = "Iterator whose work starts at the first next().";
  t.tp_iter = PyObject_SelfIter;
  t.tp_iternext = lazy_next;
  t.tp_traverse = lazy_traverse;
  t.tp_clear = lazy_clear;
  t.tp_dealloc = lazy_dealloc;
  check(PyType_Ready(&t));
}

Ref make_lazy_iterator(PyObject* source, StartIteration start) {
  LazyIterator* it = PyObject_GC_New(LazyIterator, &lazy_iterator_type);
  if (!it) throw PyError{};
  Py_INCREF(source);
  it->source = source;
  it->start = start;
  it->items = nullptr;
  PyObject_GC_Track(it);
  return Ref::steal(reinterpret_cast<PyObject*>(it));
}

}  // namespace ostrel
