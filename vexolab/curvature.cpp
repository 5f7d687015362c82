// SPDX-License-Identifier: MIT
#include "vexolab/curvature.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>

namespace vexolab {
namespace {

constexpr double kRadian = 180 / std::numbers::pi;

// Two rectangles belong to one curve when their angles differ as the circle
// through their centres says: within 3 degrees or 35 %.
constexpr double kTurnTolerance = 3 / kRadian;
constexpr double kTurnToleranceRatio = 0.35;

// Curvature of the circle through the origin of `f`, tangent to its cross
// direction, that passes through the other centre; exact at any distance.
std::optional<double> curvature_towards(const frame& f, const frame& other) {
  const double du = f.u_of(other.x, other.y);
  const double dv = f.v_of(other.x, other.y);
  const double distance2 = du * du + dv * dv;
  if (!(distance2 > 1e-6)) return std::nullopt;
  const double expected = 2 * std::atan2(std::fabs(du), std::fabs(dv));
  // Of the directions (cos, -sin): how far the scan has turned, unsigned.
  const double turn =
      std::fabs(std::atan2(f.cos * other.sin - f.sin * other.cos,
                           f.cos * other.cos + f.sin * other.sin));
  const double tolerance =
      std::max(kTurnTolerance, kTurnToleranceRatio * expected);
  if (std::fabs(turn - expected) > tolerance) return std::nullopt;
  return 2 * du / distance2;
}

size_t neighbour(size_t i, int offset, size_t n) {
  const auto m = static_cast<long>(n);
  return static_cast<size_t>(((static_cast<long>(i) + offset) % m + m) % m);
}

// Mean curvature toward the neighbours at +/- offset, and their mean squared
// distance.
struct two_sided {
  double curvature;
  double distance2;
};

std::optional<two_sided> curvature_at(const std::vector<frame>& frames,
                                      size_t i, int offset) {
  const size_t n = frames.size();
  double sum = 0;
  double distance2 = 0;
  int count = 0;
  for (const int side : {-offset, offset}) {
    const frame& other = frames[neighbour(i, side, n)];
    const auto k = curvature_towards(frames[i], other);
    if (!k) continue;
    sum += *k;
    const double dx = other.x - frames[i].x;
    const double dy = other.y - frames[i].y;
    distance2 += dx * dx + dy * dy;
    ++count;
  }
  if (count == 0) return std::nullopt;
  return two_sided{sum / count, distance2 / count};
}

// Signed curvature of the circle through three points, positive when it bends
// toward the scan direction of `f`.
double curvature_through(const frame& f, double ax, double ay, double bx,
                         double by, double cx, double cy) {
  const double abx = bx - ax;
  const double aby = by - ay;
  const double bcx = cx - bx;
  const double bcy = cy - by;
  const double acx = cx - ax;
  const double acy = cy - ay;
  const double product =
      std::hypot(abx, aby) * std::hypot(bcx, bcy) * std::hypot(acx, acy);
  if (!(product > 1e-9)) return 0;
  const double k = 2 * std::fabs(abx * bcy - aby * bcx) / product;
  // The middle of the chord lies on the side toward which the curve bends.
  const double mx = (ax + cx) / 2 - bx;
  const double my = (ay + cy) / 2 - by;
  return mx * f.cos - my * f.sin > 0 ? k : -k;
}

}  // namespace

std::vector<double> curvature_of_rectangles(const std::vector<frame>& frames) {
  const size_t n = frames.size();
  std::vector<double> result(n, 0.0);
  if (n < 2) return result;
  for (size_t i = 0; i < n; ++i) {
    const auto near = curvature_at(frames, i, 1);
    if (!near) continue;
    result[i] = near->curvature;
    if (n < 5) continue;
    const auto far = curvature_at(frames, i, 2);
    if (!far || far->distance2 < 1.5 * near->distance2) continue;
    // To zero distance: the error of either grows with its square.
    result[i] += (near->curvature - far->curvature) * near->distance2 /
                 (far->distance2 - near->distance2);
  }
  return result;
}

std::vector<double> curvature_of_points(
    const std::vector<frame>& frames, const std::vector<double>& drawn,
    const std::vector<double>& assumed,
    const std::vector<measured_point>& points) {
  constexpr int kNeighbours = 3;
  constexpr double kAgreement = 0.3;
  constexpr int kLeastAgreeing = 4;
  const size_t n = frames.size();
  std::vector<double> result = assumed;
  if (n < 3) return result;
  std::vector<double> ratios;
  for (size_t i = 0; i < n; ++i) {
    if (!points[i].found || drawn[i] == 0) continue;
    ratios.clear();
    // Neighbours as far apart as the rectangles are wide carry the curvature;
    // nearer ones only noise.
    const frame& next = frames[neighbour(i, 1, n)];
    const double spacing =
        std::hypot(next.x - frames[i].x, next.y - frames[i].y);
    const double turn = std::fabs(drawn[i]) * spacing;
    int stride = 1;
    if (spacing > 0 && spacing < 2 * frames[i].half_width) {
      stride =
          static_cast<int>(std::lround(2 * frames[i].half_width / spacing));
    }
    if (turn > 0) {
      stride = std::clamp(stride, 1, std::max(1, static_cast<int>(0.5 / turn)));
    }
    for (int before = 1; before <= kNeighbours; ++before) {
      for (int after = 1; after <= kNeighbours; ++after) {
        const size_t a = neighbour(i, -before * stride, n);
        const size_t c = neighbour(i, after * stride, n);
        if (a == i || c == i || a == c) continue;
        if (!points[a].found || !points[c].found) continue;
        if (before + after > 2 && (before + after) * stride * turn > 3.2) {
          continue;
        }
        const double by_rectangles =
            curvature_through(frames[i], frames[a].x, frames[a].y, frames[i].x,
                              frames[i].y, frames[c].x, frames[c].y);
        if (by_rectangles == 0) continue;
        const double by_points =
            curvature_through(frames[i], points[a].x, points[a].y, points[i].x,
                              points[i].y, points[c].x, points[c].y);
        ratios.push_back(by_points / by_rectangles);
      }
    }
    if (ratios.empty()) continue;
    std::sort(ratios.begin(), ratios.end());
    const double median =
        (ratios[(ratios.size() - 1) / 2] + ratios[ratios.size() / 2]) / 2;
    int agreeing = 0;
    for (const double ratio : ratios) {
      if (std::fabs(ratio - median) < kAgreement) ++agreeing;
    }
    const bool usual = median > 0.5 && median < 2;
    if (usual || agreeing >= kLeastAgreeing) result[i] = median * drawn[i];
  }
  return result;
}

}  // namespace vexolab
