#define PY_ARRAY_UNIQUE_SYMBOL ostrel_geometry_ARRAY_API
#include "foundations/arrays.hpp"

#include <numpy/arrayobject.h>

#include <algorithm>

namespace ostrel {

namespace {
PyObject* imported_numpy = nullptr;
}

void import_numpy_api() {
  if (_import_array() < 0) throw PyError{};
  imported_numpy = global<"np">().release();
}

Ref float_array(std::initializer_list<PyObject*> items) {
  Ref np = global<"np">();
  bool all_floats = np.get() == imported_numpy;
  for (PyObject* item : items) all_floats = all_floats && PyFloat_CheckExact(item);
  if (all_floats) {
    npy_intp size = static_cast<npy_intp>(items.size());
    Ref array = check(PyArray_SimpleNew(1, &size, NPY_DOUBLE));
    double* data = static_cast<double*>(PyArray_DATA(reinterpret_cast<PyArrayObject*>(array.get())));
    for (PyObject* item : items) *data++ = PyFloat_AS_DOUBLE(item);
    return array;
  }
  Ref values = list(items);
  Ref array = getattr(np.get(), id<"array">());
  Ref kwnames = tuple({id<"dtype">()});
  return call(array.get(), {values.get(), reinterpret_cast<PyObject*>(&PyFloat_Type)}, kwnames.get());
}

namespace {

Ref double_array(std::span<const double> values) {
  npy_intp size = static_cast<npy_intp>(values.size());
  Ref array = check(PyArray_SimpleNew(1, &size, NPY_DOUBLE));
  std::copy(values.begin(), values.end(),
            static_cast<double*>(PyArray_DATA(reinterpret_cast<PyArrayObject*>(array.get()))));
  return array;
}

}  // namespace

std::optional<std::vector<double>> numpy_elementwise(PyObject* name, std::span<const double> a,
                                                     std::span<const double> b) {
  Ref np = global<"np">();
  if (np.get() != imported_numpy) return std::nullopt;
  Ref function = getattr(np.get(), name);
  Ref first = double_array(a);
  Ref result = b.empty() ? call(function.get(), {first.get()}) : [&] {
    Ref second = double_array(b);
    return call(function.get(), {first.get(), second.get()});
  }();
  if (!PyArray_CheckExact(result.get())) return std::nullopt;
  auto* array = reinterpret_cast<PyArrayObject*>(result.get());
  if (PyArray_TYPE(array) != NPY_DOUBLE || PyArray_NDIM(array) != 1 ||
      PyArray_DIM(array, 0) != static_cast<npy_intp>(a.size()) || !PyArray_IS_C_CONTIGUOUS(array))
    return std::nullopt;
  const double* data = static_cast<const double*>(PyArray_DATA(array));
  return std::vector<double>(data, data + a.size());
}

namespace {

template <typename T>
std::pair<long long, long long> extent_of(const T* data, npy_intp count) {
  const auto [low, high] = std::minmax_element(data, data + count);
  return {static_cast<long long>(*low), static_cast<long long>(*high)};
}

}  // namespace

std::optional<std::pair<long long, long long>> integer_extent(PyObject* o) {
  if (!PyArray_Check(o)) return std::nullopt;
  auto* array = reinterpret_cast<PyArrayObject*>(o);
  const npy_intp count = PyArray_SIZE(array);
  if (count == 0 || !PyArray_IS_C_CONTIGUOUS(array) || !PyArray_ISNOTSWAPPED(array)) return std::nullopt;
  switch (PyArray_TYPE(array)) {
    case NPY_INT64:
      return extent_of(static_cast<const npy_int64*>(PyArray_DATA(array)), count);
    case NPY_INT32:
      return extent_of(static_cast<const npy_int32*>(PyArray_DATA(array)), count);
    default:
      return std::nullopt;
  }
}

}  // namespace ostrel
