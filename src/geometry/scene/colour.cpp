// Colours as text: "#rrggbb" and the like to a tuple of ints, and back.
#include "module/class_builder.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// The hex digits split into three equal parts (a fourth, shorter one for a length that
// is not a multiple of three); each part is read as int(part, 16) reads it.
enum class HexToRgb { value };
Ref hex_to_rgb(const Args& a) {
  Ref hash = new_str("#");
  Ref value = call_method(a[HexToRgb::value], id<"lstrip">(), {hash.get()});
  const Py_ssize_t length = PyObject_Size(value.get());
  if (length < 0) throw PyError{};
  const Py_ssize_t step = length / 3;
  if (step == 0) raise(PyExc_ValueError, "range() arg 3 must not be zero");
  Ref parts = check(PyList_New(0));
  for (Py_ssize_t i = 0; i < length; i += step) {
    Ref digits = check(PyUnicode_Substring(value.get(), i, i + step));
    Ref number = check(PyLong_FromUnicodeObject(digits.get(), 16));
    check(PyList_Append(parts.get(), number.get()));
  }
  return check(PyList_AsTuple(parts.get()));
}
constexpr Member hex_to_rgb_member =
    function("hex_to_rgb", "(value: str) -> Tuple[int, int, int]", hex_to_rgb,
             "The numbers of a hexadecimal colour text such as \"#ff8000\" or \"f80\".");

enum class RgbToHex { red, green, blue, include_hashtag };
Ref rgb_to_hex(const Args& a) {
  Ref hex_format = new_str("02x");
  Ref text = new_str("");
  for (RgbToHex component : {RgbToHex::red, RgbToHex::green, RgbToHex::blue}) {
    Ref part = check(PyObject_Format(a[component], hex_format.get()));
    text = check(PyUnicode_Concat(text.get(), part.get()));
  }
  if (!truth(a[RgbToHex::include_hashtag])) return text;
  Ref hash = new_str("#");
  return check(PyUnicode_Concat(hash.get(), text.get()));
}
constexpr Member rgb_to_hex_member =
    function("rgb_to_hex", "(red: int, green: int, blue: int, include_hashtag: bool = True) -> str", rgb_to_hex,
             "The hexadecimal text of a colour, \"#ff8000\", or \"ff8000\" without the hashtag.");

}  // namespace

void define_colour() {
  for (const Member& m : {hex_to_rgb_member, rgb_to_hex_member}) define_function(m);
}

}  // namespace ostrel
