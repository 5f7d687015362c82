// SPDX-License-Identifier: MIT
#include "app/view/line_painter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace rendal {
namespace {

// Beyond what any view shows, and what doubles still count to a millionth in.
constexpr double kEndlessPx = 1 << 26;

// A line along the columns or, of a steep one, along the rows.
class LinePainter {
 public:
  LinePainter(cv::Point2d from, cv::Point2d to, const Pen& pen,
              cv::Mat& picture)
      : m_picture(picture),
        m_pixel(cv::saturate_cast<uchar>(pen.color[0]),
                cv::saturate_cast<uchar>(pen.color[1]),
                cv::saturate_cast<uchar>(pen.color[2])),
        m_thickness(pen.thickness),
        m_steep(std::abs(to.y - from.y) > std::abs(to.x - from.x)) {
    // From the left, since halves are rounded towards the first end.
    if (from.x > to.x) std::swap(from, to);
    m_start = Turned(from);
    m_end = Turned(to);
  }

  void Draw() const {
    DrawShaft();
    DrawEnd(m_start);
    DrawEnd(m_end);
  }

 private:
  cv::Point2d Turned(cv::Point2d at) const {
    return m_steep ? cv::Point2d(at.y, at.x) : at;
  }
  int Length() const { return m_steep ? m_picture.rows : m_picture.cols; }
  int Breadth() const { return m_steep ? m_picture.cols : m_picture.rows; }

  // The whole numbers nearest to low..high, as far as they index `count`
  // pixels.
  cv::Range Pixels(double low, double high, int count) const {
    return {static_cast<int>(std::clamp(Nearest(low), 0.0, 1.0 * count)),
            static_cast<int>(std::clamp(Nearest(high) + 1, 0.0, 1.0 * count))};
  }

  double Nearest(double value) const {
    return m_start.y < m_end.y ? std::ceil(value - 0.5)
                               : std::floor(value + 0.5);
  }

  void DrawShaft() const {
    const cv::Point2d step = m_end - m_start;
    if (step.x == 0) return;  // its ends are all of it
    // Measured across the columns, not across the line.
    const double half =
        m_thickness == 1
            ? 0
            : 0.5 * m_thickness * std::hypot(step.x, step.y) / std::abs(step.x);
    const auto [low, high] = std::minmax({m_start.x, m_end.x});
    const cv::Range inside = Pixels(low, high, Length());
    for (int i = inside.start; i < inside.end; ++i) {
      // In this order a half comes out as one.
      const double walked = std::clamp<double>(i, low, high) - m_start.x;
      const double across = m_start.y + walked * step.y / step.x;
      const cv::Range span = Pixels(across - half, across + half, Breadth());
      for (int k = span.start; k < span.end; ++k) Set(i, k);
    }
  }

  void DrawEnd(cv::Point2d at) const {
    const int reach = m_thickness / 2;
    for (int i = -reach; i <= reach; ++i) {
      const int rest = reach - std::abs(i);
      const cv::Range along = Pixels(at.x + i, at.x + i, Length());
      const cv::Range span = Pixels(at.y - rest, at.y + rest, Breadth());
      for (int k = span.start; k < span.end && !along.empty(); ++k) {
        Set(along.start, k);
      }
    }
  }

  void Set(int along, int across) const {
    m_picture.at<cv::Vec3b>(m_steep ? along : across,
                            m_steep ? across : along) = m_pixel;
  }

  cv::Mat& m_picture;
  const cv::Vec3b m_pixel;
  const int m_thickness;
  const bool m_steep;
  cv::Point2d m_start, m_end;
};

}  // namespace

void DrawLine(cv::Point2d from, cv::Point2d to, const Pen& pen,
              cv::Mat& picture) {
  if (!std::isfinite(from.x + from.y + to.x + to.y)) return;
  LinePainter(from, to, pen, picture).Draw();
}

void DrawArrow(cv::Point from, cv::Point to, double tip, const Pen& pen,
               cv::Mat& picture) {
  DrawLine(from, to, pen, picture);
  const cv::Point2d end = to;
  const cv::Point2d back = (cv::Point2d(from) - end) * tip;
  // Turned by 45 degrees to either side.
  for (const double side : {1.0, -1.0}) {
    const cv::Point2d wing(back.x - side * back.y, back.y + side * back.x);
    const cv::Point corner = end + wing * (std::numbers::sqrt2 / 2);
    DrawLine(corner, end, pen, picture);
  }
}

void DrawEndlessLine(cv::Point2d on, cv::Point2d direction, const Pen& pen,
                     cv::Mat& picture) {
  const double longer = std::max(std::abs(direction.x), std::abs(direction.y));
  if (!(longer > 0)) return;
  const cv::Point2d reach = direction * (kEndlessPx / longer);
  DrawLine(on - reach, on + reach, pen, picture);
}

}  // namespace rendal
