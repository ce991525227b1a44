// Closed forms of solids of revolution. Each is evaluated in its written grouping, with
// the host's float power (std::pow, with its OverflowError), so that every result is
// the same double to the last bit.
#include <numbers>

#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

constexpr double pi = std::numbers::pi;

// ((1/3 * pi) * r**2) * h
Ref volume_cone(const Args& a) {
  const double r = a.num(0), h = a.num(1);
  const double third = 1.0 / 3.0;
  return new_float(((third * pi) * float_pow(r, 2.0)) * h);
}

// (pi * r) * sqrt(r**2 + h**2)
Ref surface_cone_without_base(const Args& a) {
  const double r = a.num(0), h = a.num(1);
  const double pi_r = pi * r;
  const double r2 = float_pow(r, 2.0);
  const double h2 = float_pow(h, 2.0);
  return new_float(pi_r * math_sqrt(r2 + h2));
}

// The band of a torus with section radius r at centre distance R, between the section
// angles theta1 and theta2.
Ref surface_area_dome(const Args& a) {
  const double theta1 = a.num(0), theta2 = a.num(1), r = a.num(2), R = a.num(3);
  if (isclose(theta1, theta2, plain_tolerance))
    raise(PyExc_ValueError, "Point revolve (two equal points) does not have a surface area");
  const double factor = (2 * pi) * r;
  const double upper = R * theta2 + r * math_sin(theta2);
  const double lower = R * theta1 + r * math_sin(theta1);
  return new_float(std::fabs(factor * (upper - lower)));
}

}  // namespace

void define_closed_forms() {
  define_function("volume_cone", "(r: float, h: float) -> float", volume_cone,
                  "Volume of a cone with base radius `r` and height `h`.");
  define_function("surface_cone_without_base", "(r: float, h: float) -> float", surface_cone_without_base,
                  "Area of the mantle of a cone with base radius `r` and height `h`.");
  define_function("surface_area_dome", "(theta1: float, theta2: float, r: float, R: float) -> float",
                  surface_area_dome,
                  "Area swept by an arc of radius `r` between the angles `theta1` and `theta2` (radians),\n"
                  "revolved at centre distance `R`; ValueError when the two angles are equal.");
}

}  // namespace ostrel
