// _current_next, the pairs of neighbours of an iterable.
#pragma once

#include "module/ref.hpp"

namespace ostrel {

// Whether `f` is the module's own _current_next: a caller that walks a list of its own
// may then take the pairs natively, and must call `f` otherwise.
bool is_own_current_next(PyObject* f);

}  // namespace ostrel
