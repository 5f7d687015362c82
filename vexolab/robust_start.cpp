// SPDX-License-Identifier: MIT
//
// Least median of squares over random samples [P. Rousseeuw, Least median of
// squares regression, 1984]. A sample's median is only computed if enough
// points are near enough for it to be among the best, which few samples pass.
#include "vexolab/robust_start.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "vexolab/scale.h"

namespace vexolab {
namespace {

// The search looks at no more points than this.
constexpr int kMostPoints = 1000;
// Up to this many, all pairs of points are tried.
constexpr int kAllPairs = 12;

// Equal on every platform, unlike the distributions of <random>.
class random_numbers {
 public:
  // [0, 1)
  double next() {
    state_ += 0x9e3779b97f4a7c15u;  // splitmix64
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53;
  }

 private:
  uint64_t state_ = 0;
};

struct candidate {
  guess shape;
  double half_distance;  // within which half of the points lie
};

class search {
 public:
  search(const shape_fit& shape, const point_set& points)
      : shape_(shape),
        points_(points),
        freedom_(shape.freedom()),
        order_(points.n / 2 + (freedom_ + 1) / 2),
        distance_(points.n),
        weight_(points.n) {}

  bool run(double smallest_sigma, guess* best) {
    if (freedom_ == 2 && points_.n <= kAllPairs) {
      try_all_pairs();
    } else {
      try_samples();
    }
    if (found_.empty()) return false;
    *best = found_.front().shape;
    if (found_.size() > 1) *best = choose(smallest_sigma);
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

  void try_samples() {
    for (int i = 0; i < shape_.samples(); ++i) {
      int index[5];
      const double length =
          freedom_ < 5 || i % 4 == 0 ? 1.0 : random_.next() * 0.7 + 0.3;
      const double start = random_.next();
      if (i % 2 == 0 ? scattered(index) : spread(start, length, index)) {
        consider(index);
      }
    }
  }

  bool scattered(int* index) {
    for (int k = 0; k < freedom_; ++k) index[k] = place(random_.next());
    return different(index);
  }

  // One point from each of equal parts of a stretch of the closed list: good
  // samples of contours of which a stretch is covered.
  bool spread(double start, double length, int* index) {
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
    if (full && shape_.count_within(points_, c.shape,
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

  // Of the finalists, each fitted to the points near it, the one that the most
  // points are close to, by a scale common to all.
  guess choose(double smallest_sigma) {
    double sigma = INFINITY;
    for (candidate& c : found_) {
      sigma = std::min(sigma, improve(smallest_sigma, &c));
    }
    double best = INFINITY;
    const guess* chosen = nullptr;
    for (const candidate& c : found_) {
      const double lost = cost(c, sigma);
      if (lost < best) {
        best = lost;
        chosen = &c.shape;
      }
    }
    return *chosen;
  }

  double improve(double smallest_sigma, candidate* c) {
    double sigma = first_sigma(c->half_distance, points_.n, freedom_);
    shape_.distances(points_, c->shape, distance_.data());
    for (int round = 0; round < 3; ++round) {
      sigma = std::max(sigma, smallest_sigma);
      for (int i = 0; i < points_.n; ++i) {
        weight_[i] = distance_[i] <= 2.5 * sigma ? 1 : 0;
      }
      if (!shape_.refit(points_, weight_.data(), &c->shape)) break;
      shape_.distances(points_, c->shape, distance_.data());
      sigma = next_sigma(distance_.data(), points_.n, freedom_, sigma, false);
    }
    return std::max(sigma, smallest_sigma);
  }

  double cost(const candidate& c, double sigma) {
    shape_.distances(points_, c.shape, distance_.data());
    const double most = 3 * sigma;
    double sum = 0;
    for (const double d : distance_) sum += d < most ? d * d : most * most;
    return sum;
  }

  const shape_fit& shape_;
  const point_set& points_;
  const int freedom_, order_;
  std::vector<double> distance_, weight_;
  std::vector<candidate> found_;  // ascending
  random_numbers random_;
};

// Every stretch of the list sends one point, at random: no pattern in the
// list can hide from it.
struct thinned_points {
  std::vector<double> x, y;

  explicit thinned_points(const point_set& p) {
    random_numbers random;
    for (int i = 0; i < kMostPoints; ++i) {
      const double at = (i + random.next()) / kMostPoints * p.n;
      const int index = std::min(static_cast<int>(at), p.n - 1);
      x.push_back(p.x[index]);
      y.push_back(p.y[index]);
    }
  }
};

bool find_guess(const point_set& points, const shape_fit& shape,
                double smallest_sigma, guess* best) {
  if (points.n <= kMostPoints) {
    return search(shape, points).run(smallest_sigma, best);
  }
  const thinned_points few(points);
  const point_set set{few.x.data(), few.y.data(), kMostPoints};
  return search(shape, set).run(smallest_sigma, best);
}

}  // namespace

bool robust_start(const point_set& points, const shape_fit& shape,
                  double smallest_sigma, double* distance, double* sigma) {
  guess best;
  if (!find_guess(points, shape, smallest_sigma, &best)) return false;
  shape.distances(points, best, distance);
  std::vector<double> scratch(distance, distance + points.n);
  const int order = points.n / 2 + (shape.freedom() + 1) / 2;
  const double half = order_statistic(scratch.data(), points.n, order);
  *sigma =
      std::max(first_sigma(half, points.n, shape.freedom()), smallest_sigma);
  return true;
}

}  // namespace vexolab
