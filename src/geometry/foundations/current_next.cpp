// _current_next: the pairs (first, second), (second, third), ... of an iterable, as a
// zip of two tees of it, the second advanced by one: iter(), tee and that step ahead
// all happen at the call, so a non-iterable fails there.
#include "foundations/current_next.hpp"

#include "module/class_builder.hpp"
#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

namespace {

// Kept for the life of the process, so that identity with it stays meaningful after
// a caller has replaced the global.
PyObject* own_function = nullptr;

// iter(lst); a, b = tee(lst, 2); next(b, None); zip(a, b)
Ref start_pairs(PyObject* lst) {
  Ref items = check(PyObject_GetIter(lst));
  Ref tee = global<"tee">();
  Ref two = new_int(2);
  Ref copies = call(tee.get(), {items.get(), two.get()});
  Ref ab[2];
  unpack(copies.get(), 2, ab);
  Ref skipped = Ref::steal(PyIter_Next(ab[1].get()));  // an empty input ends here silently
  if (!skipped && PyErr_Occurred()) throw PyError{};
  return call(reinterpret_cast<PyObject*>(&PyZip_Type), {ab[0].get(), ab[1].get()});
}

enum class CurrentNext { lst };
Ref current_next(const Args& a) { return start_pairs(a[CurrentNext::lst]); }
constexpr Member current_next_member =
    function("_current_next", "(lst: List[T]) -> Iterator[Tuple[T, T]]", current_next,
             "The pairs of neighbours of `lst` as a zip: n items give n - 1 pairs.");

}  // namespace

bool is_own_current_next(PyObject* f) { return f == own_function; }

void define_current_next() { own_function = define_function(current_next_member).release(); }

}  // namespace ostrel
