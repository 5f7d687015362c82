// SPDX-License-Identifier: MIT
#include "vexolab/profile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vexolab {
namespace {

// Coordinates along a line in 32.32 fixed point: the whole part by a shift, the
// same value for a sample however the line is cut.
constexpr double kFixedOne = 4294967296.0;

// Weights of the four pixels around a sample have 12 bits: 255 * 2^24 still
// fits 32 bits, and a constant image gives a constant profile exactly.
constexpr int kWeightBits = 12;
constexpr int kToWeight = 32 - kWeightBits;
constexpr double kSampleOne = 1 << (2 * kWeightBits);

int64_t to_fixed(double value) {
  return static_cast<int64_t>(value * kFixedOne);
}

struct interval {
  double low;
  double high;
};

interval intersection(const interval& a, const interval& b) {
  return {std::max(a.low, b.low), std::min(a.high, b.high)};
}

// The t with 0 <= start + t * slope <= last.
interval inside(double start, double slope, double last) {
  if (std::fabs(slope) < 1e-12) {
    if (start >= 0 && start <= last) return {-1e9, 1e9};
    return {1, 0};
  }
  const double a = -start / slope;
  const double b = (last - start) / slope;
  return {std::min(a, b), std::max(a, b)};
}

// Range of the corners' coordinate that `coordinate` computes.
template <typename Coordinate>
interval range_of_corners(const image& picture, Coordinate coordinate) {
  const double right = picture.width - 1;
  const double bottom = picture.height - 1;
  const double corners[] = {coordinate(0.0, 0.0), coordinate(right, 0.0),
                            coordinate(0.0, bottom), coordinate(right, bottom)};
  const auto [low, high] = std::minmax_element(corners, corners + 4);
  return {*low, *high};
}

// The value as a position of so many, one past the last included.
int within(double value, int count) {
  return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(count)));
}

// Farther from the image's origin no line meets it that is at most the
// longest rectangle long.
constexpr double kFarthest = 1e9;

struct line_walk {
  int64_t x;
  int64_t y;
  int64_t step_x;
  int64_t step_y;

  line_walk from(int i) const {
    return {x + i * step_x, y + i * step_y, step_x, step_y};
  }
  bool inside(const image& picture, int i) const {
    const line_walk at = from(i);
    return at.x >= 0 && at.y >= 0 &&
           at.x <= static_cast<int64_t>(picture.width - 1) << 32 &&
           at.y <= static_cast<int64_t>(picture.height - 1) << 32;
  }
};

// Adds the bilinear samples of n steps, all inside the image.
void add_samples(const image& picture, line_walk w, int n, uint64_t* sums) {
  const int last_x = picture.width - 2;
  const int last_y = picture.height - 2;
  for (int k = 0; k < n; ++k) {
    // At the last column and row the weight of the pixel beyond would be 0;
    // the weight 1 of the one before it does the same.
    const int x = std::min(static_cast<int>(w.x >> 32), last_x);
    const int y = std::min(static_cast<int>(w.y >> 32), last_y);
    const int fx = static_cast<int>((w.x >> kToWeight) -
                                    (static_cast<int64_t>(x) << kWeightBits));
    const int fy = static_cast<int>((w.y >> kToWeight) -
                                    (static_cast<int64_t>(y) << kWeightBits));
    const unsigned char* p =
        picture.data + static_cast<ptrdiff_t>(y) * picture.width + x;
    const unsigned char* q = p + picture.width;
    const int top = (p[0] << kWeightBits) + fx * (p[1] - p[0]);
    const int bottom = (q[0] << kWeightBits) + fx * (q[1] - q[0]);
    sums[k] += (static_cast<uint64_t>(top) << kWeightBits) +
               static_cast<uint64_t>(static_cast<int64_t>(fy) * (bottom - top));
    w.x += w.step_x;
    w.y += w.step_y;
  }
}

}  // namespace

// Only what can meet the image is visited, however large the rectangle.
profile::line_range profile::lay_out(const image& picture, const frame& f,
                                     double curvature) {
  const int length = floor_of(2 * f.half_length + 1e-6) + 1;
  const double width = 2 * f.half_width;
  lines_ = std::max(1, static_cast<int>(std::lround(width)));
  first_u_ = -0.5 * (length - 1);
  const double spacing = width / lines_;
  line_range lines = {-0.5 * spacing * (lines_ - 1), spacing, 0, lines_};
  const double bend = std::fabs(sagitta(curvature, f.half_width));
  const interval us = range_of_corners(
      picture, [&](double x, double y) { return f.u_of(x, y); });
  const interval vs = range_of_corners(
      picture, [&](double x, double y) { return f.v_of(x, y); });
  begin_ = within(std::floor(us.low - bend - first_u_), length);
  end_ = within(std::ceil(us.high + bend - first_u_) + 1, length);
  if (lines_ > 1) {
    lines.begin =
        within(std::floor((vs.low - lines.first_v) / spacing), lines_);
    lines.end =
        within(std::ceil((vs.high - lines.first_v) / spacing) + 1, lines_);
  }
  return lines;
}

void profile::sample(const image& picture, const frame& f, double curvature) {
  size_ = 0;
  const line_range lines = lay_out(picture, f, curvature);
  if (end_ <= begin_ || 2 * (lines.end - lines.begin) < lines_) return;
  const auto n = static_cast<size_t>(end_ - begin_);
  sums_.assign(n, 0);
  counts_.assign(n + 1, 0);
  for (int j = lines.begin; j < lines.end; ++j) {
    const double v = lines.first_v + j * lines.spacing;
    add_line(picture, f, v, sagitta(curvature, v));
  }
  keep_valid_interval();
}

void profile::add_line(const image& picture, const frame& f, double v,
                       double shift) {
  const double u0 = first_u_ + begin_ + shift;
  const double x0 = f.image_x(u0, v);
  const double y0 = f.image_y(u0, v);
  if (std::fabs(x0) > kFarthest || std::fabs(y0) > kFarthest) return;
  const line_walk line = {to_fixed(x0), to_fixed(y0), to_fixed(f.cos),
                          to_fixed(-f.sin)};
  int first = 0;
  int last = end_ - begin_ - 1;
  if (!line.inside(picture, first) || !line.inside(picture, last)) {
    const interval k =
        intersection({0.0, static_cast<double>(last)},
                     intersection(inside(x0, f.cos, picture.width - 1),
                                  inside(y0, -f.sin, picture.height - 1)));
    if (!(k.low <= k.high)) return;
    // One step wider than computed, then cut by the very coordinates used.
    first = floor_of(k.low);
    last = std::min(floor_of(k.high) + 1, last);
    while (first <= last && !line.inside(picture, first)) ++first;
    while (last > first && !line.inside(picture, last)) --last;
    if (first > last) return;
  }
  add_samples(picture, line.from(first), last - first + 1,
              sums_.data() + first);
  ++counts_[static_cast<size_t>(first)];
  --counts_[static_cast<size_t>(last) + 1];
}

// At least half of the lines make a position valid. Lines enter and leave a
// convex image, so the valid positions are one interval.
void profile::keep_valid_interval() {
  int begin = 0;
  int end = 0;
  int count = 0;
  for (int k = 0; k < end_ - begin_; ++k) {
    int& here = counts_[static_cast<size_t>(k)];  // its change so far
    count += here;
    here = count;
    if (2 * count >= lines_) {
      if (end == 0) begin = k;
      end = k + 1;
    } else if (end > 0) {
      break;
    }
  }
  keep(begin, end);
}

void profile::keep(int begin, int end) {
  size_ = end - begin;
  first_u_ += begin_ + begin;
  values_.resize(static_cast<size_t>(size_));
  for (int k = 0; k < size_; ++k) {
    const auto from = static_cast<size_t>(begin + k);
    values_[static_cast<size_t>(k)] = static_cast<float>(
        static_cast<double>(sums_[from]) / (kSampleOne * counts_[from]));
  }
}

gaussian_kernel::gaussian_kernel(double sigma)
    : sigma_(sigma), radius_(static_cast<int>(std::ceil(4 * sigma))) {
  double sum = 0;
  for (int i = -radius_; i <= radius_; ++i) {
    sum += std::exp(-0.5 * i * i / (sigma * sigma));
  }
  for (int i = 0; i <= radius_; ++i) {
    weights_.push_back(
        static_cast<float>(std::exp(-0.5 * i * i / (sigma * sigma)) / sum));
  }
}

void derivative::compute(const profile& p, const gaussian_kernel& kernel) {
  size_ = std::max(p.size() - 1, 0);
  const int r = std::min(kernel.radius(), size_);
  const auto n = static_cast<size_t>(size_);
  differences_.assign(n + 2 * static_cast<size_t>(r), 0.0f);
  for (int i = 0; i < size_; ++i) {
    differences_[static_cast<size_t>(i + r)] =
        p.values()[i + 1] - p.values()[i];
  }
  values_.assign(n, 0.0f);
  for (int offset = -r; offset <= r; ++offset) {
    const float weight = kernel[offset];
    const float* from = differences_.data() + r + offset;
    for (size_t i = 0; i < n; ++i) values_[i] += weight * from[i];
  }
}

}  // namespace vexolab
