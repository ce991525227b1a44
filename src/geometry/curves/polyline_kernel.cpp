#include "curves/polyline_kernel.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace ostrel::kernel {

namespace {

// A pair's bounding box in x, widened so that every point the steps can find on the
// pair (an end by Point equality, or within it by unit vectors equal by tolerance), and
// every pair that Line.find_overlap can find sharing a stretch with it, lies within.
std::pair<double, double> widened_box(Vec3 a, Vec3 b, const Tolerances& t) {
  const double length = std::fabs(b.x - a.x) + std::fabs(b.y - a.y) + std::fabs(b.z - a.z);
  const double size = std::max(std::fabs(a.x), std::fabs(b.x));
  const double r = t.module.rel, abs = std::max(t.module.abs, t.abs.abs);
  const double margin = 1.5 * (2 * (r + abs) * length + 2 * ((r + 1e-9) * size + abs)) + 1e-300;
  return {std::min(a.x, b.x) - margin, std::max(a.x, b.x) + margin};
}

bool tame(double v) {
  const double m = std::fabs(v);
  return m == 0.0 || (m > 1e-140 && m < 1e140);
}

// The extents of a chain's pairs, in pair order: in x, and in y where a caller bounds
// what it looks for in y too (unbounded otherwise).
struct Box {
  double low, high;
  std::size_t pair;
  double y_low = -std::numeric_limits<double>::infinity(), y_high = std::numeric_limits<double>::infinity();
};

// The boxes of the other chain as a tree of their extents, so that the boxes meeting one
// own box come out in pair order as they are found: the documented loops visit the
// pairs by own and then other index, and no list of all meeting pairs is held. The
// extents in y keep the walk short where many pairs share their x (a profile with a
// long vertical part).
class BoxTree {
 public:
  explicit BoxTree(std::vector<Box> boxes) : boxes_(std::move(boxes)) {
    while (leaves_ < boxes_.size()) leaves_ *= 2;
    const double inf = std::numeric_limits<double>::infinity();
    nodes_.assign(2 * leaves_, {inf, -inf, 0, inf, -inf});
    for (std::size_t i = 0; i < boxes_.size(); ++i) nodes_[leaves_ + i] = boxes_[i];
    for (std::size_t node = leaves_; node-- > 1;) {
      const Box &a = nodes_[2 * node], &b = nodes_[2 * node + 1];
      nodes_[node] = {std::min(a.low, b.low), std::max(a.high, b.high), 0, std::min(a.y_low, b.y_low),
                      std::max(a.y_high, b.y_high)};
    }
  }

  // visit(pair) for every box that meets `box`, ends included, in pair order.
  template <typename Visit>
  void meeting(const Box& box, Visit&& visit) const {
    if (!boxes_.empty()) walk(1, box, visit);
  }

 private:
  template <typename Visit>
  void walk(std::size_t node, const Box& box, Visit& visit) const {
    const Box& n = nodes_[node];
    if (n.low > box.high || n.high < box.low || n.y_low > box.y_high || n.y_high < box.y_low) return;
    if (node >= leaves_) {
      visit(boxes_[node - leaves_].pair);
      return;
    }
    walk(2 * node, box, visit);
    walk(2 * node + 1, box, visit);
  }

  std::vector<Box> boxes_, nodes_;
  std::size_t leaves_ = 1;
};

// The non-degenerate pairs of a chain with their boxes; the steps' `lines`, with the
// first pair to look at.
std::vector<Box> boxes_of(const Chain& c, const Tolerances& t, std::size_t from = 0) {
  std::vector<Box> boxes;
  for (std::size_t i = from; i + 1 < c.size(); ++i) {
    if (coincide(c[i].at, c[i + 1].at, t.module)) continue;
    const auto [low, high] = widened_box(c[i].at, c[i + 1].at, t);
    boxes.push_back({low, high, i});
  }
  return boxes;
}

Segment segment(const Chain& c, std::size_t pair) { return {c[pair].at, c[pair + 1].at}; }

}  // namespace

bool tame(const Chain& c) {
  return std::all_of(c.begin(), c.end(), [](const Node& n) { return tame(n.at.x) && tame(n.at.y) && tame(n.at.z); });
}

PairIndex::PairIndex(const Chain& c, const Tolerances& t) : usable_(t.module.rel < 0.5) {
  const std::size_t pairs = c.size() > 1 ? c.size() - 1 : 0;
  for (std::size_t i = 0; i < pairs; ++i) {
    const auto [low, high] = widened_box(c[i].at, c[i + 1].at, t);
    low_.push_back(low);
    high_.push_back(high);
    prefix_high_.push_back(i ? std::max(prefix_high_.back(), high) : high);
  }
  suffix_low_.resize(pairs);
  for (std::size_t i = pairs; i-- > 0;)
    suffix_low_[i] = i + 1 < pairs ? std::min(suffix_low_[i + 1], low_[i]) : low_[i];
}

std::pair<std::size_t, std::size_t> PairIndex::range(double x) const {
  if (!usable_ || std::isnan(x)) return {0, low_.size()};
  const std::size_t first = first_reaching(x);
  const auto last =
      static_cast<std::size_t>(std::upper_bound(suffix_low_.begin(), suffix_low_.end(), x) - suffix_low_.begin());
  return {first, std::max(first, last)};
}

std::size_t PairIndex::first_reaching(double x) const {
  if (!usable_) return 0;
  return static_cast<std::size_t>(std::lower_bound(prefix_high_.begin(), prefix_high_.end(), x) - prefix_high_.begin());
}

Polylines::Hit Polylines::hit(const Node& q, const Node& a, const Node& b) const {
  // A zero-length pair makes no Line: the point is on it when it equals the start.
  const bool on =
      equal(a, b) ? equal(a, q) : point_on_bounded_line(q.at, {a.at, b.at}, t_.module) != OnSegment::outside;
  if (!on) return Hit::none;
  const bool at_a = equal(q, a), at_b = equal(q, b);
  if (at_a && at_b) return Hit::skip;
  if (!at_b && !at_a) return Hit::interior;
  if (at_a) return Hit::at_start;
  return Hit::at_end;
}

Polylines::Hit Polylines::hit_in(const Chain& c, std::pair<std::size_t, std::size_t> range, std::size_t pair,
                                 const Node& q) const {
  if (pair < range.first || pair >= range.second) return Hit::none;
  return hit(q, c[pair], c[pair + 1]);
}

bool Polylines::point_is_on_polyline(const Chain& c, const PairIndex& index, const Node& q) const {
  const auto [first, last] = index.range(q.at.x);
  for (std::size_t i = first; i < last; ++i)
    if (!equal(c[i], c[i + 1]) && point_on_bounded_line(q.at, segment(c, i), t_.module) != OnSegment::outside)
      return true;
  return false;
}

std::pair<Chain, Chain> Polylines::split(const Chain& c, const PairIndex& index, const Node& q) const {
  if (!point_is_on_polyline(c, index, q)) throw TakeSteps{};
  const auto range = index.range(q.at.x);
  Chain before, after;
  bool found = false;
  for (std::size_t i = 0; i + 1 < c.size(); ++i) {
    if (i == 0) before.push_back(c[0]);
    const Hit h = hit_in(c, range, i, q);
    if (h == Hit::skip) continue;
    if (h == Hit::interior) {
      before.push_back(q);
      after.push_back(q);
      found = true;
    } else if (h == Hit::at_start) {
      after.push_back(q);
      found = true;
    }
    (found ? after : before).push_back(c[i + 1]);
  }
  return {std::move(before), std::move(after)};
}

Chain Polylines::polyline_between(const Chain& c, const PairIndex& index, const Node& start, const Node& end,
                                  bool inclusive) const {
  if (!point_is_on_polyline(c, index, start)) throw value_error(polyline_errors::start_not_on);
  if (!point_is_on_polyline(c, index, end)) throw value_error(polyline_errors::end_not_on);
  const auto start_range = index.range(start.at.x), end_range = index.range(end.at.x);
  // The points of split(c, start)[1], made one at a time from the first pair that finds
  // the start: only as many as the second split reads. Each tells the index in `c` it
  // is, or `inserted` for the start itself.
  constexpr std::size_t inserted = static_cast<std::size_t>(-1);
  struct Item {
    Node node;
    std::size_t at;
  };
  std::size_t pair = start_range.first;
  for (; pair < start_range.second; ++pair) {
    const Hit h = hit_in(c, start_range, pair, start);
    if (h == Hit::interior || h == Hit::at_start) break;
  }
  if (pair >= start_range.second) return {};  // nothing after the start: the second split raises
  Item queued[2] = {{start, inserted}, {c[pair + 1], pair + 1}};
  int count = 2, head = 0;
  ++pair;
  auto next = [&](Item& out) {
    while (head == count) {
      if (pair + 1 >= c.size()) return false;
      head = count = 0;
      const Hit h = hit_in(c, start_range, pair, start);
      if (h != Hit::skip) {
        if (h == Hit::interior || h == Hit::at_start) queued[count++] = {start, inserted};
        queued[count++] = {c[pair + 1], pair + 1};
      }
      ++pair;
    }
    out = queued[head++];
    return true;
  };
  // split(after, end)[0]: every point up to the first pair that finds the end, and the
  // end again at each later pair that holds it inside; and whether any segment of
  // `after` holds the end, without which that split raises. Once the end is found, only
  // pairs that may hold the start or the end can add anything: the walk jumps to them.
  auto next_interesting = [&](std::size_t from) {
    std::size_t to = c.size();
    for (const auto& [first, last] : {start_range, end_range})
      if (from < last) to = std::min(to, std::max(from, first));
    return to;
  };
  Item previous, current;
  next(previous);
  Chain before{previous.node};
  bool found = false, on = false;
  while (true) {
    if (found && head == count) {
      const std::size_t target = next_interesting(pair);
      if (target > pair) {
        // The pair before `target` is no skipped one (it cannot hold the start): it ends
        // at c[target].
        pair = target;
        previous = {c[std::min(target, c.size() - 1)], target};
      }
    }
    if (!next(current)) break;
    const bool own_pair = previous.at != inserted && current.at == previous.at + 1;
    const Hit h = own_pair ? hit_in(c, end_range, previous.at, end) : hit(end, previous.node, current.node);
    if (h != Hit::none && !equal(previous.node, current.node)) on = true;
    if (h != Hit::skip) {
      if (h == Hit::interior) before.push_back(end);
      found = found || h == Hit::interior || h == Hit::at_start;
      if (!found) before.push_back(current.node);
    }
    previous = current;
  }
  if (!on) return {};
  if (inclusive) return before;
  if (before.size() < 2) return {};
  return Chain(before.begin() + 1, before.end() - 1);
}

Chain Polylines::intersections_with_x_location(const Chain& c, double x, const PairIndex* index) {
  const Segment x_line{{x, 0.0, 0.0}, {x, 1.0, 0.0}};
  if (coincide(x_line.start, x_line.end, t_.module)) throw TakeSteps{};
  Chain found;
  auto add = [&](const Node& n) {
    if (found.empty() || !equal(n, found.back())) found.push_back(n);
  };
  // A pair gives a point only near its x extent, by the tolerances: within its box.
  const auto [first, last] = index ? index->range(x) : std::pair<std::size_t, std::size_t>{0, c.size() - !c.empty()};
  for (std::size_t i = first; i < last && i + 1 < c.size(); ++i) {
    if (equal(c[i], c[i + 1])) continue;
    if (const auto p = intersection_bounded_line_extended_line(segment(c, i), x_line, true, t_)) {
      add(make(*p));
    } else if (isclose(c[i].at.x, x, t_.abs) && isclose(c[i + 1].at.x, x, t_.abs)) {
      add(c[i]);
      add(c[i + 1]);
    }
  }
  return found;
}

Chain Polylines::intersections_with_polyline(const Chain& self, const Chain& other) {
  // Only pairs whose boxes meet in x and in y can cross (the first test of the steps);
  // they come in the order of the steps' loops.
  auto exact_boxes = [&](const Chain& c) {
    std::vector<Box> boxes;
    for (std::size_t i = 0; i + 1 < c.size(); ++i) {
      const Vec3 &a = c[i].at, &b = c[i + 1].at;
      if (!equal(c[i], c[i + 1]))
        boxes.push_back({std::min(a.x, b.x), std::max(a.x, b.x), i, std::min(a.y, b.y), std::max(a.y, b.y)});
    }
    return boxes;
  };
  const BoxTree others(exact_boxes(other));
  Chain intersections, line_intersections;
  for (const Box& mine : exact_boxes(self)) {
    const std::size_t own = mine.pair;
    line_intersections.clear();
    others.meeting(mine, [&](std::size_t theirs) {
      const Crossing crossing = intersection_bounded_lines(segment(self, own), segment(other, theirs), true, t_);
      if (crossing.kind == Crossing::Kind::mismatch) throw value_error("");  // the two answers differ
      if (crossing.kind == Crossing::Kind::none) return;
      const Node n = make(crossing.point);
      if (!intersections.empty() && equal(n, intersections.back())) return;
      if (!line_intersections.empty() && equal(n, line_intersections.back())) return;
      line_intersections.push_back(n);
    });
    if (line_intersections.empty()) continue;
    const Vec3 start = self[own].at;
    std::vector<std::pair<double, Node>> keyed;
    for (const Node& n : line_intersections) keyed.emplace_back(squared_magnitude(vector_between(start, n.at)), n);
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [key, n] : keyed) intersections.push_back(n);
  }
  return intersections;
}

Chain concatenate(Chain first, const Chain& second, const Tolerances& t) {
  if (!first.empty() && !second.empty() && !coincide(first.back().at, second.front().at, t.module))
    throw value_error(polyline_errors::not_concatenable);
  if (first.empty()) return second;
  if (!second.empty()) first.insert(first.end(), second.begin() + 1, second.end());
  return first;
}

bool monotonic_ascending_x(const Chain& c) {
  for (std::size_t i = 1; i < c.size(); ++i)
    if (!isclose(c[i].at.x, c[i - 1].at.x, plain_tolerance) && c[i].at.x < c[i - 1].at.x) return false;
  return true;
}

std::vector<Chain> Polylines::find_overlaps(const Chain& self, const Chain& other, std::size_t own_from) {
  std::vector<Chain> overlap_polylines;
  std::vector<std::pair<Node, Node>> overlap_lines, local;
  auto close = [&] {
    Chain points{overlap_lines.front().first};
    for (const auto& piece : overlap_lines) points.push_back(piece.second);
    overlap_polylines.push_back(std::move(points));
    overlap_lines.clear();
  };
  // Two pairs overlap only where their y ranges overlap too, unless the own pair is nearly
  // horizontal (then the steps do not compare y): a profile with many corners at one x
  // meets few of them.
  auto with_y = [&](std::vector<Box> boxes, const Chain& c) {
    for (Box& b : boxes) std::tie(b.y_low, b.y_high) = std::minmax(c[b.pair].at.y, c[b.pair + 1].at.y);
    return boxes;
  };
  const BoxTree others(with_y(boxes_of(other, t_), other));
  for (Box mine : with_y(boxes_of(self, t_, own_from), self)) {
    const std::size_t own = mine.pair;
    const Segment s = segment(self, own);
    if (!is_vertical(s) && isclose(line_function(s).a, 0.0, t_.module))
      mine.y_low = -std::numeric_limits<double>::infinity(), mine.y_high = std::numeric_limits<double>::infinity();
    local.clear();
    others.meeting(mine, [&](std::size_t theirs) {
      const Overlap o = find_overlap(segment(self, own), segment(other, theirs), false, t_);
      if (o.kind == Overlap::Kind::none) return;
      if (o.kind == Overlap::Kind::point) {
        const Node n = make(o.start);
        local.emplace_back(n, n);
      } else {
        const Node from = make(o.start);
        local.emplace_back(from, make(o.end));
      }
    });
    if (local.empty()) continue;
    const Vec3 start = self[own].at;
    std::vector<std::pair<double, std::size_t>> keyed;
    for (std::size_t i = 0; i < local.size(); ++i)
      keyed.emplace_back(squared_magnitude(vector_between(start, local[i].second.at)), i);
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    if (!overlap_lines.empty() && !equal(local[keyed.front().second].first, overlap_lines.back().second)) close();
    for (const auto& [key, i] : keyed) overlap_lines.push_back(local[i]);
  }
  if (!overlap_lines.empty()) close();
  return overlap_polylines;
}

namespace {

Chain reversed(Chain c) {
  std::reverse(c.begin(), c.end());
  return c;
}

}  // namespace

Chain Polylines::combine_with(Chain self, const Chain& other, std::size_t own_from, bool* appended) {
  if (appended) *appended = false;
  const std::vector<Chain> overlaps = find_overlaps(self, other, own_from);
  if (overlaps.size() != 1) {
    if (self.empty() || other.empty() || equal(self.back(), other.front())) {
      if (appended) *appended = !self.empty();
      return concatenate(std::move(self), other, t_);
    }
    if (equal(self.back(), other.back())) return concatenate(std::move(self), reversed(other), t_);
    if (equal(self.front(), other.back())) return concatenate(other, self, t_);
    if (equal(self.front(), other.front())) return concatenate(reversed(other), self, t_);
    throw value_error(polyline_errors::not_one_overlap(overlaps.size()));
  }
  const Chain& overlap = overlaps.front();
  const Node &start = overlap.front(), &end = overlap.back();
  Chain combined;
  auto add = [&](const Chain& part) { combined = concatenate(std::move(combined), part, t_); };
  auto part = [&](const Chain& c, const Node& at, int index) {
    auto parts = split(c, PairIndex(c, t_), at);
    return index == 0 ? std::move(parts.first) : std::move(parts.second);
  };
  if (equal(end, self.back()) && !equal(start, self.front())) {
    add(part(self, start, 0));
    add(overlap);
    if (equal(start, other.front()))
      add(part(other, end, 1));
    else if (equal(start, other.back()))
      add(part(reversed(other), end, 1));
    else
      throw value_error(polyline_errors::not_at_an_end);
  } else if (equal(start, self.front()) && !equal(end, self.back())) {
    if (equal(end, other.back()))
      add(part(other, start, 0));
    else if (equal(end, other.front()))
      add(part(reversed(other), start, 0));
    else
      throw value_error(polyline_errors::not_at_an_end);
    add(overlap);
    add(part(self, end, 1));
  } else if ((equal(start, other.front()) && equal(end, other.back())) ||
             (equal(start, other.back()) && equal(end, other.front()))) {
    add(part(self, start, 0));
    add(overlap);
    add(part(self, end, 1));
  } else if (equal(start, self.front()) && equal(end, self.back())) {
    const std::vector<Chain> theirs = find_overlaps(other, overlap);
    if (theirs.empty()) throw list_index_out_of_range();  // other.find_overlaps(overlap)[0]
    const Chain& first = theirs.front();
    bool same = first.size() == overlap.size();
    for (std::size_t i = 0; same && i < first.size(); ++i) same = equal(first[i], overlap[i]);
    const Chain along = same ? other : reversed(other);
    add(part(along, start, 0));
    add(overlap);
    add(part(along, end, 1));
  }
  return combined;
}

bool Polylines::second_is_lowest_or_highest(const Chain& p1, const Chain& p2, bool lowest) {
  const PairIndex index_1(p1, t_), index_2(p2, t_);
  // Whether `point` lies lower (or higher) than `other` at its x: yes, no, or no answer.
  auto compare = [&](const Node& point, const Chain& other) -> int {
    const Chain at = intersections_with_x_location(other, point.at.x, &other == &p1 ? &index_1 : &index_2);
    if (at.empty()) throw list_index_out_of_range();  // ...intersections_with_x_location(point.x)[0]
    const double y = point.at.y, other_y = at.front().at.y;
    if (isclose(y, other_y, t_.abs)) return 0;
    if (lowest ? y < other_y : y > other_y) return 1;
    if (lowest ? y > other_y : y < other_y) return -1;
    return 0;
  };
  for (const Node& point : p1)
    if (const int c = compare(point, p2)) return c < 0;
  for (const Node& point : p2)
    if (const int c = compare(point, p1)) return c > 0;
  return false;
}

Chain Polylines::lowest_or_highest_profile(const Chain& profile_1, const Chain& profile_2, bool lowest) {
  if (!monotonic_ascending_x(profile_1)) throw value_error(polyline_errors::not_monotonic[0]);
  if (!monotonic_ascending_x(profile_2)) throw value_error(polyline_errors::not_monotonic[1]);
  if (profile_1.empty() || profile_2.empty()) return {};
  // x_min and x_max of each, then max() and min() of two: the first unless the second
  // lies strictly beyond it.
  auto extent = [](const Chain& c, bool least) {
    double found = c.front().at.x;
    for (const Node& n : c)
      if (least ? n.at.x < found : n.at.x > found) found = n.at.x;
    return found;
  };
  const double p1_x_min = extent(profile_1, true), p2_x_min = extent(profile_2, true);
  const double p1_x_max = extent(profile_1, false), p2_x_max = extent(profile_2, false);
  const double x_min = p2_x_min > p1_x_min ? p2_x_min : p1_x_min;
  const double x_max = p2_x_max < p1_x_max ? p2_x_max : p1_x_max;
  auto at = [&](const Chain& c, double x, bool last) {
    const Chain found = intersections_with_x_location(c, x);
    if (found.empty()) throw list_index_out_of_range();
    return last ? found.back() : found.front();
  };
  const Node p1_start = at(profile_1, x_min, true), p1_end = at(profile_1, x_max, false);
  const Node p2_start = at(profile_2, x_min, true), p2_end = at(profile_2, x_max, false);
  const Chain cut_1 = polyline_between(profile_1, PairIndex(profile_1, t_), p1_start, p1_end, true);
  const Chain cut_2 = polyline_between(profile_2, PairIndex(profile_2, t_), p2_start, p2_end, true);
  const Chain intersections = intersections_with_polyline(cut_1, cut_2);
  Chain ends_1{p1_start}, ends_2{p2_start};
  ends_1.insert(ends_1.end(), intersections.begin(), intersections.end());
  ends_2.insert(ends_2.end(), intersections.begin(), intersections.end());
  ends_1.push_back(p1_end);
  ends_2.push_back(p2_end);
  const PairIndex index_1(cut_1, t_), index_2(cut_2, t_);
  // The result grows at its end; the prefix maxima of its pairs' boxes tell the first
  // pair that can share a stretch with the next part.
  Chain result;
  std::vector<double> reach;
  auto extend_reach = [&](std::size_t from) {
    reach.resize(std::min(reach.size(), from));
    for (std::size_t i = reach.size(); i + 1 < result.size(); ++i) {
      const double high = widened_box(result[i].at, result[i + 1].at, t_).second;
      reach.push_back(i ? std::max(reach.back(), high) : high);
    }
  };
  for (std::size_t k = 0; k + 1 < ends_1.size(); ++k) {
    const bool has_1 = !equal(ends_1[k], ends_1[k + 1]), has_2 = !equal(ends_2[k], ends_2[k + 1]);
    const Chain part_1 = has_1 ? polyline_between(cut_1, index_1, ends_1[k], ends_1[k + 1], true) : Chain{};
    const Chain part_2 = has_2 ? polyline_between(cut_2, index_2, ends_2[k], ends_2[k + 1], true) : Chain{};
    if (!has_1 || !has_2) continue;
    const Chain& part = second_is_lowest_or_highest(part_1, part_2, lowest) ? part_2 : part_1;
    double lowest_box = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i + 1 < part.size(); ++i)
      lowest_box = std::min(lowest_box, widened_box(part[i].at, part[i + 1].at, t_).first);
    std::size_t own_from = 0;
    if (t_.module.rel < 0.5)
      own_from = static_cast<std::size_t>(std::lower_bound(reach.begin(), reach.end(), lowest_box) - reach.begin());
    const std::size_t kept = result.size();
    bool appended = false;
    result = combine_with(std::move(result), part, own_from, &appended);
    extend_reach(appended && kept ? kept - 1 : 0);
  }
  return result;
}

}  // namespace ostrel::kernel
