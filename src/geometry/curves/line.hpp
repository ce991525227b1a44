// The face of Line for the rest of the module: the class guard and native reading of
// lines and of the inputs line code reads. The readers give nothing, and leave no
// exception set, where the host must do the work step by step.
#pragma once

#include <optional>

#include "curves/line_kernel.hpp"
#include "foundations/point.hpp"

namespace ostrel {

// The Line class as the module built it.
const ClassGuard& line_class();

// `Line(...)` and `Point(...)` through the module globals make objects of the module's
// own, unchanged classes.
const Natives& line_natives();

// What Line.collinear's native path stands in for.
const Natives& line_collinear_natives();

// The ends of an instance of the module's unchanged Line whose points read natively
// (see read_point). The instance must hold nothing but its two ends: an attribute of
// its own could hide a method that the documented steps call.
std::optional<kernel::Segment> read_line(PyObject* line);

// A line's two points, held while their coordinates are read in two steps, for callers
// that may not need z: x and y first, z when a computation comes to need it.
struct HeldLine {
  Ref start, end;
  kernel::Segment segment;
};
bool hold_line_xy(PyObject* line, HeldLine& held);
bool read_z(HeldLine& held);

// The ends in the xy plane alone, for the computations that never look at z (z is NaN).
std::optional<kernel::Segment> read_line_xy(PyObject* line);

// A new Line holding two new points, as `Line(Point(...), Point(...))` makes it; only
// while line_natives() hold, and for ends that do not coincide.
Ref make_line(const kernel::Segment& s);

// The truth of an argument whose truth test runs no code of the caller's (bool, None,
// int), so that testing it once stands for testing it at every step.
std::optional<bool> plain_truth(PyObject* o);

// Whether the instance dict of `o` holds `n` entries, its fields, and nothing that
// could hide a method of its class.
bool holds_only_fields(PyObject* o, Py_ssize_t n);

// `line.<end>.<c>` through the host.
Ref end_coordinate(PyObject* line, PyObject* end, PyObject* c);

}  // namespace ostrel
