#include "surfaces/vertex_merge_kernel.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace ostrel::kernel {

namespace {

constexpr std::size_t none = SIZE_MAX;

bool equal(const Vec3& stored, const Vec3& p, Tolerance t) {
  return isclose(stored.x, p.x, t) && isclose(stored.y, p.y, t) && isclose(stored.z, p.z, t);
}

bool finite(const Vec3& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }
bool has_nan(const Vec3& p) { return std::isnan(p.x) || std::isnan(p.y) || std::isnan(p.z); }

// Finite points that are equal differ per axis by at most
//   reach = max(rel * M, abs)
// with M the largest finite coordinate magnitude, since isclose allows rel times the
// larger magnitude of the two. Cells eight times that wide, searched a quarter cell
// either side of a point, hold every vertex equal to it with a wide margin for the
// rounding of the cell arithmetic. A floor of M * 2^-40 keeps the cell numbers within
// 2^40, where that rounding stays far below the margin, whatever the tolerances.
double cell_size(std::span<const Vec3> corners, Tolerance t) {
  double magnitude = 0.0;
  for (const Vec3& p : corners)
    if (finite(p)) magnitude = std::max({magnitude, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  // A NaN tolerance makes its test false (as in math.isclose), so it allows nothing.
  const double relative = t.rel * magnitude >= 0.0 ? t.rel * magnitude : 0.0;
  const double absolute = t.abs >= 0.0 ? t.abs : 0.0;
  const double size = std::max(8.0 * std::max(relative, absolute), std::ldexp(magnitude, -40));
  return size > 0.0 ? size : 1.0;  // all coordinates zero, or equal only when identical
}

struct Cell {
  std::int64_t x, y, z;
  bool operator==(const Cell&) const = default;
};

// Vertices by cell, each cell a chain through the vertex numbers, latest first. An
// infinite cell size (tolerances that make every two finite points equal) puts all
// of them in one cell.
class Grid {
 public:
  explicit Grid(double size) : size_(size), single_(!std::isfinite(size)), slots_(64) {}

  void insert(const Vec3& p, std::size_t vertex) {
    if (slots_.size() < 2 * (used_ + 1)) grow();
    const Cell cell = cell_of(p);
    Slot& slot = slots_[find(cell)];
    if (slot.head == none) {
      slot.cell = cell;
      ++used_;
    }
    if (next_.size() <= vertex) next_.resize(vertex + 1, none);
    next_[vertex] = slot.head;
    slot.head = vertex;
  }

  // Calls visit(vertex) for every vertex in the cells a quarter cell around `p`.
  template <typename Visit>
  void visit_near(const Vec3& p, Visit visit) const {
    const Range x = range(p.x), y = range(p.y), z = range(p.z);
    for (std::int64_t i = x.low; i <= x.high; ++i)
      for (std::int64_t j = y.low; j <= y.high; ++j)
        for (std::int64_t k = z.low; k <= z.high; ++k)
          for (std::size_t v = slots_[find({i, j, k})].head; v != none; v = next_[v]) visit(v);
  }

 private:
  struct Slot {
    Cell cell{};
    std::size_t head = none;
  };
  struct Range {
    std::int64_t low, high;
  };

  std::int64_t number(double q) const { return single_ ? 0 : static_cast<std::int64_t>(std::floor(q)); }
  Cell cell_of(const Vec3& p) const { return {number(p.x / size_), number(p.y / size_), number(p.z / size_)}; }
  Range range(double c) const {
    const double q = c / size_;
    return {number(q - 0.25), number(q + 0.25)};
  }

  static std::uint64_t hash(const Cell& c) {
    std::uint64_t h = static_cast<std::uint64_t>(c.x) * 0x9E3779B97F4A7C15ull;
    h ^= static_cast<std::uint64_t>(c.y) * 0xC2B2AE3D27D4EB4Full;
    h ^= static_cast<std::uint64_t>(c.z) * 0x165667B19E3779F9ull;
    return h ^ (h >> 31);
  }

  // The slot of `cell`, or the empty slot where it would go (open addressing).
  std::size_t find(const Cell& cell) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = hash(cell) & mask;
    while (slots_[i].head != none && !(slots_[i].cell == cell)) i = (i + 1) & mask;
    return i;
  }

  void grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& s : old)
      if (s.head != none) slots_[find(s.cell)] = s;
  }

  double size_;
  bool single_;
  std::vector<Slot> slots_;  // a power of two in size, at most half full
  std::size_t used_ = 0;
  std::vector<std::size_t> next_;
};

}  // namespace

IndexedMesh merge_vertices(std::span<const Vec3> corners, Tolerance tolerance) {
  IndexedMesh mesh;
  const std::size_t triangle_count = corners.size() / 3;
  mesh.faces.reserve(triangle_count);
  Grid grid(cell_size(corners, tolerance));
  std::vector<Vec3> vertices;
  // Vertices with an infinite coordinate and no NaN, scanned one by one: such a point
  // equals only points with the same infinities. A point with a NaN equals nothing.
  std::vector<std::size_t> unbounded;

  for (std::size_t t = 0; t < triangle_count; ++t) {
    const Vec3* c = &corners[3 * t];
    std::array<std::size_t, 3> face{none, none, none};
    for (std::size_t k = 0; k < 3; ++k) {
      // A vertex equal to an earlier corner of the triangle went to that corner.
      auto consider = [&](std::size_t v) {
        if (face[k] != none && v < face[k]) return;
        const Vec3& p = vertices[v];
        if (!equal(p, c[k], tolerance)) return;
        for (std::size_t j = 0; j < k; ++j)
          if (equal(p, c[j], tolerance)) return;
        face[k] = v;
      };
      if (finite(c[k]))
        grid.visit_near(c[k], consider);
      else if (!has_nan(c[k]))
        std::for_each(unbounded.begin(), unbounded.end(), consider);
    }
    for (std::size_t k = 0; k < 3; ++k) {
      if (face[k] != none) continue;
      face[k] = vertices.size();
      vertices.push_back(c[k]);
      mesh.sources.push_back(3 * t + k);
      if (finite(c[k]))
        grid.insert(c[k], face[k]);
      else if (!has_nan(c[k]))
        unbounded.push_back(face[k]);
    }
    mesh.faces.push_back(face);
  }
  return mesh;
}

IndexedMesh separate_vertices(std::size_t corner_count) {
  IndexedMesh mesh;
  mesh.faces.reserve(corner_count / 3);
  mesh.sources.reserve(corner_count);
  for (std::size_t i = 0; i + 2 < corner_count; i += 3) {
    mesh.faces.push_back({i, i + 1, i + 2});
    mesh.sources.insert(mesh.sources.end(), {i, i + 1, i + 2});
  }
  return mesh;
}

}  // namespace ostrel::kernel
