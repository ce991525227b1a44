// The array of the vector from one point to another.
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

}  // namespace

void define_point_forms() {
  define_function(calculate_distance_vector_member);
}

}  // namespace ostrel
