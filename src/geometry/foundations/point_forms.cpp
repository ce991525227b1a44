// Points handed on in other forms: the array from one point to another, and the
// lathe form, a list of {"x": ..., "y": ...} dicts.
#include "foundations/numpy_calls.hpp"
#include "module/class_builder.hpp"

namespace ostrel {

namespace {

// np.array(tuple(point))
Ref point_array(PyObject* point) {
  Ref array = np_attr<"array">();
  Ref coordinates = check(PySequence_Tuple(point));
  return call(array.get(), {coordinates.get()});
}

enum class CalculateDistanceVector { start_point, end_point };
Ref calculate_distance_vector(const Args& a) {
  Ref end = point_array(a[CalculateDistanceVector::end_point]);
  Ref start = point_array(a[CalculateDistanceVector::start_point]);
  return check(PyNumber_Subtract(end.get(), start.get()));
}
constexpr Member calculate_distance_vector_member =
    function("calculate_distance_vector", "(start_point: Point, end_point: Point) -> np.ndarray",
             calculate_distance_vector, "The array of the vector from `start_point` to `end_point`.");

enum class ConvertPointsForLathe { points };
Ref convert_points_for_lathe(const Args& a) {
  Ref result = check(PyList_New(0));
  Ref it = check(PyObject_GetIter(a[ConvertPointsForLathe::points]));
  while (Ref point = Ref::steal(PyIter_Next(it.get()))) {
    Ref x = getattr(point.get(), id<"x">());
    Ref fx = check(PyNumber_Float(x.get()));
    Ref y = getattr(point.get(), id<"y">());
    Ref fy = check(PyNumber_Float(y.get()));
    Ref entry = check(PyDict_New());
    check(PyDict_SetItem(entry.get(), id<"x">(), fx.get()));
    check(PyDict_SetItem(entry.get(), id<"y">(), fy.get()));
    check(PyList_Append(result.get(), entry.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  return result;
}
constexpr Member convert_points_for_lathe_member =
    function("convert_points_for_lathe", "(points: Sequence[Point]) -> List[dict]", convert_points_for_lathe,
             "The points as a new list of dicts {\"x\": x, \"y\": y}, in order; z is dropped.");

}  // namespace

void define_point_forms() {
  for (const Member& m : {calculate_distance_vector_member, convert_points_for_lathe_member}) define_function(m);
}

}  // namespace ostrel
