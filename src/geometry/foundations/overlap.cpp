// find_overlap: the common part of two closed 1D intervals. Ends that are floats go to
// the kernel; other numbers are compared as the host compares them.
#include "foundations/overlap.hpp"

#include "module/class_builder.hpp"
#include "module/definitions.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

bool compare(PyObject* a, PyObject* b, int op) { return check(PyObject_RichCompareBool(a, b, op)) != 0; }

// math.isclose(a, b) with no tolerance arguments.
bool plain_close(PyObject* a, PyObject* b) {
  const double x = as_double(a);
  return isclose(x, as_double(b), plain_tolerance);
}

// When start > end, `end, start = region`: the region is unpacked a second time.
void ascending(PyObject* region, Ref (&ends)[2]) {
  if (!compare(ends[0].get(), ends[1].get(), Py_GT)) return;
  unpack(region, 2, ends);
  std::swap(ends[0], ends[1]);
}

Ref find_overlap(const Args& a) {
  Ref region_a[2], region_b[2];
  unpack(a[0], 2, region_a);
  unpack(a[1], 2, region_b);
  ascending(a[0], region_a);
  ascending(a[1], region_b);
  const bool inclusive = truth(a[2]);
  PyObject *sa = region_a[0].get(), *ea = region_a[1].get(), *sb = region_b[0].get(), *eb = region_b[1].get();

  if (PyFloat_CheckExact(sa) && PyFloat_CheckExact(ea) && PyFloat_CheckExact(sb) && PyFloat_CheckExact(eb)) {
    const auto overlap = ostrel::find_overlap({PyFloat_AS_DOUBLE(sa), PyFloat_AS_DOUBLE(ea)},
                                              {PyFloat_AS_DOUBLE(sb), PyFloat_AS_DOUBLE(eb)}, inclusive);
    if (!overlap) return none();
    Ref start = new_float(overlap->start), end = new_float(overlap->end);
    return tuple({start.get(), end.get()});
  }

  if (inclusive) {
    if (!plain_close(sa, eb) && !plain_close(sb, ea) && (compare(sa, eb, Py_GT) || compare(sb, ea, Py_GT)))
      return none();
  } else if (plain_close(sa, eb) || plain_close(sb, ea) || compare(sa, eb, Py_GE) || compare(sb, ea, Py_GE)) {
    return none();
  }
  // max and min keep their first argument unless the second is strictly beyond it.
  PyObject* start = compare(sb, sa, Py_GT) ? sb : sa;
  PyObject* end = compare(eb, ea, Py_LT) ? eb : ea;
  return tuple({start, end});
}

}  // namespace

void define_find_overlap() {
  define_function("find_overlap",
                  "(region_a: Tuple[float, float], region_b: Tuple[float, float], inclusive: bool = False) -> "
                  "Union[Tuple[float, float], None]",
                  find_overlap,
                  "The overlap (start, end), ascending, of two intervals given by their ends in either order,\n"
                  "or None. Touching intervals overlap only when `inclusive` is true.");
}

}  // namespace ostrel
