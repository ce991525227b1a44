// Whether Vector arithmetic may be done on doubles: `Vector(...)` still makes a vector
// of the module's own, unchanged class, whose operations are then known.
#pragma once

namespace ostrel {

bool vector_class_native();

}  // namespace ostrel
