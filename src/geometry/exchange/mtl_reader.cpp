// The MTL reader: from each "newmtl" on, the colours Ka, Kd and Ks as triples and the
// scalars Ns, d, Tr, Ni and illum as floats; everything else is ignored. Material
// libraries are a few lines long, so every step goes through the host as written.
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// float(split[i])
Ref number(PyObject* split, Py_ssize_t i) {
  Ref word = getitem(split, i);
  return check(PyNumber_Float(word.get()));
}

bool first_word_in(PyObject* split, PyObject* words) {
  Ref first = getitem(split, 0);
  return check(static_cast<Py_ssize_t>(PySequence_Contains(words, first.get()))) != 0;
}

enum class Parse { file };

Ref parse_material_library(const Args& a) {
  Ref result = check(PyDict_New()), material_properties = check(PyDict_New());
  Ref material_name = none();
  Ref colours = tuple({id<"Ka">(), id<"Kd">(), id<"Ks">()});
  Ref scalars = tuple({id<"Ns">(), id<"d">(), id<"Tr">(), id<"Ni">(), id<"illum">()});
  Ref newmtl = new_str("newmtl");

  Ref lines = call_method(a[Parse::file], id<"readlines">(), {});
  Ref items = check(PyObject_GetIter(lines.get()));
  while (Ref line = Ref::steal(PyIter_Next(items.get()))) {
    Ref split = call_method(line.get(), id<"split">(), {});
    if (!truth(split.get())) continue;
    Ref first = getitem(split.get(), 0);
    if (compares(first.get(), newmtl.get(), Py_EQ)) {
      // A material without properties is dropped when the next one starts.
      if (truth(material_name.get()) && truth(material_properties.get()))
        check(PyObject_SetItem(result.get(), material_name.get(), material_properties.get()));
      material_name = getitem(split.get(), 1);
      material_properties = check(PyDict_New());
    } else if (first_word_in(split.get(), colours.get())) {
      Ref r = number(split.get(), 1), g = number(split.get(), 2), b = number(split.get(), 3);
      Ref key = getitem(split.get(), 0);
      Ref colour = tuple({r.get(), g.get(), b.get()});
      check(PyObject_SetItem(material_properties.get(), key.get(), colour.get()));
    } else if (first_word_in(split.get(), scalars.get())) {
      Ref value = number(split.get(), 1);
      Ref key = getitem(split.get(), 0);
      check(PyObject_SetItem(material_properties.get(), key.get(), value.get()));
    }
  }
  if (PyErr_Occurred()) throw PyError{};
  // The last material is kept even without properties; a file without newmtl gives
  // its properties under None.
  check(PyObject_SetItem(result.get(), material_name.get(), material_properties.get()));
  return result;
}
constexpr Member parse_material_library_member =
    function("_parse_obj_material_library", "(file: TextIO) -> dict", parse_material_library,
             "{material name: {property: value}} of the MTL text that file.readlines() gives:\n"
             "Ka, Kd and Ks as (r, g, b) tuples, Ns, d, Tr, Ni and illum as floats.");

}  // namespace

void define_mtl_reader() { define_function(parse_material_library_member); }

}  // namespace ostrel
