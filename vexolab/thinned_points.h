// SPDX-License-Identifier: MIT
//
// Some of very many points, for the parts of a fit that need not see them all.
#ifndef VEXOLAB_THINNED_POINTS_H_
#define VEXOLAB_THINNED_POINTS_H_

#include <algorithm>
#include <cstdint>
#include <vector>

#include "vexolab/shape_fit.h"

namespace vexolab {

// A fixed sequence, equal on every platform, unlike the distributions of
// <random> [splitmix64].
class random_numbers {
 public:
  // [0, 1)
  double next() {
    state_ += 0x9e3779b97f4a7c15u;
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53;
  }

 private:
  uint64_t state_ = 0;
};

// Every stretch of the list sends one point, at random: no pattern in the list
// can hide from it. The order stays. All points if they are no more than n.
class thinned_points {
 public:
  thinned_points(const point_set& p, int n) {
    if (n >= p.n) {
      x_.assign(p.x, p.x + p.n);
      y_.assign(p.y, p.y + p.n);
      return;
    }
    x_.reserve(n);
    y_.reserve(n);
    random_numbers random;
    for (int i = 0; i < n; ++i) {
      const double at = (i + random.next()) / n * p.n;
      const int index = std::min(static_cast<int>(at), p.n - 1);
      x_.push_back(p.x[index]);
      y_.push_back(p.y[index]);
    }
  }

  const std::vector<double>& x() const { return x_; }
  const std::vector<double>& y() const { return y_; }
  point_set set() const {
    return {x_.data(), y_.data(), static_cast<int>(x_.size())};
  }

 private:
  std::vector<double> x_, y_;
};

}  // namespace vexolab

#endif  // VEXOLAB_THINNED_POINTS_H_
