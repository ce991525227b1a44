// Indexed vertices and faces of triangles given corner by corner, with corners that
// coincide merged into one vertex. The result is exactly that of the plain scan that
// compares every corner with every vertex stored before its triangle (stored vertex on
// the left, p1 over p2 over p3 for one vertex, the last equal vertex winning), but the
// candidates come from a hash grid, so the work grows with the number of corners and
// not with its square.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

struct IndexedMesh {
  // One face per triangle: the vertex of each of its three corners.
  std::vector<std::array<std::size_t, 3>> faces;
  // The corner each vertex was made from, in vertex order.
  std::vector<std::size_t> sources;
};

// Triangles as corners[3 t], corners[3 t + 1], corners[3 t + 2]; a corner joins a vertex
// stored before its triangle when the two points are equal by `tolerance` in x, y and
// z (math.isclose: NaN equals nothing, an infinity only itself). The corners of one
// triangle are not compared with each other.
IndexedMesh merge_vertices(std::span<const Vec3> corners, Tolerance tolerance);

// Every corner a vertex of its own, numbered in corner order.
IndexedMesh separate_vertices(std::size_t corner_count);

}  // namespace ostrel::kernel
