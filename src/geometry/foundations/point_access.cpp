#include "foundations/point_access.hpp"

#include "module/objects.hpp"

namespace ostrel {

namespace {

OwnGlobals point_global{"Point"};
OwnClass point_class_object("Point");

// Reads the float that an attribute of `o` holds into `out`; false when there is none.
bool float_attribute(PyObject* o, PyObject* name, double& out) {
  PyObject* value = PyObject_GetAttr(o, name);
  if (!value) {
    PyErr_Clear();
    return false;
  }
  const bool is_float = PyFloat_CheckExact(value);
  if (is_float) out = PyFloat_AS_DOUBLE(value);
  Py_DECREF(value);
  return is_float;
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

OwnClass& point_class() { return point_class_object; }

bool read_point_xy(PyObject* point, Vec3& p) {
  return point_class_object.admits(point) && float_attribute(point, id<"_x">(), p.x) &&
         float_attribute(point, id<"_y">(), p.y);
}

bool read_point_z(PyObject* point, Vec3& p) { return float_attribute(point, id<"_z">(), p.z); }

std::optional<Vec3> read_point(PyObject* point) {
  Vec3 p;
  if (read_point_xy(point, p) && read_point_z(point, p)) return p;
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

bool point_class_native() {
  OwnClass& cls = point_class();
  return cls.get() && point_global.hold() && cls.admits(cls.type());
}

Ref make_point(Vec3 p) {
  PyTypeObject* type = point_class().type();
  Ref no_arguments = check(PyTuple_New(0));
  Ref point = check(PyBaseObject_Type.tp_new(type, no_arguments.get(), nullptr));
  Ref x = new_float(p.x);
  setattr(point.get(), id<"_x">(), x.get());
  Ref y = new_float(p.y);
  setattr(point.get(), id<"_y">(), y.get());
  Ref z = new_float(p.z);
  setattr(point.get(), id<"_z">(), z.get());
  return point;
}

}  // namespace ostrel
