#include "surfaces/ear_clipping_kernel.hpp"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stop_token>
#include <system_error>
#include <thread>
#include <vector>

#include "curves/intersections_kernel.hpp"
#include "foundations/side_by_side.hpp"

namespace ostrel::kernel {

bool strictly_in_triangle(Vec3 p1, Vec3 p2, Vec3 p3, Vec3 p) {
  const double eps = 1e-7;
  const double denominator = (p2.y - p3.y) * (p1.x - p3.x) + (p3.x - p2.x) * (p1.y - p3.y) + eps;
  const double alpha = divide((p2.y - p3.y) * (p.x - p3.x) + (p3.x - p2.x) * (p.y - p3.y), denominator);
  const double beta = divide((p3.y - p1.y) * (p.x - p3.x) + (p1.x - p3.x) * (p.y - p3.y), denominator);
  const double gamma = 1 - alpha - beta;
  for (double x : {alpha, beta, gamma})
    if (x >= 1 || x <= 0) return false;
  return true;
}

std::optional<bool> on_triangle(Vec3 p1, Vec3 p2, Vec3 p3, Vec3 p, Tolerance module) {
  for (auto [start, end] : {std::pair{p1, p2}, {p2, p3}, {p3, p1}}) {
    if (coincide(start, end, module)) return std::nullopt;
    if (point_on_bounded_line(p, {start, end}, module) != OnSegment::outside) return true;
  }
  return false;
}

namespace {

// A box in the xy plane.
struct Box {
  double x0, y0, x1, y1;
  static Box around(Vec3 p) { return {p.x, p.y, p.x, p.y}; }
  void include(Vec3 p) {
    x0 = std::min(x0, p.x), y0 = std::min(y0, p.y), x1 = std::max(x1, p.x), y1 = std::max(y1, p.y);
  }
  void include(const Box& b) {
    x0 = std::min(x0, b.x0), y0 = std::min(y0, b.y0), x1 = std::max(x1, b.x1), y1 = std::max(y1, b.y1);
  }
};

// The least and greatest value that the float expression a * (x - cx) + b * (y - cy)
// takes at the points of a box, exactly as rounded: each step rounds monotonically (and
// the build contracts no float expression), so the box's ends give the range's ends.
struct Range {
  double low, high;
};
Range linear_range(double a, double b, Vec3 c, const Box& box) {
  const double dx0 = box.x0 - c.x, dx1 = box.x1 - c.x, dy0 = box.y0 - c.y, dy1 = box.y1 - c.y;
  const double ax_low = a >= 0 ? a * dx0 : a * dx1, ax_high = a >= 0 ? a * dx1 : a * dx0;
  const double by_low = b >= 0 ? b * dy0 : b * dy1, by_high = b >= 0 ? b * dy1 : b * dy0;
  return {ax_low + by_low, ax_high + by_high};
}

// The points of a polygon in a tree of boxes, each node halving its points at the median
// of its box's wider side and counting those still in the ring. A search goes down only
// into nodes that still hold a point and whose box the caller says may hold one it
// accepts, so it costs about the boundary of the region searched, however large the
// region, and a clipped point costs nothing more.
class PointTree {
 public:
  // `halves_beside`: the two halves of a large tree built on two cores.
  PointTree(std::span<const Vec3> points, bool halves_beside)
      : points_(points), leaf_of_(points.size()), removed_(points.size()), halves_beside_(halves_beside) {
    if (points.empty()) return;
    std::vector<Placed> placed(points.size());
    for (uint32_t i = 0; i < points.size(); ++i) placed[i] = {points[i].x, points[i].y, i};
    const auto n = static_cast<uint32_t>(points.size());
    nodes_.resize(1 + descendants(n));
    build(placed, 0, 0, n, kNone, 1);
    order_.resize(points.size());
    for (uint32_t i = 0; i < points.size(); ++i) order_[i] = placed[i].index;
  }

  // Takes the point out of the counts, and shrinks the boxes above it: a box that keeps
  // the area of points long clipped would send later searches into it. The boxes of
  // nodes of up to kShrinkAlways points shrink to what is left at every removal; larger
  // ones each time their count halves, as shrinking them at every removal would cost a
  // walk through their children, far apart in memory, all the way up.
  void remove(uint32_t point) {
    removed_[point] = true;
    for (uint32_t k = leaf_of_[point]; k != kNone; k = nodes_[k].parent) {
      Node& node = nodes_[k];
      if (--node.alive == 0) continue;
      if (node.left == kNone) {
        bool first = true;
        for (uint32_t i = node.begin; i < node.end; ++i) {
          if (removed_[order_[i]]) continue;
          if (first) node.box = Box::around(points_[order_[i]]);
          node.box.include(points_[order_[i]]);
          first = false;
        }
      } else if (node.end - node.begin <= kShrinkAlways || node.alive <= node.shrink_at) {
        const Node &left = nodes_[node.left], &right = nodes_[node.left + 1];
        node.box = left.alive == 0 ? right.box : left.box;
        if (left.alive != 0 && right.alive != 0) node.box.include(right.box);
        node.shrink_at = node.alive / 2;
      }
    }
  }

  bool holds(uint32_t point) const { return !removed_[point]; }

  // The first point left, in the order of the search, that `accept` takes, among those in
  // nodes whose box `may_hold` admits.
  template <typename MayHold, typename Accept>
  std::optional<uint32_t> find(MayHold may_hold, Accept accept) const {
    if (nodes_.empty()) return std::nullopt;
    std::vector<uint32_t>& stack = stack_;  // kept between searches: one allocation for all
    stack.assign(1, 0);
    while (!stack.empty()) {
      const Node& node = nodes_[stack.back()];
      stack.pop_back();
      if (node.alive == 0 || !may_hold(node.box)) continue;
      if (node.left == kNone) {
        for (uint32_t k = node.begin; k < node.end; ++k)
          if (!removed_[order_[k]] && accept(order_[k])) return order_[k];
        continue;
      }
      stack.push_back(node.left + 1);
      stack.push_back(node.left);
    }
    return std::nullopt;
  }

 private:
  static constexpr uint32_t kNone = UINT32_MAX;
  static constexpr uint32_t kLeafSize = 2;
  static constexpr uint32_t kShrinkAlways = 64;
  struct Node {
    Box box;
    uint32_t begin, end, parent, left, alive, shrink_at;
  };

  // A point with its coordinates beside it, so that the partitions read no other memory.
  struct Placed {
    double x, y;
    uint32_t index;
  };

  // The number of nodes below a node of `count` points; the halves of a count differ by
  // at most one, so each level has at most two counts to work out.
  static uint32_t descendants(uint32_t count) {
    static thread_local std::map<uint32_t, uint32_t> known;
    if (count <= kLeafSize) return 0;
    if (const auto it = known.find(count); it != known.end()) return it->second;
    const uint32_t below = 2 + descendants(count / 2) + descendants(count - count / 2);
    known.emplace(count, below);
    return below;
  }

  // Fills node k with the points placed[begin, end) and its descendants from node
  // `free` on: its children side by side there, then the left one's descendants, then the
  // right one's. So the two halves of a large tree are built on two cores, each into its
  // own nodes. A node's box is its children's together.
  void build(std::vector<Placed>& placed, uint32_t k, uint32_t begin, uint32_t end, uint32_t parent, uint32_t free) {
    nodes_[k] = {{}, begin, end, parent, kNone, end - begin, (end - begin) / 2};
    if (end - begin <= kLeafSize) {
      Box box = Box::around(points_[placed[begin].index]);
      for (uint32_t i = begin; i < end; ++i) {
        box.include(points_[placed[i].index]);
        leaf_of_[placed[i].index] = k;
      }
      nodes_[k].box = box;
      return;
    }
    double x0 = placed[begin].x, x1 = x0, y0 = placed[begin].y, y1 = y0;
    for (uint32_t i = begin; i < end; ++i) {
      x0 = std::min(x0, placed[i].x), x1 = std::max(x1, placed[i].x);
      y0 = std::min(y0, placed[i].y), y1 = std::max(y1, placed[i].y);
    }
    const bool wide = x1 - x0 >= y1 - y0;
    const uint32_t middle = begin + (end - begin) / 2;
    std::nth_element(placed.begin() + begin, placed.begin() + middle, placed.begin() + end,
                     [wide](const Placed& a, const Placed& b) { return wide ? a.x < b.x : a.y < b.y; });
    const uint32_t left = free, right_free = free + 2 + descendants(middle - begin);
    nodes_[k].left = left;
    side_by_side(
        k == 0 && halves_beside_ ? end - begin : 0, [&] { build(placed, left, begin, middle, k, free + 2); },
        [&] { build(placed, left + 1, middle, end, k, right_free); });
    nodes_[k].box = nodes_[left].box;
    nodes_[k].box.include(nodes_[left + 1].box);
  }

  std::span<const Vec3> points_;
  std::vector<uint32_t> order_, leaf_of_;
  std::vector<bool> removed_;
  std::vector<Node> nodes_;
  bool halves_beside_;
  mutable std::vector<uint32_t> stack_;
};

// A set of corner indices below a fixed bound that gives its least member quickly: one bit
// a corner, and one bit a word of those that says whether the word holds any.
class IndexSet {
 public:
  explicit IndexSet(size_t bound) : bits_((bound + 63) / 64), words_((bits_.size() + 63) / 64) {}
  void insert(uint32_t i) {
    bits_[i / 64] |= uint64_t{1} << (i % 64);
    words_[i / 4096] |= uint64_t{1} << (i / 64 % 64);
  }
  void erase(uint32_t i) {
    uint64_t& word = bits_[i / 64];
    word &= ~(uint64_t{1} << (i % 64));
    if (word == 0) words_[i / 4096] &= ~(uint64_t{1} << (i / 64 % 64));
  }
  std::optional<uint32_t> least() const {
    for (size_t w = 0; w < words_.size(); ++w) {
      if (words_[w] == 0) continue;
      const size_t word = w * 64 + static_cast<size_t>(std::countr_zero(words_[w]));
      return static_cast<uint32_t>(word * 64 + static_cast<size_t>(std::countr_zero(bits_[word])));
    }
    return std::nullopt;
  }

 private:
  std::vector<uint64_t> bits_, words_;
};

constexpr double unit_roundoff = 0x1p-53;

// Thrown where the documented steps may raise, or may differ from what can be decided here.
struct Undecided {};
// Thrown where the documented steps make a Line of coinciding ends.
struct DegenerateEdge {};

// (next.x - current.x) * (next.y + current.y): one pair's share of the orientation sum.
double orientation_term(Vec3 current, Vec3 next) { return (next.x - current.x) * (next.y + current.y); }

// The orientation sum of the remainder, kept up to date as corners leave it: a
// compensated running sum of the current terms, with what bounds its distance from the
// sum the documented steps form in list order.
class RunningOrientation {
 public:
  void add(double term) {
    accumulate(term);
    magnitude_ += std::fabs(term);
  }
  void remove(double term) {
    accumulate(-term);
    magnitude_ -= std::fabs(term);
  }
  // The sign of the ordered sum of `count` terms, where it is certain: 1 for positive
  // or zero (clockwise), -1 for negative, 0 when in doubt.
  int certain_sign(size_t count) const {
    const double value = sum_ + compensation_;
    const double doubt = 2.0 * static_cast<double>(count + 2) * unit_roundoff * std::max(magnitude_, 0.0) +
                         4.0 * unit_roundoff * std::fabs(value) +
                         4.0 * static_cast<double>(updates_ + 2) * unit_roundoff * unit_roundoff * history_ + 0x1p-1000;
    if (!std::isfinite(doubt) || std::fabs(value) <= doubt) return 0;
    return value > 0 ? 1 : -1;
  }

 private:
  void accumulate(double x) {  // Neumaier's summation
    const double t = sum_ + x;
    compensation_ += std::fabs(sum_) >= std::fabs(x) ? (sum_ - t) + x : (x - t) + sum_;
    sum_ = t;
    history_ += std::fabs(x);
    ++updates_;
  }
  double sum_ = 0.0, compensation_ = 0.0, magnitude_ = 0.0, history_ = 0.0;
  size_t updates_ = 0;
};

class Clipper {
 public:
  Clipper(std::span<const Vec3> points, Tolerance module)
      : p_(points),
        module_(module),
        tree_(points, true),
        n_(points.size()),
        prev_(n_),
        next_(n_),
        status_(n_, Status::unknown),
        witness_(n_),
        watchers_(n_),
        pending_(n_),
        ahead_(n_) {
    for (uint32_t i = 0; i < n_; ++i) {
      prev_[i] = static_cast<uint32_t>((i + n_ - 1) % n_);
      next_[i] = static_cast<uint32_t>((i + 1) % n_);
      pending_.insert(i);
      orientation_.add(orientation_term(p_[i], p_[next_[i]]));
    }
    for (uint32_t i = 0; i < n_; ++i)
      if (coincide(p_[i], p_[next_[i]], module_)) throw Undecided{};
    remaining_ = n_;
    if (n_ >= kSideBySideFrom && usable_cores() >= 2) {
      try {
        worker_ = std::jthread([this](std::stop_token stop) {
          try {
            look_ahead(stop, PointTree(p_, false));
          } catch (...) {  // out of memory: the search goes on alone
          }
        });
      } catch (const std::system_error&) {  // no thread to be had
      }
    }
  }

  EarClipping run() {
    EarClipping result;
    while (remaining_ >= 3) {
      if (clockwise()) {
        result.outcome = EarClipping::Outcome::clockwise;
        return result;
      }
      if (remaining_ == 3) {
        result.triangles.push_back({head_, next_[head_], next_[next_[head_]]});
        break;
      }
      const std::optional<uint32_t> ear = first_ear();
      if (!ear) {
        result.outcome = EarClipping::Outcome::no_ear;
        return result;
      }
      result.triangles.push_back({prev_[*ear], *ear, next_[*ear]});
      clip(*ear);
    }
    return result;
  }

 private:
  enum class Status : uint8_t { unknown, reflex, blocked, ear };

  bool clockwise() const {
    if (const int sign = orientation_.certain_sign(remaining_)) return sign > 0;
    double total = 0.0;
    uint32_t current = head_;
    do {
      total += orientation_term(p_[current], p_[next_[current]]);
      current = next_[current];
    } while (current != head_);
    return total >= 0.0;
  }

  // The corner of lowest index that is an ear, evaluating corners in doubt on the way.
  std::optional<uint32_t> first_ear() {
    while (const std::optional<uint32_t> v = pending_.least()) {
      if (status_[*v] == Status::unknown) evaluate(*v);
      if (status_[*v] == Status::ear) return v;
      pending_.erase(*v);
    }
    return std::nullopt;
  }

  void evaluate(uint32_t v) {
    const uint32_t a = prev_[v], b = next_[v];
    const Vec3 &p1 = p_[a], &p2 = p_[v], &p3 = p_[b];
    if (!convex_when_ccw(p1, p2, p3)) {
      status_[v] = Status::reflex;
      return;
    }
    const double twice_area = (p2.y - p3.y) * (p1.x - p3.x) + (p3.x - p2.x) * (p1.y - p3.y);
    if (twice_area + 1e-7 == 0.0) throw Undecided{};
    if (coincide(p3, p1, module_)) return evaluate_with_coinciding_neighbours(v, p1, p2, p3);
    front_.store(v, std::memory_order_relaxed);
    const bool first_neighbours = a == around(v, -1) && b == around(v, 1);
    keep_looking_ahead(first_neighbours);
    if (first_neighbours && ahead_[v].load(std::memory_order_relaxed) == kEarAhead) {
      status_[v] = Status::ear;
      return;
    }
    settle(v, blocker(tree_, p1, p2, p3, twice_area));
  }

  // The look-ahead shares the machine with the search; where few searches meet a corner
  // between its first neighbours (a fan of ears from one corner, as in a circle), it costs
  // more than it saves, and stops.
  void keep_looking_ahead(bool first_neighbours) {
    searched_ += 1, searched_first_ += first_neighbours;
    if (searched_ % 4096 == 0 && worker_.joinable() && searched_first_ * 5 < searched_) worker_.request_stop();
  }

  // The first point left in `tree` that keeps the corner p2, between p1 and p3, from being
  // an ear (a convex corner whose neighbours do not coincide).
  std::optional<uint32_t> blocker(const PointTree& tree, Vec3 p1, Vec3 p2, Vec3 p3, double twice_area) const {
    auto blocks = [&](uint32_t q) {
      const Vec3& p = p_[q];
      if (coincide(p, p1, module_) || coincide(p, p2, module_) || coincide(p, p3, module_)) return false;
      if (strictly_in_triangle(p1, p2, p3, p)) return true;
      if (!coincide(p3, p1, module_) && clear_of(p1, p2, p) && clear_of(p2, p3, p) && clear_of(p3, p1, p))
        return false;
      const std::optional<bool> on = on_triangle(p1, p2, p3, p, module_);
      if (!on) throw Undecided{};
      return *on;
    };
    const Region region = region_of(p1, p2, p3, twice_area);
    return tree.find([&](const Box& box) { return region.may_hold(box); }, blocks);
  }

  uint32_t around(uint32_t v, int step) const { return static_cast<uint32_t>((v + n_ + step) % n_); }

  // The corners ahead of the search, each between its neighbours in the given ring, tested
  // on a second core against all the points. Whether a point blocks a corner depends on
  // that point and the corner's triangle alone, so a corner that no point of the whole ring
  // blocks is an ear in any remainder that holds it between the same neighbours; the search
  // takes such a corner as an ear without looking again (a third of the searches of a
  // star). What blocks there, or raises, or comes too late, it looks at itself.
  void look_ahead(const std::stop_token& stop, const PointTree& all) {
    for (uint32_t v = 0; v < n_ && !stop.stop_requested(); ++v) {
      v = std::max(v, front_.load(std::memory_order_relaxed) + kLead);
      if (v >= n_) break;
      const Vec3 &p1 = p_[around(v, -1)], &p2 = p_[v], &p3 = p_[around(v, 1)];
      const double twice_area = (p2.y - p3.y) * (p1.x - p3.x) + (p3.x - p2.x) * (p1.y - p3.y);
      if (!convex_when_ccw(p1, p2, p3) || twice_area + 1e-7 == 0.0 || coincide(p3, p1, module_)) continue;
      try {
        if (!blocker(all, p1, p2, p3, twice_area)) ahead_[v].store(kEarAhead, std::memory_order_relaxed);
      } catch (const Undecided&) {
      } catch (const ArithmeticFault&) {
      }
    }
  }

  // An ear, or blocked by a point: the corner is looked at again when that point is clipped.
  void settle(uint32_t v, std::optional<uint32_t> blocker) {
    if (!blocker) {
      status_[v] = Status::ear;
      return;
    }
    status_[v] = Status::blocked;
    witness_[v] = *blocker;
    watchers_[*blocker].push_back(v);
  }

  // A corner whose neighbours coincide. The documented steps test every point, without
  // stopping, against the edges p1-p2, p2-p3 and p3-p1 in turn; the last has coinciding
  // ends, and making it raises. So the first point that is neither one of the three, nor
  // inside, nor on one of the first two edges ends the clipping with that error, and only
  // the whole list can tell whether there is one.
  void evaluate_with_coinciding_neighbours(uint32_t v, Vec3 p1, Vec3 p2, Vec3 p3) {
    std::optional<uint32_t> blocker;
    uint32_t q = head_;
    do {
      const Vec3& p = p_[q];
      if (!coincide(p, p1, module_) && !coincide(p, p2, module_) && !coincide(p, p3, module_)) {
        const bool blocks = strictly_in_triangle(p1, p2, p3, p) ||
                            point_on_bounded_line(p, {p1, p2}, module_) != OnSegment::outside ||
                            point_on_bounded_line(p, {p2, p3}, module_) != OnSegment::outside;
        if (!blocks) throw DegenerateEdge{};
        if (!blocker) blocker = q;
      }
      q = next_[q];
    } while (q != head_);
    settle(v, blocker);
  }

  // Where the tests of one candidate can accept a point that coincides with none of its
  // corners: strictly inside by the barycentric coordinates as Polygon._in_triangle rounds
  // them (for a flat triangle a strip along its line, as long as the line), or on an edge:
  // within the triangle grown by the longest edge times the spread of the on-edge test,
  // and room for rounding. A box that can hold neither is passed over.
  struct Region {
    Vec3 p1, p2, p3;
    double denominator;     // as _in_triangle forms it; not positive: every box may hold one
    double edge_reach[3];   // the margin times each edge's length, for the edges' cross products
    Box grown;              // the triangle's box grown by the margin
    Box inside;             // the box of the points strictly inside (everything for a flat triangle)

    bool may_hold(const Box& box) const { return near_an_edge(box) || strictly_inside(box); }

    static bool apart(const Box& a, const Box& b) { return a.x1 < b.x0 || a.x0 > b.x1 || a.y1 < b.y0 || a.y0 > b.y1; }

    // Each coordinate's own range first, then the three sides: no box that misses the
    // region passes both.
    bool strictly_inside(const Box& box) const {
      if (!(denominator > 0.0)) return true;
      if (apart(box, inside)) return false;
      const Range a = linear_range(p2.y - p3.y, p3.x - p2.x, p3, box);
      const Range b = linear_range(p3.y - p1.y, p1.x - p3.x, p3, box);
      // The quotients' signs and whether they reach 1 show without dividing.
      if (a.high <= 0 || b.high <= 0 || a.low >= denominator || b.low >= denominator) return false;
      const double alpha_low = a.low / denominator, alpha_high = a.high / denominator;
      const double beta_low = b.low / denominator, beta_high = b.high / denominator;
      if (alpha_high <= 0 || alpha_low >= 1 || beta_high <= 0 || beta_low >= 1) return false;
      return 1 - alpha_low - beta_low > 0;  // the greatest gamma
    }

    bool near_an_edge(const Box& box) const {
      if (apart(box, grown)) return false;
      const Vec3 corners[3] = {p1, p2, p3};
      for (int i = 0; i < 3; ++i) {
        const Vec3 &s = corners[i], &e = corners[(i + 1) % 3];
        // (e - s) x (q - s), greatest over the box: below -reach, the box lies beyond this edge.
        if (linear_range(-(e.y - s.y), e.x - s.x, s, box).high < -edge_reach[i]) return false;
      }
      return true;
    }
  };

  Region region_of(Vec3 p1, Vec3 p2, Vec3 p3, double twice_area) const {
    Region r{p1, p2, p3, twice_area + 1e-7, {}, {}};
    const double longest = std::max({distance(p1, p2), distance(p2, p3), distance(p3, p1)});
    const double size = std::max({std::fabs(p1.x), std::fabs(p1.y), std::fabs(p2.x), std::fabs(p2.y),
                                  std::fabs(p3.x), std::fabs(p3.y)}) +
                        longest;
    double margin = longest * on_edge_spread() + 1e-12 * size + 1e-300;
    if (!std::isfinite(margin)) margin = INFINITY;
    r.grown = Box::around(p1);
    r.grown.include(p2);
    r.grown.include(p3);
    r.grown = {r.grown.x0 - margin, r.grown.y0 - margin, r.grown.x1 + margin, r.grown.y1 + margin};
    // Strictly inside with the widened denominator: within the triangle p3, p3 + k (p1 - p3),
    // p3 + k (p2 - p3), k = (D + 1e-7) / D, and a little room for the rounding of the
    // coordinates. For the small triangles of a finely divided curve it reaches far along
    // the curve's chords; for a flat one it has no bounds.
    r.inside = {-INFINITY, -INFINITY, INFINITY, INFINITY};
    const double k = (twice_area + 1e-7) / twice_area;
    const Vec3 a{p3.x + k * (p1.x - p3.x), p3.y + k * (p1.y - p3.y), 0.0};
    const Vec3 b{p3.x + k * (p2.x - p3.x), p3.y + k * (p2.y - p3.y), 0.0};
    const double room = 1e-9 * (std::max({std::fabs(a.x), std::fabs(a.y), std::fabs(b.x), std::fabs(b.y)}) + size);
    if (twice_area > 0.0 && std::isfinite(room)) {
      r.inside = Box::around(p3);
      r.inside.include(a);
      r.inside.include(b);
      r.inside = {r.inside.x0 - room, r.inside.y0 - room, r.inside.x1 + room, r.inside.y1 + room};
    }
    r.edge_reach[0] = margin * distance(p1, p2) + margin;
    r.edge_reach[1] = margin * distance(p2, p3) + margin;
    r.edge_reach[2] = margin * distance(p3, p1) + margin;
    return r;
  }

  static double distance(Vec3 a, Vec3 b) { return std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y)); }

  // How far apart, at most, two unit vectors in the plane can be while the on-edge test
  // takes them as equal: each coordinate within the larger tolerance (the coordinates of
  // a unit vector being at most 1), and room for their rounding. A point on an edge is
  // no farther from the edge's line than the edge's length times this.
  double on_edge_spread() const { return std::sqrt(2.0) * std::max(module_.rel, module_.abs) * 1.000001 + 1e-14; }

  // Whether the on-edge test must say no for p, which coincides with neither end: that
  // test wants p in the edge's direction as unit vectors compare, and nearer to the start
  // than the end is. So p is clear behind the start (unit vectors that point apart differ
  // by more than the spread while it is below 1), beyond the end, or off the edge's
  // direction by an angle whose sine is more than the spread. Cheap, where the test itself
  // normalises two vectors; only where the test's squares neither overflow nor vanish, as
  // there it raises.
  bool clear_of(Vec3 start, Vec3 end, Vec3 p) const {
    const double dx = end.x - start.x, dy = end.y - start.y, vx = p.x - start.x, vy = p.y - start.y;
    const double vv = vx * vx + vy * vy, dd = dx * dx + dy * dy;
    if (!(vv >= 0x1p-960 && vv <= 0x1p1000 && dd >= 0x1p-960 && dd <= 0x1p1000)) return false;
    const double spread = on_edge_spread();
    if (spread < 1.0 && dx * vx + dy * vy < 0.0) return true;
    if (vv > dd * (1.0 + 1e-9)) return true;
    return std::fabs(dx * vy - dy * vx) > std::sqrt(dd) * std::sqrt(vv) * spread * (1.0 + 1e-9);
  }

  void clip(uint32_t v) {
    const uint32_t a = prev_[v], b = next_[v];
    orientation_.remove(orientation_term(p_[a], p_[v]));
    orientation_.remove(orientation_term(p_[v], p_[b]));
    orientation_.add(orientation_term(p_[a], p_[b]));
    next_[a] = b;
    prev_[b] = a;
    tree_.remove(v);
    if (head_ == v) head_ = b;
    --remaining_;
    pending_.erase(v);
    if (remaining_ > 3 && coincide(p_[a], p_[b], module_)) throw Undecided{};
    for (uint32_t u : {a, b}) {
      status_[u] = Status::unknown;
      pending_.insert(u);
    }
    for (uint32_t w : watchers_[v]) {
      if (tree_.holds(w) && status_[w] == Status::blocked && witness_[w] == v) {
        status_[w] = Status::unknown;
        pending_.insert(w);
      }
    }
    watchers_[v].clear();
    watchers_[v].shrink_to_fit();
  }

  std::span<const Vec3> p_;
  Tolerance module_;
  PointTree tree_;
  size_t n_;
  std::vector<uint32_t> prev_, next_;
  std::vector<Status> status_;
  std::vector<uint32_t> witness_;
  std::vector<std::vector<uint32_t>> watchers_;
  IndexSet pending_;  // corners that may be ears, by index: the order of the search
  RunningOrientation orientation_;
  uint32_t head_ = 0;  // index 0 of the remainder
  size_t remaining_ = 0;
  static constexpr uint8_t kEarAhead = 1;
  static constexpr uint32_t kLead = 64;  // how far ahead of the search a late look-ahead jumps
  std::vector<std::atomic<uint8_t>> ahead_;  // kEarAhead: an ear between its first neighbours
  std::atomic<uint32_t> front_{0};           // the corner the search looked at last
  size_t searched_ = 0, searched_first_ = 0;  // searches, and those between first neighbours
  std::jthread worker_;                      // last: stopped and joined before the rest goes
};

}  // namespace

EarClipping clip_ears(std::span<const Vec3> circumference, Tolerance module) {
  EarClipping undecided;
  undecided.outcome = EarClipping::Outcome::undecided;
  if (circumference.size() < 3 || circumference.size() > UINT32_MAX) return undecided;
  for (const Vec3& p : circumference)
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || p.z != 0.0) return undecided;
  try {
    return Clipper(circumference, module).run();
  } catch (const Undecided&) {
    return undecided;
  } catch (const DegenerateEdge&) {
    EarClipping degenerate;
    degenerate.outcome = EarClipping::Outcome::degenerate_edge;
    return degenerate;
  } catch (const ArithmeticFault&) {
    return undecided;
  }
}

}  // namespace ostrel::kernel
