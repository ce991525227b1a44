// The OBJ reader that also follows groups ("g") and materials ("usemtl"): the faces of
// each group with the material its last usemtl named, the vertex list shared by all
// groups. Every other statement is ignored, as by the plain reader.
#include <string_view>

#include "exchange/obj_line.hpp"
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

using namespace std::string_view_literals;

enum class Parse { file };

Ref parse_vertices_and_grouped_faces(const Args& a) {
  Ref faces_by_group = check(PyList_New(0)), vertices = check(PyList_New(0)), faces = check(PyList_New(0));
  Ref material_name = none();
  auto close_group = [&] {
    Ref group = tuple({faces.get(), material_name.get()});
    check(PyList_Append(faces_by_group.get(), group.get()));
  };
  for_each_obj_line(a[Parse::file], [&](ObjLine& line) {
    if (line.blank()) return;
    switch (line.keyword({"g"sv, "v"sv, "f"sv, "usemtl"sv})) {
      case 0:
        // A group without faces so far goes on, material included.
        if (PyList_GET_SIZE(faces.get()) == 0) break;
        close_group();
        faces = check(PyList_New(0));
        material_name = none();
        break;
      case 1:
        check(PyList_Append(vertices.get(), line.vertex().get()));
        break;
      case 2:
        line.add_faces(faces.get());
        break;
      case 3:
        // The last usemtl of a group names the material of all its faces.
        material_name = line.name();
        break;
    }
  });
  if (PyList_GET_SIZE(faces.get()) != 0) close_group();
  return tuple({vertices.get(), faces_by_group.get()});
}
constexpr Member parse_vertices_and_grouped_faces_member =
    function("_parse_vertices_and_grouped_faces_from_obj", "(file: TextIO) -> Tuple", parse_vertices_and_grouped_faces,
             "(vertices, [(faces, material_name), ...]): the faces of each group that has any, with\n"
             "the material its last usemtl named or None; the vertex list is shared by all groups.");

}  // namespace

void define_grouped_obj_reader() { define_function(parse_vertices_and_grouped_faces_member); }

}  // namespace ostrel
