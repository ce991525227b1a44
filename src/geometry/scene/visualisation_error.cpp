#include "module/class_builder.hpp"

namespace ostrel {

void define_visualisation_error() {
  define_class("VisualisationError", {PyExc_Exception},
               "Raised by code that uses the module when a visualisation cannot be made.", {});
}

}  // namespace ostrel
