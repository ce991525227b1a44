// add_point: a point added to a list of unique points unless an equal one is there.
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// A new list (the argument is left as it is) and the index of the point in it.
enum class AddPoint { unique_points, point };
Ref add_point(const Args& a) {
  PyObject* point = a[AddPoint::point];
  Ref points = check(PySequence_List(a[AddPoint::unique_points]));
  // An __eq__ of the caller's can reach the list and change it: its size is read afresh.
  for (Py_ssize_t index = 0; index < PyList_GET_SIZE(points.get()); ++index) {
    Ref existing = Ref::borrow(PyList_GET_ITEM(points.get(), index));
    Ref equal = check(PyObject_RichCompare(existing.get(), point, Py_EQ));
    if (truth(equal.get())) {
      Ref found = new_int(index);
      return tuple({points.get(), found.get()});
    }
  }
  check(PyList_Append(points.get(), point));
  Ref appended = new_int(PyList_GET_SIZE(points.get()) - 1);
  return tuple({points.get(), appended.get()});
}
constexpr Member add_point_member =
    function("add_point", "(unique_points: List[Point], point: Point) -> Tuple[List[Point], int]", add_point,
             "A new list with `point` appended unless an equal point is in `unique_points`, and the\n"
             "index of the point in it.");

}  // namespace

void define_add_point() {
  for (const Member& m : {add_point_member}) define_function(m);
}

}  // namespace ostrel
