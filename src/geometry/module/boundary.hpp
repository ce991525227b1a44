// Every place where the host calls into the module (a function's vectorcall, the
// getters of the function type, the lazy iterator's next, the exec step of the import)
// runs its body through enter(). Whatever the body throws ends there, translated once:
// the marker PyError keeps the Python exception it set, a kernel's ArithmeticFault
// becomes the host's own exception for that operation, memory exhaustion MemoryError,
// and anything else a SystemError that names it. No C++ exception reaches the host.
#pragma once

#include <utility>

#include "module/ref.hpp"

namespace ostrel {

// Sets the Python exception for the C++ exception being handled; call it only inside
// a catch block.
void translate_current_exception() noexcept;

// Runs `body`, which returns a Ref; the new reference, or NULL with the exception set.
template <typename Body>
PyObject* enter(Body&& body) noexcept {
  try {
    Ref result = std::forward<Body>(body)();
    if (!result && !PyErr_Occurred()) PyErr_SetString(PyExc_SystemError, "ostrel.geometry: a call returned no result");
    return result.release();
  } catch (...) {
    translate_current_exception();
    return nullptr;
  }
}

// The same for a body that returns nothing: 0, or -1 with the exception set.
template <typename Body>
int enter_status(Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
    return 0;
  } catch (...) {
    translate_current_exception();
    return -1;
  }
}

}  // namespace ostrel
