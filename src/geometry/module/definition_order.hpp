// The module's classes and functions in the order the import defines them: each step
// is the define_<file>() of the source file of that name. Adding a class or function
// family is one line here, at the place its name may first be used by a later one
// (defaults and bases are evaluated at definition).
#pragma once

// clang-format off
#define OSTREL_DEFINITION_ORDER(step)                                                        \
  step(visualisation_error) step(vector) step(gltf) step(material) step(transformable)      \
  step(point) step(line) step(intersections) step(revolve) step(arc) step(arc_revolve)      \
  step(triangle) step(cartesian_axes) step(rd_wgs) step(conversions)                        \
  step(extrusion) step(arc_extrusion) step(circular_extrusion) step(rectangular_extrusion)  \
  step(coplanarity) step(point_forms) step(lathe_points) step(matrices) step(unit_vector)   \
  step(mirror_object) step(closed_forms) step(colour) step(orientation) step(vertices_faces) \
  step(overlap) step(patterns) step(polygon) step(polyline) step(cone) step(sphere_torus)   \
  step(triangle_assembly) step(current_next) step(geo_shapes) step(mesh) step(obj_reader)   \
  step(mesh_assembly) step(grouped_obj_reader) step(mtl_reader)
// clang-format on
