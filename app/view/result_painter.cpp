// SPDX-License-Identifier: MIT
#include "app/view/result_painter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <opencv2/imgproc.hpp>

#include "app/view/circle_painter.h"
#include "app/view/roi_painter.h"

namespace rendal {
namespace {

const cv::Scalar kScanColor(0, 0, 255);       // red
const cv::Scalar kRectangleColor(0, 255, 0);  // green
const cv::Scalar kMarkerColor(255, 0, 255);   // magenta
const cv::Scalar kFitColor(255, 0, 0);        // blue
const cv::Scalar kSegmentColor(255, 255, 255);
constexpr int kThickness = 1;
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

// Narrows [*first, *last] to the t for which `start + t * step` lies in
// 0..limit; false if there is none.
bool ClipTo(double start, double step, double limit, double* first,
            double* last) {
  if (step == 0) return start >= 0 && start <= limit;
  const double a = -start / step;
  const double b = (limit - start) / step;
  *first = std::max(*first, std::min(a, b));
  *last = std::min(*last, std::max(a, b));
  return *first <= *last;
}

// Between whole pixels. What goes beyond the picture is cut off here, at most a
// pixel outside: the drawing functions would move the rest by up to a pixel.
void DrawSegment(cv::Mat& picture, cv::Point2f from, cv::Point2f to,
                 const cv::Scalar& color) {
  const cv::Point start = NearestPixel(from);
  const cv::Point end = NearestPixel(to);
  const cv::Point2d step = end - start;
  double first = 0;
  double last = 1;
  if (!ClipTo(start.x + 1, step.x, picture.cols + 1, &first, &last) ||
      !ClipTo(start.y + 1, step.y, picture.rows + 1, &first, &last)) {
    return;
  }
  if (first == 0 && last == 1) {
    cv::line(picture, start, end, color, kThickness, kEightConnected);
  } else {
    const cv::Point2d origin = start;
    cv::line(picture, WithFraction(origin + first * step),
             WithFraction(origin + last * step), color, kThickness,
             kEightConnected, kFractionBits);
  }
}

void DrawFittedLine(const float (&values)[5], const ViewState& view,
                    cv::Mat& picture) {
  const double dx = values[0];
  const double dy = values[1];
  if (dx == 0 && dy == 0) return;
  const cv::Point2f center = view.ToView(values[2], values[3]);
  double first = -std::numeric_limits<double>::infinity();
  double last = -first;
  if (!ClipTo(center.x, dx, picture.cols - 1, &first, &last) ||
      !ClipTo(center.y, dy, picture.rows - 1, &first, &last)) {
    return;
  }
  const auto at = [&](double t) {
    return cv::Point2f(static_cast<float>(center.x + t * dx),
                       static_cast<float>(center.y + t * dy));
  };
  cv::line(picture, WithFraction(at(first)), WithFraction(at(last)), kFitColor,
           kThickness, kEightConnected, kFractionBits);
}

void DrawFittedEllipse(const float (&values)[5], const ViewState& view,
                       cv::Mat& picture) {
  const std::vector<cv::Point2f> outline =
      EllipseOutline(view.ToView(values[0], values[1]), values[3] * view.zoom,
                     values[4] * view.zoom, values[2]);
  std::vector<cv::Point> corners(outline.size());
  std::transform(outline.begin(), outline.end(), corners.begin(), WithFraction);
  cv::polylines(picture, corners, true, kFitColor, kThickness, kEightConnected,
                kFractionBits);
}

void DrawNumber(const float (&values)[5], const ViewState& view,
                cv::Mat& picture) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", values[0]);
  const cv::Point2f at = view.ToView(values[1], values[2]);
  cv::putText(picture, text, NearestPixel(at), cv::FONT_HERSHEY_DUPLEX,
              view.zoom * kNumberScalePerZoom, kSegmentColor, kThickness,
              kEightConnected);
  DrawSegment(picture, at, view.ToView(values[3], values[4]), kSegmentColor);
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
  cv::arrowedLine(picture, NearestPixel(center - along),
                  NearestPixel(center + along), kScanColor, kThickness,
                  kEightConnected, 0, kScanTip);
  const cv::Point2f corners[] = {
      center - along - across, center + along - across, center + along + across,
      center - along + across};
  for (int i = 0; i < 4; ++i) {
    DrawSegment(picture, corners[i], corners[(i + 1) % 4], kRectangleColor);
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
                  kMarkerColor);
      DrawSegment(picture, at - cv::Point2f(0, half), at + cv::Point2f(0, half),
                  kMarkerColor);
      break;
    case kMarkerDiagonalCross:
      DrawSegment(picture, at - cv::Point2f(half, half),
                  at + cv::Point2f(half, half), kMarkerColor);
      DrawSegment(picture, at - cv::Point2f(half, -half),
                  at + cv::Point2f(half, -half), kMarkerColor);
      break;
    case kMarkerCircle:
      cv::circle(picture, NearestPixel(at), kMarkerRadiusPx, kMarkerColor,
                 kMarkerCircleThickness, kEightConnected);
      break;
  }
}

void DrawShape(const ShapeEntry& shape, const ViewState& view,
               cv::Mat& picture) {
  const float(&v)[5] = shape.values;
  if (!AllFinite(v) || AllZero(v)) return;
  switch (shape.kind) {
    case kFittedLine:
      DrawFittedLine(v, view, picture);
      break;
    case kFittedCircle:
      if (v[2] != 0) {
        DrawCircle(view.ToView(v[0], v[1]), v[2] * view.zoom, kFitColor,
                   kThickness, picture);
      }
      break;
    case kFittedEllipse:
      if (v[3] != 0 || v[4] != 0) DrawFittedEllipse(v, view, picture);
      break;
    case kSegment:
      DrawSegment(picture, view.ToView(v[0], v[1]), view.ToView(v[2], v[3]),
                  kSegmentColor);
      break;
    case kNumber:
      DrawNumber(v, view, picture);
      break;
  }
}

}  // namespace rendal
