// Closed forms of solids of revolution. Each is evaluated in its written grouping, with
// the host's float power (std::pow, with its OverflowError), so that every result is
// the same double to the last bit.
#include <numbers>

#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

constexpr double pi = std::numbers::pi;

// ((1/3 * pi) * r**2) * h
enum class VolumeCone { r, h };
Ref volume_cone(const Args& a) {
  const double r = a.num(VolumeCone::r), h = a.num(VolumeCone::h);
  const double third = 1.0 / 3.0;
  return new_float(((third * pi) * kernel::power(r, 2.0)) * h);
}
constexpr Member volume_cone_member = function("volume_cone", "(r: float, h: float) -> float", volume_cone,
                                               "Volume of a cone with base radius `r` and height `h`.");

// (pi * r) * sqrt(r**2 + h**2)
enum class SurfaceConeWithoutBase { r, h };
Ref surface_cone_without_base(const Args& a) {
  const double r = a.num(SurfaceConeWithoutBase::r), h = a.num(SurfaceConeWithoutBase::h);
  const double pi_r = pi * r;
  const double r2 = kernel::power(r, 2.0);
  const double h2 = kernel::power(h, 2.0);
  return new_float(pi_r * kernel::math_sqrt(r2 + h2));
}
constexpr Member surface_cone_without_base_member =
    function("surface_cone_without_base", "(r: float, h: float) -> float", surface_cone_without_base,
             "Area of the mantle of a cone with base radius `r` and height `h`.");

// The band of a torus with section radius r at centre distance R, between the section
// angles theta1 and theta2.
enum class SurfaceAreaDome { theta1, theta2, r, R };
Ref surface_area_dome(const Args& a) {
  const double theta1 = a.num(SurfaceAreaDome::theta1), theta2 = a.num(SurfaceAreaDome::theta2),
               r = a.num(SurfaceAreaDome::r), R = a.num(SurfaceAreaDome::R);
  if (kernel::isclose(theta1, theta2, kernel::plain_tolerance))
    raise(PyExc_ValueError, "Point revolve (two equal points) does not have a surface area");
  const double factor = (2 * pi) * r;
  const double upper = R * theta2 + r * kernel::math_sin(theta2);
  const double lower = R * theta1 + r * kernel::math_sin(theta1);
  return new_float(std::fabs(factor * (upper - lower)));
}
constexpr Member surface_area_dome_member =
    function("surface_area_dome", "(theta1: float, theta2: float, r: float, R: float) -> float", surface_area_dome,
             "Area swept by an arc of radius `r` between the angles `theta1` and `theta2` (radians),\n"
             "revolved at centre distance `R`; ValueError when the two angles are equal.");

}  // namespace

void define_closed_forms() {
  for (const Member& m : {volume_cone_member, surface_cone_without_base_member, surface_area_dome_member})
    define_function(m);
}

}  // namespace ostrel
