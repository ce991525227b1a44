// The intersection functions' native paths, for code that runs their kernels in loops.
#pragma once

#include "module/natives.hpp"

namespace ostrel {

// What calculate_intersection_bounded_lines and point_is_on_bounded_line stand in for.
const Natives& bounded_lines_natives();
const Natives& on_bounded_line_natives();

}  // namespace ostrel
