// The host's exception for an ArithmeticFault of a kernel.
#pragma once

#include "foundations/float_arithmetic.hpp"

namespace ostrel {

// Repeats the failing operation with the host's arithmetic, so that the exception and
// its text are exactly the host's, and throws PyError.
[[noreturn]] void raise_host_error(const ArithmeticFault& fault);

}  // namespace ostrel
