// A uniform grid over points in the xy plane, for the searches of polygon code that
// ask which points lie near a triangle: built once, about one point per cell.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "foundations/vec3_kernel.hpp"

namespace ostrel::kernel {

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

}  // namespace ostrel::kernel
