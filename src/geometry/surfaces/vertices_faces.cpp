// The vertex and face lists of triangles: add_point, a point added to a list of unique
// points unless an equal one is there, and get_vertices_faces of a list of triangles.
#include "module/class_builder.hpp"
#include "module/globals.hpp"
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

enum class GetVerticesFaces { triangles };
Ref get_vertices_faces(const Args& a) {
  Ref assembly = call_kw(global<"TriangleAssembly">().get(), {a[GetVerticesFaces::triangles]},
                         {{id<"skip_duplicate_vertices_check">(), Py_False}});
  return call_method(assembly.get(), id<"_get_vertices_and_faces">(), {});
}
constexpr Member get_vertices_faces_member =
    function("get_vertices_faces", "(triangles: List[Triangle]) -> Tuple", get_vertices_faces,
             "The vertex list and face list of the triangles, equal corners merged into one vertex.");

}  // namespace

void define_vertices_faces() {
  for (const Member& m : {add_point_member, get_vertices_faces_member}) define_function(m);
}

}  // namespace ostrel
