// An iterator that starts its work at the first next(), as the body of a generator
// function runs only at its first resumption: what `__iter__` reads is read then,
// not when iter() was called.
#pragma once

#include "module/ref.hpp"

namespace ostrel {

// Gives the iterator whose items the lazy iterator then yields.
using StartIteration = Ref (*)(PyObject* source);

void ready_lazy_iterator_type();
Ref make_lazy_iterator(PyObject* source, StartIteration start);

}  // namespace ostrel
