// The face of Polyline, shared by its source files: the class guard, the members each
// file defines, and the few host operations the documented steps repeat everywhere.
#pragma once

#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

// The Polyline class as the module built it.
const ClassGuard& polyline_class();

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

// Runs `body` and reports whether it raised ValueError, which is then cleared; any other
// exception goes on.
template <typename Body>
bool raises_value_error(Body&& body) {
  try {
    body();
    return false;
  } catch (const PyError&) {
    if (!PyErr_ExceptionMatches(PyExc_ValueError)) throw;
    PyErr_Clear();
    return true;
  }
}

}  // namespace ostrel
