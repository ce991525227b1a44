// The module's classes and functions in the order the import defines them: each line
// names the define_<family>() step of one source file. Adding a class or function
// family is one line here, at the place its name may first be used by a later one
// (defaults and bases are evaluated at definition).
#pragma once

#define OSTREL_DEFINITION_ORDER(step)                                                                                 \
  step(visualisation_error) step(vector) step(gltf) step(material) step(transformable_object) step(group) step(point) \
      step(line) step(line_intersections) /* Revolve, LineRevolve, Arc, ArcRevolve */                                 \
      step(triangle)                      /* CartesianAxes, RDWGSConverter */                                         \
      step(coordinate_conversions) /* Extrusion, ArcExtrusion, CircularExtrusion, RectangularExtrusion, SquareBeam */ \
      step(coplanarity)            /* points_are_coplanar, lines_in_same_plane */                                     \
      step(point_forms)            /* calculate_distance_vector, convert_points_for_lathe */                          \
      step(matrices)               /* translation, scaling, rotation and reflection matrices */                       \
      step(unit_vector) step(mirror_object)                                                                           \
          step(closed_forms) /* volume_cone, surface_cone_without_base, surface_area_dome */                          \
      step(colour_text)      /* hex_to_rgb, rgb_to_hex */                                                             \
      step(orientation)      /* circumference_is_clockwise */                                                         \
      step(add_point) step(get_vertices_faces) step(find_overlap)                                                     \
          step(patterns) /* Polygon */ step(polyline) /* Cone, Sphere, Torus */                                       \
      step(triangle_assembly)                                                                                         \
          step(current_next) /* geographic classes, _Mesh; the OBJ and MTL readers and _MeshAssembly */
