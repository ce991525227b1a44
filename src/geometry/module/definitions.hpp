// The definition step of each class and function family, called by the module's exec
// step in the module's fixed import order.
#pragma once

namespace ostrel {

void define_visualisation_error();
void define_vector();
void define_material();
void define_point();
void define_triangle();
void define_coordinate_conversions();

}  // namespace ostrel
