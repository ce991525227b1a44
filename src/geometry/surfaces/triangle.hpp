// The face of Triangle for the rest of the module.
#pragma once

#include "module/instance.hpp"

namespace ostrel {

// The Triangle class as the module built it.
const ClassGuard& triangle_class();

}  // namespace ostrel
