// Whether points, or the ends of two lines, lie in one plane: the rank of the points
// taken relative to the last one, with NumPy's default tolerance.
#include "foundations/numpy_calls.hpp"
#include "module/class_builder.hpp"

namespace ostrel {

namespace {

enum class PointsAreCoplanar { points };
Ref points_are_coplanar(const Args& a) {
  PyObject* points = a[PointsAreCoplanar::points];
  const Py_ssize_t count = PyObject_Size(points);
  if (count < 0) throw PyError{};
  if (count < 3) raise(PyExc_ValueError, "Need at least 3 points");
  if (count == 3) return boolean(true);  // three points always share a plane

  Ref array = np_attr<"array">();
  Ref all_but_last = slice_to(-1);
  Ref head = subscript(points, all_but_last.get());
  Ref rows = check(PyList_New(0));
  Ref it = check(PyObject_GetIter(head.get()));
  while (Ref point = Ref::steal(PyIter_Next(it.get()))) {
    Ref row = check(PySequence_Tuple(point.get()));
    check(PyList_Append(rows.get(), row.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref relative = call(array.get(), {rows.get()});
  Ref last = getitem(points, -1);
  Ref origin = check(PySequence_Tuple(last.get()));
  Ref matrix = check(PyNumber_Subtract(relative.get(), origin.get()));

  Ref linalg = np_attr<"linalg">();
  Ref matrix_rank = getattr(linalg.get(), id<"matrix_rank">());
  Ref rank = call(matrix_rank.get(), {matrix.get()});
  Ref two = new_int(2);
  return check(PyObject_RichCompare(rank.get(), two.get(), Py_LE));  // NumPy's bool
}
constexpr Member points_are_coplanar_member =
    function("points_are_coplanar", "(points: Sequence[Point-like]) -> bool", points_are_coplanar,
             "Whether the points lie in one plane; three points always do. Needs at least three.");

enum class LinesInSamePlane { line1, line2 };
Ref lines_in_same_plane(const Args& a) {
  Ref coplanar = global<"points_are_coplanar">();
  Ref s1 = getattr(a[LinesInSamePlane::line1], id<"start_point">());
  Ref e1 = getattr(a[LinesInSamePlane::line1], id<"end_point">());
  Ref s2 = getattr(a[LinesInSamePlane::line2], id<"start_point">());
  Ref e2 = getattr(a[LinesInSamePlane::line2], id<"end_point">());
  Ref ends = list({s1.get(), e1.get(), s2.get(), e2.get()});
  return call(coplanar.get(), {ends.get()});
}
constexpr Member lines_in_same_plane_member =
    function("lines_in_same_plane", "(line1: Line, line2: Line) -> bool", lines_in_same_plane,
             "Whether the start and end points of the two lines lie in one plane.");

}  // namespace

void define_coplanarity() {
  for (const Member& m : {points_are_coplanar_member, lines_in_same_plane_member}) define_function(m);
}

}  // namespace ostrel
