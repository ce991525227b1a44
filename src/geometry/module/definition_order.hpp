// The module's classes and functions in the order the import defines them: each line
// names the define_<family>() step of one source file. Adding a class or function
// family is one line here, at the place its name may first be used by a later one
// (defaults and bases are evaluated at definition).
#pragma once

// clang-format off
#define OSTREL_DEFINITION_ORDER(step)                                                          \
  step(visualisation_error) step(vector) step(gltf) step(material) step(transformable_object) \
  step(group) step(point) step(line)                                                          \
  step(line_intersections) step(revolve) step(arc) step(arc_revolve)                          \
  step(triangle) step(cartesian_axes)                                                         \
  step(rd_wgs_converter)                                                                      \
  step(coordinate_conversions)                                                                \
  step(extrusion) step(arc_extrusion) step(circular_extrusion)                                \
  step(rectangular_extrusion) step(square_beam)                                               \
  step(coplanarity)                   /* points_are_coplanar, lines_in_same_plane */          \
  step(point_forms)                   /* calculate_distance_vector, convert_points_for_lathe */ \
  step(matrices)                      /* translation, scaling, rotation, reflection matrices */ \
  step(unit_vector) step(mirror_object)                                                       \
  step(closed_forms)                  /* volume_cone, surface_cone_without_base, surface_area_dome */ \
  step(colour_text)                   /* hex_to_rgb, rgb_to_hex */                            \
  step(orientation)                   /* circumference_is_clockwise */                        \
  step(add_point) step(get_vertices_faces) step(find_overlap) step(patterns)                  \
  step(polygon) step(polyline)                                                                \
  step(cone) step(sphere_torus)                                                               \
  step(triangle_assembly) step(current_next)                                                  \
  step(geo_shapes) step(mesh) step(obj_reader) step(mesh_assembly)                            \
  step(grouped_obj_reader) step(mtl_reader)
// clang-format on
