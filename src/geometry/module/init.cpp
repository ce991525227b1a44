// The entry point PyInit_geometry and the one initialisation of the module.
#include "foundations/arrays.hpp"
#include "module/definitions.hpp"
#include "module/function.hpp"
#include "module/globals.hpp"
#include "module/lazy_iterator.hpp"
#include "module/objects.hpp"
#include "module/own_globals.hpp"

namespace ostrel {

namespace {

PyObject* initialised_module = nullptr;

// The module's imports and its non-class globals, in their order. Written as the
// statements they are: the warning filter is restored on leaving the block whether
// the imports worked or not, and an import error goes on to the importer.
constexpr const char* prologue = R"(
import copy
import logging
import math
import uuid
import warnings
from abc import abstractmethod, ABC
from itertools import tee
from typing import Iterator, TextIO, Dict, List, Optional, Tuple, TypeVar, Union, cast, Sequence, Any
from .core import Color, ISCLOSE_ATOL, ISCLOSE_RTOL, File
with warnings.catch_warnings():
    warnings.simplefilter("ignore")
    import numpy as np
    from ostrel._vendor import trimesh
trimesh_logger = logging.getLogger('trimesh')
logger = logging.getLogger(__package__)
T = TypeVar('T')
)";

void define_all() {
  define_visualisation_error();
  define_vector();
  define_gltf();
  define_material();
  define_transformable_object();
  define_group();
  define_point();
  define_line();
  define_line_intersections();
  // Revolve, LineRevolve, Arc, ArcRevolve
  define_triangle();
  // CartesianAxes, RDWGSConverter
  define_coordinate_conversions();
  // Extrusion, ArcExtrusion, CircularExtrusion, RectangularExtrusion, SquareBeam
  define_coplanarity();    // points_are_coplanar, lines_in_same_plane
  define_point_forms();    // calculate_distance_vector, convert_points_for_lathe
  define_matrices();       // translation, scaling, rotation and reflection matrices
  define_unit_vector();
  define_mirror_object();
  define_closed_forms();   // volume_cone, surface_cone_without_base, surface_area_dome
  define_colour_text();    // hex_to_rgb, rgb_to_hex
  define_orientation();    // circumference_is_clockwise
  define_add_point();
  define_get_vertices_faces();
  define_find_overlap();
  define_patterns();
  // Polygon, Polyline, Cone, Sphere, Torus
  define_triangle_assembly();
  define_current_next();
  // geographic classes, _Mesh; the OBJ and MTL readers and _MeshAssembly
}

int exec_geometry(PyObject* module) {
  if (initialised_module) {
    if (initialised_module == module) return 0;
    PyErr_SetString(PyExc_RuntimeError,
                    "Module 'geometry' has already been imported. Re-initialisation is not supported.");
    return -1;
  }
  try {
    PyObject* modules = PySys_GetObject("modules");  // borrowed
    if (!modules) raise(PyExc_RuntimeError, "sys.modules is missing");
    check(PyDict_SetItemString(modules, "ostrel.geometry", module));

    PyObject* dict = PyModule_GetDict(module);
    set_module_dict(dict);
    ready_function_type();
    ready_lazy_iterator_type();
    check(PyRun_String(prologue, Py_file_input, dict, dict));
    import_numpy_api();
    define_all();
    capture_own_globals();
    Ref test = check(PyDict_New());
    set_global("__test__", test.get());
  } catch (const PyError&) {
    return -1;
  }
  initialised_module = new_ref(module);
  return 0;
}

PyModuleDef_Slot slots[] = {
    {Py_mod_exec, reinterpret_cast<void*>(exec_geometry)},
    {0, nullptr},
};

PyModuleDef module_def = {
    PyModuleDef_HEAD_INIT,
    "geometry",
    "Plane and spatial geometry for engineering: points, vectors, lines, arcs, polylines, polygons\n"
    "and triangles; intersections, overlaps and section properties; visual solids written as\n"
    "binary glTF; OBJ/MTL reading; RD/WGS coordinate conversion.",
    0,
    nullptr,
    slots,
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace

}  // namespace ostrel

PyMODINIT_FUNC PyInit_geometry() { return PyModuleDef_Init(&ostrel::module_def); }
