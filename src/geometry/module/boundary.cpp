#include "module/boundary.hpp"

#include <exception>
#include <new>
#include <stdexcept>

#include "foundations/float_kernel.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

using kernel::ArithmeticFault;

[[noreturn]] void divide_by_zero(double numerator) {
  Ref a = new_float(numerator), zero = new_float(0.0);
  check(PyNumber_TrueDivide(a.get(), zero.get()));
  raise(PyExc_SystemError, "ostrel.geometry: a division by zero went through");
}

// Repeats the failing operation with the host's arithmetic, so that the exception and
// its text are exactly the host's.
[[noreturn]] void raise_host_error(const ArithmeticFault& fault) {
  switch (fault.kind) {
    case ArithmeticFault::Kind::division_by_zero:
      divide_by_zero(fault.a);
    case ArithmeticFault::Kind::power: {
      Ref a = new_float(fault.a), b = new_float(fault.b);
      check(PyNumber_Power(a.get(), b.get(), Py_None));
      raise(PyExc_SystemError, "ostrel.geometry: a power did not fail");
    }
    case ArithmeticFault::Kind::null_vector:
      try {
        divide_by_zero(fault.a);
      } catch (const PyError&) {
        raise_from(PyExc_ValueError, "Null vector can't be normalized");
      }
    case ArithmeticFault::Kind::math_domain:
      raise(PyExc_ValueError, "math domain error");
  }
  raise(PyExc_SystemError, "ostrel.geometry: unknown arithmetic fault");
}

}  // namespace

void translate_current_exception() noexcept {
  try {
    throw;
  } catch (const PyError&) {
    if (!PyErr_Occurred()) PyErr_SetString(PyExc_SystemError, "ostrel.geometry: an error without an exception");
  } catch (const ArithmeticFault& fault) {
    try {
      raise_host_error(fault);
    } catch (...) {
      // The exception is set; the marker has done its work.
      if (!PyErr_Occurred()) PyErr_SetString(PyExc_SystemError, "ostrel.geometry: arithmetic fault");
    }
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::length_error&) {
    PyErr_NoMemory();  // a container larger than any allocation could hold
  } catch (const std::exception& e) {
    PyErr_Format(PyExc_SystemError, "ostrel.geometry: internal error: %s", e.what());
  } catch (...) {
    PyErr_SetString(PyExc_SystemError, "ostrel.geometry: internal error of an unknown kind");
  }
}

}  // namespace ostrel
