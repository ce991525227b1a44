#include "foundations/vector_access.hpp"

#include "module/pristine.hpp"

namespace ostrel {

namespace {
OwnGlobals vector_global{"Vector"};
OwnClass vector_class("Vector");
}  // namespace

bool vector_class_native() {
  return vector_class.get() && vector_global.hold() && vector_class.admits(vector_class.type());
}

}  // namespace ostrel
