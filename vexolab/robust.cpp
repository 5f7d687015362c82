// SPDX-License-Identifier: MIT
#include "vexolab/robust.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "vexolab/robust_start.h"
#include "vexolab/scale.h"
#include "vexolab/thinned_points.h"

namespace vexolab {
namespace {

// The iteration rests when the distances change by less than this part of
// sigma (root mean square).
constexpr double kSettled = 1e-5;
// While the weights change, a fit may end with a step below this part of
// sigma; the last one goes to the end.
constexpr double kRough = 0.01;
constexpr int kRoughSteps = 10;
// Rounds times points: weights that never come to rest must end as well.
constexpr int kMostRoundsTimesPoints = 400000;
// Rounds that estimate sigma from a narrow band, until outliers are out.
constexpr int kNarrowRounds = 2;
constexpr double kSmallestFactor = 0.01;

// More than this are first fitted to half as many of them. That fit is so close
// that few rounds of one step over all of them reach what many would: one step
// from a good start makes an estimator efficient.
constexpr int kManyPoints = 10000;
constexpr int kRoundsOverMany = 2;
constexpr double kCloseStart = 0.1;  // a step from it, as a part of sigma
constexpr int kRoundsBeforeMany = 20;

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

  bool run(double* sigma) {
    if (!start()) return false;
    const int most_rounds = std::min(
        options_.iterations, std::max(kMostRoundsTimesPoints / points_.n, 1));
    const effort to_the_end = full_effort(points_.n);
    for (int round = 0; round < most_rounds; ++round) {
      weigh();
      const effort rough = {kRough * sigma_,
                            round > 0 ? kRoughSteps : to_the_end.most_steps};
      if (!shape_.fit(points_, weight_.data(), round > 0, rough)) return false;
      scratch_.swap(distance_);
      shape_.distances(points_, distance_.data());
      const double before = sigma_;
      estimate_sigma(round >= kNarrowRounds);
      if (round >= kNarrowRounds && change() <= kSettled * sigma_ &&
          std::fabs(sigma_ - before) <= kSettled * sigma_) {
        break;
      }
    }
    *sigma = sigma_;
    return shape_.fit(points_, weight_.data(), true, to_the_end);
  }

  // From the shape as it is, a fit to some of the points that had this sigma.
  bool run_over_many(double sigma) {
    sigma_ = sigma;
    const int rounds = std::min(options_.iterations, kRoundsOverMany);
    for (int round = 0; round < rounds; ++round) {
      shape_.distances(points_, distance_.data());
      weigh();
      const effort one_step = {kCloseStart * sigma_, 1};
      if (!shape_.fit(points_, weight_.data(), true, one_step)) return false;
    }
    return true;
  }

 private:
  bool start() {
    if (robust_start(points_, shape_, options_.smallest_sigma, distance_.data(),
                     &sigma_)) {
      return true;
    }
    // Points no sample of which makes a shape may still have a fit.
    if (!shape_.fit(points_, weight_.data(), false, full_effort(points_.n))) {
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

bool fit_plainly(const point_set& points, bool warm, shape_fit* shape) {
  const std::vector<double> ones(points.n, 1.0);
  return shape->fit(points, ones.data(), warm, full_effort(points.n));
}

// Of some of the points, as large a part is to be kept as of all.
robust_options for_some(robust_options options, int some, int all,
                        int freedom) {
  const double part = std::ceil(1.0 * options.least * some / all);
  options.least = std::max(static_cast<int>(part), freedom);
  options.iterations = std::min(options.iterations, kRoundsBeforeMany);
  return options;
}

}  // namespace

bool fit_points(const point_set& points, const robust_options& options,
                shape_fit* shape) {
  const bool many = points.n > kManyPoints;
  const thinned_points some(points, many ? kManyPoints / 2 : 0);
  const point_set first = many ? some.set() : points;
  if (options.iterations == 0) {
    return fit_plainly(first, false, shape) &&
           (!many || fit_plainly(points, true, shape));
  }
  double sigma = 0;
  if (!many) return iteration(points, options, shape).run(&sigma);
  const robust_options fewer =
      for_some(options, first.n, points.n, shape->freedom());
  return iteration(first, fewer, shape).run(&sigma) &&
         iteration(points, options, shape).run_over_many(sigma);
}

}  // namespace vexolab
