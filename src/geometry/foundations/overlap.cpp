// find_overlap: the common part of two closed 1D intervals. Ends that are floats go to
// the kernel; other numbers are compared as the host compares them.
#include "foundations/overlap_kernel.hpp"
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// math.isclose(a, b) with no tolerance arguments.
bool plain_close(PyObject* a, PyObject* b) {
  const double x = as_double(a);
  return kernel::isclose(x, as_double(b), kernel::plain_tolerance);
}

// When start > end, `end, start = region`: the region is unpacked a second time.
void ascending(PyObject* region, Ref (&ends)[2]) {
  if (!compares(ends[0].get(), ends[1].get(), Py_GT)) return;
  unpack(region, 2, ends);
  std::swap(ends[0], ends[1]);
}

enum class FindOverlap { region_a, region_b, inclusive };
Ref find_overlap(const Args& a) {
  Ref region_a[2], region_b[2];
  unpack(a[FindOverlap::region_a], 2, region_a);
  unpack(a[FindOverlap::region_b], 2, region_b);
  ascending(a[FindOverlap::region_a], region_a);
  ascending(a[FindOverlap::region_b], region_b);
  const bool inclusive = truth(a[FindOverlap::inclusive]);
  PyObject *sa = region_a[0].get(), *ea = region_a[1].get(), *sb = region_b[0].get(), *eb = region_b[1].get();

  if (PyFloat_CheckExact(sa) && PyFloat_CheckExact(ea) && PyFloat_CheckExact(sb) && PyFloat_CheckExact(eb)) {
    const auto overlap = kernel::find_overlap({PyFloat_AS_DOUBLE(sa), PyFloat_AS_DOUBLE(ea)},
                                              {PyFloat_AS_DOUBLE(sb), PyFloat_AS_DOUBLE(eb)}, inclusive);
    if (!overlap) return none();
    Ref start = new_float(overlap->start), end = new_float(overlap->end);
    return tuple({start.get(), end.get()});
  }

  if (inclusive) {
    if (!plain_close(sa, eb) && !plain_close(sb, ea) && (compares(sa, eb, Py_GT) || compares(sb, ea, Py_GT)))
      return none();
  } else if (plain_close(sa, eb) || plain_close(sb, ea) || compares(sa, eb, Py_GE) || compares(sb, ea, Py_GE)) {
    return none();
  }
  // max and min keep their first argument unless the second is strictly beyond it.
  PyObject* start = compares(sb, sa, Py_GT) ? sb : sa;
  PyObject* end = compares(eb, ea, Py_LT) ? eb : ea;
  return tuple({start, end});
}
constexpr Member find_overlap_member =
    function("find_overlap",
             "(region_a: Tuple[float, float], region_b: Tuple[float, float], inclusive: bool = False) -> "
             "Union[Tuple[float, float], None]",
             find_overlap,
             "The overlap (start, end), ascending, of two intervals given by their ends in either order,\n"
             "or None. Touching intervals overlap only when `inclusive` is true.");

}  // namespace

void define_overlap() {
  for (const Member& m : {find_overlap_member}) define_function(m);
}

}  // namespace ostrel
