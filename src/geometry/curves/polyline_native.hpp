// Native paths of Polyline: polylines of the module's own, unchanged classes read once
// into chains for polyline_kernel, and the kernel's chains made into Python results.
#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "curves/polyline_kernel.hpp"
#include "module/ref.hpp"

namespace ostrel {

class NativePolylines {
 public:
  // Only while the globals and classes the documented steps use are the module's own
  // and the tolerances plain numbers; nothing otherwise.
  static std::optional<NativePolylines> start();

  // The points of an instance of the unchanged Polyline holding nothing but an exact
  // list of points that read natively and are tame (see kernel::tame); false otherwise.
  bool read(PyObject* polyline, kernel::Chain& out);
  // A Point of the module's own class, as a chain of one.
  bool read_point(PyObject* point, kernel::Node& out);

  // The caller's own object for a point read, one new Point per point the kernel made.
  Ref point(const kernel::Node& n);
  Ref list(const kernel::Chain& c);
  // A new plain Polyline, as `Polyline(points)` makes it.
  Ref polyline(const kernel::Chain& c);

  kernel::Polylines& kernel() { return kernel_; }
  const kernel::Tolerances& tolerances() const { return kernel_.tolerances(); }

 private:
  explicit NativePolylines(const kernel::Tolerances& t) : kernel_(t) {}
  kernel::Polylines kernel_;
  std::vector<std::vector<Ref>> sources_;
  std::unordered_map<std::int64_t, Ref> made_;
};

// Runs a native path; nothing where the kernel finds that the documented steps raise,
// which the caller then takes to raise the exception due.
template <typename Path>
std::optional<Ref> native_result(Path&& path) {
  try {
    return path();
  } catch (const kernel::StepsRaise&) {
  } catch (const kernel::ArithmeticFault&) {
  }
  return std::nullopt;
}

}  // namespace ostrel
