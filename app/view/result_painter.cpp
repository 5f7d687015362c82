// SPDX-License-Identifier: MIT
#include "app/view/result_painter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <opencv2/imgproc.hpp>

#include "app/view/circle_painter.h"
#include "app/view/line_painter.h"
#include "app/view/roi_painter.h"

namespace rendal {
namespace {

const Pen kScanPen = {{0, 0, 255}};       // red
const Pen kRectanglePen = {{0, 255, 0}};  // green
const Pen kMarkerPen = {{255, 0, 255}};   // magenta
const Pen kFitPen = {{255, 0, 0}};        // blue
const Pen kSegmentPen = {{255, 255, 255}};
constexpr int kEightConnected = 8;
constexpr double kScanTip = 0.1;  // of the arrow's length
constexpr float kMarkerHalfSizeImagePx = 10;
constexpr int kMarkerRadiusPx = 2;
constexpr int kMarkerCircleThickness = 2;
constexpr double kNumberScalePerZoom = 0.0625;

template <typename Values>
bool AllFinite(const Values& values) {
  return std::all_of(std::begin(values), std::end(values),
                     [](float v) { return std::isfinite(v); });
}

template <typename Values>
bool AllZero(const Values& values) {
  return std::all_of(std::begin(values), std::end(values),
                     [](float v) { return v == 0; });
}

// Between whole pixels.
void DrawSegment(cv::Mat& picture, cv::Point2f from, cv::Point2f to,
                 const Pen& pen) {
  DrawLine(NearestPixel(from), NearestPixel(to), pen, picture);
}

void DrawFittedEllipse(const float (&values)[5], const ViewState& view,
                       cv::Mat& picture) {
  DrawPolygon(
      EllipseOutline(view.ToView(values[0], values[1]), values[3] * view.zoom,
                     values[4] * view.zoom, values[2]),
      kFitPen, picture);
}

// Drawn apart, so that the picture's border does not move its lines.
void StampMarkerCircle(cv::Point at, cv::Mat& picture) {
  constexpr int kReach = kMarkerRadiusPx + kMarkerCircleThickness;
  static const cv::Mat stamp = [] {
    cv::Mat mask = cv::Mat::zeros(2 * kReach + 1, 2 * kReach + 1, CV_8U);
    cv::circle(mask, {kReach, kReach}, kMarkerRadiusPx, cv::Scalar(255),
               kMarkerCircleThickness, kEightConnected);
    return mask;
  }();
  const cv::Point corner = at - cv::Point(kReach, kReach);
  const cv::Rect place(corner, stamp.size());
  const cv::Rect seen = place & cv::Rect({}, picture.size());
  if (!seen.empty())
    picture(seen).setTo(kMarkerPen.color, stamp(seen - corner));
}

void DrawNumber(const float (&values)[5], const ViewState& view,
                cv::Mat& picture) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", values[0]);
  const cv::Point2f at = view.ToView(values[1], values[2]);
  cv::putText(picture, text, NearestPixel(at), cv::FONT_HERSHEY_DUPLEX,
              view.zoom * kNumberScalePerZoom, kSegmentPen.color,
              kSegmentPen.thickness, kEightConnected);
  DrawSegment(picture, at, view.ToView(values[3], values[4]), kSegmentPen);
}

}  // namespace

void DrawResult(const Result& result, const ViewState& view, cv::Mat& picture) {
  for (const MeasureRectangle& rectangle : result.rectangles) {
    DrawMeasureRectangle(rectangle, view, picture);
  }
  for (const cv::Point2f& point : result.points) {
    DrawMarker(point, kMarkerCircle, view, picture);
  }
  for (const ShapeEntry& shape : result.shapes) {
    DrawShape(shape, view, picture);
  }
}

void DrawMeasureRectangle(const MeasureRectangle& rectangle,
                          const ViewState& view, cv::Mat& picture) {
  if (!AllFinite(rectangle)) return;
  const auto [x, y, phi, half_along, half_across] = rectangle;
  const double theta = (phi + 90) / 180 * std::numbers::pi;
  const float c = static_cast<float>(std::cos(theta));
  const float s = static_cast<float>(std::sin(theta));
  const cv::Point2f center = view.ToView(x, y);
  const cv::Point2f along = half_along * view.zoom * cv::Point2f(s, c);
  const cv::Point2f across = half_across * view.zoom * cv::Point2f(c, -s);
  DrawArrow(NearestPixel(center - along), NearestPixel(center + along),
            kScanTip, kScanPen, picture);
  const cv::Point2f corners[] = {
      center - along - across, center + along - across, center + along + across,
      center - along + across};
  for (int i = 0; i < 4; ++i) {
    DrawSegment(picture, corners[i], corners[(i + 1) % 4], kRectanglePen);
  }
}

void DrawMarker(cv::Point2f image_point, int style, const ViewState& view,
                cv::Mat& picture) {
  if (!std::isfinite(image_point.x) || !std::isfinite(image_point.y)) return;
  const cv::Point2f at = view.ToView(image_point.x, image_point.y);
  const float half = kMarkerHalfSizeImagePx * view.zoom;
  switch (style) {
    case kMarkerPixel: {
      const cv::Point pixel = NearestPixel(at);
      if (cv::Rect({}, picture.size()).contains(pixel)) {
        picture.at<cv::Vec3b>(pixel) = cv::Vec3b(255, 0, 255);
      }
      break;
    }
    case kMarkerCross:
      DrawSegment(picture, at - cv::Point2f(half, 0), at + cv::Point2f(half, 0),
                  kMarkerPen);
      DrawSegment(picture, at - cv::Point2f(0, half), at + cv::Point2f(0, half),
                  kMarkerPen);
      break;
    case kMarkerDiagonalCross:
      DrawSegment(picture, at - cv::Point2f(half, half),
                  at + cv::Point2f(half, half), kMarkerPen);
      DrawSegment(picture, at - cv::Point2f(half, -half),
                  at + cv::Point2f(half, -half), kMarkerPen);
      break;
    case kMarkerCircle:
      StampMarkerCircle(NearestPixel(at), picture);
      break;
  }
}

void DrawShape(const ShapeEntry& shape, const ViewState& view,
               cv::Mat& picture) {
  const float(&v)[5] = shape.values;
  if (!AllFinite(v) || AllZero(v)) return;
  switch (shape.kind) {
    case kFittedLine:
      DrawEndlessLine(view.ToView(v[2], v[3]), {v[0], v[1]}, kFitPen, picture);
      break;
    case kFittedCircle:
      if (v[2] != 0) {
        DrawCircle(view.ToView(v[0], v[1]), v[2] * view.zoom, kFitPen, picture);
      }
      break;
    case kFittedEllipse:
      if (v[3] != 0 || v[4] != 0) DrawFittedEllipse(v, view, picture);
      break;
    case kSegment:
      DrawSegment(picture, view.ToView(v[0], v[1]), view.ToView(v[2], v[3]),
                  kSegmentPen);
      break;
    case kNumber:
      DrawNumber(v, view, picture);
      break;
  }
}

}  // namespace rendal
