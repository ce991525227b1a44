// The OBJ reader of vertices ("v") and faces ("f"), the latter fanned into triangles
// with 0-based indices. Every other statement, comments included, is ignored without
// a word, and nothing is validated: bad input fails with the host's own IndexError
// or ValueError where the documented steps meet it.
#include <string_view>

#include "exchange/obj_line.hpp"
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

using namespace std::string_view_literals;

enum class Parse { file };

Ref parse_vertices_and_faces(const Args& a) {
  Ref vertices = check(PyList_New(0)), faces = check(PyList_New(0));
  for_each_obj_line(a[Parse::file], [&](ObjLine& line) {
    if (line.blank()) return;
    switch (line.keyword({"v"sv, "f"sv})) {
      case 0:
        check(PyList_Append(vertices.get(), line.vertex().get()));
        break;
      case 1:
        line.add_faces(faces.get());
        break;
    }
  });
  return tuple({vertices.get(), faces.get()});
}
constexpr Member parse_vertices_and_faces_member =
    function("_parse_vertices_and_faces_from_obj", "(file: TextIO) -> Tuple", parse_vertices_and_faces,
             "([x, y, z] per vertex, [i, j, k] per triangle) of the OBJ text that file.readlines()\n"
             "gives; polygons become fans of triangles around their first corner, indices 0-based.");

}  // namespace

void define_obj_reader() { define_function(parse_vertices_and_faces_member); }

}  // namespace ostrel
