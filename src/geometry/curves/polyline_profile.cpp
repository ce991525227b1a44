// Polyline: the lower or upper envelope of two profiles, polylines that run from left to
// right, over the stretch of x that both cover.
#include "curves/line.hpp"
#include "curves/polyline.hpp"
#include "foundations/tolerance.hpp"
#include "module/globals.hpp"

namespace ostrel {

namespace {

// `profile.intersections_with_x_location(x)[index]`
Ref at_x(PyObject* profile, PyObject* x, Py_ssize_t index) {
  Ref points = call_method(profile, id<"intersections_with_x_location">(), {x});
  return getitem(points.get(), index);
}

enum class Profile { cls, profile_1, profile_2, lowest };
Ref lowest_or_highest_profile(const Args& a) {
  PyObject* cls = a.self();
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain first, second;
        const auto lowest = plain_truth(a[Profile::lowest]);
        if (!native || !lowest || cls != polyline_class().cls() || !native->read(a[Profile::profile_1], first) ||
            !native->read(a[Profile::profile_2], second))
          return Ref{};
        return native->polyline(native->kernel().lowest_or_highest_profile(first, second, *lowest));
      }))
    return r;
  Ref profile_1 = Ref::borrow(a[Profile::profile_1]), profile_2 = Ref::borrow(a[Profile::profile_2]);
  PyObject* lowest = a[Profile::lowest];
  Ref monotonic_1 =
      call_kw(getattr(profile_1.get(), id<"is_monotonic_ascending_x">()).get(), {}, {{id<"strict">(), Py_False}});
  if (!truth(monotonic_1.get())) raise(PyExc_ValueError, kernel::polyline_errors::not_monotonic[0]);
  Ref monotonic_2 =
      call_kw(getattr(profile_2.get(), id<"is_monotonic_ascending_x">()).get(), {}, {{id<"strict">(), Py_False}});
  if (!truth(monotonic_2.get())) raise(PyExc_ValueError, kernel::polyline_errors::not_monotonic[1]);
  Ref points_1 = points_of(profile_1.get());
  Ref points_2 = length_of(points_1.get()) > 0 ? points_of(profile_2.get()) : Ref{};
  if (!points_2 || length_of(points_2.get()) == 0) {
    Ref empty = check(PyList_New(0));
    return new_polyline(empty.get());
  }
  Ref p1_x_min = getattr(profile_1.get(), id<"x_min">()), p2_x_min = getattr(profile_2.get(), id<"x_min">());
  Ref p1_x_max = getattr(profile_1.get(), id<"x_max">()), p2_x_max = getattr(profile_2.get(), id<"x_max">());
  // max() and min() of two: the second only where it is strictly beyond the first.
  Ref x_min = compares(p2_x_min.get(), p1_x_min.get(), Py_GT) ? p2_x_min : p1_x_min;
  Ref x_max = compares(p2_x_max.get(), p1_x_max.get(), Py_LT) ? p2_x_max : p1_x_max;
  Ref p1_start = at_x(profile_1.get(), x_min.get(), -1), p1_end = at_x(profile_1.get(), x_max.get(), 0);
  Ref p2_start = at_x(profile_2.get(), x_min.get(), -1), p2_end = at_x(profile_2.get(), x_max.get(), 0);
  profile_1 = call_method(profile_1.get(), id<"get_polyline_between">(), {p1_start.get(), p1_end.get(), Py_True});
  profile_2 = call_method(profile_2.get(), id<"get_polyline_between">(), {p2_start.get(), p2_end.get(), Py_True});
  Ref intersections = call_method(profile_1.get(), id<"intersections_with_polyline">(), {profile_2.get()});
  Ref first_1 = list({p1_start.get()}), last_1 = list({p1_end.get()});
  Ref first_2 = list({p2_start.get()}), last_2 = list({p2_end.get()});
  Ref inner_1 = check(PyNumber_Add(first_1.get(), intersections.get()));
  Ref ends_1 = check(PyNumber_Add(inner_1.get(), last_1.get()));
  Ref inner_2 = check(PyNumber_Add(first_2.get(), intersections.get()));
  Ref ends_2 = check(PyNumber_Add(inner_2.get(), last_2.get()));
  Ref empty = check(PyList_New(0));
  Ref result = call(cls, {empty.get()});
  // zip(ends_1[:-1], ends_1[1:], ends_2[:-1], ends_2[1:]): the ends are whatever `+` made of
  // the intersections, and combine_with is the caller's, so both are walked as the host does.
  Ref minus_one = new_int(-1), one = new_int(1);
  Ref head = check(PySlice_New(nullptr, minus_one.get(), nullptr)), tail = check(PySlice_New(one.get(), nullptr, nullptr));
  Ref p1_starts = check(PyObject_GetItem(ends_1.get(), head.get()));
  Ref p1_ends = check(PyObject_GetItem(ends_1.get(), tail.get()));
  Ref p2_starts = check(PyObject_GetItem(ends_2.get(), head.get()));
  Ref p2_ends = check(PyObject_GetItem(ends_2.get(), tail.get()));
  Ref sections = call(global<"zip">().get(), {p1_starts.get(), p1_ends.get(), p2_starts.get(), p2_ends.get()});
  while (Ref section = Ref::steal(PyIter_Next(sections.get()))) {
    Ref ends[4];
    unpack(section.get(), 4, ends);
    PyObject *p1_section_start = ends[0].get(), *p1_section_end = ends[1].get();
    PyObject *p2_section_start = ends[2].get(), *p2_section_end = ends[3].get();
    Ref p1_part, p2_part;
    if (!equal(p1_section_start, p1_section_end))
      p1_part = call_method(profile_1.get(), id<"get_polyline_between">(), {p1_section_start, p1_section_end, Py_True});
    if (!equal(p2_section_start, p2_section_end))
      p2_part = call_method(profile_2.get(), id<"get_polyline_between">(), {p2_section_start, p2_section_end, Py_True});
    if (!p1_part || !p2_part) continue;
    Ref part = call_method(cls, id<"_find_lowest_or_highest_profile">(), {p1_part.get(), p2_part.get(), lowest});
    result = call_method(result.get(), id<"combine_with">(), {part.get()});
  }
  if (PyErr_Occurred()) throw PyError{};
  return result;
}

// The part that lies lower (or higher) at the first point where the two differ.
enum class FindLowestOrHighest { p1, p2, lowest };
Ref find_lowest_or_highest(const Args& a) {
  PyObject *p1 = a[FindLowestOrHighest::p1], *p2 = a[FindLowestOrHighest::p2];
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain first, second;
        const auto lowest = plain_truth(a[FindLowestOrHighest::lowest]);
        if (!native || !lowest || !native->read(p1, first) || !native->read(p2, second)) return Ref{};
        return Ref::borrow(native->kernel().second_is_lowest_or_highest(first, second, *lowest) ? p2 : p1);
      }))
    return r;
  // The part that wins at `point` against the other's height there; nothing where they agree.
  auto winner = [&](PyObject* point, PyObject* mine, PyObject* theirs) -> PyObject* {
    Ref x = getattr(point, id<"x">());
    Ref at = at_x(theirs, x.get(), 0);
    Ref other_y = getattr(at.get(), id<"y">());
    Ref y = getattr(point, id<"y">());
    if (kernel::isclose(as_double(y.get()), as_double(other_y.get()), abs_tolerance())) return nullptr;
    const bool lowest = truth(a[FindLowestOrHighest::lowest]);
    if (compares(y.get(), other_y.get(), lowest ? Py_LT : Py_GT)) return mine;
    if (compares(y.get(), other_y.get(), lowest ? Py_GT : Py_LT)) return theirs;
    return nullptr;
  };
  for (auto [mine, theirs] : {std::pair{p1, p2}, std::pair{p2, p1}}) {
    Ref points = points_of(mine);
    Ref items = check(PyObject_GetIter(points.get()));
    while (Ref point = Ref::steal(PyIter_Next(items.get())))
      if (PyObject* w = winner(point.get(), mine, theirs)) return Ref::borrow(w);
    if (PyErr_Occurred()) throw PyError{};
  }
  return Ref::borrow(p1);
}

}  // namespace

constexpr Member lowest_or_highest_profile_member = class_method(
    "get_lowest_or_highest_profile_x", "(profile_1: Polyline, profile_2: Polyline, lowest: bool) -> Polyline",
    lowest_or_highest_profile,
    "The polyline that follows the lower (lowest true) or higher of two profiles ascending in x, over the\n"
    "stretch of x both cover.");
constexpr Member find_lowest_or_highest_member = static_method(
    "_find_lowest_or_highest_profile", "(p1: Polyline, p2: Polyline, lowest: bool) -> Polyline", find_lowest_or_highest,
    "Whichever of two parts lies lower (or higher) at the first point where they differ; p1 where\n"
    "they coincide.");

}  // namespace ostrel
