// The trimesh mesh of a mesh object: its vertex and face lists as its own method gives
// them, its material's visual, and no processing by trimesh, so that vertex order and
// merging stay as computed here.
#pragma once

#include "module/globals.hpp"
#include "module/objects.hpp"

namespace ostrel {

// trimesh.Trimesh(vertices=..., faces=..., visual=self.material._to_trimesh(), process=False),
// the lists from `self.<lists>()`.
inline Ref unprocessed_mesh(PyObject* self, PyObject* lists) {
  Ref result = call_method(self, lists, {});
  Ref parts[2];
  unpack(result.get(), 2, parts);
  Ref material = getattr(self, id<"material">());
  Ref visual = call_method(material.get(), id<"_to_trimesh">(), {});
  Ref mesh_class = getattr(global<"trimesh">().get(), id<"Trimesh">());
  return call_kw(mesh_class.get(), {},
                 {{id<"vertices">(), parts[0].get()},
                  {id<"faces">(), parts[1].get()},
                  {id<"visual">(), visual.get()},
                  {id<"process">(), Py_False}});
}

}  // namespace ostrel
