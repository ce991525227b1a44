// RDWGSConverter: RD (the Dutch national grid, metres) to WGS latitude and longitude
// (degrees) and back, by the two double series of rd_wgs_kernel. A position outside
// RD is reported through warnings.warn and converted all the same.
//
// A conversion is a few dozen flops, so the call itself is most of its cost: the
// native path reads the two numbers straight out of a tuple or list and builds the
// result list directly. Anything else (other sequences, NumPy scalars, objects with
// arithmetic of their own, a changed class) takes the documented steps through the host.
#include <array>
#include <optional>

#include "geographic/rd_wgs_kernel.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

ClassGuard guard;
// The steps read the reference point through the module global of the class.
Natives natives{{&guard}};

using Pair = std::array<double, 2>;

// An item whose arithmetic with the reference point is the same on doubles: an exact
// float, or an exact int that a double holds exactly, together with its difference
// from any value of the series (the host subtracts two ints exactly, then rounds).
std::optional<double> plain_number(PyObject* o) {
  if (PyFloat_CheckExact(o)) return PyFloat_AS_DOUBLE(o);
  if (!PyLong_CheckExact(o)) return std::nullopt;
  int overflow = 0;
  const long long v = PyLong_AsLongLongAndOverflow(o, &overflow);
  constexpr long long exact = 1LL << 52;
  if (overflow || v < -exact || v > exact) return std::nullopt;  // an int cannot fail to convert
  return static_cast<double>(v);
}

// coords[0] and coords[1] of a tuple or list, read without running a caller's code.
std::optional<Pair> read_pair(PyObject* coords) {
  if (!(PyTuple_CheckExact(coords) || PyList_CheckExact(coords)) || PySequence_Fast_GET_SIZE(coords) < 2)
    return std::nullopt;
  const auto a = plain_number(PySequence_Fast_GET_ITEM(coords, 0));
  const auto b = a ? plain_number(PySequence_Fast_GET_ITEM(coords, 1)) : std::nullopt;
  if (!b) return std::nullopt;
  return Pair{*a, *b};
}

void warn(const char* message) {
  Ref warn_function = getattr(global<"warnings">().get(), id<"warn">());
  Ref text = new_str(message);
  call(warn_function.get(), {text.get()});
}

constexpr const char* x_warning = "The given x-coordinate lies outside of the RD coordinate system bounds.";
constexpr const char* y_warning = "The given y-coordinate lies outside of the RD coordinate system bounds.";
constexpr const char* latitude_warning = "The given latitude lies outside of the RD coordinate system bounds.";
constexpr const char* longitude_warning = "The given longitude lies outside of the RD coordinate system bounds.";

Ref float_pair(Pair p) {
  Ref a = new_float(p[0]), b = new_float(p[1]);
  return list({a.get(), b.get()});
}

// ---- the documented steps, on the objects ----

// `coords[i] < low or coords[i] > high`, indexing once for each comparison.
bool outside(PyObject* coords, Py_ssize_t i, PyObject* low, PyObject* high) {
  Ref value = getitem(coords, i);
  if (compares(value.get(), low, Py_LT)) return true;
  Ref again = getitem(coords, i);
  return compares(again.get(), high, Py_GT);
}

// `scale * (coords[i] - RDWGSConverter.<reference>)`
Ref scaled_offset(PyObject* coords, Py_ssize_t i, double scale, PyObject* reference) {
  Ref factor = new_float(scale);
  Ref value = getitem(coords, i);
  Ref origin = getattr(global<"RDWGSConverter">().get(), reference);
  Ref offset = sub(value.get(), origin.get());
  return mul(factor.get(), offset.get());
}

// `sum = sum + c * first ** p * second ** q` over the terms in order; `+=` where
// `in_place` is set.
template <std::size_t N>
Ref series(const std::array<kernel::SeriesTerm, N>& terms, PyObject* first, PyObject* second, bool in_place) {
  Ref sum = new_float(0.0);
  for (const kernel::SeriesTerm& t : terms) {
    Ref c = new_float(t.coefficient);
    Ref p = power(first, t.p);
    Ref product = mul(c.get(), p.get());
    Ref q = power(second, t.q);
    Ref term = mul(product.get(), q.get());
    sum = in_place ? check(PyNumber_InPlaceAdd(sum.get(), term.get())) : add(sum.get(), term.get());
  }
  return sum;
}

// `if coords[0] < low or coords[0] > high: warnings.warn(...)`, then the same for
// coords[1], with the bounds as the host objects the steps compare with.
void bounds_steps(PyObject* coords, const kernel::Domain (&domains)[2], const char* const (&warnings)[2], bool whole) {
  for (Py_ssize_t i = 0; i < 2; ++i) {
    const kernel::Domain& d = domains[i];
    Ref low = whole ? new_int(static_cast<long long>(d.low)) : new_float(d.low);
    Ref high = whole ? new_int(static_cast<long long>(d.high)) : new_float(d.high);
    if (outside(coords, i, low.get(), high.get())) warn(warnings[i]);
  }
}

Ref rd_series_steps(PyObject* coords) {
  Ref dx = scaled_offset(coords, 0, 1e-5, id<"X0">()), dy = scaled_offset(coords, 1, 1e-5, id<"Y0">());
  Ref seconds = new_float(3600.0);
  Ref phi_sum = series(kernel::latitude_series, dx.get(), dy.get(), false);
  Ref phi0 = getattr(global<"RDWGSConverter">().get(), id<"phi0">());
  Ref phi_degrees = div(phi_sum.get(), seconds.get());
  Ref phi = add(phi0.get(), phi_degrees.get());
  Ref lam_sum = series(kernel::longitude_series, dx.get(), dy.get(), false);
  Ref lam0 = getattr(global<"RDWGSConverter">().get(), id<"lam0">());
  Ref lam_degrees = div(lam_sum.get(), seconds.get());
  Ref lam = add(lam0.get(), lam_degrees.get());
  return list({phi.get(), lam.get()});
}

Ref wgs_series_steps(PyObject* coords) {
  Ref dphi = scaled_offset(coords, 0, 0.36, id<"phi0">()), dlam = scaled_offset(coords, 1, 0.36, id<"lam0">());
  Ref x = series(kernel::x_series, dphi.get(), dlam.get(), true);
  Ref x0 = getattr(global<"RDWGSConverter">().get(), id<"X0">());
  x = check(PyNumber_InPlaceAdd(x.get(), x0.get()));
  Ref y = series(kernel::y_series, dphi.get(), dlam.get(), true);
  Ref y0 = getattr(global<"RDWGSConverter">().get(), id<"Y0">());
  y = check(PyNumber_InPlaceAdd(y.get(), y0.get()));
  return list({x.get(), y.get()});
}

// One direction of the conversion: its domains, warnings and series, natively and as
// documented steps.
struct Direction {
  kernel::Domain domains[2];
  const char* warnings[2];
  bool whole_bounds;
  Pair (*series)(double, double);
  Ref (*series_steps)(PyObject* coords);
};

constexpr Direction rd_to_wgs{
    {kernel::rd_x_domain, kernel::rd_y_domain}, {x_warning, y_warning}, true, kernel::rd_to_wgs, rd_series_steps};
constexpr Direction wgs_to_rd{{kernel::wgs_latitude_domain, kernel::wgs_longitude_domain},
                              {latitude_warning, longitude_warning},
                              false,
                              kernel::wgs_to_rd,
                              wgs_series_steps};

// The bounds warnings, then the series. A warning can run a caller's code (a hook of
// the warnings machinery) that changes a list or the class: a list outside the bounds
// takes the documented steps throughout, and the class is checked again after the
// warnings.
Ref convert(PyObject* coords, const Direction& d) {
  auto pair = read_pair(coords);
  const bool first = pair && d.domains[0].outside((*pair)[0]), second = pair && d.domains[1].outside((*pair)[1]);
  if ((first || second) && !PyTuple_CheckExact(coords)) pair.reset();
  if (pair) {
    if (first) warn(d.warnings[0]);
    if (second) warn(d.warnings[1]);
  } else {
    bounds_steps(coords, d.domains, d.warnings, d.whole_bounds);
  }
  if (Ref r = native_path(natives, [&] { return pair ? float_pair(d.series((*pair)[0], (*pair)[1])) : Ref{}; }))
    return r;
  return d.series_steps(coords);
}

enum class Convert { coords };

Ref from_rd_to_wgs(const Args& a) { return convert(a[Convert::coords], rd_to_wgs); }
constexpr Member from_rd_to_wgs_member =
    static_method("from_rd_to_wgs", "(coords: Tuple[float, float]) -> List[float]", from_rd_to_wgs,
                  "[latitude, longitude] in degrees of RD (x, y) in metres; a position outside RD is\n"
                  "reported with a warning and converted all the same.");

Ref from_wgs_to_rd(const Args& a) { return convert(a[Convert::coords], wgs_to_rd); }
constexpr Member from_wgs_to_rd_member =
    static_method("from_wgs_to_rd", "(coords: Tuple[float, float]) -> List[float]", from_wgs_to_rd,
                  "[x, y] in RD metres of WGS (latitude, longitude) in degrees; a position outside RD\n"
                  "is reported with a warning and converted all the same.");

}  // namespace

void define_rd_wgs() {
  Ref x0 = new_int(155000), y0 = new_int(463000);
  Ref phi0 = new_float(kernel::wgs_phi0), lam0 = new_float(kernel::wgs_lam0);
  define_class("RDWGSConverter", {},
               "Conversion between RD, the Dutch national grid in metres, and WGS latitude and\n"
               "longitude in degrees, by the published polynomial approximation: arithmetic\n"
               "only, no datum transformation.",
               {{"X0", x0.get()}, {"Y0", y0.get()}, {"phi0", phi0.get()}, {"lam0", lam0.get()}},
               {from_rd_to_wgs_member, from_wgs_to_rd_member}, &guard);
}

}  // namespace ostrel
