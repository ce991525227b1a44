// A function's signature, written as in its documentation and parsed once at import:
//   "(x: float, y: float, z: float = 0.0) -> str"
// Parameter names, kinds, annotation words and defaults drive the one argument parser
// (arguments.cpp) and what `inspect.signature` reports.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "module/ref.hpp"

namespace ostrel {

enum class ParamKind { positional, var_positional, keyword_only, var_keyword };

// What the boundary does with an argument before the body runs.
enum class Conversion {
  none,        // passed as given (int, bool, classes, typing forms, float defaulting to None)
  to_double,   // the host's float conversion; the body reads a double
  exact_str,   // an exact str or None, else TypeError
};

struct Parameter {
  std::string name;
  std::string annotation;  // empty when the documentation gives none
  ParamKind kind = ParamKind::positional;
  Conversion conversion = Conversion::none;
  Ref name_object;    // interned str
  Ref default_value;  // empty when required
  double default_number = 0.0;  // the converted default of a to_double parameter
};

struct Signature {
  std::vector<Parameter> params;  // self or cls first, where there is one
  std::string return_annotation;
  Py_ssize_t positional = 0;           // parameters that can be passed by position
  Py_ssize_t required_positional = 0;  // of those, the ones without default
  Py_ssize_t var_positional = -1;      // index of *args, or -1
  Py_ssize_t var_keyword = -1;         // index of **kwargs, or -1
  bool returns_str = false;
  std::vector<unsigned char> float_params;  // indices of the to_double parameters, in order
  std::vector<unsigned char> str_params;    // indices of the exact_str parameters, in order
};

// Parses `text`, prefixing `first` ("self", "cls" or nothing) as the first parameter.
// Defaults are evaluated here, once, in the module globals. Throws PyError with a
// SystemError for a malformed text: that is a fault of the registration, not the caller.
Signature parse_signature(std::string_view first, std::string_view text);

}  // namespace ostrel
