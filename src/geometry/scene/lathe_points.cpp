// Points in the lathe form of the solids of revolution: a list of {"x": ..., "y": ...}
// dicts, z dropped.
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

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

void define_lathe_points() { define_function(convert_points_for_lathe_member); }

}  // namespace ostrel
