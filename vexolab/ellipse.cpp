// SPDX-License-Identifier: MIT
//
// The foot of the perpendicular from (x, y) on the ellipse is, along its axes,
//
//   (a^2 x / (t + a^2), b^2 y / (t + b^2)),
//
// with t the largest root of (a x / (t + a^2))^2 + (b y / (t + b^2))^2 = 1. In
// tau = t + b^2 > 0 the left side falls and is convex, so Newton's iteration
// settles from wherever it starts, once kept above the bounds at which one of
// the two terms alone makes 1 [D. Eberly, Distance from a point to an
// ellipse]. Near the contour, where t is about 0, three rounds reach rounding.
#include "vexolab/ellipse.h"

#include <algorithm>
#include <cmath>

namespace vexolab {
namespace {

// Roots tau of n points, whose a |x| and b |y| are given. gap = a^2 - b^2.
void solve_feet(const double* ax, const double* by, double gap, double start,
                int n, double* low, double* tau) {
  constexpr int kMostRounds = 100;
  constexpr double kSettled = 1e-8;  // the round after reaches 1e-16
  for (int i = 0; i < n; ++i) {
    low[i] = std::max(by[i], ax[i] - gap);
    tau[i] = std::max(low[i], start);
  }
  int moving = n;
  for (int round = 0; moving > 0 && round < kMostRounds; ++round) {
    moving = 0;
    for (int i = 0; i < n; ++i) {
      const double p = 1 / (tau[i] + gap), q = 1 / tau[i];
      const double u = ax[i] * p * (ax[i] * p), v = by[i] * q * (by[i] * q);
      const double next = tau[i] + (u + v - 1) / (2 * (u * p + v * q));
      const double kept = std::max(next, low[i]);
      moving += std::fabs(kept - tau[i]) > kSettled * kept;
      tau[i] = kept;
    }
  }
}

// The feet of some points, as arrays so that the compiler can take several
// points at once.
struct feet {
  static constexpr int kMost = residual_block<5>::kMost;
  double nx[kMost], ny[kMost];  // outward unit normals, along the axes
  double ux[kMost], uy[kMost];  // the feet, as points of the unit circle
  double distance[kMost];       // outside positive

  feet(const ellipse& shape, const double* x, const double* y, int n) {
    const double cs = shape.cs, sn = shape.sn, a = shape.a, b = shape.b;
    // On the long axis the foot may be on either side: take one.
    const double smallest = 1e-12 * b;
    double ax[kMost], by[kMost], low[kMost], tau[kMost];
    for (int i = 0; i < n; ++i) {
      const double dx = x[i] - shape.cx, dy = y[i] - shape.cy;
      const double v = cs * dy - sn * dx;
      nx[i] = cs * dx + sn * dy;
      ny[i] = std::fabs(v) > smallest ? v : smallest;
      ax[i] = a * std::fabs(nx[i]);
      by[i] = b * std::fabs(ny[i]);
    }
    const double gap = (a - b) * (a + b);
    solve_feet(ax, by, gap, b * b, n, low, tau);
    for (int i = 0; i < n; ++i) {
      const double gx = nx[i] / (tau[i] + gap), gy = ny[i] / tau[i];
      const double length = std::sqrt(gx * gx + gy * gy);
      nx[i] = gx / length;
      ny[i] = gy / length;
      ux[i] = a * gx;
      uy[i] = b * gy;
      distance[i] = (tau[i] - b * b) * length;
    }
  }
};

// Calls body(feet, first, n) for all points, some at a time.
template <typename Body>
void in_blocks(const ellipse& shape, const point_set& points, Body body) {
  for (int first = 0; first < points.n; first += feet::kMost) {
    const int n = std::min(feet::kMost, points.n - first);
    body(feet(shape, points.x + first, points.y + first, n), first, n);
  }
}

}  // namespace

void ellipse::distances(const point_set& points, double* distance) const {
  in_blocks(*this, points, [&](const feet& f, int first, int n) {
    std::copy(f.distance, f.distance + n, distance + first);
  });
}

normal_equations<5> ellipse::linearise(const point_set& points,
                                       const double* weight) const {
  normal_equations<5> sums;
  in_blocks(*this, points, [&](const feet& f, int first, int n) {
    residual_block<5> block;
    block.n = n;
    for (int i = 0; i < n; ++i) {
      const double nx = f.nx[i], ny = f.ny[i], ux = f.ux[i], uy = f.uy[i];
      block.weight[i] = weight[first + i];
      block.residual[i] = f.distance[i];
      block.row[0][i] = -nx;
      block.row[1][i] = -ny;
      block.row[2][i] = -nx * ux;
      block.row[3][i] = -(nx * uy + ny * ux);
      block.row[4][i] = -ny * uy;
    }
    sums.add(&block);
  });
  return sums;
}

bool ellipse::move(const Eigen::Matrix<double, 5, 1>& step) {
  cx += cs * step[0] - sn * step[1];
  cy += sn * step[0] + cs * step[1];
  const axes turned(a + step[2], step[3], b + step[4]);
  const double x = cs * turned.cs - sn * turned.sn;
  const double y = sn * turned.cs + cs * turned.sn;
  const double length = std::sqrt(x * x + y * y);
  cs = x / length;
  sn = y / length;
  a = turned.large;
  b = turned.small;
  return b > 0;
}

axes::axes(double xx, double xy, double yy) {
  const double half = (xx - yy) / 2, mean = (xx + yy) / 2;
  const double root = std::sqrt(half * half + xy * xy);
  large = mean + root;
  small = mean - root;
  // From whichever row of the matrix loses no digits.
  const double x = half >= 0 ? half + root : xy;
  const double y = half >= 0 ? xy : root - half;
  const double length = std::sqrt(x * x + y * y);
  cs = length > 0 ? x / length : 1;
  sn = length > 0 ? y / length : 0;
}

}  // namespace vexolab
