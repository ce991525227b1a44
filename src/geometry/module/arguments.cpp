// The one argument parser. Its texts and the order of its checks are those of the
// compiled-class calling convention the module keeps: counts include self or cls,
// missing positional arguments are reported as a count, keywords are checked after.
#include "module/function.hpp"
#include "module/objects.hpp"

#include <algorithm>

namespace ostrel {

namespace {

[[noreturn]] void count_error(const Signature& sig, const char* name, Py_ssize_t given) {
  const bool exact = sig.var_positional < 0 && sig.required_positional == sig.positional;
  Py_ssize_t expected = sig.positional;
  const char* word = "at most";
  if (given < sig.required_positional) {
    expected = sig.required_positional;
    word = "at least";
  }
  if (exact) word = "exactly";
  raise_format(PyExc_TypeError, "%.200s() takes %.8s %zd positional argument%.1s (%zd given)", name, word, expected,
               expected == 1 ? "" : "s", given);
}

bool same_name(PyObject* a, PyObject* b) { return a == b || PyUnicode_Compare(a, b) == 0; }

// The value passed under `name`, or NULL.
PyObject* keyword_value(PyObject* name, PyObject* const* values, PyObject* kwnames) {
  const Py_ssize_t n = PyTuple_GET_SIZE(kwnames);
  for (Py_ssize_t j = 0; j < n; ++j)
    if (PyTuple_GET_ITEM(kwnames, j) == name) return values[j];
  for (Py_ssize_t j = 0; j < n; ++j) {
    PyObject* key = PyTuple_GET_ITEM(kwnames, j);
    if (PyUnicode_Check(key) && PyUnicode_Compare(key, name) == 0) return values[j];
  }
  return nullptr;
}

// The boundary conversions, in parameter order: floats first, then the str tests.
void convert(const Signature& sig, PyObject* const* objects, double* numbers) {
  for (const unsigned char i : sig.float_params) {
    const Parameter& p = sig.params[i];
    numbers[i] = objects[i] == p.default_value.get() ? p.default_number : as_double(objects[i]);
  }
  for (const unsigned char i : sig.str_params) {
    PyObject* o = objects[i];
    if (o != Py_None && !PyUnicode_CheckExact(o))
      raise_format(PyExc_TypeError, "Argument '%.200s' has incorrect type (expected %.200s, got %.200s)",
                   sig.params[i].name.c_str(), PyUnicode_Type.tp_name, Py_TYPE(o)->tp_name);
  }
}

}  // namespace

void parse_arguments(const Signature& sig, PyObject* name_object, PyObject* const* args, Py_ssize_t nargs,
                     PyObject* kwnames, Args& out) {
  const Py_ssize_t positional = sig.positional;
  // The common call: positional arguments only, within the counts, no *args/**kwargs.
  if (!kwnames && nargs >= sig.required_positional && nargs <= positional && sig.var_positional < 0 &&
      sig.var_keyword < 0 && static_cast<size_t>(positional) == sig.params.size()) {
    for (Py_ssize_t i = 0; i < nargs; ++i) out.objects_[i] = args[i];
    for (Py_ssize_t i = nargs; i < positional; ++i) out.objects_[i] = sig.params[i].default_value.get();
    out.hold(sig.params.size());
    convert(sig, out.objects_.data(), out.numbers_.data());
    return;
  }
  std::fill_n(out.objects_.begin(), sig.params.size(), nullptr);
  const char* name = PyUnicode_AsUTF8(name_object);
  if (!name) throw PyError{};
  if (nargs > positional && sig.var_positional < 0) count_error(sig, name, nargs);

  const Py_ssize_t taken = nargs < positional ? nargs : positional;
  for (Py_ssize_t i = 0; i < taken; ++i) out.objects_[i] = args[i];
  if (sig.var_positional >= 0) {
    out.var_positional_ = check(PyTuple_New(nargs - taken));
    for (Py_ssize_t i = taken; i < nargs; ++i) {
      Py_INCREF(args[i]);
      PyTuple_SET_ITEM(out.var_positional_.get(), i - taken, args[i]);
    }
    out.objects_[sig.var_positional] = out.var_positional_.get();
  }
  if (sig.var_keyword >= 0) {
    out.var_keyword_ = check(PyDict_New());
    out.objects_[sig.var_keyword] = out.var_keyword_.get();
  }

  const Py_ssize_t nkw = kwnames ? PyTuple_GET_SIZE(kwnames) : 0;
  PyObject* const* kwvalues = args + nargs;
  if (nkw == 0) {
    if (nargs < sig.required_positional) count_error(sig, name, nargs);
  } else {
    // Positional parameters not given by position are looked up by name, in order;
    // the first required one that is missing ends the call.
    for (Py_ssize_t i = taken; i < positional; ++i) {
      const Parameter& p = sig.params[i];
      out.objects_[i] = keyword_value(p.name_object.get(), kwvalues, kwnames);
      if (!out.objects_[i] && i < sig.required_positional) count_error(sig, name, i);
    }
    for (Py_ssize_t j = 0; j < nkw; ++j) {
      PyObject* key = PyTuple_GET_ITEM(kwnames, j);
      if (!PyUnicode_Check(key)) raise_format(PyExc_TypeError, "%.200s() keywords must be strings", name);
      bool matched = false;
      for (size_t i = 0; i < sig.params.size() && !matched; ++i) {
        const Parameter& p = sig.params[i];
        if (p.kind == ParamKind::var_positional || p.kind == ParamKind::var_keyword) continue;
        if (!same_name(key, p.name_object.get())) continue;
        matched = true;
        if (static_cast<Py_ssize_t>(i) < taken)
          raise_format(PyExc_TypeError, "%s() got multiple values for keyword argument '%U'", name, key);
        out.objects_[i] = kwvalues[j];
      }
      if (matched) continue;
      if (sig.var_keyword < 0)
        raise_format(PyExc_TypeError, "%s() got an unexpected keyword argument '%U'", name, key);
      check(PyDict_SetItem(out.var_keyword_.get(), key, kwvalues[j]));
    }
  }

  for (size_t i = 0; i < sig.params.size(); ++i) {
    const Parameter& p = sig.params[i];
    if (out.objects_[i]) continue;
    if (p.default_value) {
      out.objects_[i] = p.default_value.get();
    } else if (p.kind == ParamKind::keyword_only) {
      raise_format(PyExc_TypeError, "%s() needs keyword-only argument %U", name, p.name_object.get());
    }
  }

  out.hold(sig.params.size());
  convert(sig, out.objects_.data(), out.numbers_.data());
}

}  // namespace ostrel
