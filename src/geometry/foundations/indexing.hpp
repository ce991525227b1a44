// Indexing of the fixed items of Vector, Point (three coordinates) and Line (two
// ends): an int (bool too) from 0 to count - 1; negative indices do not wrap round.
#pragma once

#include "module/objects.hpp"

namespace ostrel {

inline int item_index(PyObject* index, int count) {
  if (!PyLong_Check(index)) {
    Ref name = type_name(index);
    raise_format(PyExc_TypeError, "list indices must be integers, not %S", name.get());
  }
  int overflow = 0;
  const long long i = PyLong_AsLongLongAndOverflow(index, &overflow);
  if (i == -1 && PyErr_Occurred()) throw PyError{};
  if (overflow || i < 0 || i >= count) raise(PyExc_IndexError, "list index out of range");
  return static_cast<int>(i);
}

inline int coordinate_index(PyObject* index) { return item_index(index, 3); }

}  // namespace ostrel
