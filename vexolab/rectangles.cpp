// SPDX-License-Identifier: MIT
#include "vexolab/rectangles.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "vexolab/arc_length.h"
#include "vexolab/vexolab.h"

namespace vexolab {
namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr int kMaxAutomaticCount = 1000;
constexpr double kSmallestRadius = 1e-6;

// In (-180, 180] also after rounding to single precision.
float normalised(double degrees) {
  const auto angle = static_cast<float>(std::remainder(degrees, 360.0));
  return angle <= -180.0f ? angle + 360.0f : angle;
}

int check(const caliper& c) {
  if ((c.direction != 1 && c.direction != -1) || !(c.length > 0) ||
      !(c.width >= 0) || c.count < 0) {
    return VEXOLAB_E_ARGUMENT;
  }
  return c.count > VEXOLAB_MAX_RECTANGLES ? VEXOLAB_E_LIMIT : 0;
}

// The number of rectangles on a path of the given length.
int count_on(double path, const caliper& c, int least) {
  if (c.count > 0) return std::max(c.count, least);
  // The small addition: 100 px in steps of 0.1 px are 1000, whatever rounding
  // says.
  const double fitting = std::floor(path / std::max(c.width, 1.0) + 1e-9);
  return static_cast<int>(
      std::clamp<double>(fitting, least, kMaxAutomaticCount));
}

void append(double x, double y, double phi, const caliper& c,
            std::vector<float>* out) {
  const double turned = c.direction > 0 ? phi : phi + 180;
  out->insert(out->end(), {static_cast<float>(x), static_cast<float>(y),
                           normalised(turned), static_cast<float>(c.length / 2),
                           static_cast<float>(c.width / 2)});
}

}  // namespace

int rectangles_on_line(double x1, double y1, double x2, double y2,
                       const caliper& c, std::vector<float>* out) {
  if (const int code = check(c)) return code;
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  const double path = std::hypot(dx, dy);
  if (path == 0) return VEXOLAB_E_DEGENERATE;
  const int n = count_on(path, c, 2);
  // The scan direction (-dy, dx) / path is (cos phi, -sin phi).
  const double phi = std::atan2(-dx, -dy) / kDegree;
  out->reserve(5 * static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double t = (i + 0.5) / n;
    append(x1 + t * dx, y1 + t * dy, phi, c, out);
  }
  return 0;
}

int rectangles_on_circle(double cx, double cy, double radius, const caliper& c,
                         std::vector<float>* out) {
  if (const int code = check(c)) return code;
  if (!(radius > kSmallestRadius)) return VEXOLAB_E_DEGENERATE;
  const int n = count_on(2 * std::numbers::pi * radius, c, 3);
  out->reserve(5 * static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double phi = 360.0 * i / n;
    append(cx + radius * std::cos(phi * kDegree),
           cy - radius * std::sin(phi * kDegree), phi, c, out);
  }
  return 0;
}

int rectangles_on_ellipse(double cx, double cy, double angle, double a,
                          double b, const caliper& c, std::vector<float>* out) {
  if (const int code = check(c)) return code;
  if (!(a > kSmallestRadius) || !(b > kSmallestRadius)) {
    return VEXOLAB_E_DEGENERATE;
  }
  const ellipse_arc arc(a, b);
  const int n = count_on(arc.perimeter(), c, 6);
  const double cos_angle = std::cos(angle * kDegree);
  const double sin_angle = std::sin(angle * kDegree);
  out->reserve(5 * static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double t = arc.parameter_at(static_cast<double>(i) / n);
    const double u = a * std::cos(t);
    const double v = b * std::sin(t);
    const double normal = std::atan2(a * std::sin(t), b * std::cos(t));
    append(cx + u * cos_angle - v * sin_angle,
           cy - u * sin_angle - v * cos_angle, angle + normal / kDegree, c,
           out);
  }
  return 0;
}

void rectangle_between(double x1, double y1, double x2, double y2, double width,
                       float* rectangle) {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  const double phi = dx == 0 && dy == 0 ? 0.0 : std::atan2(-dy, dx) / kDegree;
  rectangle[0] = static_cast<float>(x1 + dx / 2);
  rectangle[1] = static_cast<float>(y1 + dy / 2);
  rectangle[2] = normalised(phi);
  rectangle[3] = static_cast<float>(std::hypot(dx, dy) / 2);
  rectangle[4] = static_cast<float>(width / 2);
}

}  // namespace vexolab
