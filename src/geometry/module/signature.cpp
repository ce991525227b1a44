#include "module/signature.hpp"

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

std::string_view trim(std::string_view s) {
  const auto begin = s.find_first_not_of(" \t\n");
  if (begin == std::string_view::npos) return {};
  const auto end = s.find_last_not_of(" \t\n");
  return s.substr(begin, end - begin + 1);
}

[[noreturn]] void malformed(std::string_view text) {
  const std::string copy(text);
  raise_format(PyExc_SystemError, "malformed signature: %s", copy.c_str());
}

// Splits at `separator` where it stands outside brackets and quotes; at the first
// such place only when `first_only` is set.
std::vector<std::string_view> split_top(std::string_view s, char separator, bool first_only = false) {
  std::vector<std::string_view> parts;
  int depth = 0;
  char quote = 0;
  size_t start = 0;
  for (size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (quote) {
      if (c == quote) quote = 0;
    } else if (c == '\'' || c == '"') {
      quote = c;
    } else if (c == separator && depth == 0) {
      parts.push_back(s.substr(start, i - start));
      start = i + 1;
      if (first_only) break;
    } else if (c == '(' || c == '[' || c == '{') {
      ++depth;
    } else if (c == ')' || c == ']' || c == '}') {
      --depth;
    }
  }
  parts.push_back(s.substr(start));
  return parts;
}

// The documentation's shorthands, spelled out as the annotation the function carries.
std::string expand_annotation(std::string_view word) {
  std::string out(word);
  for (auto [short_form, long_form] : {std::pair{"Point-like", "Union[Point, Tuple[float, float, float]]"},
                                       std::pair{"Vector-like", "Union[Vector, Tuple[float, float, float]]"}}) {
    const std::string key(short_form);
    for (size_t at = out.find(key); at != std::string::npos; at = out.find(key, at))
      out.replace(at, key.size(), long_form);
  }
  return out;
}

Ref evaluate(std::string_view expression) {
  const std::string code(expression);
  return check(PyRun_String(code.c_str(), Py_eval_input, module_dict(), module_dict()));
}

Parameter parse_parameter(std::string_view piece, ParamKind kind) {
  Parameter p;
  p.kind = kind;
  auto name_and_default = split_top(piece, '=', true);
  auto name_and_annotation = split_top(name_and_default[0], ':', true);
  p.name = std::string(trim(name_and_annotation[0]));
  if (name_and_annotation.size() > 1) p.annotation = expand_annotation(trim(name_and_annotation[1]));
  if (name_and_default.size() > 1) p.default_value = evaluate(trim(name_and_default[1]));
  p.name_object = check(PyUnicode_InternFromString(p.name.c_str()));
  if (p.annotation == "float" && !(p.default_value && p.default_value.get() == Py_None)) {
    p.conversion = Conversion::to_double;
    if (p.default_value) p.default_number = as_double(p.default_value.get());
  } else if (p.annotation == "str") {
    p.conversion = Conversion::exact_str;
  }
  return p;
}

}  // namespace

Signature parse_signature(std::string_view first, std::string_view text) {
  Signature sig;
  const std::string_view whole = trim(text);
  if (whole.empty() || whole.front() != '(') malformed(text);
  const auto close_and_rest = split_top(whole.substr(1), ')', true);
  if (close_and_rest.size() != 2) malformed(text);
  const std::string_view rest = trim(close_and_rest[1]);
  if (!rest.empty()) {
    if (rest.substr(0, 2) != "->") malformed(text);
    sig.return_annotation = expand_annotation(trim(rest.substr(2)));
    sig.returns_str = sig.return_annotation == "str";
  }

  std::vector<std::string_view> pieces;
  if (!first.empty()) pieces.push_back(first);
  if (!trim(close_and_rest[0]).empty())
    for (auto piece : split_top(close_and_rest[0], ',')) pieces.push_back(trim(piece));

  ParamKind kind = ParamKind::positional;
  for (std::string_view piece : pieces) {
    if (piece == "*") {
      kind = ParamKind::keyword_only;
    } else if (piece.substr(0, 2) == "**") {
      sig.var_keyword = static_cast<Py_ssize_t>(sig.params.size());
      sig.params.push_back(parse_parameter(piece.substr(2), ParamKind::var_keyword));
    } else if (piece.substr(0, 1) == "*") {
      sig.var_positional = static_cast<Py_ssize_t>(sig.params.size());
      sig.params.push_back(parse_parameter(piece.substr(1), ParamKind::var_positional));
      kind = ParamKind::keyword_only;
    } else {
      Parameter p = parse_parameter(piece, kind);
      if (kind == ParamKind::positional) {
        ++sig.positional;
        if (!p.default_value) {
          if (sig.required_positional != sig.positional - 1) malformed(text);  // required after optional
          ++sig.required_positional;
        }
      }
      sig.params.push_back(std::move(p));
    }
  }
  for (size_t i = 0; i < sig.params.size(); ++i) {
    if (sig.params[i].conversion == Conversion::to_double) sig.float_params.push_back(static_cast<unsigned char>(i));
    if (sig.params[i].conversion == Conversion::exact_str) sig.str_params.push_back(static_cast<unsigned char>(i));
  }
  return sig;
}

}  // namespace ostrel
