// The native function object: one C++ type that behaves like a Python function. It
// binds as a method, carries __name__, __qualname__, __module__, __doc__,
// __annotations__, __defaults__, __kwdefaults__ and a __dict__, answers
// inspect.signature, and applies the module's argument rules before its body runs.
#pragma once

#include <array>
#include <string_view>
#include <type_traits>

#include "module/signature.hpp"

namespace ostrel {

inline constexpr size_t max_parameters = 24;

// The arguments of one call, after the boundary rules: an object per parameter (the
// caller's, or the default), the converted double of each float parameter, and the
// tuple and dict of *args and **kwargs where the signature has them. A body names its
// parameters by an enum declared beside its signature, self or cls first.
//
// Args holds a reference to each object for the whole call, as a Python frame does: a
// caller may pass items it only borrows (list.__repr__ passes its items), and code the
// body runs may drop the caller's last reference.
template <typename E>
concept ParameterName = std::is_enum_v<E>;

class Args {
 public:
  template <ParameterName E>
  PyObject* operator[](E parameter) const {
    return objects_[static_cast<size_t>(parameter)];
  }
  template <ParameterName E>
  double num(E parameter) const {
    return numbers_[static_cast<size_t>(parameter)];
  }
  PyObject* self() const { return objects_[0]; }

  Args() = default;
  Args(const Args&) = delete;
  Args& operator=(const Args&) = delete;
  ~Args() {
    for (size_t i = 0; i < held_; ++i) Py_XDECREF(objects_[i]);
  }

 private:
  friend void parse_arguments(const Signature&, PyObject* name, PyObject* const*, Py_ssize_t, PyObject*, Args&);
  // Takes the references, once every parameter has its object and before any caller
  // code (a __float__) can run.
  void hold(size_t count) {
    for (size_t i = 0; i < count; ++i) Py_XINCREF(objects_[i]);
    held_ = count;
  }
  // Filled by parse_arguments for every parameter of the signature, and only those.
  std::array<PyObject*, max_parameters> objects_;
  size_t held_ = 0;
  std::array<double, max_parameters> numbers_;
  Ref var_positional_, var_keyword_;
};

// The body of a function: returns a new reference, or throws PyError with the Python
// exception set.
using Body = Ref (*)(const Args&);

// Applies the boundary rules of `sig` to one vectorcall; throws PyError with the
// host's TypeError texts on a mismatch.
void parse_arguments(const Signature& sig, PyObject* name, PyObject* const* args, Py_ssize_t nargs,
                     PyObject* kwnames, Args& out);

// Readies the function type; once, before the first function is made.
void ready_function_type();

// A new function object. `first` is "self" for methods, "cls" for class methods and
// empty otherwise; `signature` is the documented one without it.
Ref make_function(const char* name, const char* qualname, std::string_view first, std::string_view signature,
                  Body body, const char* doc);

}  // namespace ostrel
