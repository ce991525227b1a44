// circumference_is_clockwise: the orientation of a closed ring of Points in the xy
// plane. A ring of plain Points (a list or tuple) is read once into doubles and summed
// by the kernel; anything else, or a replaced _current_next, is walked as Python would.
#include <vector>

#include "foundations/current_next.hpp"
#include "foundations/orientation_kernel.hpp"
#include "foundations/point.hpp"
#include "foundations/tolerance.hpp"
#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// total += (next.x - current.x) * (next.y + current.y) over the pairs `pairs` yields,
// in the host's arithmetic; returns `total >= 0` as that arithmetic gives it.
Ref python_orientation(PyObject* pairs) {
  Ref total = new_float(0.0);
  Ref it = check(PyObject_GetIter(pairs));
  while (Ref pair = Ref::steal(PyIter_Next(it.get()))) {
    Ref points[2];
    unpack(pair.get(), 2, points);
    PyObject *current = points[0].get(), *next = points[1].get();
    Ref nx = getattr(next, id<"x">()), cx = getattr(current, id<"x">());
    Ref dx = sub(nx.get(), cx.get());
    Ref ny = getattr(next, id<"y">()), cy = getattr(current, id<"y">());
    Ref sy = add(ny.get(), cy.get());
    Ref term = mul(dx.get(), sy.get());
    total = check(PyNumber_InPlaceAdd(total.get(), term.get()));
  }
  if (PyErr_Occurred()) throw PyError{};
  Ref zero = new_int(0);
  return check(PyObject_RichCompare(total.get(), zero.get(), Py_GE));
}

enum class CircumferenceIsClockwise { circumference };
Ref circumference_is_clockwise(const Args& a) {
  PyObject* circumference = a[CircumferenceIsClockwise::circumference];
  Ref first = getitem(circumference, 0), last = getitem(circumference, -1);
  Ref closed = check(PyObject_RichCompare(first.get(), last.get(), Py_EQ));
  if (!truth(closed.get())) raise(PyExc_ValueError, "Startpoint is not equal to endpoint");

  Ref current_next = global<"_current_next">();
  bool native = (PyList_CheckExact(circumference) || PyTuple_CheckExact(circumference)) &&
                is_own_current_next(current_next.get());
  std::vector<Vec3> ring;
  Ref it = check(PyObject_GetIter(circumference));
  while (Ref point = Ref::steal(PyIter_Next(it.get()))) {
    double z;
    const auto p = native ? read_point(point.get()) : std::nullopt;
    if (p) {
      ring.push_back(*p);
      z = p->z;
    } else {
      native = false;
      Ref value = getattr(point.get(), id<"z">());
      z = as_double(value.get());
    }
    // With no absolute tolerance, only a z of exactly zero passes.
    if (!kernel::isclose(z, 0.0, kernel::plain_tolerance)) raise(PyExc_ValueError, "Points should line in x,y-plane");
  }
  if (PyErr_Occurred()) throw PyError{};

  if (native) return boolean(kernel::circumference_is_clockwise(ring));
  Ref pairs = call(current_next.get(), {circumference});
  return python_orientation(pairs.get());
}
constexpr Member circumference_is_clockwise_member =
    function("circumference_is_clockwise", "(circumference: List[Point]) -> bool", circumference_is_clockwise,
             "Whether a closed ring of points in the xy plane (last point equal to the first) runs\n"
             "clockwise; a ring of zero area counts as clockwise.");

}  // namespace

void define_orientation() {
  for (const Member& m : {circumference_is_clockwise_member}) define_function(m);
}

}  // namespace ostrel
