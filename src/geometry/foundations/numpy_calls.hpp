// NumPy as the module's documented steps use it: functions looked up on the module
// global `np` at the moment of use, and the slices and index tuples of subscripts.
#pragma once

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

// np.<name>
template <Literal L>
Ref np_attr() {
  return getattr(global<"np">().get(), id<L>());
}

// The slice of `[start:stop]`; a missing bound is None.
inline Ref slice(PyObject* start, PyObject* stop) { return check(PySlice_New(start, stop, nullptr)); }
inline Ref slice_to(Py_ssize_t stop) {
  Ref bound = new_int(stop);
  return slice(nullptr, bound.get());
}

// o[key] and o[key] = value.
inline Ref subscript(PyObject* o, PyObject* key) { return check(PyObject_GetItem(o, key)); }
inline void assign(PyObject* o, PyObject* key, PyObject* value) { check(PyObject_SetItem(o, key, value)); }

}  // namespace ostrel
