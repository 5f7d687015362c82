// SPDX-License-Identifier: MIT
#include "vexolab/robust.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "vexolab/robust_start.h"
#include "vexolab/scale.h"

namespace vexolab {
namespace {

// The iteration rests when the distances change by less than this part of
// sigma (root mean square).
constexpr double kSettled = 1e-5;
// While the weights change, a fit may end with a step below this part of
// sigma; the last one goes to the end.
constexpr double kRough = 0.01;
// Rounds that estimate sigma from a narrow band, until outliers are out.
constexpr int kNarrowRounds = 2;
constexpr double kSmallestFactor = 0.01;

// Weight over distance for a given sigma. Neither curve has a step: on a real
// contour, which is never quite the shape, points would jump in and out of the
// fit from one picture to the next, and the result with them.
class weight_curve {
 public:
  weight_curve(const robust_options& options, double sigma)
      : long_(options.weights == tail::kLong) {
    // With hardly any core the few points on the shape itself have all the
    // weight; alone they would not determine it.
    const double factor =
        std::max(options.factor, long_ ? kSmallestFactor : 2.0);
    const double end =
        long_ ? std::max(1.75 * factor, factor + 1.5) : factor + 1.5;
    core_ = factor * sigma;
    end_ = end * sigma;
  }

  double operator()(double distance) const {
    if (distance <= core_) return 1;
    if (distance >= end_) return 0;
    const double falling = (end_ - distance) / (end_ - core_);
    return long_ ? falling * core_ / distance : falling;
  }

 private:
  bool long_;
  double core_, end_;
};

class iteration {
 public:
  iteration(const point_set& points, const robust_options& options,
            shape_fit* shape)
      : points_(points),
        options_(options),
        shape_(*shape),
        distance_(points.n),
        weight_(points.n, 1.0),
        scratch_(points.n) {}

  bool run(bool warm) {
    if (!start(warm)) return false;
    for (int round = 0; round < options_.iterations; ++round) {
      weigh();
      if (!shape_.fit(points_, weight_.data(), warm || round > 0,
                      kRough * sigma_)) {
        return false;
      }
      scratch_.swap(distance_);
      shape_.distances(points_, distance_.data());
      const double before = sigma_;
      estimate_sigma(round >= kNarrowRounds);
      if (round >= kNarrowRounds && change() <= kSettled * sigma_ &&
          std::fabs(sigma_ - before) <= kSettled * sigma_) {
        break;
      }
    }
    return shape_.fit(points_, weight_.data(), true, kTinyStep);
  }

 private:
  bool start(bool warm) {
    if (!warm && robust_start(points_, shape_, options_.smallest_sigma,
                              distance_.data(), &sigma_)) {
      return true;
    }
    // Points no sample of which makes a shape may still have a fit.
    if (!warm && !shape_.fit(points_, weight_.data(), false, kTinyStep)) {
      return false;
    }
    shape_.distances(points_, distance_.data());
    scratch_ = distance_;
    const double half =
        order_statistic(scratch_.data(), points_.n, (points_.n + 1) / 2);
    sigma_ = std::max(first_sigma(half, points_.n, shape_.freedom()),
                      options_.smallest_sigma);
    return true;
  }

  void weigh() {
    // Of few points sigma is often estimated too small.
    const double few = 1 + 3.0 / (points_.n - shape_.freedom());
    const weight_curve curve(options_, few * sigma_);
    int kept = 0;
    for (int i = 0; i < points_.n; ++i) {
      weight_[i] = curve(distance_[i]);
      kept += weight_[i] > 0;
    }
    if (kept < options_.least) keep_closest_half();
  }

  void keep_closest_half() {
    const int half = std::max(options_.least, (points_.n + 1) / 2);
    scratch_ = distance_;
    const double most = order_statistic(scratch_.data(), points_.n, half);
    for (int i = 0; i < points_.n; ++i) {
      weight_[i] = distance_[i] <= most ? 1 : 0;
    }
  }

  void estimate_sigma(bool settled) {
    sigma_ = std::max(next_sigma(distance_.data(), points_.n, shape_.freedom(),
                                 sigma_, settled),
                      options_.smallest_sigma);
  }

  // Of the distances of the points used, root mean square.
  double change() const {
    double sum = 0, weight = 0;
    for (int i = 0; i < points_.n; ++i) {
      const double d = distance_[i] - scratch_[i];
      sum += weight_[i] * d * d;
      weight += weight_[i];
    }
    return std::sqrt(sum / weight);
  }

  const point_set& points_;
  const robust_options& options_;
  shape_fit& shape_;
  std::vector<double> distance_, weight_, scratch_;
  double sigma_ = 0;
};

}  // namespace

bool fit_robustly(const point_set& points, const robust_options& options,
                  bool warm, shape_fit* shape) {
  return iteration(points, options, shape).run(warm);
}

}  // namespace vexolab
