// A uniform grid over points in the xy plane, for the searches of polygon code that
// ask which points lie in a box: built once, about one point per cell.
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
  void include(const Box& b) {
    x0 = std::min(x0, b.x0), y0 = std::min(y0, b.y0), x1 = std::max(x1, b.x1), y1 = std::max(y1, b.y1);
  }
  void grow(double margin) { x0 -= margin, y0 -= margin, x1 += margin, y1 += margin; }
  double extent() const { return std::max(x1 - x0, y1 - y0); }
  bool finite() const { return std::isfinite(x0) && std::isfinite(y0) && std::isfinite(x1) && std::isfinite(y1); }
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

  // The first point of the box, in cell order, that `accept` takes; `accept` may throw.
  template <typename Accept>
  std::optional<uint32_t> find(const Box& box, Accept accept) const {
    if (items_.empty()) return std::nullopt;
    const size_t cx0 = column(box.x0), cx1 = column(box.x1), cy0 = row(box.y0), cy1 = row(box.y1);
    for (size_t cy = cy0; cy <= cy1; ++cy)
      for (size_t cx = cx0; cx <= cx1; ++cx)
        for (uint32_t k = start_[cy * side_ + cx]; k < start_[cy * side_ + cx + 1]; ++k)
          if (accept(items_[k])) return items_[k];
    return std::nullopt;
  }

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
