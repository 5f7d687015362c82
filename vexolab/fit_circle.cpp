// SPDX-License-Identifier: MIT
//
// Orthogonal distances by Gauss-Newton, from the hyper-accurate algebraic fit
// [A. Al-Sharadqah, N. Chernov, Error analysis for circle fitting algorithms,
// Electronic Journal of Statistics 3, 2009].
#include <algorithm>
#include <cmath>

#include "vexolab/least_squares.h"
#include "vexolab/scatter.h"
#include "vexolab/shape_fit.h"

namespace vexolab {
namespace {

constexpr int kSamples = 120;
constexpr double kLargestRadius = 100;  // in extents of the points used

struct circle {
  static constexpr int kFreedom = 3;
  double cx, cy, r;

  normal_equations<3> linearise(const point_set& p,
                                const double* weight) const {
    normal_equations<3> sums;
    residual_block<3> block;
    for (int first = 0; first < p.n; first += block.kMost) {
      block.n = std::min(block.kMost, p.n - first);
      for (int k = 0; k < block.n; ++k) {
        const double dx = p.x[first + k] - cx, dy = p.y[first + k] - cy;
        const double distance = std::sqrt(dx * dx + dy * dy);
        const double inverse = distance > 0 ? 1 / distance : 0;
        block.weight[k] = weight[first + k];
        block.residual[k] = distance - r;
        block.row[0][k] = -dx * inverse;
        block.row[1][k] = -dy * inverse;
        block.row[2][k] = -1;
      }
      sums.add(&block);
    }
    return sums;
  }

  bool move(const Eigen::Vector3d& step) {
    cx += step[0];
    cy += step[1];
    r += step[2];
    return r > 0;
  }
};

// Third and fourth moments about the centre, with z = x^2 + y^2.
struct circle_moments {
  double xx, xy, yy, xz = 0, yz = 0, zz = 0;

  circle_moments(const point_set& p, const double* weight, const scatter& s)
      : xx(s.xx / s.weight), xy(s.xy / s.weight), yy(s.yy / s.weight) {
    for (int i = 0; i < p.n; ++i) {
      const double dx = p.x[i] - s.x, dy = p.y[i] - s.y;
      const double z = dx * dx + dy * dy, w = weight[i] * z;
      xz += w * dx;
      yz += w * dy;
      zz += w * z;
    }
    xz /= s.weight;
    yz /= s.weight;
    zz /= s.weight;
  }
};

// Smallest root of the characteristic polynomial of the hyper fit. From 0,
// where the polynomial is positive and convex, Newton climbs to it; it stops
// when rounding turns it back.
double hyper_root(const circle_moments& m) {
  const double z = m.xx + m.yy;
  const double det = m.xx * m.yy - m.xy * m.xy;
  const double variance = m.zz - z * z;
  const double a2 = 4 * det - 3 * z * z - m.zz;
  const double a1 = variance * z + 4 * det * z - m.xz * m.xz - m.yz * m.yz;
  const double a0 = m.xz * (m.xz * m.yy - m.yz * m.xy) +
                    m.yz * (m.yz * m.xx - m.xz * m.xy) - variance * det;
  double x = 0, y = a0;
  for (int i = 0; i < 20; ++i) {
    const double slope = a1 + x * (2 * a2 + 16 * x * x);
    const double next = x - y / slope;
    if (next == x || !std::isfinite(next)) break;
    const double value = a0 + next * (a1 + next * (a2 + 4 * next * next));
    if (std::fabs(value) >= std::fabs(y)) break;
    x = next;
    y = value;
  }
  return x;
}

bool hyper_fit(const point_set& p, const double* weight, const scatter& s,
               circle* result) {
  const circle_moments m(p, weight, s);
  const double root = hyper_root(m);
  const double z = m.xx + m.yy;
  const double det = root * root - root * z + m.xx * m.yy - m.xy * m.xy;
  const double cx = (m.xz * (m.yy - root) - m.yz * m.xy) / (2 * det);
  const double cy = (m.yz * (m.xx - root) - m.xz * m.xy) / (2 * det);
  const double square = cx * cx + cy * cy + z - 2 * root;
  *result = {s.x + cx, s.y + cy, std::sqrt(square)};
  return square > 0 && std::isfinite(square);
}

class circle_fit : public shape_fit {
 public:
  int freedom() const override { return 3; }
  int samples() const override { return kSamples; }

  // guess: a (x^2 + y^2) + b x + c y + d with b^2 + c^2 - 4 a d = 1 [Pratt],
  // so that a line (a = 0) is a circle like any other.
  bool through(const point_set& p, const int* index,
               guess* shape) const override {
    const double x0 = p.x[index[0]], y0 = p.y[index[0]];
    const double ux = p.x[index[1]] - x0, uy = p.y[index[1]] - y0;
    const double vx = p.x[index[2]] - x0, vy = p.y[index[2]] - y0;
    const double uu = ux * ux + uy * uy, vv = vx * vx + vy * vy;
    double a = ux * vy - uy * vx;
    double b = vv * uy - uu * vy;
    double c = uu * vx - vv * ux;
    const double norm = std::sqrt(b * b + c * c);
    if (!(norm > 0)) return false;
    const double scale = (a < 0 ? -1 : 1) / norm;
    a *= scale;
    b *= scale;
    c *= scale;
    *shape = {a, b - 2 * a * x0, c - 2 * a * y0,
              a * (x0 * x0 + y0 * y0) - b * x0 - c * y0};
    return true;
  }

  // |distance| < t is |f - a t^2| < t, exactly, for t below the radius.
  int count_within(const rough_points& p, const guess& g,
                   double tolerance) const override {
    const auto [a, b, c, d0] = single<4>(g);
    const float most = static_cast<float>(tolerance);
    const float d = d0 - a * most * most;
    int count = 0;
    for (int i = 0; i < p.n; ++i) {
      const float x = p.x[i], y = p.y[i];
      count += std::fabs(a * (x * x + y * y) + b * x + c * y + d) < most;
    }
    return count;
  }

  void distances(const point_set& p, const guess& g,
                 double* distance) const override {
    const double a = g[0], b = g[1], c = g[2], d = g[3];
    for (int i = 0; i < p.n; ++i) {
      const double x = p.x[i], y = p.y[i];
      const double f = a * (x * x + y * y) + b * x + c * y + d;
      const double square = 1 + 4 * a * f;
      distance[i] = std::fabs(2 * f) / (1 + std::sqrt(square > 0 ? square : 0));
    }
  }

  bool refit(const point_set& p, const double* weight,
             guess* shape) const override {
    const scatter s(p, weight);
    circle c;
    if (s.is_thin() || !hyper_fit(p, weight, s, &c)) return false;
    const double a = 0.5 / c.r;
    *shape = {a, -2 * a * c.cx, -2 * a * c.cy,
              a * (c.cx * c.cx + c.cy * c.cy - c.r * c.r)};
    return true;
  }

  bool fit(const point_set& p, const double* weight, bool warm,
           const effort& most) override {
    const scatter s(p, weight);
    if (s.is_thin()) return false;
    if (!warm && !hyper_fit(p, weight, s, &circle_)) return false;
    minimise(p, weight, most, &circle_);
    return circle_.r <= kLargestRadius * s.extent;
  }

  void distances(const point_set& p, double* distance) const override {
    for (int i = 0; i < p.n; ++i) {
      const double dx = p.x[i] - circle_.cx, dy = p.y[i] - circle_.cy;
      distance[i] = std::fabs(std::sqrt(dx * dx + dy * dy) - circle_.r);
    }
  }

  void report(double origin_x, double origin_y, double unit,
              double* out) const override {
    out[0] = origin_x + unit * circle_.cx;
    out[1] = origin_y + unit * circle_.cy;
    out[2] = unit * circle_.r;
  }

 private:
  circle circle_{0, 0, 0};
};

}  // namespace

std::unique_ptr<shape_fit> make_circle_fit() {
  return std::make_unique<circle_fit>();
}

}  // namespace vexolab
