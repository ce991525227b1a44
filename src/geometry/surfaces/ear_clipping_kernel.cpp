#include "surfaces/ear_clipping_kernel.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "curves/intersections_kernel.hpp"

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

// A uniform grid over points in the xy plane, for the searches of polygon code that
// ask which points lie near a triangle: built once, about one point per cell.
struct Box {
  double x0, y0, x1, y1;
  static Box around(Vec3 p) { return {p.x, p.y, p.x, p.y}; }
  void include(Vec3 p) {
    x0 = std::min(x0, p.x), y0 = std::min(y0, p.y), x1 = std::max(x1, p.x), y1 = std::max(y1, p.y);
  }
};

class PlanGrid {
 public:
  // Points with finite x and y.
  explicit PlanGrid(std::span<const Vec3> points) {
    if (points.empty()) return;
    bounds_ = Box::around(points[0]);
    for (const Vec3& p : points) bounds_.include(p);
    side_ = std::max<size_t>(1, static_cast<size_t>(std::sqrt(static_cast<double>(points.size()))));
    width_ = (bounds_.x1 - bounds_.x0) / static_cast<double>(side_);
    height_ = (bounds_.y1 - bounds_.y0) / static_cast<double>(side_);
    start_.assign(side_ * side_ + 1, 0);
    for (const Vec3& p : points) ++start_[cell(p.x, p.y) + 1];
    for (size_t c = 1; c < start_.size(); ++c) start_[c] += start_[c - 1];
    items_.resize(points.size());
    std::vector<uint32_t> fill(start_.begin(), start_.end() - 1);
    for (uint32_t i = 0; i < points.size(); ++i) items_[fill[cell(points[i].x, points[i].y)]++] = i;
  }

  // Visits the cells that the triangle a, b, c grown by `margin` touches, row by row,
  // over the columns that the triangle's part within the row's band spans, until
  // `visit(cell)` returns true; whether it did. A long thin triangle (or a segment, given
  // as a, b, b) visits the cells along it, not those of its bounding box.
  template <typename Visit>
  bool walk_near(Vec3 a, Vec3 b, Vec3 c, double margin, Visit visit) const {
    const Vec3 corners[3] = {a, b, c};
    const double low = std::min({a.y, b.y, c.y}) - margin, high = std::max({a.y, b.y, c.y}) + margin;
    for (size_t cy = row(low), last = row(high); cy <= last; ++cy) {
      // The band of this row, unbounded at the outer rows, where points beyond the grid's
      // bounds are kept; grown by the margin.
      const double bottom = cy == 0 ? -INFINITY : bounds_.y0 + static_cast<double>(cy) * height_ - margin;
      const double top = cy + 1 == side_ ? INFINITY : bounds_.y0 + static_cast<double>(cy + 1) * height_ + margin;
      double left = INFINITY, right = -INFINITY;
      auto take = [&](double x) { left = std::min(left, x), right = std::max(right, x); };
      for (int i = 0; i < 3; ++i) {
        const Vec3 &p = corners[i], &q = corners[(i + 1) % 3];
        if (p.y >= bottom && p.y <= top) take(p.x);
        for (double y : {bottom, top})
          if ((p.y - y) * (q.y - y) < 0.0) take(p.x + (y - p.y) * (q.x - p.x) / (q.y - p.y));
      }
      if (left > right) continue;
      for (size_t cx = column(left - margin), end = column(right + margin); cx <= end; ++cx)
        if (visit(cy * side_ + cx)) return true;
    }
    return false;
  }

  // The first point near the triangle (see walk_near), in the order of the walk, that
  // `accept` takes.
  template <typename Accept>
  std::optional<uint32_t> find_near(Vec3 a, Vec3 b, Vec3 c, double margin, Accept accept) const {
    std::optional<uint32_t> found;
    if (items_.empty()) return found;
    walk_near(a, b, c, margin, [&](size_t cell) {
      for (uint32_t k = start_[cell]; k < start_[cell + 1]; ++k)
        if (accept(items_[k])) {
          found = items_[k];
          return true;
        }
      return false;
    });
    return found;
  }

  size_t cells() const { return side_ * side_; }

 private:
  static size_t clamp(double position, size_t side) {
    if (!(position > 0.0)) return 0;
    if (position >= static_cast<double>(side - 1)) return side - 1;
    return static_cast<size_t>(position);
  }
  size_t column(double x) const { return width_ > 0.0 ? clamp((x - bounds_.x0) / width_, side_) : 0; }
  size_t row(double y) const { return height_ > 0.0 ? clamp((y - bounds_.y0) / height_, side_) : 0; }
  size_t cell(double x, double y) const { return row(y) * side_ + column(x); }

  Box bounds_{};
  size_t side_ = 1;
  double width_ = 0.0, height_ = 0.0;
  std::vector<uint32_t> start_, items_;
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
        grid_(points),
        n_(points.size()),
        prev_(n_),
        next_(n_),
        alive_(n_, true),
        status_(n_, Status::unknown),
        witness_(n_),
        watchers_(n_) {
    for (uint32_t i = 0; i < n_; ++i) {
      prev_[i] = static_cast<uint32_t>((i + n_ - 1) % n_);
      next_[i] = static_cast<uint32_t>((i + 1) % n_);
      pending_.insert(pending_.end(), i);
      orientation_.add(orientation_term(p_[i], p_[next_[i]]));
    }
    for (uint32_t i = 0; i < n_; ++i)
      if (coincide(p_[i], p_[next_[i]], module_)) throw Undecided{};
    remaining_ = n_;
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
    for (auto it = pending_.begin(); it != pending_.end();) {
      const uint32_t v = *it;
      if (status_[v] == Status::unknown) evaluate(v);
      if (status_[v] == Status::ear) return v;
      it = pending_.erase(it);
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
    auto blocks = [&](uint32_t q) {
      if (!alive_[q]) return false;
      const Vec3& p = p_[q];
      if (coincide(p, p1, module_) || coincide(p, p2, module_) || coincide(p, p3, module_)) return false;
      if (strictly_in_triangle(p1, p2, p3, p)) return true;
      if (!coincide(p3, p1, module_) && clear_of(p1, p2, p) && clear_of(p2, p3, p) && clear_of(p3, p1, p))
        return false;
      const std::optional<bool> on = on_triangle(p1, p2, p3, p, module_);
      if (!on) throw Undecided{};
      return *on;
    };
    std::optional<uint32_t> blocker;
    if (const std::optional<Reach> r = reach(p1, p2, p3, twice_area)) {
      blocker = grid_.find_near(r->a, r->b, r->c, r->margin, blocks);
    } else {
      uint32_t q = head_;
      do {
        if (blocks(q)) blocker = q;
        q = next_[q];
      } while (!blocker && q != head_);
    }
    settle(v, blocker);
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

  // A triangle and a margin around it that hold every point the tests of one candidate
  // can accept, or nothing where that region is unbounded (a flat triangle).
  struct Reach {
    Vec3 a, b, c;
    double margin;
  };
  std::optional<Reach> reach(Vec3 p1, Vec3 p2, Vec3 p3, double twice_area) const {
    // Strictly inside with the widened denominator: the triangle p3, p3 + k (p1 - p3),
    // p3 + k (p2 - p3), with k = (D + 1e-7) / D. For the small triangles of a finely
    // divided curve it reaches far beyond the corners, along the curve's chords; it
    // holds the triangle itself.
    if (!(twice_area > 0.0)) return std::nullopt;
    const double k = (twice_area + 1e-7) / twice_area;
    const Reach r{p3, {p3.x + k * (p1.x - p3.x), p3.y + k * (p1.y - p3.y), 0.0},
                  {p3.x + k * (p2.x - p3.x), p3.y + k * (p2.y - p3.y), 0.0}, 0.0};
    // On an edge: within the edge's length times the line tolerance of the edge, or
    // equal to an end; and room for the rounding of every step.
    const double longest = std::max({distance(p1, p2), distance(p2, p3), distance(p3, p1)});
    const double spread = std::sqrt(3.0) * std::max(module_.rel, module_.abs);
    const double size = std::max({std::fabs(r.b.x), std::fabs(r.b.y), std::fabs(r.c.x), std::fabs(r.c.y),
                                  std::fabs(p3.x), std::fabs(p3.y)}) +
                        longest;
    const double margin = 2.0 * (longest * spread + module_.abs + module_.rel * size) + 1e-9 * size + 1e-300;
    if (!std::isfinite(margin)) return std::nullopt;
    return Reach{r.a, r.b, r.c, margin};
  }

  static double distance(Vec3 a, Vec3 b) { return std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y)); }

  // Whether p stands so far from the line through an edge that the on-edge test must
  // say no: that test wants p at an end (each coordinate within the tolerance) or in the
  // edge's direction as unit vectors compare, so within the edge's length times the
  // tolerance of the line. Cheap, where the test itself normalises two vectors.
  bool clear_of(Vec3 start, Vec3 end, Vec3 p) const {
    const double dx = end.x - start.x, dy = end.y - start.y, vx = p.x - start.x, vy = p.y - start.y;
    const double length = std::sqrt(dx * dx + dy * dy), reach_out = std::sqrt(vx * vx + vy * vy);
    const double size = std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(start.x), std::fabs(start.y),
                                  std::fabs(end.x), std::fabs(end.y)});
    const double spread = std::sqrt(3.0) * std::max(module_.rel, module_.abs);
    const double reach = 2.0 * (length * spread + module_.abs + module_.rel * size) + 1e-12 * (length + reach_out);
    return std::fabs(dx * vy - dy * vx) > reach * length;
  }

  void clip(uint32_t v) {
    const uint32_t a = prev_[v], b = next_[v];
    orientation_.remove(orientation_term(p_[a], p_[v]));
    orientation_.remove(orientation_term(p_[v], p_[b]));
    orientation_.add(orientation_term(p_[a], p_[b]));
    next_[a] = b;
    prev_[b] = a;
    alive_[v] = false;
    if (head_ == v) head_ = b;
    --remaining_;
    pending_.erase(v);
    if (remaining_ > 3 && coincide(p_[a], p_[b], module_)) throw Undecided{};
    for (uint32_t u : {a, b}) {
      status_[u] = Status::unknown;
      pending_.insert(u);
    }
    for (uint32_t w : watchers_[v]) {
      if (alive_[w] && status_[w] == Status::blocked && witness_[w] == v) {
        status_[w] = Status::unknown;
        pending_.insert(w);
      }
    }
    watchers_[v].clear();
    watchers_[v].shrink_to_fit();
  }

  std::span<const Vec3> p_;
  Tolerance module_;
  PlanGrid grid_;
  size_t n_;
  std::vector<uint32_t> prev_, next_;
  std::vector<bool> alive_;
  std::vector<Status> status_;
  std::vector<uint32_t> witness_;
  std::vector<std::vector<uint32_t>> watchers_;
  std::set<uint32_t> pending_;  // corners that may be ears, by index: the order of the search
  RunningOrientation orientation_;
  uint32_t head_ = 0;  // index 0 of the remainder
  size_t remaining_ = 0;
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
