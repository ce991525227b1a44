// Native access to Line objects and to the inputs that line code reads, for the faces
// of the line kernels. Each gives nothing where the host must do the work step by
// step, and then leaves no exception set.
#pragma once

#include <optional>

#include "curves/line_kernel.hpp"
#include "module/pristine.hpp"

namespace ostrel {

// The Line class as the module defined it.
OwnClass& line_class();

// The ends of a line whose class behaves as the module's Line and whose points read
// natively (see read_point).
std::optional<Segment> read_line(PyObject* line);

// A line's two points, held while their coordinates are read in two steps, for callers
// that may not need z: x and y first, z when a computation comes to need it.
struct HeldLine {
  Ref start, end;
  Segment segment;
};
bool hold_line_xy(PyObject* line, HeldLine& held);
bool read_z(HeldLine& held);

// The ends in the xy plane alone, for the computations that never look at z (z is NaN).
std::optional<Segment> read_line_xy(PyObject* line);

// Whether `Line(...)` and `Point(...)` still make objects of the module's own,
// unchanged classes.
bool line_class_native();

// A new Line holding two new points, as `Line(Point(...), Point(...))` makes it; only
// while line_class_native(), and for ends that do not coincide.
Ref make_line(const Segment& s);

// ISCLOSE_RTOL and ISCLOSE_ATOL as a call would read them now, when both are floats or
// ints that math.isclose accepts.
std::optional<Tolerances> current_tolerances();

// The truth of an argument whose truth test runs no code of the caller's (bool, None,
// int), so that testing it once stands for testing it at every step.
std::optional<bool> plain_truth(PyObject* o);

// Steps through the host: `line.<end>.<c>` and `a <op> b`.
Ref end_coordinate(PyObject* line, PyObject* end, PyObject* c);
Ref compare(PyObject* a, PyObject* b, int op);

}  // namespace ostrel
