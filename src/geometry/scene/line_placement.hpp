// The steps that solids along a Line share to place their local frame on it: the
// heading and elevation of the line, the axes as tuples, and the line's start as the
// matrix's translation. They run through the host, as written, once per solid.
#pragma once

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

// (x, y, z) as a tuple of ints, as the documented axes are written.
inline Ref axis(long x, long y, long z) {
  Ref a = new_int(x), b = new_int(y), c = new_int(z);
  return tuple({a.get(), b.get(), c.get()});
}

// math.<name>(args...) through the module global `math`.
inline Ref math_call(PyObject* name, std::initializer_list<PyObject*> args) {
  Ref function = getattr(global<"math">().get(), name);
  return call(function.get(), args);
}

// np.array(tuple(point))
inline Ref as_array(PyObject* point) {
  Ref items = check(PySequence_Tuple(point));
  Ref array = getattr(global<"np">().get(), id<"array">());
  return call(array.get(), {items.get()});
}

// target_x, target_y, target_z = end - start (arrays of the two points);
// alpha = math.atan2(target_x, target_z), the heading in the xz plane from +z towards +x;
// beta = math.atan2(target_y, math.sqrt(target_x ** 2 + target_z ** 2)), the elevation.
struct Heading {
  Ref alpha, beta;
};
inline Heading heading(PyObject* end, PyObject* start) {
  Ref target = check(PyNumber_Subtract(end, start));
  Ref t[3];
  unpack(target.get(), 3, t);
  Ref alpha = math_call(id<"atan2">(), {t[0].get(), t[2].get()});
  Ref x2 = power(t[0].get(), 2), z2 = power(t[2].get(), 2);
  Ref xz2 = add(x2.get(), z2.get());
  Ref length_xz = math_call(id<"sqrt">(), {xz2.get()});
  Ref beta = math_call(id<"atan2">(), {t[1].get(), length_xz.get()});
  return {std::move(alpha), std::move(beta)};
}

// matrix[0:3, 3] = tuple(start)
inline void translate_to(PyObject* matrix, PyObject* start) {
  Ref translation = check(PySequence_Tuple(start));
  Ref zero = new_int(0), three = new_int(3);
  Ref rows = check(PySlice_New(zero.get(), three.get(), nullptr));
  Ref key = tuple({rows.get(), three.get()});
  check(PyObject_SetItem(matrix, key.get(), translation.get()));
}

}  // namespace ostrel
