// The lines of an OBJ file. A line of ASCII text is split and its numbers read here,
// with the host's own float() and int() only for words that are not plain decimal
// numbers; any other line (non-ASCII text, bytes, a str of a subclass) goes through the
// host's own operations on the object readlines() gave.
#include "exchange/obj_line.hpp"

#include <optional>
#include <string_view>
#include <vector>

#include "exchange/obj_kernel.hpp"
#include "module/instance.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// A line of any kind: `line.split()` and the rest through the host, step by step. A
// bytes line splits into bytes words, which equal no keyword.
class HostLine final : public ObjLine {
 public:
  explicit HostLine(PyObject* line) : split_(call_method(line, id<"split">(), {})) {}

  bool blank() override { return !truth(split_.get()); }

  int keyword(std::initializer_list<std::string_view> keywords) override {
    int position = 0;
    for (const std::string_view k : keywords) {
      Ref first = getitem(split_.get(), 0);
      Ref word = check(PyUnicode_FromStringAndSize(k.data(), static_cast<Py_ssize_t>(k.size())));
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

// The index objects of the faces, `int(...) - 1`: one object per value, so that a
// million faces do not make three million ints. Only values below `limit` are kept,
// which the reader sets a little above the number of vertices so far: indices point at
// vertices, and a stray large one must not make the table large.
class IndexObjects {
 public:
  // The object of `value`, borrowed: a kept one, or a new one held in `fresh`.
  PyObject* get(long long value, long long limit, std::vector<Ref>& fresh) {
    if (value < 0 || value >= limit) {
      fresh.push_back(new_int(value));
      return fresh.back().get();
    }
    const auto at = static_cast<std::size_t>(value);
    if (at >= objects_.size()) objects_.resize(at + 1);
    if (!objects_[at]) objects_[at] = new_int(value);
    return objects_[at].get();
  }

 private:
  std::vector<Ref> objects_;
};

// A line of ASCII text of the exact str type, split here into views of its bytes.
class TextLine final : public ObjLine {
 public:
  explicit TextLine(IndexObjects& indices) : indices_(indices) {}

  void read(PyObject* line) {
    const auto* bytes = reinterpret_cast<const char*>(PyUnicode_1BYTE_DATA(line));
    kernel::split_words({bytes, static_cast<std::size_t>(PyUnicode_GET_LENGTH(line))}, words_);
  }

  bool blank() override { return words_.empty(); }

  int keyword(std::initializer_list<std::string_view> keywords) override {
    int position = 0;
    for (const std::string_view k : keywords) {
      if (words_[0] == k) return position;
      ++position;
    }
    return -1;
  }

  Ref vertex() override {
    ++vertices_;
    Ref c[3];
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string_view word = at(i + 1);
      const auto value = kernel::decimal_float(word);
      if (value) {
        c[i] = new_float(*value);
      } else {
        Ref text = str(word);
        c[i] = check(PyFloat_FromString(text.get()));
      }
    }
    return list({c[0].get(), c[1].get(), c[2].get()});
  }

  void add_faces(PyObject* faces) override {
    const std::size_t corners = words_.size() - 1;
    if (corners < 3) return;
    // Each corner's index is read once, in order: the first bad one raises, as it
    // does where the fan first reads it.
    corner_indices_.clear();
    fresh_.clear();
    for (std::size_t i = 1; i <= corners; ++i) corner_indices_.push_back(index(words_[i]));
    for (std::size_t i = 1; i + 1 < corners; ++i) {
      Ref triangle = list({corner_indices_[0], corner_indices_[i], corner_indices_[i + 1]});
      check(PyList_Append(faces, triangle.get()));
    }
  }

  Ref name() override { return str(at(1)); }

 private:
  std::string_view at(std::size_t i) const {
    if (i >= words_.size()) raise(PyExc_IndexError, "list index out of range");
    return words_[i];
  }

  static Ref str(std::string_view word) {
    return check(PyUnicode_FromStringAndSize(word.data(), static_cast<Py_ssize_t>(word.size())));
  }

  // int(word.split("/")[0]) - 1, borrowed from the kept indices or from fresh_.
  PyObject* index(std::string_view word) {
    const std::string_view number = kernel::before_slash(word);
    if (const auto value = kernel::decimal_int(number)) return indices_.get(*value - 1, vertices_ + 1024, fresh_);
    Ref text = str(number);
    Ref value = check(PyLong_FromUnicodeObject(text.get(), 10));
    Ref one = new_int(1);
    fresh_.push_back(check(PyNumber_Subtract(value.get(), one.get())));
    return fresh_.back().get();
  }

  IndexObjects& indices_;
  long long vertices_ = 0;  // vertex statements read so far
  std::vector<std::string_view> words_;
  std::vector<PyObject*> corner_indices_;  // borrowed from indices_ or fresh_
  std::vector<Ref> fresh_;                 // the indices of this line that are not kept
};

bool is_ascii_text(PyObject* line) {
  if (!PyUnicode_CheckExact(line)) return false;
#if PY_VERSION_HEX < 0x030C0000
  if (PyUnicode_READY(line) != 0) {  // a str of the old wide kind that cannot be converted
    PyErr_Clear();
    return false;
  }
#endif
  return PyUnicode_IS_ASCII(line);
}

// Whether reading every line runs no code of the caller's: a list or tuple of exact
// str objects, whose str operations are the host's own.
bool plain_lines(PyObject* lines) {
  if (!PyList_CheckExact(lines) && !PyTuple_CheckExact(lines)) return false;
  const Py_ssize_t count = PySequence_Fast_GET_SIZE(lines);
  for (Py_ssize_t i = 0; i < count; ++i)
    if (!PyUnicode_CheckExact(PySequence_Fast_GET_ITEM(lines, i))) return false;
  return true;
}

}  // namespace

void for_each_obj_line(PyObject* file, const std::function<void(ObjLine&)>& visit) {
  Ref lines = call_method(file, id<"readlines">(), {});
  IndexObjects indices;
  TextLine text(indices);
  auto read = [&](PyObject* line) {
    if (is_ascii_text(line)) {
      text.read(line);
      visit(text);
    } else {
      HostLine host(line);
      visit(host);
    }
  };
  if (plain_lines(lines.get())) {
    // The result lists hold numbers only, and the collections that millions of new
    // lists would set off pass over everything the process holds: held off, as no code
    // of the caller's runs meanwhile.
    CollectorPause pause;
    // A list that only this call holds, as a fresh readlines() gives it, lets go of
    // each line once it is read: the text of a large file is not kept beside all of
    // its result.
    const bool owned = PyList_CheckExact(lines.get()) && Py_REFCNT(lines.get()) == 1;
    for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(lines.get()); ++i) {
      Ref line = Ref::borrow(PySequence_Fast_GET_ITEM(lines.get(), i));
      if (owned) PyList_SetItem(lines.get(), i, new_ref(Py_None));  // cannot fail: the index is in range
      read(line.get());
    }
    return;
  }
  Ref items = check(PyObject_GetIter(lines.get()));
  while (Ref line = Ref::steal(PyIter_Next(items.get()))) read(line.get());
  if (PyErr_Occurred()) throw PyError{};
}

}  // namespace ostrel
