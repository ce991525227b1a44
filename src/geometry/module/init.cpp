// The entry point PyInit_geometry and the one initialisation of the module.
#include "foundations/arrays.hpp"
#include "module/boundary.hpp"
#include "module/definition_order.hpp"
#include "module/function.hpp"
#include "module/globals.hpp"
#include "module/lazy_iterator.hpp"
#include "module/natives.hpp"
#include "module/objects.hpp"

namespace ostrel {

#define OSTREL_DECLARE(family) void define_##family();
OSTREL_DEFINITION_ORDER(OSTREL_DECLARE)
#undef OSTREL_DECLARE

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
#define OSTREL_DEFINE(family) define_##family();
  OSTREL_DEFINITION_ORDER(OSTREL_DEFINE)
#undef OSTREL_DEFINE
}

int exec_geometry(PyObject* module) {
  if (initialised_module) {
    if (initialised_module == module) return 0;
    PyErr_SetString(PyExc_RuntimeError,
                    "Module 'geometry' has already been imported. Re-initialisation is not supported.");
    return -1;
  }
  const int status = enter_status([&] {
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
    capture_natives();
    Ref test = check(PyDict_New());
    set_global("__test__", test.get());
  });
  if (status < 0) return status;
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
