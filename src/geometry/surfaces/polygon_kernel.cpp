#include "surfaces/polygon_kernel.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "curves/intersections_kernel.hpp"

namespace ostrel::kernel {

std::optional<size_t> first_duplicate(std::span<const Vec3> corners, Tolerance module) {
  std::vector<size_t> order(corners.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return corners[a].x < corners[b].x; });
  std::optional<size_t> lowest;
  for (size_t k = 0; k < order.size(); ++k) {
    const Vec3& p = corners[order[k]];
    // Above p.x, the x values close to it form one run: math.isclose widens with the
    // larger magnitude more slowly than the difference grows.
    for (size_t m = k + 1; m < order.size() && isclose(p.x, corners[order[m]].x, module); ++m) {
      if (!coincide(p, corners[order[m]], module)) continue;
      const size_t first = std::min(order[k], order[m]);
      if (!lowest || first < *lowest) lowest = first;
    }
  }
  return lowest;
}

Simplicity is_simple(std::span<const Vec3> corners, const Tolerances& t) {
  const size_t n = corners.size();
  std::vector<Segment> edges(n);
  for (size_t k = 0; k < n; ++k) {
    edges[k] = {corners[k], corners[(k + 1) % n]};
    if (coincide(edges[k].start, edges[k].end, t.module)) return Simplicity::undecided;  // Line refuses it
  }
  // The first pair in the order of the documented double loop that decides: a crossing
  // away from a shared corner, or two answers that differ (a ValueError there).
  std::optional<std::pair<size_t, size_t>> first;
  bool first_raises = false;
  auto judge = [&](size_t i, size_t j) {
    if (first && std::pair{i, j} > *first) return;
    const Crossing c = intersection_bounded_lines(edges[i], edges[j], true, t);
    if (c.kind == Crossing::Kind::none) return;
    const bool raises = c.kind == Crossing::Kind::mismatch;
    if (!raises &&
        (coincide(edges[i].end, edges[j].start, t.module) || coincide(edges[j].end, edges[i].start, t.module)))
      return;
    first = {i, j};
    first_raises = raises;
  };
  // Pairs whose boxes can touch, found by a sweep over the lowest x of each edge: the
  // intersection test itself rejects any other pair by its exact box comparison.
  std::vector<size_t> order(n);
  std::iota(order.begin(), order.end(), size_t{0});
  auto low_x = [&](size_t k) { return std::min(edges[k].start.x, edges[k].end.x); };
  auto high_x = [&](size_t k) { return std::max(edges[k].start.x, edges[k].end.x); };
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return low_x(a) < low_x(b); });
  try {
    for (size_t k = 0; k < n; ++k) {
      const size_t i = order[k];
      for (size_t m = k + 1; m < n && low_x(order[m]) <= high_x(i); ++m) {
        const size_t j = order[m];
        judge(std::min(i, j), std::max(i, j));
        judge(std::max(i, j), std::min(i, j));
      }
    }
  } catch (const ArithmeticFault&) {
    return Simplicity::undecided;
  }
  if (!first) return Simplicity::simple;
  return first_raises ? Simplicity::undecided : Simplicity::not_simple;
}

}  // namespace ostrel::kernel
