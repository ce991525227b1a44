// The face of Arc for the scene objects built on arcs: reading an arc natively and its
// discretisation on doubles.
#pragma once

#include <optional>
#include <vector>

#include "curves/arc_kernel.hpp"
#include "foundations/point.hpp"

namespace ostrel {

// An instance of the module's unchanged Arc whose three points read natively, whose
// end points hold nothing but their fields (the documented steps call methods on
// them), and whose _short_arc is a bool, None or an int. The points are held while
// they are read.
struct HeldArc {
  Ref centre, start, end;
  kernel::ArcPoints points;
  bool short_arc;
};
bool hold_arc(PyObject* arc, HeldArc& held);

// What a native Arc.discretize stands in for: the conversions and NumPy it calls, and
// Point made through its module global.
const Natives& arc_discretize_natives();

}  // namespace ostrel
