// SPDX-License-Identifier: MIT
#include "region/internal/features.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "region/internal/hull.h"
#include "region/internal/memory.h"
#include "region/internal/rectangle.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::chord_view;
using internal::hull;
using internal::hull_memory;
using internal::run_view;

constexpr double kPi = 3.141592653589793;

// What one pass over the runs gives. Sums are about the first run's begin and
// row, in whole numbers that may wrap: whether they have is seen afterwards,
// from the area and the bounding box.
struct run_sums {
  int32_t min_col, max_col;
  bool rows_in_order = true;
  int64_t area = 0;
  uint64_t x2 = 0;    // 2 * sum of x
  uint64_t y = 0;     // sum of y
  uint64_t xx12 = 0;  // 12 * sum of x^2
  uint64_t xy2 = 0;   // 2 * sum of x * y
  uint64_t yy = 0;    // sum of y^2
};

// With n pixels from b to e and s = b + e, a run adds n s / 2 to the sum of x
// and n (3 s^2 + n^2 - 1) / 12 to that of x^2.
template <class View>
run_sums sum_runs(const View& runs) {
  const int64_t col = runs.begin(0);
  const int64_t row = runs.row(0);
  int32_t previous = runs.row(0);
  run_sums sums{runs.begin(0), runs.end(0)};
  for (size_t i = 0; i < runs.count; ++i) {
    sums.rows_in_order &= runs.row(i) >= previous;
    previous = runs.row(i);
    sums.min_col = std::min(sums.min_col, runs.begin(i));
    sums.max_col = std::max(sums.max_col, runs.end(i));
    const auto y = static_cast<uint64_t>(runs.row(i) - row);
    const auto s =
        static_cast<uint64_t>(runs.begin(i) + (runs.end(i) - 2 * col));
    const int64_t pixels = int64_t{runs.end(i)} - runs.begin(i) + 1;
    sums.area += pixels;
    const auto n = static_cast<uint64_t>(pixels);
    const uint64_t ns = n * s;
    const uint64_t ny = n * y;
    sums.x2 += ns;
    sums.y += ny;
    sums.xx12 += n * (3 * s * s + n * n - 1);
    sums.xy2 += ns * y;
    sums.yy += ny * y;
  }
  return sums;
}

struct central_moments {
  double center_col, center_row;
  double xx, xy, yy;
};

int64_t nearest(double value) {
  return static_cast<int64_t>(value < 0 ? value - 0.5 : value + 0.5);
}

// The sums moved to the whole point nearest the centre: what is left to
// subtract in real numbers is at most a quarter, so nothing cancels.
central_moments exact_moments(const run_sums& sums, int64_t col0,
                              int64_t row0) {
  const int64_t sum_x = static_cast<int64_t>(sums.x2) / 2;
  const auto sum_y = static_cast<int64_t>(sums.y);
  const auto sum_xx = static_cast<int64_t>(sums.xx12) / 12;
  const int64_t sum_xy = static_cast<int64_t>(sums.xy2) / 2;
  const auto sum_yy = static_cast<int64_t>(sums.yy);
  const double per_pixel = 1 / static_cast<double>(sums.area);
  const int64_t col = nearest(static_cast<double>(sum_x) * per_pixel);
  const int64_t row = nearest(static_cast<double>(sum_y) * per_pixel);
  const int64_t rest_x = sum_x - col * sums.area;
  const int64_t rest_y = sum_y - row * sums.area;
  const auto mean = [area = static_cast<double>(sums.area)](int64_t sum) {
    return static_cast<double>(sum) / area;
  };
  const double x = mean(rest_x);
  const double y = mean(rest_y);
  return {static_cast<double>(col0 + col) + x,
          static_cast<double>(row0 + row) + y,
          mean(sum_xx - col * (sum_x + rest_x)) - x * x,
          mean(sum_xy - col * sum_y - row * rest_x) - x * y,
          mean(sum_yy - row * (sum_y + rest_y)) - y * y};
}

// For regions whose sums do not fit whole numbers: about the middle of the
// bounding box, in real numbers.
template <class View>
central_moments rounded_moments(const View& runs, const int32_t* bbox,
                                double area) {
  const double col = (static_cast<double>(bbox[1]) + bbox[3]) / 2;
  const double row = (static_cast<double>(bbox[0]) + bbox[2]) / 2;
  double x = 0, y = 0, xx = 0, xy = 0, yy = 0;
  for (size_t i = 0; i < runs.count; ++i) {
    const double n = static_cast<double>(runs.end(i)) - runs.begin(i) + 1;
    const double middle = runs.begin(i) + (n - 1) / 2 - col;
    const double dy = runs.row(i) - row;
    x += n * middle;
    y += n * dy;
    xx += n * (middle * middle + (n * n - 1) / 12);
    xy += n * middle * dy;
    yy += n * dy * dy;
  }
  x /= area;
  y /= area;
  return {col + x, row + y, xx / area - x * x, xy / area - x * y,
          yy / area - y * y};
}

void clear_features(region* r) {
  std::fill(r->reals, r->reals + 7, 0.0);
  std::fill(r->more_reals, r->more_reals + 3, 0.0);
}

// Two pixels have closed forms, whose decimals are kept as they are.
template <class View>
void pair_features(const View& runs, region* r) {
  const size_t last = runs.count - 1;
  const double first_col = runs.begin(0), first_row = runs.row(0);
  const double last_col = runs.end(last), last_row = runs.row(last);
  const double cols = last_col - first_col;
  const double rows = last_row - first_row;
  const bool diagonal = runs.count > 1 && cols != 0;
  double angle = 0;
  if (diagonal) {
    angle = rows * cols > 0 ? -45 : 45;
  } else if (runs.count > 1) {
    angle = -90;
  }
  r->reals[0] = (first_col + last_col) / 2;
  r->reals[1] = (first_row + last_row) / 2;
  r->reals[2] = diagonal ? 0.707107 : 0.5;
  r->reals[4] = diagonal ? 1.41421 : 1.0;
  r->reals[6] = angle;
  r->more_reals[0] = angle;
  r->more_reals[2] = 1.0;
}

void moment_features(const central_moments& m, region* r) {
  r->reals[0] = m.center_col;
  r->reals[1] = m.center_row;
  const double s = m.yy + m.xx;
  const double d = m.yy - m.xx;
  const double q = std::sqrt(d * d + 4 * m.xy * m.xy);
  r->reals[4] = 0.5 * std::sqrt(8 * (s + q));
  r->reals[5] = 0.5 * std::sqrt(8 * std::max(0.0, s - q));
  const double phi = std::atan2(2 * m.xy, m.xx - m.yy) * -0.5 * 180 / kPi;
  r->reals[6] = phi + 0.0;  // no negative zero
}

// A single run: what the general way gives, without its detours.
void run_features(const int32_t* bbox, double area, region* r) {
  const double variance = (area * area - 1) / 12;
  const double half = (area - 1) / 2;
  r->reals[0] = bbox[1] + half;
  r->reals[1] = bbox[0];
  r->reals[2] = half;
  r->reals[4] = 0.5 * std::sqrt(16 * variance);
  r->more_reals[2] = std::min(1.0, area / (kPi * half * half));
}

// The pixel farthest from the centre is a corner of the hull.
void hull_features(const hull& corners, const int32_t* bbox, double area,
                   region* r) {
  const double x = r->reals[0] - bbox[1];
  const double y = r->reals[1] - bbox[0];
  double max2 = 0;
  for (size_t i = 0; i < corners.size; ++i) {
    const double dx = corners.x[i] - x;
    const double dy = corners.y[i] - y;
    max2 = std::max(max2, dx * dx + dy * dy);
  }
  r->more_reals[2] = std::min(1.0, area / (kPi * max2));
  const internal::rectangle box = internal::smallest_rectangle(corners);
  r->reals[2] = 0.5 * box.side_w;
  r->reals[3] = 0.5 * box.side_h;
  r->more_reals[0] = internal::rectangle_angle(box);
}

template <class View>
void fill_in_order(const View& runs, const run_sums& sums, hull_memory* memory,
                   region* r) {
  const int32_t bbox[4] = {runs.row(0), sums.min_col, runs.row(runs.count - 1),
                           sums.max_col};
  std::copy(bbox, bbox + 4, r->bbox);
  r->area = static_cast<int32_t>(std::min<int64_t>(sums.area, INT32_MAX));
  clear_features(r);
  r->reals[0] = runs.begin(0);
  r->reals[1] = runs.row(0);
  if (sums.area < 2) return;
  if (sums.area == 2) return pair_features(runs, r);
  const auto area = static_cast<double>(sums.area);
  if (runs.count == 1) return run_features(bbox, area, r);
  const double extent = std::max(static_cast<double>(bbox[2]) - bbox[0],
                                 static_cast<double>(bbox[3]) - bbox[1]) +
                        1;
  // 13 * area * extent^2 bounds every sum and every step towards it.
  const bool exact = 13 * area * extent * extent < 9e18;
  moment_features(exact ? exact_moments(sums, runs.begin(0), runs.row(0))
                        : rounded_moments(runs, bbox, area),
                  r);
  hull_features(internal::hull_of(runs, bbox, memory), bbox, area, r);
}

template <class View>
void fill_features(const View& runs, hull_memory* memory, region* r) {
  const run_sums sums = sum_runs(runs);
  if (sums.rows_in_order) return fill_in_order(runs, sums, memory, r);
  buffer<chord> sorted(runs.count);
  for (size_t i = 0; i < runs.count; ++i) {
    sorted[i] = {runs.begin(i), runs.end(i), runs.row(i), 0};
  }
  std::sort(sorted.begin(), sorted.end(), std::less<chord>());
  const chord_view in_order{sorted.data(), runs.count};
  fill_in_order(in_order, sum_runs(in_order), memory, r);
}

}  // namespace

namespace internal {

void compute_features(const run_view& runs, hull_memory* memory, region* r) {
  fill_features(runs, memory, r);
}

void compute_features(const chord_view& runs, hull_memory* memory, region* r) {
  fill_features(runs, memory, r);
}

}  // namespace internal

void compute_features(region* r) {
  if (r->child_count > 0) return;
  hull_memory memory;
  if (r->run_count > 0) {
    fill_features(internal::runs_of(*r), &memory, r);
  } else if (r->chord_count > 0) {
    fill_features(internal::chords_of(*r), &memory, r);
  }
}

}  // namespace vexo
