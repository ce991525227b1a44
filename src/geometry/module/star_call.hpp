// `callable(*iterable)`, as the host makes a call with one starred argument.
#pragma once

#include "module/ref.hpp"

namespace ostrel {

// The items of `iterable` become the positional arguments. An object that is neither
// iterable nor a sequence raises the host's TypeError naming the callable.
Ref star_call(PyObject* callable, PyObject* iterable);

}  // namespace ostrel
