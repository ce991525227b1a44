#include "curves/line_access.hpp"

#include <limits>

#include "foundations/point_access.hpp"
#include "foundations/vector.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"
#include "module/own_globals.hpp"

namespace ostrel {

namespace {

ClassGuard guard;
OwnGlobals line_global{"Line"};
OwnGlobals vector_global{"Vector"};

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

ClassGuard& line_class() { return guard; }

bool holds_only_fields(PyObject* o, Py_ssize_t n) {
  Ref dict = Ref::steal(PyObject_GenericGetDict(o, nullptr));
  if (!dict) PyErr_Clear();
  return dict && PyDict_GET_SIZE(dict.get()) == n;
}

bool hold_line_xy(PyObject* line, HeldLine& held) {
  if (!guard.admits(line)) return false;
  Ref dict = Ref::steal(PyObject_GenericGetDict(line, nullptr));
  if (!dict || PyDict_GET_SIZE(dict.get()) != 2) {
    PyErr_Clear();
    return false;
  }
  held.start = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_start_point">()));
  held.end = Ref::borrow(PyDict_GetItemWithError(dict.get(), id<"_end_point">()));
  if (!held.start || !held.end) {
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

bool line_class_native() { return line_global.hold() && guard.intact() && point_class_native(); }

bool vector_class_native() { return vector_global.hold() && vector_class().intact(); }

Ref make_line(const Segment& s) {
  Ref start = make_point(s.start.x, s.start.y, s.start.z);
  Ref end = make_point(s.end.x, s.end.y, s.end.z);
  return new_instance(guard, {{id<"_start_point">(), start.get()}, {id<"_end_point">(), end.get()}});
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
