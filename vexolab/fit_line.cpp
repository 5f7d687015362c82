// SPDX-License-Identifier: MIT
//
// Total least squares: the line through the weighted centroid, along the
// larger axis of the scatter.
#include <cmath>

#include "vexolab/scatter.h"
#include "vexolab/shape_fit.h"

namespace vexolab {
namespace {

// All pairs of up to 12 points are 66.
constexpr int kSamples = 60;

class line_fit : public shape_fit {
 public:
  int freedom() const override { return 2; }
  int samples() const override { return kSamples; }

  // guess: unit normal, offset; distance = |n.x + offset|.
  bool through(const point_set& p, const int* index,
               guess* shape) const override {
    const int a = index[0], b = index[1];
    const double dx = p.x[b] - p.x[a], dy = p.y[b] - p.y[a];
    const double length = std::sqrt(dx * dx + dy * dy);
    if (!(length > 0)) return false;
    const double nx = -dy / length, ny = dx / length;
    *shape = {nx, ny, -(nx * p.x[a] + ny * p.y[a])};
    return true;
  }

  int count_within(const rough_points& p, const guess& line,
                   double tolerance) const override {
    const auto [nx, ny, offset] = single<3>(line);
    const float most = static_cast<float>(tolerance);
    int count = 0;
    for (int i = 0; i < p.n; ++i) {
      count += std::fabs(nx * p.x[i] + ny * p.y[i] + offset) < most;
    }
    return count;
  }

  void distances(const point_set& p, const guess& line,
                 double* distance) const override {
    const double nx = line[0], ny = line[1], offset = line[2];
    for (int i = 0; i < p.n; ++i) {
      distance[i] = std::fabs(nx * p.x[i] + ny * p.y[i] + offset);
    }
  }

  bool refit(const point_set& p, const double* weight,
             guess* line) const override {
    line_fit fitted;
    if (!fitted.fit(p, weight, false, {})) return false;
    *line = fitted.equation();
    return true;
  }

  bool fit(const point_set& p, const double* weight, bool,
           const effort&) override {
    const scatter s(p, weight);
    if (!(s.extent > 0)) return false;
    cx_ = s.x;
    cy_ = s.y;
    set_direction(s);
    // Covariance with the place in the list: the direction of travel.
    double along = 0;
    for (int i = 0; i < p.n; ++i) {
      along += weight[i] * i * (vx_ * (p.x[i] - cx_) + vy_ * (p.y[i] - cy_));
    }
    if (along < 0 || (along == 0 && (vx_ < 0 || (vx_ == 0 && vy_ < 0)))) {
      vx_ = -vx_;
      vy_ = -vy_;
    }
    return true;
  }

  void distances(const point_set& p, double* distance) const override {
    distances(p, equation(), distance);
  }

  void report(double origin_x, double origin_y, double unit,
              double* out) const override {
    out[0] = vx_;
    out[1] = vy_;
    out[2] = origin_x + unit * cx_;
    out[3] = origin_y + unit * cy_;
  }

 private:
  guess equation() const { return {-vy_, vx_, vy_ * cx_ - vx_ * cy_}; }

  // The eigenvector of the larger eigenvalue, from whichever row of the matrix
  // loses no digits. A scatter without direction gives (1, 0).
  void set_direction(const scatter& s) {
    const double half = (s.xx - s.yy) / 2;
    const double root = std::sqrt(half * half + s.xy * s.xy);
    const double x = half >= 0 ? half + root : s.xy;
    const double y = half >= 0 ? s.xy : root - half;
    const double length = std::sqrt(x * x + y * y);
    vx_ = length > 0 ? x / length : 1;
    vy_ = length > 0 ? y / length : 0;
  }

  double vx_ = 1, vy_ = 0, cx_ = 0, cy_ = 0;
};

}  // namespace

std::unique_ptr<shape_fit> make_line_fit() {
  return std::make_unique<line_fit>();
}

}  // namespace vexolab
