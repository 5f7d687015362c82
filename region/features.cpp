// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "region/internal/memory.h"
#include "region/internal/rectangle.h"
#include "region/internal/views.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::chord_view;
using internal::point;

constexpr double kPi = 3.141592653589793;

struct bounds {
  int32_t min_row, min_col, max_row, max_col;
  int64_t area;
  bool rows_in_order;

  int64_t height() const { return int64_t{max_row} - min_row + 1; }
  int64_t width() const { return int64_t{max_col} - min_col + 1; }
};

template <class View>
bounds find_bounds(const View& runs) {
  bounds b{runs.row(0), runs.begin(0), runs.row(0), runs.end(0), 0, true};
  int32_t previous = runs.row(0);
  for (size_t i = 0; i < runs.count; ++i) {
    const int32_t row = runs.row(i);
    b.rows_in_order &= row >= previous;
    previous = row;
    b.min_row = std::min(b.min_row, row);
    b.max_row = std::max(b.max_row, row);
    b.min_col = std::min(b.min_col, runs.begin(i));
    b.max_col = std::max(b.max_col, runs.end(i));
    b.area += int64_t{runs.end(i)} - runs.begin(i) + 1;
  }
  return b;
}

// Raw moments about the point (col, row), in whole or in real numbers.
template <class Number>
struct raw_moments {
  Number x = 0, y = 0, xx = 0, xy = 0, yy = 0;

  void add(Number row, Number begin, Number end) {
    const Number n = end - begin + 1;
    const Number sum_x = n * (begin + end) / 2;
    x += sum_x;
    y += n * row;
    xx +=
        n * begin * begin + begin * n * (n - 1) + (2 * n - 1) * (n - 1) * n / 6;
    xy += row * sum_x;
    yy += n * row * row;
  }
};

template <class Number, class View>
raw_moments<Number> sum_moments(const View& runs, int32_t col, int32_t row) {
  raw_moments<Number> sums;
  for (size_t i = 0; i < runs.count; ++i) {
    sums.add(static_cast<Number>(int64_t{runs.row(i)} - row),
             static_cast<Number>(int64_t{runs.begin(i)} - col),
             static_cast<Number>(int64_t{runs.end(i)} - col));
  }
  return sums;
}

struct central_moments {
  double center_col, center_row;
  double xx, xy, yy;
};

// Whole-number sums about the corner of the bounding box, moved to the whole
// point nearest the centre: what is left to subtract in real numbers is at most
// a quarter, so nothing cancels.
template <class View>
central_moments exact_moments(const View& runs, const bounds& b) {
  const auto sums = sum_moments<int64_t>(runs, b.min_col, b.min_row);
  const double area = static_cast<double>(b.area);
  const int64_t col = std::llround(static_cast<double>(sums.x) / area);
  const int64_t row = std::llround(static_cast<double>(sums.y) / area);
  const double x = static_cast<double>(sums.x - col * b.area) / area;
  const double y = static_cast<double>(sums.y - row * b.area) / area;
  const auto mean = [area](int64_t sum) {
    return static_cast<double>(sum) / area;
  };
  return {static_cast<double>(b.min_col + col) + x,
          static_cast<double>(b.min_row + row) + y,
          mean(sums.xx - col * (2 * sums.x - col * b.area)) - x * x,
          mean(sums.xy - col * sums.y - row * (sums.x - col * b.area)) - x * y,
          mean(sums.yy - row * (2 * sums.y - row * b.area)) - y * y};
}

// For regions whose sums do not fit whole numbers: about the middle of the
// bounding box, in real numbers.
template <class View>
central_moments rounded_moments(const View& runs, const bounds& b) {
  const auto col = static_cast<int32_t>((int64_t{b.min_col} + b.max_col) / 2);
  const auto row = static_cast<int32_t>((int64_t{b.min_row} + b.max_row) / 2);
  const auto sums = sum_moments<double>(runs, col, row);
  const double area = static_cast<double>(b.area);
  const double x = sums.x / area;
  const double y = sums.y / area;
  return {col + x, row + y, sums.xx / area - x * x, sums.xy / area - x * y,
          sums.yy / area - y * y};
}

template <class View>
central_moments find_moments(const View& runs, const bounds& b) {
  const auto extent = static_cast<double>(std::max(b.width(), b.height()));
  const bool fits = static_cast<double>(b.area) * extent * extent < 1e18;
  return fits ? exact_moments(runs, b) : rounded_moments(runs, b);
}

// Area of the region by area of the circle around its centre that holds it.
template <class View>
double find_circularity(const View& runs, double area, double center_col,
                        double center_row) {
  double max2 = 0;
  for (size_t i = 0; i < runs.count; ++i) {
    const double dx =
        std::max(center_col - runs.begin(i), runs.end(i) - center_col);
    const double dy = runs.row(i) - center_row;
    max2 = std::max(max2, dx * dx + dy * dy);
  }
  return std::min(1.0, area / (kPi * max2));
}

// Convex hull of the runs' ends, each corner a strict left turn. The rows must
// be in order; only the outermost ends of a row can be corners.
class hull_builder {
 public:
  template <class View>
  hull_builder(const View& runs, const bounds& b)
      : points_(2 * row_count(runs)) {
    const auto at = [&b](int32_t col, int32_t row) {
      return point{double(int64_t{col} - b.min_col),
                   double(int64_t{row} - b.min_row)};
    };
    for (size_t i = 0; i < runs.count;) {
      const size_t last = internal::row_end(runs, i);
      int32_t end = runs.end(i);
      for (size_t k = i; k < last; ++k) end = std::max(end, runs.end(k));
      push(0, at(end, runs.row(i)));
      i = last;
    }
    const size_t corner = size_;
    for (size_t i = runs.count; i > 0;) {
      const int32_t row = runs.row(i - 1);
      int32_t begin = runs.begin(i - 1);
      for (; i > 0 && runs.row(i - 1) == row; --i) {
        begin = std::min(begin, runs.begin(i - 1));
      }
      push(corner, at(begin, row));
    }
    join(corner);
  }

  const point* corners() const { return points_.data(); }
  size_t size() const { return size_; }

 private:
  template <class View>
  static size_t row_count(const View& runs) {
    size_t rows = 1;
    for (size_t i = 1; i < runs.count; ++i) {
      rows += runs.row(i) != runs.row(i - 1);
    }
    return rows;
  }

  static double turn(const point& a, const point& b, const point& c) {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
  }

  void push(size_t chain, const point& p) {
    point* const top = points_.data();
    while (size_ >= chain + 2 && turn(top[size_ - 2], top[size_ - 1], p) <= 0) {
      --size_;
    }
    top[size_++] = p;
  }

  static bool same(const point& a, const point& b) {
    return a.x == b.x && a.y == b.y;
  }

  // The two chains may share their first and last corners.
  void join(size_t corner) {
    point* const p = points_.data();
    if (same(p[size_ - 1], p[0])) --size_;
    if (corner < size_ && same(p[corner], p[corner - 1])) {
      std::copy(p + corner + 1, p + size_, p + corner);
      --size_;
    }
  }

  buffer<point> points_;
  size_t size_ = 0;
};

void clear_features(region* r) {
  std::fill(r->reals, r->reals + 7, 0.0);
  std::fill(r->more_reals, r->more_reals + 3, 0.0);
}

// Two pixels have closed forms, whose decimals are kept as they are.
template <class View>
void pair_features(const View& runs, region* r) {
  const size_t last = runs.count - 1;
  const point first_pixel{static_cast<double>(runs.begin(0)),
                          static_cast<double>(runs.row(0))};
  const point last_pixel{static_cast<double>(runs.end(last)),
                         static_cast<double>(runs.row(last))};
  const double cols = last_pixel.x - first_pixel.x;
  const double rows = last_pixel.y - first_pixel.y;
  const bool diagonal = runs.count > 1 && cols != 0;
  double angle = 0;
  if (diagonal) {
    angle = rows * cols > 0 ? -45 : 45;
  } else if (runs.count > 1) {
    angle = -90;
  }
  r->reals[0] = (first_pixel.x + last_pixel.x) / 2;
  r->reals[1] = (first_pixel.y + last_pixel.y) / 2;
  r->reals[2] = diagonal ? 0.707107 : 0.5;
  r->reals[4] = diagonal ? 1.41421 : 1.0;
  r->reals[6] = angle;
  r->more_reals[0] = angle;
  r->more_reals[2] = 1.0;
}

void ellipse_features(const central_moments& m, region* r) {
  const double s = m.yy + m.xx;
  const double d = m.yy - m.xx;
  const double q = std::sqrt(d * d + 4 * m.xy * m.xy);
  r->reals[4] = 0.5 * std::sqrt(8 * (s + q));
  r->reals[5] = 0.5 * std::sqrt(8 * std::max(0.0, s - q));
  const double phi = std::atan2(2 * m.xy, m.xx - m.yy) * -0.5 * 180 / kPi;
  r->reals[6] = phi + 0.0;  // no negative zero
}

template <class View>
void rectangle_features(const View& runs, const bounds& b, region* r) {
  const hull_builder hull(runs, b);
  const internal::rectangle box =
      internal::smallest_rectangle(hull.corners(), hull.size());
  r->reals[2] = 0.5 * box.side_w;
  r->reals[3] = 0.5 * box.side_h;
  r->more_reals[0] = internal::rectangle_angle(box);
}

template <class View>
void fill_features(const View& runs, region* r) {
  const bounds b = find_bounds(runs);
  if (!b.rows_in_order) {
    buffer<chord> sorted(runs.count);
    for (size_t i = 0; i < runs.count; ++i) {
      sorted[i] = {runs.begin(i), runs.end(i), runs.row(i), 0};
    }
    std::sort(sorted.begin(), sorted.end(), std::less<chord>());
    return fill_features(chord_view{sorted.data(), runs.count}, r);
  }
  const int32_t box[4] = {b.min_row, b.min_col, b.max_row, b.max_col};
  std::copy(box, box + 4, r->bbox);
  r->area = static_cast<int32_t>(std::min<int64_t>(b.area, INT32_MAX));
  clear_features(r);
  r->reals[0] = runs.begin(0);
  r->reals[1] = runs.row(0);
  if (b.area < 2) return;
  if (b.area == 2) return pair_features(runs, r);
  const central_moments m = find_moments(runs, b);
  r->reals[0] = m.center_col;
  r->reals[1] = m.center_row;
  r->more_reals[2] = find_circularity(runs, static_cast<double>(b.area),
                                      m.center_col, m.center_row);
  ellipse_features(m, r);
  rectangle_features(runs, b, r);
}

}  // namespace

void compute_features(region* r) {
  if (r->child_count > 0) return;
  if (r->run_count > 0) {
    fill_features(internal::runs_of(*r), r);
  } else if (r->chord_count > 0) {
    fill_features(internal::chords_of(*r), r);
  }
}

}  // namespace vexo
