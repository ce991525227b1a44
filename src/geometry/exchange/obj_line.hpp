// One statement line of an OBJ file, as the readers see it: the words of
// `line.split()`, the keyword split[0] and the values of the statements they know.
// Each operation raises what the documented expression raises (IndexError for a
// missing word, ValueError from float() or int()).
#pragma once

#include <functional>
#include <initializer_list>
#include <string_view>

#include "module/ref.hpp"

namespace ostrel {

class ObjLine {
 public:
  virtual ~ObjLine() = default;
  // `not line.split()`
  virtual bool blank() = 0;
  // The position of the first of `keywords` that `split[0] == keyword` holds for,
  // tested in order; -1 where none does.
  virtual int keyword(std::initializer_list<std::string_view> keywords) = 0;
  // [float(split[1]), float(split[2]), float(split[3])]
  virtual Ref vertex() = 0;
  // The face statement: the fan of triangles [a, b, c] around the first corner of
  // split[1:], each index int(word.split("/")[0]) - 1, appended to `faces`.
  virtual void add_faces(PyObject* faces) = 0;
  // split[1]
  virtual Ref name() = 0;
};

// Calls `visit` with each item of `file.readlines()`, in order.
void for_each_obj_line(PyObject* file, const std::function<void(ObjLine&)>& visit);

}  // namespace ostrel
