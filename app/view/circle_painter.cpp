// SPDX-License-Identifier: MIT
#include "app/view/circle_painter.h"

#include <cmath>
#include <numbers>

namespace rendal {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kFirstArcs = 8;
constexpr double kTolerancePx = 0.02;
// Halves of an eighth: far below what a double tells apart.
constexpr int kMostHalvings = 48;

class CirclePainter {
 public:
  CirclePainter(cv::Point2d center, double radius, const Pen& pen,
                cv::Mat& picture)
      : m_center(center),
        m_radius(std::abs(radius)),
        m_pen(pen),
        m_picture(picture) {}

  // The arc between two angles, in halves until a line is as good.
  void DrawArc(double from, double to, int halvings = 0) {
    const double half = (to - from) / 2;
    const double middle = from + half;
    if (IsOutside(At(middle), m_radius * half)) return;
    const double height = m_radius * (1 - std::cos(half));
    if (height <= kTolerancePx || halvings == kMostHalvings) {
      DrawLine(At(from), At(to), m_pen, m_picture);
      return;
    }
    DrawArc(from, middle, halvings + 1);
    DrawArc(middle, to, halvings + 1);
  }

 private:
  cv::Point2d At(double angle) const {
    return {m_center.x + m_radius * std::cos(angle),
            m_center.y + m_radius * std::sin(angle)};
  }

  // Whether nothing that is at most `reach` away from a point is visible.
  bool IsOutside(cv::Point2d at, double reach) const {
    const double margin = reach + m_pen.thickness + 1;
    return at.x < -margin || at.y < -margin || at.x > m_picture.cols + margin ||
           at.y > m_picture.rows + margin;
  }

  const cv::Point2d m_center;
  const double m_radius;
  const Pen m_pen;
  cv::Mat& m_picture;
};

}  // namespace

void DrawCircle(cv::Point2d center, double radius, const Pen& pen,
                cv::Mat& picture) {
  if (!std::isfinite(center.x + center.y + radius)) return;
  CirclePainter painter(center, radius, pen, picture);
  constexpr double kArc = 2 * kPi / kFirstArcs;
  for (int i = 0; i < kFirstArcs; ++i) {
    painter.DrawArc(i * kArc, (i + 1) * kArc);
  }
}

}  // namespace rendal
