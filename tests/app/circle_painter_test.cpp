// SPDX-License-Identifier: MIT
#include "app/view/circle_painter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <opencv2/imgproc.hpp>

#include "app/view/result_painter.h"
#include "app/view/roi_painter.h"

namespace rendal {
namespace {

const cv::Size kPicture(300, 200);
const cv::Scalar kInk(255);

cv::Mat MaskOf(const cv::Mat& picture) {
  cv::Mat mask;
  cv::extractChannel(picture, mask, 0);
  return mask;
}

// How far a circle stays outside of a pixel's square, when it misses it: at or
// below 0 it runs through the pixel.
double Missing(cv::Point2d center, double radius, cv::Point pixel) {
  const cv::Point2d d = cv::Point2d(pixel) - center;
  const double distance = std::hypot(d.x, d.y);
  if (distance == 0) return radius - 0.5;
  const double half_pixel = 0.5 * (std::abs(d.x) + std::abs(d.y)) / distance;
  return std::abs(distance - radius) - half_pixel;
}

// The largest of that over all drawn pixels; at least one must be drawn.
double WorstPixel(const cv::Mat& mask, cv::Point2d center, double radius) {
  std::vector<cv::Point> drawn;
  cv::findNonZero(mask, drawn);
  double worst = drawn.empty() ? 1e9 : -1e9;
  for (const cv::Point& pixel : drawn) {
    worst = std::max(worst, Missing(center, radius, pixel));
  }
  return worst;
}

// Points of the circle inside the picture that have no drawn pixel beside them.
int Gaps(const cv::Mat& mask, cv::Point2d center, double radius) {
  int gaps = 0;
  const auto look = [&](double x, double y) {
    const cv::Point at(cvRound(x), cvRound(y));
    const cv::Rect beside(at.x - 1, at.y - 1, 3, 3);
    if ((beside & cv::Rect({}, mask.size())) != beside) return;
    if (cv::countNonZero(mask(beside)) == 0) ++gaps;
  };
  for (int u = 0; u < mask.cols; ++u) {
    const double dy = std::sqrt(radius * radius - std::pow(u - center.x, 2));
    if (std::isnan(dy)) continue;
    look(u, center.y - dy);
    look(u, center.y + dy);
  }
  for (int v = 0; v < mask.rows; ++v) {
    const double dx = std::sqrt(radius * radius - std::pow(v - center.y, 2));
    if (std::isnan(dx)) continue;
    look(center.x - dx, v);
    look(center.x + dx, v);
  }
  return gaps;
}

class CircleOfAnySize : public testing::TestWithParam<double> {
 protected:
  // Circles of the radius through the middle of the picture, in all
  // directions. Calls `check` with each one's centre.
  template <typename Check>
  void ForEachDirection(Check check) {
    for (int i = 0; i < 24; ++i) {
      const double a = 2 * std::numbers::pi * i / 24 + 0.01;
      check(cv::Point2d(150.3 + GetParam() * std::cos(a),
                        99.6 + GetParam() * std::sin(a)));
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Radii, CircleOfAnySize,
                         testing::Values(0.3, 1.0, 4.4, 40.0, 333.3, 5000.0,
                                         256000.0, 1e7));

TEST_P(CircleOfAnySize, RunsThroughEveryDrawnPixel) {
  ForEachDirection([&](cv::Point2d center) {
    cv::Mat picture = cv::Mat::zeros(kPicture, CV_8UC3);
    DrawCircle(center, GetParam(), {kInk, 1}, picture);
    EXPECT_LE(WorstPixel(MaskOf(picture), center, GetParam()), 0.04) << center;
  });
}

TEST_P(CircleOfAnySize, IsDrawnWithoutAGap) {
  ForEachDirection([&](cv::Point2d center) {
    cv::Mat picture = cv::Mat::zeros(kPicture, CV_8UC3);
    DrawCircle(center, GetParam(), {kInk, 1}, picture);
    EXPECT_EQ(Gaps(MaskOf(picture), center, GetParam()), 0) << center;
  });
}

TEST_P(CircleOfAnySize, ThickLinesStayBesideIt) {
  ForEachDirection([&](cv::Point2d center) {
    cv::Mat picture = cv::Mat::zeros(kPicture, CV_8UC3);
    DrawCircle(center, GetParam(), {kInk, 2}, picture);
    EXPECT_LE(WorstPixel(MaskOf(picture), center, GetParam()), 1.2) << center;
    EXPECT_EQ(Gaps(MaskOf(picture), center, GetParam()), 0) << center;
  });
}

// The largest part at the largest zoom, as a fit and as a region of interest.
TEST(CirclePainter, FitAndRegionOfInterestAreRightAtTheLargestZoom) {
  ViewState view;
  view.viewWidth = kPicture.width;
  view.viewHeight = kPicture.height;
  view.zoom = kMaxZoom;
  for (const double a : {0.0, 0.4, 0.7854, 2.1, 4.0, 5.5}) {
    const cv::Point2d edge(2500 + 2000 * std::cos(a),
                           2300 + 2000 * std::sin(a));
    view.offsetX = static_cast<float>(std::round(150 - edge.x * kMaxZoom));
    view.offsetY = static_cast<float>(std::round(100 - edge.y * kMaxZoom));
    const cv::Point2d center(2500 * kMaxZoom + view.offsetX,
                             2300 * kMaxZoom + view.offsetY);
    const double radius = 2000 * kMaxZoom;
    cv::Mat picture = cv::Mat::zeros(kPicture, CV_8UC3);
    DrawShape({kFittedCircle, {2500, 2300, 2000, 0, 0}}, view, picture);
    cv::Mat mask;
    cv::extractChannel(picture, mask, 0);
    EXPECT_LE(WorstPixel(mask, center, radius), 0.04) << a;
    EXPECT_EQ(Gaps(mask, center, radius), 0) << a;
    picture.setTo(cv::Scalar::all(0));
    DrawRoi({kToolCircle, {2500, 2300, 2000, 0, 0}}, 0, view, picture);
    cv::extractChannel(picture, mask, 2);
    EXPECT_LE(WorstPixel(mask, center, radius), 1.1) << a;
    EXPECT_EQ(Gaps(mask, center, radius), 0) << a;
  }
}

TEST(CirclePainter, CirclesOutsideOrAroundThePictureDrawNothing) {
  cv::Mat picture = cv::Mat::zeros(kPicture, CV_8UC3);
  DrawCircle({150, 100}, 400, {kInk, 2}, picture);
  DrawCircle({150, -50}, 40, {kInk, 2}, picture);
  DrawCircle({-1e6, 100}, 999'990, {kInk, 2}, picture);
  DrawCircle({0, 0}, 1e300, {kInk, 2}, picture);
  const double no_number = std::numeric_limits<double>::quiet_NaN();
  DrawCircle({no_number, 100}, 40, {kInk, 2}, picture);
  DrawCircle({150, 100}, no_number, {kInk, 2}, picture);
  DrawCircle({150, 100}, std::numeric_limits<double>::infinity(), {kInk, 2},
             picture);
  EXPECT_EQ(cv::countNonZero(MaskOf(picture)), 0);
}

TEST(CirclePainter, SignOfTheRadiusDoesNotMatter) {
  cv::Mat positive = cv::Mat::zeros(kPicture, CV_8UC3);
  cv::Mat negative = positive.clone();
  DrawCircle({150, 100}, 60.5, {kInk, 1}, positive);
  DrawCircle({150, 100}, -60.5, {kInk, 1}, negative);
  EXPECT_GT(cv::countNonZero(MaskOf(positive)), 300);
  EXPECT_EQ(cv::norm(positive, negative, cv::NORM_INF), 0);
}

}  // namespace
}  // namespace rendal
