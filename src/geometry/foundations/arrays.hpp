// NumPy arrays built as the module's documented steps build them, through the module
// global `np`.
#pragma once

#include <initializer_list>

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

// Imports NumPy's C API; once, at module initialisation, after numpy was imported.
void import_numpy_api();

// np.array([items...], dtype=float). Built directly through NumPy's C API when the
// items are floats and `np` is still the numpy the module imported.
Ref float_array(std::initializer_list<PyObject*> items);

}  // namespace ostrel
