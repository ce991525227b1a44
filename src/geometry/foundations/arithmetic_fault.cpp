#include "foundations/arithmetic_fault.hpp"

#include "module/objects.hpp"

namespace ostrel {

namespace {
[[noreturn]] void divide_by_zero(double numerator) {
  Ref a = new_float(numerator), zero = new_float(0.0);
  div(a.get(), zero.get());
  raise(PyExc_SystemError, "a division by zero went through");
}
}  // namespace

void raise_host_error(const ArithmeticFault& fault) {
  switch (fault.kind) {
    case ArithmeticFault::Kind::division_by_zero:
      divide_by_zero(fault.operand);
    case ArithmeticFault::Kind::square_overflow:
      float_pow(fault.operand, 2.0);
      raise(PyExc_SystemError, "a square did not overflow");
    case ArithmeticFault::Kind::null_vector:
      try {
        divide_by_zero(fault.operand);
      } catch (const PyError&) {
        raise_from(PyExc_ValueError, "Null vector can't be normalized");
      }
  }
  raise(PyExc_SystemError, "unknown arithmetic fault");
}

}  // namespace ostrel
