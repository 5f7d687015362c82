// SPDX-License-Identifier: MIT
#include "app/view/roi_painter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "app/view/circle_painter.h"
#include "app/view/line_painter.h"
#include "app/view/roi_interaction.h"

namespace rendal {
namespace {

const Pen kRoiPen = {{0, 255, 255}, 2};     // yellow
const Pen kHandlePen = {{255, 255, 0}, 2};  // cyan
constexpr double kLineTip = 0.1;            // of the arrow's length
constexpr double kAxisTip = 0.3;            // of the arrow's length
constexpr float kAxisArrowPx = 30;          // these three in view pixels
constexpr float kEllipseCrossPx = 10;
constexpr float kEllipseHandlePx = 10;
constexpr double kOutlineStepPx = 2;
constexpr int kMinOutlinePoints = 64;
constexpr int kMaxOutlinePoints = 720;

void DrawSegment(cv::Mat& picture, cv::Point2f from, cv::Point2f to) {
  DrawLine(NearestPixel(from), NearestPixel(to), kRoiPen, picture);
}

void DrawRoiArrow(cv::Mat& picture, cv::Point2f from, cv::Point2f to,
                  double tip) {
  DrawArrow(NearestPixel(from), NearestPixel(to), tip, kRoiPen, picture);
}

void DrawCross(cv::Mat& picture, cv::Point2f center, float half_length) {
  const cv::Point2f across(half_length, 0);
  const cv::Point2f down(0, half_length);
  DrawSegment(picture, center - across, center + across);
  DrawSegment(picture, center - down, center + down);
}

// Without a length the arrow is a dot.
void DrawRoiLine(const RoiShape& shape, const ViewState& view,
                 cv::Mat& picture) {
  const float* const v = shape.values;
  const cv::Point2f start = view.ToView(v[0], v[1]);
  const cv::Point2f end = view.ToView(v[2], v[3]);
  DrawRoiArrow(picture, start, end, kLineTip);
  const float radius = kHandleRadiusImagePx * view.zoom;
  DrawCircle(start, radius, kHandlePen, picture);
  DrawCircle(end, radius, kHandlePen, picture);
}

void DrawBand(const RoiShape& shape, double width, const ViewState& view,
              cv::Mat& picture) {
  const float* const v = shape.values;
  const cv::Point2f start = view.ToView(v[0], v[1]);
  const cv::Point2f end = view.ToView(v[2], v[3]);
  const cv::Point2f along = end - start;
  const float length = std::hypot(along.x, along.y);
  if (length > 0) {
    const float half = static_cast<float>(width) * view.zoom / 2;
    const cv::Point2f across(-along.y / length * half, along.x / length * half);
    const std::vector<cv::Point> corners = {
        NearestPixel(start + across), NearestPixel(end + across),
        NearestPixel(end - across), NearestPixel(start - across)};
    DrawPolygon(corners, kRoiPen, picture);
    const auto [left, right] =
        std::minmax({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
    const auto [top, bottom] =
        std::minmax({corners[0].y, corners[1].y, corners[2].y, corners[3].y});
    const cv::Point box[] = {
        {left, top}, {right, top}, {right, bottom}, {left, bottom}};
    DrawPolygon(box, kRoiPen, picture);
  }
  DrawRoiLine(shape, view, picture);
}

void DrawRoiCircle(const RoiShape& shape, const ViewState& view,
                   cv::Mat& picture) {
  const float* const v = shape.values;
  const cv::Point2f center = view.ToView(v[0], v[1]);
  DrawCircle(center, v[2] * view.zoom, kRoiPen, picture);
  DrawCross(picture, center, kHandleRadiusImagePx * view.zoom);
}

void DrawRoiEllipse(const RoiShape& shape, const ViewState& view,
                    cv::Mat& picture) {
  const float* const v = shape.values;
  const cv::Point2f center = view.ToView(v[0], v[1]);
  DrawPolygon(EllipseOutline(center, v[3] * view.zoom, v[4] * view.zoom, v[2]),
              kRoiPen, picture);
  DrawCross(picture, center, kEllipseCrossPx);
  const double radians = v[2] / 180 * std::numbers::pi;
  const cv::Point2f first(static_cast<float>(std::cos(radians)),
                          static_cast<float>(-std::sin(radians)));
  DrawRoiArrow(picture, center, center + kAxisArrowPx * first, kAxisTip);
  const std::vector<cv::Point2f> handles = HandlesOf(shape);
  for (size_t i = 1; i < handles.size(); ++i) {
    DrawCircle(view.ToView(handles[i].x, handles[i].y), kEllipseHandlePx,
               kHandlePen, picture);
  }
}

}  // namespace

cv::Point NearestPixel(cv::Point2f at) {
  constexpr int kLimit = 1 << 24;
  return {std::clamp(RoundToInt(at.x), -kLimit, kLimit),
          std::clamp(RoundToInt(at.y), -kLimit, kLimit)};
}

std::vector<cv::Point2d> EllipseOutline(cv::Point2d center, float half_axis1,
                                        float half_axis2, float angle) {
  constexpr double kPi = std::numbers::pi;
  const double a = half_axis1;
  const double b = half_axis2;
  const double around = 2 * kPi * std::max(std::abs(a), std::abs(b));
  const int count = static_cast<int>(std::clamp(around / kOutlineStepPx,
                                                1.0 * kMinOutlinePoints,
                                                1.0 * kMaxOutlinePoints));
  const double c = std::cos(angle / 180 * kPi);
  const double s = std::sin(angle / 180 * kPi);
  std::vector<cv::Point2d> points(count);
  for (int i = 0; i < count; ++i) {
    const double t = 2 * kPi * i / count;
    const double along = a * std::cos(t);
    const double across = b * std::sin(t);
    points[i] = {center.x + along * c - across * s,
                 center.y - along * s - across * c};
  }
  return points;
}

void DrawRoi(const RoiShape& shape, double band_width, const ViewState& view,
             cv::Mat& picture) {
  switch (shape.kind) {
    case kToolLine:
      DrawRoiLine(shape, view, picture);
      break;
    case kToolCircle:
      DrawRoiCircle(shape, view, picture);
      break;
    case kToolBand:
      DrawBand(shape, band_width, view, picture);
      break;
    case kToolEllipse:
      DrawRoiEllipse(shape, view, picture);
      break;
  }
}

}  // namespace rendal
