#include "surfaces/polygon_kernel.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "curves/intersections_kernel.hpp"
#include "foundations/side_by_side.hpp"
#include "surfaces/ring_sweep_kernel.hpp"

namespace ostrel::kernel {

std::optional<size_t> first_duplicate(std::span<const Vec3> corners, Tolerance module) {
  // Sorted by x with x beside each index: the comparisons read no other memory.
  std::vector<std::pair<double, size_t>> order(corners.size());
  for (size_t k = 0; k < corners.size(); ++k) order[k] = {corners[k].x, k};
  std::sort(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::optional<size_t> lowest;
  for (size_t k = 0; k < order.size(); ++k) {
    const Vec3& p = corners[order[k].second];
    // Above p.x, the x values close to it form one run: math.isclose widens with the
    // larger magnitude more slowly than the difference grows.
    for (size_t m = k + 1; m < order.size() && isclose(p.x, order[m].first, module); ++m) {
      if (!coincide(p, corners[order[m].second], module)) continue;
      const size_t first = std::min(order[k].second, order[m].second);
      if (!lowest || first < *lowest) lowest = first;
    }
  }
  return lowest;
}

namespace {

double cross(Vec3 o, Vec3 p, Vec3 q) { return (p.x - o.x) * (q.y - o.y) - (p.y - o.y) * (q.x - o.x); }

double distance_to(Vec3 p, const Segment& s) {
  const double dx = s.end.x - s.start.x, dy = s.end.y - s.start.y;
  const double squared = dx * dx + dy * dy;
  const double along = squared > 0.0 ? std::clamp(((p.x - s.start.x) * dx + (p.y - s.start.y) * dy) / squared, 0.0, 1.0)
                                     : 0.0;
  const double ex = p.x - (s.start.x + along * dx), ey = p.y - (s.start.y + along * dy);
  return std::sqrt(ex * ex + ey * ey);
}

// Whether two segments come within `reach` of each other in plan; in doubt, yes: a
// crossing found by signs that rounding may have tipped has an end close to the other.
bool within(const Segment& a, const Segment& b, double reach) {
  const double d1 = cross(a.start, a.end, b.start), d2 = cross(a.start, a.end, b.end);
  // Both ends of b on one side of a's line, farther than reach: the common case, decided
  // without a square root.
  const double ax = a.end.x - a.start.x, ay = a.end.y - a.start.y;
  const double far = reach * reach * (ax * ax + ay * ay);
  if (((d1 > 0 && d2 > 0) || (d1 < 0 && d2 < 0)) && d1 * d1 > far && d2 * d2 > far) return false;
  const double d3 = cross(b.start, b.end, a.start), d4 = cross(b.start, b.end, a.end);
  if (((d1 <= 0 && d2 >= 0) || (d1 >= 0 && d2 <= 0)) && ((d3 <= 0 && d4 >= 0) || (d3 >= 0 && d4 <= 0))) return true;
  return std::min({distance_to(b.start, a), distance_to(b.end, a), distance_to(a.start, b), distance_to(a.end, b)}) <=
         reach;
}

}  // namespace

Simplicity is_simple(std::span<const Vec3> corners, const Tolerances& t) {
  const size_t n = corners.size();
  if (n > UINT32_MAX) return Simplicity::undecided;
  std::vector<Segment> edges(n);
  for (size_t k = 0; k < n; ++k) {
    edges[k] = {corners[k], corners[(k + 1) % n]};
    if (coincide(edges[k].start, edges[k].end, t.module)) throw value_error("Start and end point may not coincide");
  }
  // The first pair in the order of the documented double loop that decides: a crossing
  // away from a shared corner, or two answers that differ (a ValueError there).
  struct Decision {
    std::optional<std::pair<size_t, size_t>> first;
    bool raises = false;
  } decided;
  // The loop meets each pair twice, as (i, j) and (j, i). Both orders compute the same two
  // meeting points, each in the other's place, and the tests on them are symmetric, so they
  // decide alike: one test serves for both, and the pair counts where the loop meets it first.
  auto judge_into = [&](Decision& d, size_t a, size_t b) {
    const size_t i = std::min(a, b), j = std::max(a, b);
    if (d.first && std::pair{i, j} > *d.first) return;
    const Crossing c = intersection_bounded_lines(edges[i], edges[j], true, t);
    if (c.kind == Crossing::Kind::none) return;
    const bool raises = c.kind == Crossing::Kind::mismatch;
    if (!raises &&
        (coincide(edges[i].end, edges[j].start, t.module) || coincide(edges[j].end, edges[i].start, t.module)))
      return;
    d = {std::pair{i, j}, raises};
  };
  auto judge = [&](size_t i, size_t j) { judge_into(decided, i, j); };
  auto verdict = [&] {
    if (!decided.first) return Simplicity::simple;
    if (decided.raises) throw value_error("");  // calculate_intersection_bounded_lines: the two answers differ
    return Simplicity::not_simple;
  };
  // Two edges are reported as meeting only where each holds (within the tolerances of
  // its bounds) one of two computed meeting points of their lines; those two share their
  // x and differ in y by the rounding of the two line functions, which grows with their
  // slopes. So only edges this close can be reported, the reach of the steeper of the two;
  // other pairs are never asked. (One steep edge widens only its own pairs.)
  double size = 0.0;
  for (const Vec3& p : corners) size = std::max({size, std::fabs(p.x), std::fabs(p.y)});
  const double tolerance = std::max(t.module.abs, t.abs.abs) + std::max({t.module.rel, t.abs.rel, 1e-9}) * size;
  std::vector<double> reach(n);
  for (size_t k = 0; k < n; ++k) {
    const Segment& e = edges[k];
    const double slope = e.end.x != e.start.x ? std::fabs((e.end.y - e.start.y) / (e.end.x - e.start.x)) : 0.0;
    reach[k] = 4.0 * tolerance + 0x1p-40 * (1.0 + slope) * size + 1e-300;
    if (!std::isfinite(reach[k])) return Simplicity::undecided;
  }
  auto may_meet = [&](size_t i, size_t j) { return within(edges[i], edges[j], std::max(reach[i], reach[j])); };
  // The pairs whose boxes touch (the first test of a meeting) are found band by band:
  // each edge is listed in the horizontal bands its y extent crosses, and a sweep over x
  // within a band meets each pair in the lowest band the two share. false where more than
  // `budget` pairs came up.
  std::vector<double> low_x(n), high_x(n), low_y(n), high_y(n);
  double bottom = INFINITY, top = -INFINITY;
  for (size_t k = 0; k < n; ++k) {
    low_x[k] = std::min(edges[k].start.x, edges[k].end.x), high_x[k] = std::max(edges[k].start.x, edges[k].end.x);
    low_y[k] = std::min(edges[k].start.y, edges[k].end.y), high_y[k] = std::max(edges[k].start.y, edges[k].end.y);
    bottom = std::min(bottom, low_y[k]), top = std::max(top, high_y[k]);
  }
  const size_t bands = std::max<size_t>(1, static_cast<size_t>(std::sqrt(static_cast<double>(n))));
  const double height = (top - bottom) / static_cast<double>(bands);
  auto band = [&](double y) {
    if (!(height > 0.0)) return size_t{0};
    return std::min(bands - 1, static_cast<size_t>(std::max(0.0, (y - bottom) / height)));
  };
  size_t listed = 0;
  for (size_t k = 0; k < n; ++k) listed += band(high_y[k]) - band(low_y[k]) + 1;
  std::vector<std::vector<uint32_t>> in_band;
  auto band_by_band = [&](size_t budget) {
    if (in_band.empty()) {
      in_band.resize(bands);
      for (uint32_t k = 0; k < n; ++k)
        for (size_t b = band(low_y[k]), last = band(high_y[k]); b <= last; ++b) in_band[b].push_back(k);
    }
    for (size_t b = 0; b < bands; ++b) {
      std::vector<uint32_t>& list = in_band[b];
      std::sort(list.begin(), list.end(), [&](uint32_t p, uint32_t q) { return low_x[p] < low_x[q]; });
      for (size_t k = 0; k < list.size(); ++k) {
        const size_t i = list[k];
        for (size_t m = k + 1; m < list.size() && low_x[list[m]] <= high_x[i]; ++m) {
          if (budget-- == 0) return false;
          const size_t j = list[m];
          if (low_y[j] > high_y[i] || high_y[j] < low_y[i] || band(std::max(low_y[i], low_y[j])) != b ||
              !may_meet(i, j))
            continue;
          judge(i, j);
        }
      }
    }
    return true;
  };
  // In a ring whose edges the sweeps prove not to cross, the pairs that may meet are the
  // neighbours in the ring (they share a corner; two steep ones can still give two meeting
  // points that differ) and the close pairs the sweeps find. They look beside each corner
  // within twice the reach of all but the widest edges (a pair within reach d has an edge
  // that passes within d * sqrt(2) of a corner on a line through it). Held against every
  // edge instead: those few, steep edges, and the edges of the crossings that stopped a
  // sweep, which the next sweep leaves out (a ring that crosses itself a few times is
  // decided in a few sweeps). false where the sweeps stay in doubt.
  constexpr size_t widest = 16;
  auto by_sweeps = [&] {
    if (n <= 2 * widest) return false;
    std::vector<double> ranked = reach;
    std::nth_element(ranked.begin(), ranked.begin() + widest, ranked.end(), std::greater<>());
    const double common = ranked[widest];
    std::vector<bool> held(n), left_out(n);
    for (size_t k = 0; k < n; ++k) held[k] = reach[k] > common;
    std::vector<size_t> stopped;
    for (size_t rounds = 0; rounds < widest; ++rounds) {
      auto pairs = close_pairs(corners, 2.0 * common, may_meet, left_out, stopped);
      if (!pairs) {
        if (stopped.empty()) return false;
        for (size_t e : stopped) held[e] = left_out[e] = true;
        continue;
      }
      for (size_t w = 0; w < n; ++w) {
        if (!held[w]) continue;
        for (size_t j = 0; j < n; ++j)
          if (j != w && j != (w + 1) % n && w != (j + 1) % n && may_meet(w, j)) pairs->emplace_back(w, j);
      }
      for (size_t k = 0; k < n; ++k) pairs->emplace_back(k, (k + 1) % n);
      // Each half of the pairs decides apart (on two cores for many); the first in the
      // order of the loop is the earlier of the two halves' first.
      Decision halves[2];
      const size_t middle = pairs->size() / 2;
      auto judge_part = [&](Decision& d, size_t from, size_t to) {
        for (size_t k = from; k < to; ++k) {
          const auto [i, j] = (*pairs)[k];
          judge_into(d, i, j);
        }
      };
      side_by_side(
          pairs->size(), [&] { judge_part(halves[0], 0, middle); },
          [&] { judge_part(halves[1], middle, pairs->size()); });
      for (const Decision& d : halves)
        if (d.first && (!decided.first || *d.first < *decided.first)) decided = d;
      return true;
    }
    return false;
  };
  // Band by band while the edges are short and few pairs share a band (most rings), else
  // the sweeps (long, thin edges side by side, as the spikes of a star, span many bands
  // and share them with many others), and where the sweeps stay in doubt, band by band to
  // the end. A pair judged twice decides the same; the first that decides in the order of
  // the documented loop is kept.
  try {
    const bool tall = listed > 4 * n;
    if ((tall || !band_by_band(32 * n)) && !by_sweeps()) band_by_band(SIZE_MAX);
  } catch (const ArithmeticFault&) {
    return Simplicity::undecided;
  }
  return verdict();
}

}  // namespace ostrel::kernel
