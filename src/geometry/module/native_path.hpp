// The one form of a native path. A member runs
//
//     if (Ref result = native_path(natives, [&]() -> Ref { ... })) return result;
//
// and below it the documented steps. The path runs only while `natives` hold; it reads
// its inputs (a reader gives nothing where the host must do the work), calls the kernel
// and builds the result. An empty Ref, a kernel's TakeSteps and a kernel's
// ArithmeticFault all mean the same: the documented steps run and decide, raising where
// they raise. A kernel's StepsRaise, and an exception the path raises itself (an error
// it has decided is due), pass on as the host's exception.
#pragma once

#include "foundations/float_kernel.hpp"
#include "module/natives.hpp"

namespace ostrel {

template <typename Path>
Ref native_path(const Natives& natives, Path&& path) {
  if (!natives.hold()) return {};
  try {
    return path();
  } catch (const kernel::TakeSteps&) {
  } catch (const kernel::ArithmeticFault&) {
  } catch (const kernel::StepsRaise& error) {
    PyObject* type = error.type == kernel::StepsRaise::Type::value_error ? PyExc_ValueError : PyExc_IndexError;
    if (error.message.empty())
      PyErr_SetNone(type);
    else
      PyErr_SetString(type, error.message.c_str());
    throw PyError{};
  }
  return {};
}

// A reader of the path that reads through the host (attributes, items) and so can
// fail: a failure clears the host's error and makes the documented steps run, which
// raise it in their own order.
template <typename Read>
auto or_take_steps(Read&& read) -> decltype(read()) {
  try {
    return read();
  } catch (const PyError&) {
    PyErr_Clear();
    throw kernel::TakeSteps{};
  }
}

}  // namespace ostrel
