// Native access to Line objects and to the inputs that line code reads, for the faces
// of the line kernels. The readers give nothing, and leave no exception set, where the
// host must do the work step by step.
#pragma once

#include <optional>

#include "curves/line_kernel.hpp"
#include "module/instance.hpp"

namespace ostrel {

// The Line class as the module built it; set once, by define_line.
ClassGuard& line_class();

// The ends of an instance of the module's unchanged Line whose points read natively
// (see read_point). The instance must hold nothing but its two ends: an attribute of
// its own could hide a method that the documented steps call.
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

// Whether `Vector(...)` still makes a vector of the module's own, unchanged class,
// whose operations are then those of the kernels.
bool vector_class_native();

// A new Line holding two new points, as `Line(Point(...), Point(...))` makes it; only
// while line_class_native(), and for ends that do not coincide.
Ref make_line(const Segment& s);

// ISCLOSE_RTOL and ISCLOSE_ATOL as a call would read them now, when both are floats or
// ints that math.isclose accepts.
std::optional<Tolerances> current_tolerances();

// The truth of an argument whose truth test runs no code of the caller's (bool, None,
// int), so that testing it once stands for testing it at every step.
std::optional<bool> plain_truth(PyObject* o);

// Whether the instance dict of `o` holds `n` entries, its fields, and nothing that
// could hide a method of its class.
bool holds_only_fields(PyObject* o, Py_ssize_t n);

// Steps through the host: `line.<end>.<c>` and `a <op> b`.
Ref end_coordinate(PyObject* line, PyObject* end, PyObject* c);
Ref compare(PyObject* a, PyObject* b, int op);

}  // namespace ostrel
