// The module tolerances ISCLOSE_RTOL and ISCLOSE_ATOL, read from the module globals at
// the moment of the call, for the three tolerance forms of foundations/float_kernel.hpp.
#pragma once

#include <optional>

#include "foundations/float_kernel.hpp"
#include "module/ref.hpp"

namespace ostrel {

// rel_tol=ISCLOSE_RTOL, abs_tol=ISCLOSE_ATOL, as a documented step reads them: each
// through the float conversion; a negative value raises the ValueError of math.isclose.
kernel::Tolerance module_tolerance();

// abs_tol=ISCLOSE_ATOL alone, rel_tol 1e-9; read and checked likewise.
kernel::Tolerance abs_tolerance();

// The same for the value of ISCLOSE_ATOL read already, where the documented step reads
// the global before the numbers it compares are converted.
kernel::Tolerance abs_tolerance(PyObject* atol);

// Both forms for a native path: only where both globals are floats or ints that
// math.isclose accepts, so that reading them runs no code and raises nothing, and every
// step of the documented path would read the same values. Nothing otherwise.
std::optional<kernel::Tolerances> native_tolerances();

}  // namespace ostrel
