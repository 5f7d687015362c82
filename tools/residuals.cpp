// SPDX-License-Identifier: MIT
#include "tools/residuals.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "vexolab/vexolab.h"

namespace rendal {
namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kDeviationPerMedian = 1.4826;
// Distances below this are rounding [px].
constexpr double kRounding = 1e-6;

double DistanceFrom(int shape, const double* v, double x, double y) {
  if (shape == VEXOLAB_LINE) {
    return std::fabs((x - v[2]) * v[1] - (y - v[3]) * v[0]);
  }
  const double dx = x - v[0];
  const double dy = y - v[1];
  if (shape == VEXOLAB_CIRCLE) return std::fabs(std::hypot(dx, dy) - v[2]);
  // Counter-clockwise on screen, where y points down.
  const double c = std::cos(v[2] * kRadiansPerDegree);
  const double s = std::sin(v[2] * kRadiansPerDegree);
  return DistanceFromEllipse(dx * c - dy * s, dx * s + dy * c, v[3], v[4]);
}

double Median(const std::vector<EdgePoint>& points) {
  std::vector<double> distances;
  for (const EdgePoint& p : points) distances.push_back(p.distance);
  const auto middle = distances.begin() + distances.size() / 2;
  std::nth_element(distances.begin(), middle, distances.end());
  return *middle;
}

}  // namespace

// The nearest point of the ellipse is (a^2 x / (u + a^2 - b^2), b^2 y / u) for
// the largest root u of (a x / (u + a^2 - b^2))^2 + (b y / u)^2 = 1, which
// decreases there: halving the interval cannot fail [D. Eberly, Distance from a
// point to an ellipse].
double DistanceFromEllipse(double x, double y, double a, double b) {
  x = std::fabs(x);
  y = std::fabs(y);
  if (a < b) {
    std::swap(a, b);
    std::swap(x, y);
  }
  if (y == 0) {
    // Inside the evolute the nearest point lies off the axis.
    const double along = a * x / (a * a - b * b);
    if (a > b && along < 1) {
      return std::hypot(a * along - x, b * std::sqrt(1 - along * along));
    }
    return std::fabs(x - a);
  }
  const double flattening = a * a - b * b;
  double low = b * y;
  double high = std::hypot(a * x, b * y);
  double u = low;
  while (low < high) {
    u = low + (high - low) / 2;
    if (u == low || u == high) break;
    const double sum =
        std::pow(a * x / (u + flattening), 2) + std::pow(b * y / u, 2);
    (sum > 1 ? low : high) = u;
  }
  return std::hypot(a * a * x / (u + flattening) - x, b * b * y / u - y);
}

Residuals MeasureResiduals(int shape, const double* values, double factor,
                           std::vector<EdgePoint>* points) {
  Residuals residuals;
  if (points->empty()) return residuals;
  for (EdgePoint& p : *points) {
    p.distance = DistanceFrom(shape, values, p.x, p.y);
  }
  const double limit =
      std::max(factor * kDeviationPerMedian * Median(*points), kRounding);
  double sum = 0;
  for (EdgePoint& p : *points) {
    p.used = factor == 0 || p.distance <= limit;
    if (!p.used) continue;
    ++residuals.used;
    sum += p.distance * p.distance;
    residuals.max = std::max(residuals.max, p.distance);
  }
  residuals.rms = std::sqrt(sum / std::max(residuals.used, 1));
  return residuals;
}

}  // namespace rendal
