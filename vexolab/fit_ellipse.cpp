// SPDX-License-Identifier: MIT
//
// Orthogonal distances by Gauss-Newton with exact feet, from the direct
// algebraic fit.
#include <cmath>
#include <vector>

#include "vexolab/conic.h"
#include "vexolab/ellipse.h"
#include "vexolab/scatter.h"
#include "vexolab/shape_fit.h"

namespace vexolab {
namespace {

constexpr int kSamples = 500;
constexpr int kFinalists = 10;
constexpr double kLargestAxis = 100;     // in extents of the points used
constexpr double kSmallestRatio = 1e-4;  // of the axes
// Axes that differ by less have no direction.
constexpr double kRound = 1e-10;
constexpr double kDegrees = 57.29577951308232;

// The points with weight: the others would only cost time.
struct used_points {
  std::vector<double> x, y, weight;

  used_points(const point_set& p, const double* w) {
    x.reserve(p.n);
    y.reserve(p.n);
    weight.reserve(p.n);
    for (int i = 0; i < p.n; ++i) {
      if (w[i] == 0) continue;
      x.push_back(p.x[i]);
      y.push_back(p.y[i]);
      weight.push_back(w[i]);
    }
  }

  point_set set() const {
    return {x.data(), y.data(), static_cast<int>(x.size())};
  }
};

// Counter-clockwise on screen, where y grows down; in (-90, 90].
double screen_angle(double x, double y) {
  const double angle = std::atan2(-y, x) * kDegrees;
  if (angle > 90) return angle - 180;
  if (angle <= -90) return angle + 180;
  return angle;
}

class ellipse_fit : public shape_fit {
 public:
  int freedom() const override { return 5; }
  int samples() const override { return kSamples; }
  int finalists() const override { return kFinalists; }

  bool through(const point_set& p, const int* index,
               guess* shape) const override {
    return ellipse_through(p, index, shape);
  }

  // Distances to first order: |q| / |grad q| [Sampson].
  int count_within(const rough_points& p, const guess& shape,
                   double tolerance) const override {
    const auto [a, b, c, d, e, f] = single<6>(shape);
    const float square = static_cast<float>(tolerance * tolerance);
    int count = 0;
    for (int i = 0; i < p.n; ++i) {
      const float x = p.x[i], y = p.y[i];
      const float gx = 2 * a * x + b * y + d, gy = b * x + 2 * c * y + e;
      const float q = (x * (gx + d) + y * (gy + e)) / 2 + f;
      count += q * q < square * (gx * gx + gy * gy);
    }
    return count;
  }

  void distances(const point_set& p, const guess& shape,
                 double* distance) const override {
    const auto [a, b, c, d, e, f] = shape;
    for (int i = 0; i < p.n; ++i) {
      const double x = p.x[i], y = p.y[i];
      const double gx = 2 * a * x + b * y + d, gy = b * x + 2 * c * y + e;
      const double q = (x * (gx + d) + y * (gy + e)) / 2 + f;
      distance[i] = std::fabs(q) / std::sqrt(gx * gx + gy * gy + 1e-300);
    }
  }

  bool refit(const point_set& p, const double* weight,
             guess* shape) const override {
    return direct_fit(p, weight, scatter(p, weight), shape);
  }

  bool fit(const point_set& p, const double* weight, bool warm,
           const effort& most) override {
    const used_points used(p, weight);
    const scatter s(used.set(), used.weight.data());
    if (s.is_thin()) return false;
    if (!warm) {
      conic start;
      if (!direct_fit(used.set(), used.weight.data(), s, &start) ||
          !to_ellipse(start, &ellipse_)) {
        return false;
      }
    }
    minimise(used.set(), used.weight.data(), most, &ellipse_);
    return ellipse_.a <= kLargestAxis * s.extent &&
           ellipse_.b >= kSmallestRatio * ellipse_.a;
  }

  void distances(const point_set& p, double* distance) const override {
    ellipse_.distances(p, distance);
    for (int i = 0; i < p.n; ++i) distance[i] = std::fabs(distance[i]);
  }

  void report(double origin_x, double origin_y, double unit,
              double* out) const override {
    const bool round = ellipse_.a - ellipse_.b <= kRound * ellipse_.a;
    out[0] = origin_x + unit * ellipse_.cx;
    out[1] = origin_y + unit * ellipse_.cy;
    out[2] = round ? 0 : screen_angle(ellipse_.cs, ellipse_.sn);
    out[3] = unit * ellipse_.a;
    out[4] = unit * ellipse_.b;
  }

 private:
  ellipse ellipse_{};
};

}  // namespace

std::unique_ptr<shape_fit> make_ellipse_fit() {
  return std::make_unique<ellipse_fit>();
}

}  // namespace vexolab
