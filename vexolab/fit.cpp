// SPDX-License-Identifier: MIT
#include "vexolab/fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "vexolab/robust.h"
#include "vexolab/shape_fit.h"
#include "vexolab/thinned_points.h"
#include "vexolab/vexolab.h"

namespace vexolab {
namespace {

constexpr double kLargestNumber = 1e7;
constexpr int kMethodShort = 0;
constexpr int kMethodLong = 7;

// Below this no camera measures; it keeps exact points from making every
// rounding error an outlier.
constexpr double kSmallestSigmaPx = 0.01;

// Closer than this, points coincide: squares of their distances would be 0.
constexpr double kSmallestExtentPx = 1e-100;

// A frame needs no more points than these to be a good one.
constexpr int kPointsForFrame = 10000;

std::unique_ptr<shape_fit> make_fit(int shape) {
  switch (shape) {
    case VEXOLAB_LINE:
      return make_line_fit();
    case VEXOLAB_CIRCLE:
      return make_circle_fit();
    case VEXOLAB_ELLIPSE:
      return make_ellipse_fit();
    default:
      return nullptr;
  }
}

bool usable(double value) {
  return std::fabs(value) <= kLargestNumber;  // false for NaN
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + values.size() / 2;
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The points in the frame of the fit. Medians, not means: one stray point far
// away must not cost the others their digits.
struct framed_points {
  std::vector<double> x, y;
  double origin_x, origin_y;
  double extent;  // of the points from the origin, px
  double unit;    // px

  framed_points(const double* points, int n)
      : x(points, points + n), y(points + n, points + 2 * n) {
    const thinned_points some({points, points + n, n}, kPointsForFrame);
    origin_x = median(some.x());
    origin_y = median(some.y());
    extent = 0;
    for (int i = 0; i < n; ++i) {
      x[i] -= origin_x;
      y[i] -= origin_y;
      extent = std::max({extent, std::fabs(x[i]), std::fabs(y[i])});
    }
    // Most of the points may coincide; the others' fourth powers must still be
    // numbers.
    const double spread = std::max(median(distances(some)), 1e-12 * extent);
    int exponent = 0;
    std::frexp(spread, &exponent);
    // A power of two, so that scaling rounds nothing.
    unit = std::ldexp(1.0, exponent);
    for (double& value : x) value /= unit;
    for (double& value : y) value /= unit;
  }

  // From the origin, along the axis where they are larger.
  std::vector<double> distances(const thinned_points& points) const {
    std::vector<double> result(points.x());
    for (size_t i = 0; i < result.size(); ++i) {
      result[i] = std::max(std::fabs(result[i] - origin_x),
                           std::fabs(points.y()[i] - origin_y));
    }
    return result;
  }

  // All in one place, as far as numbers of this size can tell.
  bool coincide() const {
    constexpr double kRounding = 4 * std::numeric_limits<double>::epsilon();
    const double size = std::max(std::fabs(origin_x), std::fabs(origin_y));
    return extent <= std::max(kRounding * size, kSmallestExtentPx);
  }
};

}  // namespace

int fit(const double* points, int n, int shape, int method, float factor,
        int iterations, int least, double* out) {
  const std::unique_ptr<shape_fit> fit = make_fit(shape);
  if (!fit || !out || n < 0 || (!points && n > 0)) return VEXOLAB_E_ARGUMENT;
  if (method != kMethodShort && method != kMethodLong) {
    return VEXOLAB_E_ARGUMENT;
  }
  if (!usable(factor)) return VEXOLAB_E_NUMBER;
  if (factor < 0) return VEXOLAB_E_ARGUMENT;
  least = std::max(least, fit->freedom());
  if (n < least) return VEXOLAB_E_TOO_FEW;
  if (n > VEXOLAB_MAX_POINTS) return VEXOLAB_E_LIMIT;
  if (!std::all_of(points, points + 2 * static_cast<long>(n), usable)) {
    return VEXOLAB_E_NUMBER;
  }

  const framed_points framed(points, n);
  if (framed.coincide()) return VEXOLAB_E_DEGENERATE;
  const bool robust = factor > 0 && iterations > 0 && n > fit->freedom() + 1;
  robust_options options;
  options.weights = method == kMethodShort ? tail::kShort : tail::kLong;
  options.factor = factor;
  options.iterations = robust ? iterations : 0;
  options.least = least;
  options.smallest_sigma = kSmallestSigmaPx / framed.unit;
  const point_set set{framed.x.data(), framed.y.data(), n};
  if (!fit_points(set, options, fit.get())) return VEXOLAB_E_DEGENERATE;
  fit->report(framed.origin_x, framed.origin_y, framed.unit, out);
  return 0;
}

}  // namespace vexolab
