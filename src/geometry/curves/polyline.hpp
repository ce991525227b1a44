// The face of Polyline, shared by its source files: the class guard, the native reading
// of polylines, the members each file defines, and the few host operations the
// documented steps repeat everywhere.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "curves/polyline_kernel.hpp"
#include "module/class_builder.hpp"
#include "module/native_path.hpp"
#include "module/objects.hpp"

namespace ostrel {

// The Polyline class as the module built it, and what its native paths stand in for.
const ClassGuard& polyline_class();
const Natives& polyline_natives();

// The native paths' reading of polylines of the module's own, unchanged classes into
// chains for polyline_kernel, and the kernel's chains made into Python results.
class NativePolylines {
 public:
  // For the tolerances of the call when they are plain numbers; nothing otherwise.
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


// The members, each defined in the file of its concept.
extern const Member intersections_with_polyline_member, intersections_with_x_location_member, split_member,
    get_polyline_between_member, concatenate_member;                                  // polyline_split.cpp
extern const Member find_overlaps_member, combine_with_member;                        // polyline_combine.cpp
extern const Member lowest_or_highest_profile_member, find_lowest_or_highest_member;  // polyline_profile.cpp

// `polyline.points`.
inline Ref points_of(PyObject* polyline) { return getattr(polyline, id<"points">()); }

// `Polyline(points)` through the module global.
Ref new_polyline(PyObject* points);

// `len(o)`.
inline Py_ssize_t length_of(PyObject* o) { return check(PyObject_Size(o)); }

// The truth of `a == b`.
inline bool equal(PyObject* a, PyObject* b) { return compares(a, b, Py_EQ); }

// An iterator over `_current_next(items)`, and its next pair; false at the end.
Ref pairs_of(PyObject* items);
bool next_pair(PyObject* pairs, Ref& first, Ref& second);

// `Line(a, b)`, or nothing where the constructor raises ValueError (coinciding points).
Ref line_or_nothing(PyObject* a, PyObject* b);

// `list.sort(key=lambda item: start.vector_to(item).squared_magnitude)`, with `item[1]`
// in place of `item` for pieces: the list's own stable sort, its keys computed as it
// asks for them.
enum class SortKey { point, piece };
void sort_by_distance(PyObject* list, PyObject* start, SortKey key);

}  // namespace ostrel
