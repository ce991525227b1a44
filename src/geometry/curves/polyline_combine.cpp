// Polyline: the stretches two polylines share, and merging two polylines that touch end
// to end or share one stretch at an end.
#include "curves/polyline.hpp"
#include "module/globals.hpp"

namespace ostrel {

namespace {

// `Polyline([pieces[0][0]] + [piece[1] for piece in pieces])`
Ref chain_of(PyObject* pieces) {
  Ref first_piece = getitem(pieces, 0);
  Ref first = getitem(first_piece.get(), 0);
  Ref points = list({first.get()});
  for (Py_ssize_t i = 0; i < PyList_GET_SIZE(pieces); ++i) {
    Ref to = getitem(PyList_GET_ITEM(pieces, i), 1);
    check(PyList_Append(points.get(), to.get()));
  }
  return new_polyline(points.get());
}

enum class FindOverlaps { self, other };
Ref find_overlaps(const Args& a) {
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain self, other;
        if (!native || !native->read(a.self(), self) || !native->read(a[FindOverlaps::other], other)) return Ref{};
        Ref overlaps = check(PyList_New(0));
        for (const kernel::Chain& c : native->kernel().find_overlaps(self, other)) {
          Ref polyline = native->polyline(c);
          check(PyList_Append(overlaps.get(), polyline.get()));
        }
        return overlaps;
      }))
    return r;
  Ref overlap_polylines = check(PyList_New(0));
  Ref overlap_lines = check(PyList_New(0));
  Ref own_points = points_of(a.self());
  Ref own_pairs = pairs_of(own_points.get());
  Ref own_start, own_end;
  while (next_pair(own_pairs.get(), own_start, own_end)) {
    Ref local = check(PyList_New(0));
    Ref own_line = line_or_nothing(own_start.get(), own_end.get());
    if (!own_line) continue;
    Ref other_points = points_of(a[FindOverlaps::other]);
    Ref other_pairs = pairs_of(other_points.get());
    Ref other_start, other_end;
    while (next_pair(other_pairs.get(), other_start, other_end)) {
      Ref other_line = line_or_nothing(other_start.get(), other_end.get());
      if (!other_line) continue;
      Ref overlap = call_method(own_line.get(), id<"find_overlap">(), {other_line.get()});
      if (overlap.get() == Py_None) continue;
      Ref piece;
      if (isinstance(overlap.get(), global<"Point">().get())) {
        piece = tuple({overlap.get(), overlap.get()});
      } else if (isinstance(overlap.get(), global<"Line">().get())) {
        Ref from = getattr(overlap.get(), id<"start_point">()), to = getattr(overlap.get(), id<"end_point">());
        piece = tuple({from.get(), to.get()});
      } else {
        PyErr_SetNone(PyExc_NotImplementedError);
        throw PyError{};
      }
      check(PyList_Append(local.get(), piece.get()));
    }
    if (PyList_GET_SIZE(local.get()) == 0) continue;
    sort_by_distance(local.get(), own_start.get(), SortKey::piece);
    if (PyList_GET_SIZE(overlap_lines.get()) > 0) {
      Ref first_piece = getitem(local.get(), 0), last_piece = getitem(overlap_lines.get(), -1);
      Ref from = getitem(first_piece.get(), 0), to = getitem(last_piece.get(), 1);
      if (!equal(from.get(), to.get())) {
        Ref chain = chain_of(overlap_lines.get());
        check(PyList_Append(overlap_polylines.get(), chain.get()));
        overlap_lines = check(PyList_New(0));
      }
    }
    Ref extended = check(PySequence_InPlaceConcat(overlap_lines.get(), local.get()));
  }
  if (PyList_GET_SIZE(overlap_lines.get()) > 0) {
    Ref chain = chain_of(overlap_lines.get());
    check(PyList_Append(overlap_polylines.get(), chain.get()));
  }
  return overlap_polylines;
}

// `polyline.<end>` of two polylines compared: `a.<end_a> == b.<end_b>`.
bool ends_equal(PyObject* a, PyObject* end_a, PyObject* b, PyObject* end_b) {
  Ref first = getattr(a, end_a), second = getattr(b, end_b);
  return equal(first.get(), second.get());
}

// `Polyline._concatenate(first, second)`
Ref concatenate(PyObject* first, PyObject* second) {
  Ref cls = global<"Polyline">();
  Ref function = getattr(cls.get(), id<"_concatenate">());
  return call(function.get(), {first, second});
}

Ref reversed_of(PyObject* polyline) { return call_method(polyline, id<"get_reversed_polyline">(), {}); }

// `polyline.split(point)[index]`
Ref part_of(PyObject* polyline, PyObject* point, Py_ssize_t index) {
  Ref parts = call_method(polyline, id<"split">(), {point});
  return getitem(parts.get(), index);
}

// combine_with when the polylines share no stretch, or more than one: end to end.
Ref join_ends(PyObject* self, PyObject* other, Py_ssize_t overlaps) {
  PyObject *start = id<"start_point">(), *end = id<"end_point">();
  Ref mine = points_of(self), theirs;
  if (length_of(mine.get()) == 0) return concatenate(self, other);
  theirs = points_of(other);
  if (length_of(theirs.get()) == 0 || ends_equal(self, end, other, start)) return concatenate(self, other);
  if (ends_equal(self, end, other, end)) {
    Ref reversed = reversed_of(other);
    return concatenate(self, reversed.get());
  }
  if (ends_equal(self, start, other, end)) return concatenate(other, self);
  if (ends_equal(self, start, other, start)) {
    Ref reversed = reversed_of(other);
    return concatenate(reversed.get(), self);
  }
  raise(PyExc_ValueError, kernel::polyline_errors::not_one_overlap(overlaps).c_str());
}

enum class CombineWith { self, other };
Ref combine_with(const Args& a) {
  PyObject *self = a.self(), *other = a[CombineWith::other];
  if (Ref r = native_path(polyline_natives(), [&] {
        auto native = NativePolylines::start();
        kernel::Chain mine, theirs;
        if (!native || !native->read(self, mine) || !native->read(other, theirs)) return Ref{};
        return native->polyline(native->kernel().combine_with(mine, theirs));
      }))
    return r;
  Ref overlaps = call_method(self, id<"find_overlaps">(), {other});
  const Py_ssize_t count = length_of(overlaps.get());
  if (count != 1) return join_ends(self, other, count);
  Ref overlap = getitem(overlaps.get(), 0);
  PyObject *start = id<"start_point">(), *end = id<"end_point">(), *o = overlap.get();
  Ref combined = check(PyList_New(0));
  combined = new_polyline(combined.get());
  auto add = [&](const Ref& part) { combined = concatenate(combined.get(), part.get()); };
  if (ends_equal(o, end, self, end) && !ends_equal(o, start, self, start)) {
    add(part_of(self, getattr(o, start).get(), 0));
    add(overlap);
    if (ends_equal(o, start, other, start)) {
      add(part_of(other, getattr(o, end).get(), 1));
    } else if (ends_equal(o, start, other, end)) {
      Ref reversed = reversed_of(other);
      add(part_of(reversed.get(), getattr(o, end).get(), 1));
    } else {
      raise(PyExc_ValueError, kernel::polyline_errors::not_at_an_end);
    }
  } else if (ends_equal(o, start, self, start) && !ends_equal(o, end, self, end)) {
    if (ends_equal(o, end, other, end)) {
      add(part_of(other, getattr(o, start).get(), 0));
    } else if (ends_equal(o, end, other, start)) {
      Ref reversed = reversed_of(other);
      add(part_of(reversed.get(), getattr(o, start).get(), 0));
    } else {
      raise(PyExc_ValueError, kernel::polyline_errors::not_at_an_end);
    }
    add(overlap);
    add(part_of(self, getattr(o, end).get(), 1));
  } else if ((ends_equal(o, start, other, start) && ends_equal(o, end, other, end)) ||
             (ends_equal(o, start, other, end) && ends_equal(o, end, other, start))) {
    add(part_of(self, getattr(o, start).get(), 0));
    add(overlap);
    add(part_of(self, getattr(o, end).get(), 1));
  } else if (ends_equal(o, start, self, start) && ends_equal(o, end, self, end)) {
    Ref theirs = call_method(other, id<"find_overlaps">(), {o});
    Ref first = getitem(theirs.get(), 0);
    Ref same = call_method(first.get(), id<"is_equal_to">(), {o});
    Ref along = truth(same.get()) ? Ref::borrow(other) : reversed_of(other);
    add(part_of(along.get(), getattr(o, start).get(), 0));
    add(overlap);
    add(part_of(along.get(), getattr(o, end).get(), 1));
  }
  return combined;
}

}  // namespace

constexpr Member find_overlaps_member =
    method("find_overlaps", "(other: Polyline) -> List[Polyline]", find_overlaps,
           "The stretches both polylines cover, in the order of travel and the direction of this one.");
constexpr Member combine_with_member =
    method("combine_with", "(other: Polyline) -> Polyline", combine_with,
           "One polyline of two that meet end to end or share exactly one stretch at an end.");

}  // namespace ostrel
