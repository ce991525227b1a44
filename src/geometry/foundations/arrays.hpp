// NumPy arrays built as the module's documented steps build them, through the module
// global `np`.
#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

// Imports NumPy's C API; once, at module initialisation, after numpy was imported.
void import_numpy_api();

// np.array([items...], dtype=float). Built directly through NumPy's C API when the
// items are floats and `np` is still the numpy the module imported.
Ref float_array(std::initializer_list<PyObject*> items);

// np.<name>(a) or np.<name>(a, b) on arrays of the doubles given, elementwise: NumPy
// runs the very loop it runs for one scalar, so each value is the one a call per value
// would give. Nothing where `np` is not the numpy the module imported or the result is
// not an array of as many doubles.
std::optional<std::vector<double>> numpy_elementwise(PyObject* name, std::span<const double> a,
                                                     std::span<const double> b = {});

// The lowest and highest item of a non-empty C-contiguous NumPy array of 32- or 64-bit
// integers, read natively; nothing for anything else, which the caller asks the host about.
std::optional<std::pair<long long, long long>> integer_extent(PyObject* o);

}  // namespace ostrel
