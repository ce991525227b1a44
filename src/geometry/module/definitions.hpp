// The definition step of each class and function family, called by the module's exec
// step in the module's fixed import order.
#pragma once

namespace ostrel {

void define_visualisation_error();
void define_vector();
void define_gltf();
void define_material();
void define_transformable_object();
void define_group();
void define_point();
void define_line();
void define_line_intersections();
void define_triangle();
void define_coordinate_conversions();
void define_coplanarity();
void define_point_forms();
void define_matrices();
void define_unit_vector();
void define_mirror_object();
void define_closed_forms();
void define_colour_text();
void define_orientation();
void define_add_point();
void define_get_vertices_faces();
void define_find_overlap();
void define_patterns();
void define_triangle_assembly();
void define_current_next();

}  // namespace ostrel
