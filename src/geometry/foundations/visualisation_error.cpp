#include "module/class_builder.hpp"
#include "module/definitions.hpp"

namespace ostrel {

void define_visualisation_error() {
  ClassBuilder("VisualisationError", {PyExc_Exception},
               "Raised by code that uses the module when a visualisation cannot be made.")
      .build();
}

}  // namespace ostrel
