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
void narrow(double slope, double offset, double low, double high, span* s) {
  if (std::fabs(slope) < 1e-9) {
    if (offset < low || offset > high) *s = {1, 0};
    return;
  }
  const double a = (low - offset) / slope;
  const double b = (high - offset) / slope;
  s->low = std::max(s->low, std::min(a, b));
  s->high = std::min(s->high, std::max(a, b));
}

}  // namespace

void pixel_strip::gather(const image& picture, const frame& f,
                         const strip_bounds& b) {
  t_.clear();
  v_.clear();
  grey_.clear();
  weight_.clear();
  const double v_reach = b.half_width + kHalfPixel;
  // How far the curve strays from u = centre within the strip.
  const double reach = std::fabs(b.tilt) * v_reach +
                       std::fabs(sagitta(b.curvature, v_reach)) + kBorder;
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
  for (int y = first; y <= last; ++y) add_row(picture, f, b, y, reach);
  size_ = t_.size();
  pad();
}

void pixel_strip::add_row(const image& picture, const frame& f,
                          const strip_bounds& b, int y, double reach) {
  const double dy = y - f.y;
  const double v_reach = b.half_width + kHalfPixel;
  span dx = {-f.x, picture.width - 1 - f.x};
  narrow(f.cos, -dy * f.sin - b.centre, b.before - reach, b.after + reach, &dx);
  narrow(f.sin, dy * f.cos, -v_reach, v_reach, &dx);
  if (!(dx.low <= dx.high)) return;
  const int first = static_cast<int>(std::ceil(f.x + dx.low));
  const int last = static_cast<int>(std::floor(f.x + dx.high));
  const unsigned char* row =
      picture.data + static_cast<ptrdiff_t>(y) * picture.width;
  const double scale = 1 / b.half_width;
  for (int x = std::max(first, 0); x <= std::min(last, picture.width - 1);
       ++x) {
    const double u = f.u_of(x, y);
    const double v = f.v_of(x, y);
    const double t = u - b.centre - sagitta(b.curvature, v);
    const double along = t - b.tilt * v;
    const double weight = std::min(v_reach - std::fabs(v), 1.0);
    if (along < b.before - kBorder || along > b.after + kBorder ||
        weight <= 0) {
      continue;
    }
    t_.push_back(static_cast<float>(t));
    v_.push_back(static_cast<float>(v * scale));
    grey_.push_back(static_cast<float>(row[x]));
    weight_.push_back(static_cast<float>(weight));
  }
}

void pixel_strip::pad() {
  const size_t padded = (size_ + kLanes - 1) / kLanes * kLanes;
  t_.resize(padded, 0.0f);
  v_.resize(padded, 0.0f);
  grey_.resize(padded, 0.0f);
  weight_.resize(padded, 0.0f);
}

}  // namespace vexolab
