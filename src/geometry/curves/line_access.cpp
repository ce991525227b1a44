#include "curves/line_access.hpp"

#include <limits>

#include "foundations/point_access.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

OwnGlobals line_global{"Line"};
OwnClass line_class_object("Line");

std::optional<double> tolerance_value(PyObject* name) {
  PyObject* value = PyDict_GetItemWithError(module_dict(), name);
  if (!value) {
    PyErr_Clear();
    return std::nullopt;
  }
  double v;
  if (PyFloat_CheckExact(value)) {
    v = PyFloat_AS_DOUBLE(value);
  } else if (PyLong_CheckExact(value)) {
    v = PyLong_AsDouble(value);
    if (v == -1.0 && PyErr_Occurred()) {
      PyErr_Clear();
      return std::nullopt;
    }
  } else {
    return std::nullopt;
  }
  if (v < 0.0) return std::nullopt;
  return v;
}

}  // namespace

OwnClass& line_class() { return line_class_object; }

bool hold_line_xy(PyObject* line, HeldLine& held) {
  if (!line_class_object.admits(line)) return false;
  held.start = Ref::steal(PyObject_GetAttr(line, id<"_start_point">()));
  if (held.start) held.end = Ref::steal(PyObject_GetAttr(line, id<"_end_point">()));
  if (!held.end) {
    PyErr_Clear();
    return false;
  }
  return read_point_xy(held.start.get(), held.segment.start) && read_point_xy(held.end.get(), held.segment.end);
}

bool read_z(HeldLine& held) {
  return read_point_z(held.start.get(), held.segment.start) && read_point_z(held.end.get(), held.segment.end);
}

std::optional<Segment> read_line(PyObject* line) {
  HeldLine held;
  if (hold_line_xy(line, held) && read_z(held)) return held.segment;
  return std::nullopt;
}

std::optional<Segment> read_line_xy(PyObject* line) {
  HeldLine held;
  if (!hold_line_xy(line, held)) return std::nullopt;
  held.segment.start.z = held.segment.end.z = std::numeric_limits<double>::quiet_NaN();
  return held.segment;
}

bool line_class_native() {
  return line_class_object.get() && line_global.hold() && line_class_object.admits(line_class_object.type()) &&
         point_class_native();
}

Ref make_line(const Segment& s) {
  PyTypeObject* type = line_class_object.type();
  Ref no_arguments = check(PyTuple_New(0));
  Ref line = check(PyBaseObject_Type.tp_new(type, no_arguments.get(), nullptr));
  Ref start = make_point(s.start);
  Ref end = make_point(s.end);
  setattr(line.get(), id<"_start_point">(), start.get());
  setattr(line.get(), id<"_end_point">(), end.get());
  return line;
}

std::optional<Tolerances> current_tolerances() {
  const auto rel = tolerance_value(id<"ISCLOSE_RTOL">());
  if (!rel) return std::nullopt;
  const auto abs = tolerance_value(id<"ISCLOSE_ATOL">());
  if (!abs) return std::nullopt;
  return Tolerances{{*rel, *abs}, {1e-9, *abs}};
}

std::optional<bool> plain_truth(PyObject* o) {
  if (o == Py_True) return true;
  if (o == Py_False || o == Py_None) return false;
  if (PyLong_CheckExact(o)) return PyObject_IsTrue(o) != 0;  // cannot fail for an int
  return std::nullopt;
}

Ref end_coordinate(PyObject* line, PyObject* end, PyObject* c) {
  Ref point = getattr(line, end);
  return getattr(point.get(), c);
}

Ref compare(PyObject* a, PyObject* b, int op) { return check(PyObject_RichCompare(a, b, op)); }

}  // namespace ostrel
