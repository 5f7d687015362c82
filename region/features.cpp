// SPDX-License-Identifier: MIT
#include "region/internal/features.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "region/internal/hull.h"
#include "region/internal/memory.h"
#include "region/internal/rectangle.h"
#include "region/internal/run_sums.h"
#include "region/internal/vector_level.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::chord_view;
using internal::hull;
using internal::hull_memory;
using internal::run_sums;
using internal::run_view;
using internal::vector_level;

constexpr double kPi = 3.141592653589793;

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
central_moments rounded_moments(const run_view& runs, const int32_t* bbox,
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
void pair_features(const run_view& runs, region* r) {
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
template <class T>
void hull_features(const hull<T>& corners, const int32_t* bbox, double area,
                   region* r) {
  const double x = r->reals[0] - bbox[1];
  const double y = r->reals[1] - bbox[0];
  double max2 = 0;
  for (size_t i = 0; i < corners.size; ++i) {
    const double dx = corners.corners[i].x - x;
    const double dy = corners.corners[i].y - y;
    max2 = std::max(max2, dx * dx + dy * dy);
  }
  r->more_reals[2] = std::min(1.0, area / (kPi * max2));
  const internal::rectangle box = internal::smallest_rectangle(corners);
  r->reals[2] = 0.5 * box.side_w;
  r->reals[3] = 0.5 * box.side_h;
  r->more_reals[0] = internal::rectangle_angle(box);
}

hull<int16_t> narrow_hull(const run_view& runs, const run_sums& sums,
                          const int32_t* bbox, hull_memory* memory) {
#ifdef VEXO_X86_VECTORS
  const bool no_gap =
      sums.rows == static_cast<size_t>(int64_t{bbox[2]} - bbox[0] + 1);
  if (no_gap && sums.columns_in_order &&
      internal::current_vector_level() == vector_level::kAvx512) {
    return internal::hull_of_rows_avx512(runs, sums.rows, bbox[1], memory);
  }
#endif
  return internal::hull_of<int16_t>(runs, bbox, memory);
}

// Bounding box and area; what else stands there when there is one pixel.
void start_features(const run_view& runs, const run_sums& sums, region* r) {
  const int32_t bbox[4] = {runs.row(0), sums.min_col, runs.row(runs.count - 1),
                           sums.max_col};
  std::copy(bbox, bbox + 4, r->bbox);
  r->area = static_cast<int32_t>(std::min<int64_t>(sums.area, INT32_MAX));
  clear_features(r);
  r->reals[0] = runs.begin(0);
  r->reals[1] = runs.row(0);
}

void fill_in_order(const run_view& runs, const run_sums& sums,
                   hull_memory* memory, region* r) {
  start_features(runs, sums, r);
  if (sums.area < 2) return;
  if (sums.area == 2) return pair_features(runs, r);
  const int32_t* const bbox = r->bbox;
  const auto area = static_cast<double>(sums.area);
  if (runs.count == 1) return run_features(bbox, area, r);
  const int64_t extent =
      std::max(int64_t{bbox[2]} - bbox[0], int64_t{bbox[3]} - bbox[1]);
  const double extent1 = static_cast<double>(extent) + 1;
  // 13 * area * extent^2 bounds every sum and every step towards it.
  const bool exact = 13 * area * extent1 * extent1 < 9e18;
  moment_features(exact ? exact_moments(sums, runs.begin(0), runs.row(0))
                        : rounded_moments(runs, bbox, area),
                  r);
  if (extent < internal::kNarrowExtent) {
    hull_features(narrow_hull(runs, sums, bbox, memory), bbox, area, r);
  } else {
    hull_features(internal::hull_of<double>(runs, bbox, memory), bbox, area, r);
  }
}

run_sums sum_runs(const run_view& runs) {
#ifdef VEXO_X86_VECTORS
  if (runs.count > 2 &&
      internal::current_vector_level() == vector_level::kAvx512) {
    return internal::sum_runs_avx512(runs);
  }
#endif
  return internal::sum_runs_plain(runs);
}

}  // namespace

namespace internal {

void compute_features(const run_view& runs, hull_memory* memory, region* r) {
  const run_sums sums = sum_runs(runs);
  if (sums.rows_in_order) return fill_in_order(runs, sums, memory, r);
  buffer<chord> sorted(runs.count);
  for (size_t i = 0; i < runs.count; ++i) {
    sorted[i] = {runs.begin(i), runs.end(i), runs.row(i), 0};
  }
  std::sort(sorted.begin(), sorted.end(), std::less<chord>());
  compute_features(chord_view{sorted.data(), runs.count}, memory, r);
}

void compute_features(const chord_view& chords, hull_memory* memory,
                      region* r) {
  compute_features(memory->as_runs(chords), memory, r);
}

}  // namespace internal

void compute_features(region* r) {
  if (r->child_count > 0) return;
  hull_memory memory;
  if (r->run_count > 0) {
    internal::compute_features(internal::runs_of(*r), &memory, r);
  } else if (r->chord_count > 0) {
    internal::compute_features(internal::chords_of(*r), &memory, r);
  }
}

}  // namespace vexo
