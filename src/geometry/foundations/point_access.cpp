#include "foundations/point_access.hpp"

#include "module/own_globals.hpp"

namespace ostrel {

namespace {

OwnGlobals point_global{"Point"};

bool floats(PyObject* point, std::initializer_list<PyObject*> names, double* out) {
  try {
    return read_floats(point_class(), point, names, out);
  } catch (const PyError&) {
    PyErr_Clear();
    return false;
  }
}

// An item that the float conversion of Point.__init__ takes without running code of
// the caller's: a float (the host reads the value of a float subclass directly), an
// exact int that fits, or a bool.
std::optional<double> plain_number(PyObject* o) {
  if (PyFloat_Check(o)) return PyFloat_AS_DOUBLE(o);
  if (PyLong_CheckExact(o) || PyBool_Check(o)) {
    const double v = PyLong_AsDouble(o);
    if (v == -1.0 && PyErr_Occurred()) {
      PyErr_Clear();
      return std::nullopt;
    }
    return v;
  }
  return std::nullopt;
}

}  // namespace

bool point_class_native() { return point_global.hold() && point_class().intact(); }

bool read_point_xy(PyObject* point, Vec3& p) {
  double xy[2];
  if (!floats(point, {id<"_x">(), id<"_y">()}, xy)) return false;
  p.x = xy[0];
  p.y = xy[1];
  return true;
}

bool read_point_z(PyObject* point, Vec3& p) { return floats(point, {id<"_z">()}, &p.z); }

std::optional<Vec3> read_point(PyObject* point) {
  double c[3];
  if (floats(point, {id<"_x">(), id<"_y">(), id<"_z">()}, c)) return Vec3{c[0], c[1], c[2]};
  return std::nullopt;
}

std::optional<Vec3> read_point_like(PyObject* point) {
  if (!PyTuple_CheckExact(point) && !PyList_CheckExact(point)) return read_point(point);
  const Py_ssize_t n = PySequence_Fast_GET_SIZE(point);
  if (n != 2 && n != 3) return std::nullopt;
  PyObject** items = PySequence_Fast_ITEMS(point);
  double c[3] = {0.0, 0.0, 0.0};
  for (Py_ssize_t i = 0; i < n; ++i) {
    const auto v = plain_number(items[i]);
    if (!v) return std::nullopt;
    c[i] = *v;
  }
  return Vec3{c[0], c[1], c[2]};
}

}  // namespace ostrel
