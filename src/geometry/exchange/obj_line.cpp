// The lines of an OBJ file, each taken through the host's own operations on the
// object readlines() gave.
#include "exchange/obj_line.hpp"

#include "module/objects.hpp"

namespace ostrel {

namespace {

// A line of any kind: `line.split()` and the rest through the host, step by step. A
// bytes line splits into bytes words, which equal no keyword.
class HostLine final : public ObjLine {
 public:
  explicit HostLine(PyObject* line) : split_(call_method(line, id<"split">(), {})) {}

  bool blank() override { return !truth(split_.get()); }

  int keyword(std::initializer_list<const char*> keywords) override {
    int position = 0;
    for (const char* k : keywords) {
      Ref first = getitem(split_.get(), 0);
      Ref word = new_str(k);
      if (compares(first.get(), word.get(), Py_EQ)) return position;
      ++position;
    }
    return -1;
  }

  Ref vertex() override {
    Ref c[3];
    for (Py_ssize_t i = 0; i < 3; ++i) {
      Ref word = getitem(split_.get(), i + 1);
      c[i] = check(PyNumber_Float(word.get()));
    }
    return list({c[0].get(), c[1].get(), c[2].get()});
  }

  void add_faces(PyObject* faces) override {
    Ref corners = check(PySequence_GetSlice(split_.get(), 1, PY_SSIZE_T_MAX));
    const Py_ssize_t count = check(PyObject_Size(corners.get()));
    for (Py_ssize_t i = 1; i < count - 1; ++i) {
      Ref a = index(corners.get(), 0), b = index(corners.get(), i), c = index(corners.get(), i + 1);
      Ref triangle = list({a.get(), b.get(), c.get()});
      check(PyList_Append(faces, triangle.get()));
    }
  }

  Ref name() override { return getitem(split_.get(), 1); }

 private:
  // int(corners[i].split("/")[0]) - 1
  static Ref index(PyObject* corners, Py_ssize_t i) {
    Ref word = getitem(corners, i);
    Ref slash = new_str("/");
    Ref parts = call_method(word.get(), id<"split">(), {slash.get()});
    Ref first = getitem(parts.get(), 0);
    Ref number = check(PyNumber_Long(first.get()));
    Ref one = new_int(1);
    return check(PyNumber_Subtract(number.get(), one.get()));
  }

  Ref split_;
};

}  // namespace

void for_each_obj_line(PyObject* file, const std::function<void(ObjLine&)>& visit) {
  Ref lines = call_method(file, id<"readlines">(), {});
  Ref items = check(PyObject_GetIter(lines.get()));
  while (Ref line = Ref::steal(PyIter_Next(items.get()))) {
    HostLine host(line.get());
    visit(host);
  }
  if (PyErr_Occurred()) throw PyError{};
}

}  // namespace ostrel
