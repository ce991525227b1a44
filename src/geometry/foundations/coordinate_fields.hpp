// What Point and Vector share: three coordinate fields in the instance dict (_x, _y, _z
// of a Point, x, y, z of a Vector), stored as floats by the constructor, read by
// indexing, by a lazy iterator and by equality with the module tolerances. The guard
// of the class decides where the fields may be read and written directly.
#pragma once

#include "foundations/indexing.hpp"
#include "foundations/tolerance.hpp"
#include "module/function.hpp"
#include "module/globals.hpp"
#include "module/instance.hpp"
#include "module/lazy_iterator.hpp"
#include "module/own_globals.hpp"

namespace ostrel {

template <Literal X, Literal Y, Literal Z, Literal ClassName>
struct CoordinateFields {
  static inline ClassGuard guard;
  static inline OwnGlobals class_global{ClassName.text};

  static Ref x_of(PyObject* o) { return field(guard, o, id<X>()); }
  static Ref y_of(PyObject* o) { return field(guard, o, id<Y>()); }
  static Ref z_of(PyObject* o) { return field(guard, o, id<Z>()); }

  // The three fields of an instance of exactly the class, when all are floats.
  static bool floats_of(PyObject* o, double* out) { return read_floats(guard, o, {id<X>(), id<Y>(), id<Z>()}, out); }

  // A new instance of the class, made directly (the class must be intact).
  static Ref fresh(double x, double y, double z) {
    Ref fx = new_float(x), fy = new_float(y), fz = new_float(z);
    return new_instance(guard, {{id<X>(), fx.get()}, {id<Y>(), fy.get()}, {id<Z>(), fz.get()}});
  }

  // ClassName(x, y, z) through the module global of that name.
  static Ref make(double x, double y, double z) {
    Ref cls = global<ClassName>();
    if (cls.get() == guard.cls() && guard.intact()) return fresh(x, y, z);
    Ref fx = new_float(x), fy = new_float(y), fz = new_float(z);
    return call(cls.get(), {fx.get(), fy.get(), fz.get()});
  }

  // The fields as doubles, of any object that has them.
  static Vec3 coordinates(PyObject* o) {
    if (double c[3]; floats_of(o, c)) return {c[0], c[1], c[2]};
    Ref x = x_of(o), y = y_of(o), z = z_of(o);
    return {as_double(x.get()), as_double(y.get()), as_double(z.get())};
  }

  // __init__(x: float, y: float, z: float = 0.0)
  static Ref init(const Args& a) {
    Ref x = stored_float(a, 1), y = stored_float(a, 2), z = stored_float(a, 3);
    if (guard.admits(a.self())) {
      store_fields(a.self(), {{id<X>(), x.get()}, {id<Y>(), y.get()}, {id<Z>(), z.get()}});
    } else {
      setattr(a.self(), id<X>(), x.get());
      setattr(a.self(), id<Y>(), y.get());
      setattr(a.self(), id<Z>(), z.get());
    }
    return none();
  }

  // __getitem__(index: int)
  static Ref get_coordinate(const Args& a) {
    static PyObject* const names[] = {id<X>(), id<Y>(), id<Z>()};
    return getattr(a.self(), names[coordinate_index(a[1])]);
  }

  // __iter__(): the fields are read at the first next().
  static Ref iter(const Args& a) { return make_lazy_iterator(a.self(), start_iteration); }

  // __eq__(other): NotImplemented for other types; each field by math.isclose with both
  // module tolerances, stopping at the first that differs.
  static Ref eq(const Args& a) {
    PyObject* other = a[1];
    const bool own_instance = guard.admits(other) && class_global.hold();
    if (!own_instance && !isinstance(other, global<ClassName>().get())) return Ref::borrow(Py_NotImplemented);
    double mine[3], theirs[3];
    if (floats_of(a.self(), mine) && floats_of(other, theirs)) {
      const Tolerance t = module_tolerance();
      return boolean(isclose(mine[0], theirs[0], t) && isclose(mine[1], theirs[1], t) &&
                     isclose(mine[2], theirs[2], t));
    }
    Tolerance t{};
    bool read_tolerance = false;
    for (Ref (*read)(PyObject*) : {x_of, y_of, z_of}) {
      Ref own = read(a.self()), their = read(other);
      if (!read_tolerance) t = module_tolerance(), read_tolerance = true;
      if (!isclose(as_double(own.get()), as_double(their.get()), t)) return boolean(false);
    }
    return boolean(true);
  }

 private:
  // The float the constructor stores for argument i: an exact float argument is
  // already that value.
  static Ref stored_float(const Args& a, size_t i) {
    return PyFloat_CheckExact(a[i]) ? Ref::borrow(a[i]) : new_float(a.num(i));
  }

  static Ref start_iteration(PyObject* self) {
    Ref x = x_of(self), y = y_of(self), z = z_of(self);
    Ref items = tuple({x.get(), y.get(), z.get()});
    return check(PyObject_GetIter(items.get()));
  }
};

using PointFields = CoordinateFields<"_x", "_y", "_z", "Point">;
using VectorFields = CoordinateFields<"x", "y", "z", "Vector">;

}  // namespace ostrel
