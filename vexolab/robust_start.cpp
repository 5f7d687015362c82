// SPDX-License-Identifier: MIT
//
// Least median of squares over random samples [P. Rousseeuw, Least median of
// squares regression, 1984]. A sample's median is only computed if enough
// points are near enough for it to be among the best, which few samples pass.
#include "vexolab/robust_start.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "vexolab/scale.h"
#include "vexolab/thinned_points.h"

namespace vexolab {
namespace {

// The search looks at no more points than this.
constexpr int kMostPoints = 400;
// Up to this many, all pairs of points are tried.
constexpr int kAllPairs = 12;

struct candidate {
  guess shape;
  double half_distance;  // within which half of the points lie
  double sigma;
};

class search {
 public:
  search(const shape_fit& shape, const point_set& points)
      : shape_(shape),
        points_(points),
        freedom_(shape.freedom()),
        order_(points.n / 2 + (freedom_ + 1) / 2),
        rough_x_(points.x, points.x + points.n),
        rough_y_(points.y, points.y + points.n),
        rough_{rough_x_.data(), rough_y_.data(), points.n},
        distance_(points.n),
        weight_(points.n) {}

  bool run(double smallest_sigma, guess* best, double* sigma) {
    if (freedom_ == 2 && points_.n <= kAllPairs) {
      try_all_pairs();
    } else {
      try_samples();
    }
    if (found_.empty()) return false;
    for (candidate& c : found_) improve(smallest_sigma, &c);
    const candidate& chosen = found_.size() > 1 ? choose() : found_.front();
    *best = chosen.shape;
    *sigma = chosen.sigma;
    return true;
  }

 private:
  void try_all_pairs() {
    for (int i = 0; i < points_.n; ++i) {
      for (int j = i + 1; j < points_.n; ++j) {
        const int index[] = {i, j};
        consider(index);
      }
    }
  }

  // Every second sample from anywhere; the others, when the points lie around
  // a closed contour, along a stretch of it.
  void try_samples() {
    for (int i = 0; i < shape_.samples(); ++i) {
      int index[5];
      if (freedom_ == 5 && i % 2 ? spread(index) : scattered(index)) {
        consider(index);
      }
    }
  }

  bool scattered(int* index) {
    for (int k = 0; k < freedom_; ++k) index[k] = place(random_.next());
    return different(index);
  }

  // One point from each of five equal parts of a stretch of the closed list:
  // good samples of a contour of which a part is covered.
  bool spread(int* index) {
    const double start = random_.next();
    const double length = 0.3 + 0.7 * random_.next();
    for (int k = 0; k < freedom_; ++k) {
      const double at = start + length * (k + random_.next()) / freedom_;
      index[k] = place(at - std::floor(at));
    }
    return different(index);
  }

  int place(double fraction) const {
    return std::min(static_cast<int>(fraction * points_.n), points_.n - 1);
  }

  bool different(const int* index) const {
    for (int k = 1; k < freedom_; ++k) {
      if (std::find(index, index + k, index[k]) != index + k) return false;
    }
    return true;
  }

  void consider(const int* index) {
    candidate c;
    if (!shape_.through(points_, index, &c.shape)) return;
    const bool full = static_cast<int>(found_.size()) == shape_.finalists();
    if (full && shape_.count_within(rough_, c.shape,
                                    found_.back().half_distance) < order_) {
      return;
    }
    shape_.distances(points_, c.shape, distance_.data());
    c.half_distance = order_statistic(distance_.data(), points_.n, order_);
    if (full) found_.pop_back();
    const auto nearer = [](const candidate& a, const candidate& b) {
      return a.half_distance < b.half_distance;
    };
    found_.insert(std::upper_bound(found_.begin(), found_.end(), c, nearer), c);
  }

  // Fits the shape to the closest half of the points, twice, then to all that
  // are near by the standard deviation of these, twice.
  void improve(double smallest_sigma, candidate* c) {
    shape_.distances(points_, c->shape, distance_.data());
    double within = c->half_distance;
    for (int round = 0; round < 2; ++round) {
      if (!refit_within(within, c)) break;
      weight_ = distance_;
      within = order_statistic(weight_.data(), points_.n, order_);
    }
    c->sigma =
        std::max(first_sigma(within, points_.n, freedom_), smallest_sigma);
    for (int round = 0; round < 2; ++round) {
      if (!refit_within(2.5 * c->sigma, c)) break;
      c->sigma = std::max(
          next_sigma(distance_.data(), points_.n, freedom_, c->sigma, false),
          smallest_sigma);
    }
  }

  // Leaves the new distances in distance_.
  bool refit_within(double most, candidate* c) {
    for (int i = 0; i < points_.n; ++i) {
      weight_[i] = distance_[i] <= most ? 1 : 0;
    }
    if (!shape_.refit(points_, weight_.data(), &c->shape)) return false;
    shape_.distances(points_, c->shape, distance_.data());
    return true;
  }

  // The finalist that the most points are close to, by a scale common to all:
  // half of the points may agree on a wrong shape, but more agree on the right
  // one. With few points the smallest scale is too small.
  const candidate& choose() {
    double sigma = INFINITY;
    for (const candidate& c : found_) sigma = std::min(sigma, c.sigma);
    const double most = 1.8 * (1 + 10.0 / (points_.n - freedom_)) * sigma;
    double best = INFINITY;
    const candidate* chosen = &found_.front();
    for (const candidate& c : found_) {
      const double lost = cost(c, most);
      if (lost < best) {
        best = lost;
        chosen = &c;
      }
    }
    return *chosen;
  }

  // [P. Torr, A. Zisserman, MLESAC, 2000]: squares, but no more than a point
  // at the distance `most` has.
  double cost(const candidate& c, double most) {
    shape_.distances(points_, c.shape, distance_.data());
    double sum = 0;
    for (const double d : distance_) sum += d < most ? d * d : most * most;
    return sum;
  }

  const shape_fit& shape_;
  const point_set& points_;
  const int freedom_, order_;
  const std::vector<float> rough_x_, rough_y_;
  const rough_points rough_;
  std::vector<double> distance_, weight_;
  std::vector<candidate> found_;  // ascending
  random_numbers random_;
};

bool find_guess(const point_set& points, const shape_fit& shape,
                double smallest_sigma, guess* best, double* sigma) {
  if (points.n <= kMostPoints) {
    return search(shape, points).run(smallest_sigma, best, sigma);
  }
  const thinned_points few(points, kMostPoints);
  return search(shape, few.set()).run(smallest_sigma, best, sigma);
}

}  // namespace

bool robust_start(const point_set& points, const shape_fit& shape,
                  double smallest_sigma, double* distance, double* sigma) {
  guess best;
  if (!find_guess(points, shape, smallest_sigma, &best, sigma)) return false;
  shape.distances(points, best, distance);
  return true;
}

}  // namespace vexolab
