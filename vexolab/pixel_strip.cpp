// SPDX-License-Identifier: MIT
#include "vexolab/pixel_strip.h"

#include <algorithm>
#include <cmath>

namespace vexolab {
namespace {

// Pixels on the very border of the strip belong to it at every angle, whatever
// the rounding of its direction.
constexpr double kBorder = 1e-6;
// A pixel counts by the part of its width inside the strip.
constexpr double kHalfPixel = 0.5;

struct span {
  double low;
  double high;
};

// Narrows s to the x with low <= slope * x + offset <= high.
void narrow(double slope, double inverse, double offset, double low,
            double high, span* s) {
  if (std::fabs(slope) < 1e-9) {
    if (offset < low || offset > high) *s = {1, 0};
    return;
  }
  const double a = (low - offset) * inverse;
  const double b = (high - offset) * inverse;
  s->low = std::max(s->low, std::min(a, b));
  s->high = std::min(s->high, std::max(a, b));
}

}  // namespace

void pixel_strip::gather(const image& picture, const frame& f,
                         const strip_bounds& b) {
  size_ = 0;
  const double v_reach = b.half_width + kHalfPixel;
  // How far the curve strays from its tangent, and that from u = centre, within
  // the strip.
  const double stray = std::fabs(sagitta(b.bend.curvature, v_reach)) + kBorder;
  const double reach = std::fabs(b.tilt) * v_reach + stray;
  const double u0 = b.centre + b.before - reach;
  const double u1 = b.centre + b.after + reach;
  // Rows between the topmost and the lowest corner.
  const double across = std::fabs(f.cos) * v_reach;
  const double low = f.y - std::max(u0 * f.sin, u1 * f.sin) - across - kBorder;
  const double high = f.y - std::min(u0 * f.sin, u1 * f.sin) + across + kBorder;
  const int first =
      static_cast<int>(std::clamp(std::ceil(low), 0.0, picture.height * 1.0));
  const int last = static_cast<int>(
      std::clamp(std::floor(high), -1.0, picture.height - 1.0));
  const inverses inverse = {1 / (f.cos - b.tilt * f.sin), 1 / f.sin,
                            1 / b.half_width};
  for (int y = first; y <= last; ++y) {
    add_row(picture, f, b, inverse, y, stray);
  }
  gathered_ += static_cast<double>(size_);
  if (b.bend.curvature != 0) bend(b.bend, b.half_width);
  pad();
}

// Replaces u by the distance from the circle through (0, 0): exactly, since its
// second order is a shift of the edge, not only a shear. What the arc strays
// from that circle is taken along u.
void pixel_strip::bend(const arc& a, double half_width) {
  const auto c = static_cast<float>(a.curvature);
  const auto cubic = static_cast<float>(a.first / 6);
  const auto quartic = static_cast<float>(a.second / 24);
  const auto unit = static_cast<float>(half_width);
  for (size_t i = 0; i < size_; ++i) {
    const float u = t_[i];
    const float v = v_[i] * unit;
    const float w = 1.0f - c * u;
    t_[i] = (2.0f * u - c * (u * u + v * v)) /
            (1.0f + std::sqrt(w * w + c * c * v * v));
    t_[i] -= v * v * v * (cubic + quartic * v);
  }
}

void pixel_strip::add_row(const image& picture, const frame& f,
                          const strip_bounds& b, const inverses& inverse, int y,
                          double stray) {
  const double dy = y - f.y;
  const double v_reach = b.half_width + kHalfPixel;
  span dx = {-f.x, picture.width - 1 - f.x};
  narrow(f.cos - b.tilt * f.sin, inverse.along,
         -dy * (f.sin + b.tilt * f.cos) - b.centre, b.before - stray,
         b.after + stray, &dx);
  narrow(f.sin, inverse.sin, dy * f.cos, -v_reach, v_reach, &dx);
  if (!(dx.low <= dx.high)) return;
  const int first = std::max(-floor_of(-(f.x + dx.low)), 0);
  const int last = std::min(floor_of(f.x + dx.high), picture.width - 1);
  if (first > last) return;
  reserve(static_cast<size_t>(last - first) + 1);
  const unsigned char* row =
      picture.data + static_cast<ptrdiff_t>(y) * picture.width;
  const double row_u = -f.x * f.cos - dy * f.sin - b.centre;
  const double row_v = -f.x * f.sin + dy * f.cos;
  size_t n = size_;
  for (int x = first; x <= last; ++x) {
    const double v = x * f.sin + row_v;
    const double u = x * f.cos + row_u;
    const double along = u - sagitta(b.bend.curvature, v) - b.tilt * v;
    const double weight = std::min(v_reach - std::fabs(v), 1.0);
    t_[n] = static_cast<float>(u);
    v_[n] = static_cast<float>(v * inverse.half_width);
    grey_[n] = static_cast<float>(row[x]);
    weight_[n] = static_cast<float>(weight);
    const bool inside =
        along >= b.before - kBorder && along <= b.after + kBorder && weight > 0;
    n += inside ? 1 : 0;
  }
  size_ = n;
}

// Room for so many more pixels and the padding.
void pixel_strip::reserve(size_t more) {
  const size_t needed = size_ + more + kLanes;
  if (needed <= t_.size()) return;
  for (std::vector<float>* values : {&t_, &v_, &grey_, &weight_}) {
    values->resize(2 * needed);
  }
}

void pixel_strip::pad() {
  reserve(0);
  for (size_t i = size_; i < padded_size(); ++i) {
    t_[i] = v_[i] = grey_[i] = weight_[i] = 0;
  }
}

}  // namespace vexolab
