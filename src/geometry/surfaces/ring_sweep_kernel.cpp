#include "surfaces/ring_sweep_kernel.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "foundations/side_by_side.hpp"

// Why three searches find every close pair. The sweeps keep the edges that cross the sweep
// line in their order along it and test every two edges that become next to each other:
// the first crossing of two edges, in the order of the sweep, is always between two such
// (so no crossing passes unseen). Two edges that do not cross are nearest at a corner p
// of one of them; if the other comes within d of p, it crosses the vertical or the
// horizontal line through p within d * sqrt(2) of p, or it ends within d * sqrt(2) of p.
// The first is seen beside p in the order of the sweep along x, the second in the order
// of the sweep along y (the same sweep with x and y swapped), the third among corners
// close to each other. Every test of a crossing that rounding could tip counts as a doubt.

namespace ostrel::kernel {

namespace {

struct Plan {
  double x, y;
};

// The order of the sweep: by x, then by y (as if the sweep line were tilted a little).
bool before(Plan a, Plan b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

enum class Side { right, left, unsure };

// Which side of the line p -> q holds r, unsure where the rounding of the differences and
// products could have turned the sign (the error bound of the filtered orientation test,
// with room to spare, and a floor for the products that underflow).
Side side(Plan p, Plan q, Plan r) {
  const double l = (q.x - p.x) * (r.y - p.y), m = (q.y - p.y) * (r.x - p.x);
  const double det = l - m;
  if (!(std::fabs(det) > 1e-15 * (std::fabs(l) + std::fabs(m)) + 1e-300)) return Side::unsure;
  return det > 0 ? Side::left : Side::right;
}

using Close = std::function<bool(size_t, size_t)>;
using Pairs = std::vector<std::pair<size_t, size_t>>;

class Sweep {
 public:
  Sweep(std::span<const Plan> at, double window, const Close& close, const std::vector<bool>& left_out, Pairs& pairs,
        std::vector<size_t>& stopped)
      : at_(at), n_(static_cast<uint32_t>(at.size())), window_(window), close_(close), left_out_(left_out),
        pairs_(pairs), stopped_(stopped), status_(Below{this}) {}

  // The sweep over all corners; false at the first doubt.
  bool run() {
    // Sorted with their coordinates beside them: the comparisons read no other memory.
    struct Event {
      Plan at;
      uint32_t corner;
    };
    std::vector<Event> events(n_);
    for (uint32_t k = 0; k < n_; ++k) events[k] = {at_[k], k};
    std::sort(events.begin(), events.end(), [](const Event& a, const Event& b) {
      return before(a.at, b.at) || (!before(b.at, a.at) && a.corner < b.corner);
    });
    place_.resize(n_);
    ends_.resize(n_);
    for (uint32_t e = 0; e < n_; ++e) {
      const Plan a = at_[e], b = at_[next(e)];
      ends_[e] = before(b, a) ? std::pair{b, a} : std::pair{a, b};
    }
    for (const Event& event : events) {
      const uint32_t k = event.corner;
      const uint32_t incident[2] = {previous(k), k};
      // Edges that end at the corner leave before those that start there come in, so two
      // edges in the order never share a corner where one ends. Where the last one left,
      // the corner stands in the order; an edge that starts there goes in beside the
      // other that starts there, if one went in already.
      std::optional<Status::iterator> beside;
      for (uint32_t e : incident)
        if (!left_out_[e] && ends_at(e, k) && !remove(e, beside)) return false;
      for (uint32_t e : incident)
        if (!left_out_[e] && !ends_at(e, k) && !insert(e, beside)) return false;
      collect_beside(k, beside);
    }
    return true;
  }

 private:
  struct Probe {
    Plan point;
  };

  // An edge in the order, with its ends in the order of the sweep, so that comparisons
  // read them where the order keeps the edge.
  struct Placed {
    Plan left, right;
    uint32_t edge;
  };

  // Edge a below edge b where the sweep line crosses both: the one that starts later
  // against the line of the other, the other ends where they start at one corner.
  struct Below {
    using is_transparent = void;
    Sweep* sweep;
    bool operator()(const Placed& a, const Placed& b) const { return sweep->below(a, b); }
    bool operator()(const Placed& a, Probe p) const { return side(a.left, a.right, p.point) == Side::left; }
    bool operator()(Probe p, const Placed& a) const { return side(a.left, a.right, p.point) == Side::right; }
  };
  using Status = std::set<Placed, Below>;

  uint32_t next(uint32_t k) const { return k + 1 == n_ ? 0 : k + 1; }
  uint32_t previous(uint32_t k) const { return k == 0 ? n_ - 1 : k - 1; }
  bool neighbours(uint32_t a, uint32_t b) const { return next(a) == b || next(b) == a; }
  Plan left(uint32_t e) const { return ends_[e].first; }
  Plan right(uint32_t e) const { return ends_[e].second; }
  // Edge e, one of the two at corner k, ends there: its other corner comes first.
  bool ends_at(uint32_t e, uint32_t k) const { return before(at_[e == k ? next(k) : e], at_[k]); }

  bool below(const Placed& a, const Placed& b) {
    if (a.edge == b.edge) return false;
    auto settled = [&](Side s) {
      if (s == Side::unsure) stopped_ = {a.edge, b.edge};
      return s;
    };
    if (before(b.left, a.left)) return settled(side(b.left, b.right, a.left)) == Side::right;
    if (before(a.left, b.left)) return settled(side(a.left, a.right, b.left)) == Side::left;
    return settled(side(a.left, a.right, b.right)) == Side::left;
  }

  // Whether two edges are certainly apart, but for the corner that ring neighbours share.
  bool apart(uint32_t a, uint32_t b) const {
    if (next(a) == b) return fold_free(at_[a], at_[b], at_[next(b)]);
    if (next(b) == a) return fold_free(at_[b], at_[a], at_[next(a)]);
    // Apart when one lies wholly on one side of the other's line; an end on or near the
    // other's line (two edges of one straight run) leaves that line undecided.
    auto one_side = [](Plan p, Plan q, Plan r, Plan s) {
      const Side first = side(p, q, r);
      return first != Side::unsure && first == side(p, q, s);
    };
    const Plan a0 = at_[a], a1 = at_[next(a)], b0 = at_[b], b1 = at_[next(b)];
    return one_side(a0, a1, b0, b1) || one_side(b0, b1, a0, a1);
  }

  // Edges p -> c and c -> q meet beyond c only when they fold onto one line.
  static bool fold_free(Plan p, Plan c, Plan q) {
    return side(p, c, q) != Side::unsure || (p.x - c.x) * (q.x - c.x) + (p.y - c.y) * (q.y - c.y) < 0;
  }

  // Puts edge e in the order, searching from the top unless `beside` holds the place of
  // an edge next to which it goes; `beside` then holds e's place.
  bool insert(uint32_t e, std::optional<Status::iterator>& beside) {
    const Placed placed{left(e), right(e), e};
    const auto it = beside ? status_.insert(*beside, placed) : status_.insert(placed).first;
    if (!stopped_.empty()) return false;
    if (it->edge != e) {  // an edge the order cannot tell from e
      stopped_ = {e};
      return false;
    }
    place_[e] = beside.emplace(it);
    return (it == status_.begin() || apart_or_stop(std::prev(it)->edge, e)) &&
           (std::next(it) == status_.end() || apart_or_stop(e, std::next(it)->edge));
  }

  // Takes edge e out of the order; `after` holds the place that follows it.
  bool remove(uint32_t e, std::optional<Status::iterator>& after) {
    const auto it = place_[e];
    const auto up = std::next(it);
    if (it != status_.begin() && up != status_.end() && !apart_or_stop(std::prev(it)->edge, up->edge)) return false;
    after = status_.erase(it);
    return true;
  }

  bool apart_or_stop(uint32_t a, uint32_t b) {
    if (apart(a, b)) return true;
    stopped_ = {a, b};
    return false;
  }

  // How far an edge passes above or below corner p on the sweep line through p.
  static double gap(const Placed& e, Plan p) {
    const Plan l = e.left, r = e.right;
    if (l.x == r.x) return std::max({0.0, l.y - p.y, p.y - r.y});
    const double t = std::clamp((p.x - l.x) / (r.x - l.x), 0.0, 1.0);
    return std::fabs(l.y + t * (r.y - l.y) - p.y);
  }

  // The pairs of the two edges at corner k with the edges that cross the sweep line within
  // the window of it, which `close` accepts: the edges in order beside the corner, walked
  // outward until one passes beyond the window. (Edges through the corner itself, its
  // own, may stand on either side of where the walk starts.)
  void collect_beside(uint32_t k, std::optional<Status::iterator> place) {
    const Plan p = at_[k];
    auto collect = [&](uint32_t e) {
      for (uint32_t own : {previous(k), k})
        if (!left_out_[own] && own != e && !neighbours(own, e) && close_(own, e)) pairs_.emplace_back(own, e);
    };
    // The place of an edge that starts at the corner, or of the edge above those that
    // ended there; a search where the corner has no edge in the order.
    const auto start = place ? *place : status_.lower_bound(Probe{p});
    for (auto it = start; it != status_.end() && gap(*it, p) <= window_; ++it) collect(it->edge);
    for (auto it = start; it != status_.begin();) {
      --it;
      if (!(gap(*it, p) <= window_)) break;
      collect(it->edge);
    }
  }

  std::span<const Plan> at_;
  uint32_t n_;
  double window_;
  const Close& close_;
  const std::vector<bool>& left_out_;
  Pairs& pairs_;
  std::vector<size_t>& stopped_;
  Status status_;
  std::vector<Status::iterator> place_;
  std::vector<std::pair<Plan, Plan>> ends_;  // each edge's ends in the order of the sweep
};

// The pairs of edges at two corners within the window (each way) of each other that
// `close` accepts, found with the corners sorted by x and those within the window's width
// kept by y.
void collect_near_corners(std::span<const Plan> at, double window, const Close& close, Pairs& pairs) {
  const auto n = static_cast<uint32_t>(at.size());
  auto next = [n](uint32_t k) { return k + 1 == n ? 0 : k + 1; };
  auto collect = [&](uint32_t p, uint32_t q) {
    for (uint32_t a : {p == 0 ? n - 1 : p - 1, p})
      for (uint32_t c : {q == 0 ? n - 1 : q - 1, q})
        if (a != c && next(a) != c && next(c) != a && close(a, c)) pairs.emplace_back(a, c);
  };
  std::vector<std::pair<double, uint32_t>> by_x(n);  // x beside each index, for the sort
  for (uint32_t k = 0; k < n; ++k) by_x[k] = {at[k].x, k};
  std::sort(by_x.begin(), by_x.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::multimap<double, uint32_t> by_y;
  std::vector<std::multimap<double, uint32_t>::iterator> kept(n);
  size_t oldest = 0;
  for (const auto& [x, p] : by_x) {
    for (; by_x[oldest].first < x - window; ++oldest) by_y.erase(kept[by_x[oldest].second]);
    for (auto it = by_y.lower_bound(at[p].y - window); it != by_y.end() && it->first <= at[p].y + window; ++it)
      collect(p, it->second);
    kept[p] = by_y.emplace(at[p].y, p);
  }
}

}  // namespace

std::optional<Pairs> close_pairs(std::span<const Vec3> corners, double window, const Close& close,
                                 const std::vector<bool>& left_out, std::vector<size_t>& stopped) {
  stopped.clear();
  const size_t n = corners.size();
  if (n < 4 || n >= UINT32_MAX || !std::isfinite(window) || left_out.size() != n) return std::nullopt;
  std::vector<Plan> along_x(n), along_y(n);
  for (size_t k = 0; k < n; ++k) {
    if (!std::isfinite(corners[k].x) || !std::isfinite(corners[k].y)) return std::nullopt;
    along_x[k] = {corners[k].x, corners[k].y};
    along_y[k] = {corners[k].y, corners[k].x};
  }
  // The two sweeps side by side on a long ring (each reads only what the caller holds
  // for the whole call); the outcome of the sweep along y counts only after that of the
  // sweep along x, as if it had run second, and where they run one after the other, the
  // sweep along y is left out once the sweep along x has stopped.
  Pairs pairs, y_pairs;
  std::vector<size_t> y_stopped;
  bool x_done = false, y_done = false;
  std::atomic<bool> x_stopped = false;  // read by the other thread
  side_by_side(
      n,
      [&] {
        collect_near_corners(along_x, window, close, pairs);
        x_done = Sweep(along_x, window, close, left_out, pairs, stopped).run();
        x_stopped = !x_done;
      },
      [&] {
        if (!x_stopped) y_done = Sweep(along_y, window, close, left_out, y_pairs, y_stopped).run();
      });
  if (!x_done) return std::nullopt;
  if (!y_done) {
    stopped = std::move(y_stopped);
    return std::nullopt;
  }
  pairs.insert(pairs.end(), y_pairs.begin(), y_pairs.end());
  return pairs;
}

}  // namespace ostrel::kernel
