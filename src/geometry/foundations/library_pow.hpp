// The C library's pow, called as the host calls it for a float `x ** y`. The compiler
// would turn pow(x, 2.0) into x * x, which differs from the library's result in the
// last bit for some inputs; the call goes through a pointer it cannot see through.
#pragma once

namespace ostrel {

double library_pow(double x, double y);

}  // namespace ostrel
