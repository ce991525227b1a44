// Owning handle for PyObject*, the error marker, and interned names.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace ostrel {

// Thrown when a C API call has failed and left a Python exception set. The boundary
// (module/boundary.hpp) catches it and returns NULL to the interpreter.
struct PyError {};

// One strong reference, released when the handle goes. Geometry code never calls
// Py_DECREF itself.
class Ref {
 public:
  Ref() = default;
  static Ref steal(PyObject* o) {
    Ref r;
    r.p_ = o;
    return r;
  }
  static Ref borrow(PyObject* o) {
    Py_XINCREF(o);
    return steal(o);
  }
  Ref(const Ref& o) : p_(o.p_) { Py_XINCREF(p_); }
  Ref(Ref&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  Ref& operator=(Ref o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }
  ~Ref() { Py_XDECREF(p_); }

  PyObject* get() const { return p_; }
  PyObject* release() { return std::exchange(p_, nullptr); }
  explicit operator bool() const { return p_ != nullptr; }

 private:
  PyObject* p_ = nullptr;
};

// Wraps the new reference a C API call returned; throws PyError when it returned NULL.
inline Ref check(PyObject* o) {
  if (!o) throw PyError{};
  return Ref::steal(o);
}

// For C API calls that report failure with a negative status or size. Sizes are
// Py_ssize_t throughout: a count cut to int would wrap.
inline Py_ssize_t check(Py_ssize_t status) {
  if (status < 0) throw PyError{};
  return status;
}

// Sets a Python exception and throws the marker.
[[noreturn]] inline void raise(PyObject* type, const char* message) {
  PyErr_SetString(type, message);
  throw PyError{};
}

template <typename... A>
[[noreturn]] void raise_format(PyObject* type, const char* format, A... args) {
  PyErr_Format(type, format, args...);
  throw PyError{};
}

// A new strong reference to `o` (Py_NewRef arrived only in Python 3.10).
inline PyObject* new_ref(PyObject* o) {
  Py_INCREF(o);
  return o;
}

inline Ref none() { return Ref::borrow(Py_None); }
inline Ref boolean(bool b) { return Ref::borrow(b ? Py_True : Py_False); }

// A string literal usable as a template argument, so that id<"x">() can intern a
// name once per process.
template <std::size_t N>
struct Literal {
  char text[N];
  constexpr Literal(const char (&s)[N]) { std::copy_n(s, N, text); }
};

// An object made at its first use and kept for the process in `cache`; a failed making
// (no memory) raises and is tried again at the next use, rather than kept as nothing.
template <typename Make>
PyObject* kept(PyObject*& cache, Make&& make) {
  if (!cache) cache = check(make()).release();
  return cache;
}

// The interned str object for a name; the made one is returned without a call.
template <Literal L>
PyObject* id() {
  static PyObject* name = nullptr;
  if (name) [[likely]]
    return name;
  return kept(name, [] { return PyUnicode_InternFromString(L.text); });
}

}  // namespace ostrel
