// SPDX-License-Identifier: MIT
#include "vexolab/arc_length.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vexolab {
namespace {

constexpr double kQuarter = std::numbers::pi / 2;

}  // namespace

ellipse_arc::ellipse_arc(double a, double b) : a_(a), b_(b) {
  constexpr double step = kQuarter / kSteps;
  length_[0] = 0;
  double before = speed(0);
  for (int i = 0; i < kSteps; ++i) {
    const double middle = speed((i + 0.5) * step);
    const double after = speed((i + 1) * step);
    length_[i + 1] = length_[i] + (before + 4 * middle + after) * (step / 6);
    before = after;
  }
}

double ellipse_arc::speed(double t) const {
  return std::hypot(a_ * std::sin(t), b_ * std::cos(t));
}

double ellipse_arc::parameter_at(double fraction) const {
  const double quarters = 4 * fraction;
  const int quadrant = std::clamp(static_cast<int>(quarters), 0, 3);
  const double rest = quarters - quadrant;
  // Odd quadrants run backwards through the table: the ellipse is symmetric.
  const double t =
      quadrant % 2 == 0
          ? parameter_in_quadrant(rest * length_.back())
          : kQuarter - parameter_in_quadrant((1 - rest) * length_.back());
  return quadrant * kQuarter + t;
}

double ellipse_arc::parameter_in_quadrant(double length) const {
  constexpr double step = kQuarter / kSteps;
  const auto above = std::upper_bound(length_.begin(), length_.end(), length);
  const int i =
      std::clamp(static_cast<int>(above - length_.begin()) - 1, 0, kSteps - 1);
  // Within a step the speed is taken as linear: length = v0 t + k t^2 / 2,
  // scaled so that the whole step has the tabulated length.
  const double v0 = speed(i * step);
  const double v1 = speed((i + 1) * step);
  const double scale = (length_[i + 1] - length_[i]) / (step * (v0 + v1) / 2);
  const double rest = (length - length_[i]) / scale;
  const double slope = (v1 - v0) / step;
  const double root = std::sqrt(std::max(v0 * v0 + 2 * slope * rest, 0.0));
  return i * step + std::clamp(2 * rest / (v0 + root), 0.0, step);
}

}  // namespace vexolab
