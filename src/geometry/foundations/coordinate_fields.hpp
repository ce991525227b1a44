// What Point and Vector share: three coordinate fields (_x, _y, _z of a Point, x, y, z
// of a Vector), stored as floats by the constructor, read by indexing, by a lazy
// iterator and by equality with the module tolerances. The guard of the class decides
// where the fields may be read and written directly.
#pragma once

#include "foundations/indexing.hpp"
#include "foundations/tolerance.hpp"
#include "foundations/vec3_kernel.hpp"
#include "module/boundary.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/lazy_iterator.hpp"
#include "module/native_path.hpp"

namespace ostrel {

template <Literal X, Literal Y, Literal Z, Literal ClassName>
struct CoordinateFields {
  static inline ClassGuard guard;
  // `ClassName(...)` makes an instance of exactly the guarded class, unchanged.
  static inline Natives natives{{&guard}};

  static Ref x_of(PyObject* o) { return getattr(o, id<X>()); }
  static Ref y_of(PyObject* o) { return getattr(o, id<Y>()); }
  static Ref z_of(PyObject* o) { return getattr(o, id<Z>()); }

  // The three fields of an instance of exactly the class, when all are floats.
  static std::optional<kernel::Vec3> read(PyObject* o) {
    double c[3];
    if (!read_floats(guard, o, {id<X>(), id<Y>(), id<Z>()}, c)) return std::nullopt;
    return kernel::Vec3{c[0], c[1], c[2]};
  }

  // A new instance of the class, made directly (the class must be intact).
  static Ref fresh(kernel::Vec3 v) {
    Ref fx = new_float(v.x), fy = new_float(v.y), fz = new_float(v.z);
    return new_instance(guard, {{id<X>(), fx.get()}, {id<Y>(), fy.get()}, {id<Z>(), fz.get()}});
  }

  // ClassName(x, y, z) through the module global of that name.
  static Ref make(kernel::Vec3 v) {
    if (Ref made = native_path(natives, [&] { return fresh(v); })) return made;
    Ref fx = new_float(v.x), fy = new_float(v.y), fz = new_float(v.z);
    return call(global<ClassName>().get(), {fx.get(), fy.get(), fz.get()});
  }

  static constexpr const char* init_signature = "(x: float, y: float, z: float = 0.0)";
  enum class Init { self, x, y, z };
  static Ref init(const Args& a) {
    Ref x = stored_float(a, Init::x), y = stored_float(a, Init::y), z = stored_float(a, Init::z);
    restore_slots(a.self());
    if (guard.admits(a.self())) {
      store_fields(a.self(), {{id<X>(), x.get()}, {id<Y>(), y.get()}, {id<Z>(), z.get()}});
    } else {
      setattr(a.self(), id<X>(), x.get());
      setattr(a.self(), id<Y>(), y.get());
      setattr(a.self(), id<Z>(), z.get());
    }
    return none();
  }

  // The class's own slots for a call of the class and for == and != of two instances:
  // while the class is as built and the arguments are plain, they do at once what
  // __init__ and __eq__ do; anything else takes the host's own protocol, which runs them.
  // A modified class has its slots set anew by the host (a subclass too), and the guard
  // turns these away meanwhile.
  static void install_slots() {
    PyTypeObject* type = reinterpret_cast<PyTypeObject*>(guard.cls());
    host_compare = type->tp_richcompare;
    type->tp_richcompare = richcompare;
    type->tp_vectorcall = construct;
  }
  // A patched __eq__ or __init__ has the host set the class's slots anew; once the class
  // is as built again (a test's monkeypatch undone), the members, called through those
  // slots, put the class's own back.
  static void restore_slots(PyObject* self) {
    PyTypeObject* type = Py_TYPE(self);
    if (type->tp_richcompare == richcompare && type->tp_vectorcall == construct) return;
    if (!guard.admits(self)) return;
    type->tp_richcompare = richcompare;
    type->tp_vectorcall = construct;
  }

  static constexpr const char* getitem_signature = "(index: int) -> float";
  enum class GetItem { self, index };
  static Ref get_coordinate(const Args& a) {
    static PyObject* const names[] = {id<X>(), id<Y>(), id<Z>()};
    return getattr(a.self(), names[coordinate_index(a[GetItem::index])]);
  }

  // The fields are read at the first next().
  static constexpr const char* iter_signature = "() -> Iterator";
  static Ref iter(const Args& a) { return make_lazy_iterator(a.self(), start_iteration); }

  // NotImplemented for other types; each field by math.isclose with both module
  // tolerances, stopping at the first that differs.
  static constexpr const char* eq_signature = "(other: object) -> bool";
  enum class Eq { self, other };
  static Ref eq(const Args& a) {
    PyObject* other = a[Eq::other];
    restore_slots(a.self());
    if (Ref r = native_path(natives, [&] {
          const auto mine = read(a.self()), theirs = mine ? read(other) : std::nullopt;
          const auto t = theirs ? native_tolerances() : std::nullopt;
          return t ? boolean(kernel::coincide(*mine, *theirs, t->module)) : Ref{};
        }))
      return r;
    if (!isinstance(other, global<ClassName>().get())) return Ref::borrow(Py_NotImplemented);
    kernel::Tolerance tolerance{};
    bool read_tolerance = false;
    for (Ref (*field)(PyObject*) : {x_of, y_of, z_of}) {
      Ref own = field(a.self()), their = field(other);
      if (!read_tolerance) tolerance = module_tolerance(), read_tolerance = true;
      if (!kernel::isclose(as_double(own.get()), as_double(their.get()), tolerance)) return boolean(false);
    }
    return boolean(true);
  }

 private:
  static inline richcmpfunc host_compare = nullptr;

  // A number that float() turns into a value without running any code: an exact float,
  // int or bool.
  static std::optional<double> exact_number(PyObject* o) {
    if (PyFloat_CheckExact(o)) return PyFloat_AS_DOUBLE(o);
    if (!PyLong_CheckExact(o) && !PyBool_Check(o)) return std::nullopt;
    const double v = PyLong_AsDouble(o);
    if (v == -1.0 && PyErr_Occurred()) {
      PyErr_Clear();  // too large: the host's call raises its own OverflowError
      return std::nullopt;
    }
    return v;
  }

  static PyObject* construct(PyObject* type, PyObject* const* args, size_t nargsf, PyObject* kwnames) {
    const Py_ssize_t n = PyVectorcall_NARGS(nargsf);
    if (!kwnames && (n == 2 || n == 3) && type == guard.cls() && guard.intact()) {
      double c[3] = {0.0, 0.0, 0.0};
      Py_ssize_t read = 0;
      for (; read < n; ++read) {
        const auto v = exact_number(args[read]);
        if (!v) break;
        c[read] = *v;
      }
      if (read == n) return enter([&] { return fresh({c[0], c[1], c[2]}); });
    }
    return enter([&] {
      Ref positional = check(PyTuple_New(n));
      for (Py_ssize_t i = 0; i < n; ++i) PyTuple_SET_ITEM(positional.get(), i, new_ref(args[i]));
      Ref keywords;
      if (kwnames) {
        keywords = check(PyDict_New());
        for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(kwnames); ++i)
          check(PyDict_SetItem(keywords.get(), PyTuple_GET_ITEM(kwnames, i), args[n + i]));
      }
      return check(PyType_Type.tp_call(type, positional.get(), keywords.get()));
    });
  }

  static PyObject* richcompare(PyObject* self, PyObject* other, int op) {
    if ((op == Py_EQ || op == Py_NE) && guard.admits(self) && guard.admits(other)) {
      double mine[3], theirs[3];
      const auto t = natives.hold() ? native_tolerances() : std::nullopt;
      if (t && read_floats(guard, self, {id<X>(), id<Y>(), id<Z>()}, mine) &&
          read_floats(guard, other, {id<X>(), id<Y>(), id<Z>()}, theirs)) {
        const bool equal = kernel::coincide({mine[0], mine[1], mine[2]}, {theirs[0], theirs[1], theirs[2]}, t->module);
        return new_ref(equal == (op == Py_EQ) ? Py_True : Py_False);
      }
    }
    return host_compare(self, other, op);
  }

  // The float the constructor stores for an argument: an exact float argument is
  // already that value.
  static Ref stored_float(const Args& a, Init i) {
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
