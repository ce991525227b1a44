// unit_vector: an array normalised to unit length along an axis, as a new array or in
// place in `out`. A zero length is not guarded: NumPy divides and gives NaN with its
// runtime warning.
#include "foundations/float_kernel.hpp"
#include "foundations/numpy_calls.hpp"
#include "module/class_builder.hpp"

namespace ostrel {

namespace {

enum class UnitVector { data, axis, out };
Ref unit_vector(const Args& a) {
  PyObject *given = a[UnitVector::data], *axis = a[UnitVector::axis], *out = a[UnitVector::out];
  Ref data;
  if (out == Py_None) {
    Ref array = np_attr<"array">();
    Ref kwnames = tuple({id<"dtype">(), id<"copy">()});
    data = call(array.get(), {given, reinterpret_cast<PyObject*>(&PyFloat_Type), Py_True}, kwnames.get());
    Ref ndim = getattr(data.get(), id<"ndim">());
    Ref one = new_int(1);
    if (check(PyObject_RichCompareBool(ndim.get(), one.get(), Py_EQ))) {
      // A single vector: divided by the host's sqrt of its dot product with itself.
      Ref squared = call(np_attr<"dot">().get(), {data.get(), data.get()});
      Ref length = new_float(kernel::math_sqrt(as_double(squared.get())));
      return check(PyNumber_InPlaceTrueDivide(data.get(), length.get()));
    }
  } else {
    if (out != given) {
      // `out[:] = np.array(data, copy=False)`: no copy unless needed, which is np.asarray.
      Ref asarray = np_attr<"asarray">();
      Ref values = call(asarray.get(), {given});
      Ref all = slice(nullptr, nullptr);
      assign(out, all.get(), values.get());
    }
    data = Ref::borrow(out);
  }
  Ref atleast_1d = np_attr<"atleast_1d">();
  Ref sum = np_attr<"sum">();
  Ref squares = check(PyNumber_Multiply(data.get(), data.get()));
  Ref summed = call(sum.get(), {squares.get(), axis});
  Ref length = call(atleast_1d.get(), {summed.get()});
  call(np_attr<"sqrt">().get(), {length.get(), length.get()});
  if (axis != Py_None) length = call(np_attr<"expand_dims">().get(), {length.get(), axis});
  data = check(PyNumber_InPlaceTrueDivide(data.get(), length.get()));
  if (out == Py_None) return data;
  return none();
}
constexpr Member unit_vector_member =
    function("unit_vector", "(data: Any, axis: int = None, out: Any = None) -> np.ndarray", unit_vector,
             "`data` divided by its length along `axis` (the whole array when axis is None, the\n"
             "vector itself for 1-D data). Returns a new array, or None after writing into `out`.");

}  // namespace

void define_unit_vector() {
  for (const Member& m : {unit_vector_member}) define_function(m);
}

}  // namespace ostrel
