#include "foundations/library_pow.hpp"

#include <cmath>

namespace ostrel {

namespace {
double (*volatile const pow_function)(double, double) = ::pow;
}

double library_pow(double x, double y) { return pow_function(x, y); }

}  // namespace ostrel
