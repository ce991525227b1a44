// Conversions between cartesian, spherical (r, theta, phi) and cylindrical (rho, phi, z)
// coordinates, angles in radians. They compute on the objects they are given, as the
// expressions they are, so that NumPy scalars keep NumPy's semantics (a NaN where a
// float division by zero raises).
#include <cmath>

#include "foundations/arrays.hpp"
#include "foundations/float_kernel.hpp"
#include "module/class_builder.hpp"

namespace ostrel {

namespace {

Ref sin_of(PyObject* o) { return new_float(kernel::math_sin(as_double(o))); }
Ref cos_of(PyObject* o) { return new_float(kernel::math_cos(as_double(o))); }
Ref atan2_of(PyObject* y, PyObject* x) {
  const double yd = as_double(y);
  return new_float(std::atan2(yd, as_double(x)));
}

enum class SphericalToCartesian { spherical_coordinates };
Ref spherical_to_cartesian(const Args& a) {
  Ref c[3];
  unpack(a[SphericalToCartesian::spherical_coordinates], 3, c);
  PyObject *r = c[0].get(), *theta = c[1].get(), *phi = c[2].get();
  Ref sin_theta = sin_of(theta);
  Ref r_sin = mul(r, sin_theta.get());
  Ref cos_phi = cos_of(phi);
  Ref x = mul(r_sin.get(), cos_phi.get());
  Ref sin_theta2 = sin_of(theta);
  Ref r_sin2 = mul(r, sin_theta2.get());
  Ref sin_phi = sin_of(phi);
  Ref y = mul(r_sin2.get(), sin_phi.get());
  Ref cos_theta = cos_of(theta);
  Ref z = mul(r, cos_theta.get());
  return float_array({x.get(), y.get(), z.get()});
}
constexpr Member spherical_to_cartesian_member =
    function("spherical_to_cartesian", "(spherical_coordinates: Tuple[float, float, float]) -> np.ndarray",
             spherical_to_cartesian, "Array (x, y, z) of spherical coordinates (r, theta, phi), in radians.");

enum class CartesianToSpherical { cartesian_coordinates };
Ref cartesian_to_spherical(const Args& a) {
  PyObject* c = a[CartesianToSpherical::cartesian_coordinates];
  Ref c0 = getitem(c, 0);
  Ref s0 = power(c0.get(), 2);
  Ref c1 = getitem(c, 1);
  Ref s1 = power(c1.get(), 2);
  Ref s01 = add(s0.get(), s1.get());
  Ref c2 = getitem(c, 2);
  Ref s2 = power(c2.get(), 2);
  Ref sum = add(s01.get(), s2.get());
  Ref r = new_float(kernel::math_sqrt(as_double(sum.get())));
  Ref c2_again = getitem(c, 2);
  Ref ratio = div(c2_again.get(), r.get());
  Ref theta = new_float(kernel::math_acos(as_double(ratio.get())));
  Ref c1_again = getitem(c, 1);
  Ref c0_again = getitem(c, 0);
  Ref phi = atan2_of(c1_again.get(), c0_again.get());
  return float_array({r.get(), theta.get(), phi.get()});
}
constexpr Member cartesian_to_spherical_member = function(
    "cartesian_to_spherical", "(cartesian_coordinates: Tuple[float, float, float]) -> np.ndarray",
    cartesian_to_spherical, "Array (r, theta, phi) of cartesian coordinates: theta from the +z axis, phi from +x.");

enum class CylindricalToCartesian { cylindrical_coordinates };
Ref cylindrical_to_cartesian(const Args& a) {
  Ref c[3];
  unpack(a[CylindricalToCartesian::cylindrical_coordinates], 3, c);
  PyObject *rho = c[0].get(), *phi = c[1].get(), *z = c[2].get();
  Ref cos_phi = cos_of(phi);
  Ref x = mul(rho, cos_phi.get());
  Ref sin_phi = sin_of(phi);
  Ref y = mul(rho, sin_phi.get());
  return float_array({x.get(), y.get(), z});
}
constexpr Member cylindrical_to_cartesian_member =
    function("cylindrical_to_cartesian", "(cylindrical_coordinates: Tuple[float, float, float]) -> np.ndarray",
             cylindrical_to_cartesian, "Array (x, y, z) of cylindrical coordinates (rho, phi, z).");

enum class CartesianToCylindrical { cartesian_coordinates };
Ref cartesian_to_cylindrical(const Args& a) {
  Ref c[3];
  unpack(a[CartesianToCylindrical::cartesian_coordinates], 3, c);
  PyObject *x = c[0].get(), *y = c[1].get(), *z = c[2].get();
  Ref x2 = power(x, 2);
  Ref y2 = power(y, 2);
  Ref sum = add(x2.get(), y2.get());
  Ref rho = new_float(kernel::math_sqrt(as_double(sum.get())));
  Ref phi = atan2_of(y, x);
  return float_array({rho.get(), phi.get(), z});
}
constexpr Member cartesian_to_cylindrical_member =
    function("cartesian_to_cylindrical", "(cartesian_coordinates: Tuple[float, float, float]) -> np.ndarray",
             cartesian_to_cylindrical, "Array (rho, phi, z) of cartesian coordinates.");

}  // namespace

void define_conversions() {
  for (const Member& m : {spherical_to_cartesian_member, cartesian_to_spherical_member, cylindrical_to_cartesian_member,
                          cartesian_to_cylindrical_member})
    define_function(m);
}

}  // namespace ostrel
