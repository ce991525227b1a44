// The node name of one piece of a solid made of revolved pieces: the solid's _name, a
// "-" and the piece's key, joined as the host joins text.
#pragma once

#include "module/objects.hpp"

namespace ostrel {

inline Ref piece_name(PyObject* kind, PyObject* piece) {
  Ref dash = new_str("-");
  Ref prefix = check(PyNumber_Add(kind, dash.get()));
  return check(PyNumber_Add(prefix.get(), piece));
}

}  // namespace ostrel
