// Polylines on plain doubles: the walks, intersections, splits, overlaps, combinations
// and the envelope of Polyline, each taking the documented steps in their order with
// the tolerance form of each step, so that the results are those of the steps. A point
// keeps where it came from, so that the face can hand back the caller's own Point
// objects where the steps pass them through.
//
// Where the steps raise an error of a known text, the kernel throws it (StepsRaise) at
// the same step; where they would raise one whose text needs the host (the text of a
// point), it throws TakeSteps (or an ArithmeticFault) and the face takes the documented
// steps instead: nothing the kernel does is visible to the caller, so running the steps
// afterwards is exact.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "curves/intersections_kernel.hpp"

namespace ostrel::kernel {

// The texts of the errors of the polyline steps, for the kernel and the faces alike.
namespace polyline_errors {
inline constexpr const char* start_not_on = "start_point not on given polyline";
inline constexpr const char* end_not_on = "end_point not on given polyline";
inline constexpr const char* not_concatenable =
    "Polylines can only be concatenated if the endpoint of the first line coincides with the start point of the "
    "second";
inline constexpr const char* not_at_an_end =
    "The overlapping region of two combined polylines must lie at either end of those polylines";
inline constexpr const char* not_monotonic[2] = {"profile_1 is not monotonic ascending in x direction",
                                                 "profile_2 is not monotonic ascending in x direction"};
inline std::string not_one_overlap(std::size_t count) {
  return "Only polylines with exactly one overlapping region can be combined, " + std::to_string(count) +
         " were found.";
}
}  // namespace polyline_errors

// A point of a polyline: item `index` of input `source`, or, for source `fresh`, a new
// point that the steps make (z 0.0), `index` telling new points apart.
struct Node {
  Vec3 at;
  int source;
  std::int64_t index;
};
inline constexpr int fresh = -1;
using Chain = std::vector<Node>;

// Coordinates for which no step can overflow or lose a vector to underflow: finite, and
// zero or of a magnitude between 1e-140 and 1e140. Only such chains take native paths,
// so that a step the kernel leaves out for speed cannot be one that would have raised.
bool tame(const Chain& c);

// The pairs of a chain that may hold a point at a given x, by their bounding boxes
// widened by the tolerances: prefix maxima of the upper and suffix minima of the lower
// ends, so that a query is two binary searches. Exact for any chain; tight for chains
// that run along x.
class PairIndex {
 public:
  PairIndex(const Chain& c, const Tolerances& t);
  // The pairs [first, last) that may hold a point at x.
  std::pair<std::size_t, std::size_t> range(double x) const;
  // The first pair whose box may reach x or beyond.
  std::size_t first_reaching(double x) const;
  double low(std::size_t pair) const { return low_[pair]; }
  double high(std::size_t pair) const { return high_[pair]; }

 private:
  std::vector<double> low_, high_, prefix_high_, suffix_low_;
  bool usable_;
};

// The Polyline members of the same names, on chains, with one tolerance reading for the
// whole call. The index of a chain saves the walks over pairs that cannot hold a point.
class Polylines {
 public:
  explicit Polylines(const Tolerances& t) : t_(t) {}
  const Tolerances& tolerances() const { return t_; }

  // Point.__eq__.
  bool equal(const Node& a, const Node& b) const { return coincide(a.at, b.at, t_.module); }
  Node make(Vec3 at) { return {{at.x, at.y, 0.0}, fresh, next_++}; }

  bool point_is_on_polyline(const Chain& c, const PairIndex& index, const Node& q) const;
  std::pair<Chain, Chain> split(const Chain& c, const PairIndex& index, const Node& q) const;
  Chain polyline_between(const Chain& c, const PairIndex& index, const Node& start, const Node& end,
                         bool inclusive) const;
  Chain intersections_with_x_location(const Chain& c, double x, const PairIndex* index = nullptr);
  Chain intersections_with_polyline(const Chain& self, const Chain& other);
  // `own_from`: the first own pair that can share anything with `other` (0 when unknown).
  std::vector<Chain> find_overlaps(const Chain& self, const Chain& other, std::size_t own_from = 0);
  // combine_with; `appended` tells whether the result is `self` with `other` after it.
  Chain combine_with(Chain self, const Chain& other, std::size_t own_from = 0, bool* appended = nullptr);
  // get_lowest_or_highest_profile_x for profiles of the module's own class.
  Chain lowest_or_highest_profile(const Chain& profile_1, const Chain& profile_2, bool lowest);
  // _find_lowest_or_highest_profile: whether the second part is the one.
  bool second_is_lowest_or_highest(const Chain& p1, const Chain& p2, bool lowest);

 private:
  // How split sees a pair for a point: not on it; on both ends (the pair adds nothing);
  // inside it; at its start; at its end.
  enum class Hit { none, skip, interior, at_start, at_end };
  Hit hit(const Node& q, const Node& a, const Node& b) const;
  // hit() for pairs in `range`, the pairs an index gives for q; none for the others.
  Hit hit_in(const Chain& c, std::pair<std::size_t, std::size_t> range, std::size_t pair, const Node& q) const;

  Tolerances t_;
  std::int64_t next_ = 0;
};

Chain concatenate(Chain first, const Chain& second, const Tolerances& t);
bool monotonic_ascending_x(const Chain& c);  // strict=False

}  // namespace ostrel::kernel
