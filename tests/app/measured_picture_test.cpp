// SPDX-License-Identifier: MIT
//
// Rendered parts of known place, measured with the library itself and drawn:
// how close the numbers come, and how close the pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "app/view/view_painter.h"
#include "tests/vexolab/synthetic_image.h"
#include "tools/caliper_tool.h"

namespace rendal {
namespace {

constexpr double kBlur = 0.7;
constexpr double kTolerancePx = 0.02;
const cv::Size kImageSize(160, 140);

using Pixel = cv::Vec3b;
const Pixel kFitColor(255, 0, 0);

cv::Mat Exposed(const synthetic::coverage& part) {
  const synthetic::grey_image grey = synthetic::expose(part, {}, nullptr);
  cv::Mat image(grey.height, grey.width, CV_8U);
  std::copy(grey.pixels.begin(), grey.pixels.end(), image.begin<uchar>());
  return image;
}

cv::Mat Disc(const synthetic::disc_shape& shape) {
  synthetic::coverage part(kImageSize.width, kImageSize.height);
  synthetic::add_ellipse(shape, kBlur, 1, &part);
  return Exposed(part);
}

// Bright right of `left`, dark again from `right` on, edges upright.
cv::Mat Stripe(double left, double right) {
  synthetic::coverage part(kImageSize.width, kImageSize.height);
  synthetic::add_half_plane(left, 0, 0, kBlur, 1, &part);
  synthetic::add_half_plane(right, 0, 0, kBlur, -1, &part);
  return Exposed(part);
}

class MeasuredPicture : public testing::Test {
 protected:
  void Measure(const cv::Mat& image, const RoiShape& roi,
               const CaliperParameters& parameters = {}) {
    bench.m_srcImage = image;
    bench.m_toolMode = roi.kind;
    bench.m_roiShapes[roi.kind] = roi;
    testing::internal::CaptureStdout();
    rendal::Measure(bench, parameters);
    console = testing::internal::GetCapturedStdout();
  }
  void MeasureDisc(const synthetic::disc_shape& shape) {
    Measure(Disc(shape), {kToolCircle, {78, 72, 44, 0, 0}},
            {20, 6, 20, 1, 2, 0, 1, "first-"});
  }
  const Result& Record() const { return bench.m_results.at(0); }
  const float* Fit() const { return Record().shapes.at(0).values; }

  // The number that the console shows behind a text.
  double PrintedAfter(const std::string& text) const {
    const size_t at = console.find(text);
    if (at == std::string::npos) ADD_FAILURE() << "no " << text << console;
    return at == std::string::npos
               ? 0
               : std::strtod(console.c_str() + at + text.size(), nullptr);
  }

  // The picture at a zoom, with an image point in the view's middle. The region
  // of interest is left out.
  cv::Mat PictureAt(float zoom, cv::Point2f middle) {
    view.viewWidth = 800;
    view.viewHeight = 600;
    view.zoom = zoom;
    view.offsetX = std::round(400 - middle.x * zoom);
    view.offsetY = std::round(300 - middle.y * zoom);
    bench.m_toolMode = kToolNone;
    bench.m_redraw = 1;
    cv::Mat picture;
    RefreshView(bench, view, &picture);
    return picture;
  }

  Workbench bench;
  ViewState view;
  std::string console;
};

TEST_F(MeasuredPicture, CircleIsFoundWhereItIs) {
  MeasureDisc({80.3, 70.6, 0, 45.25, 45.25});
  EXPECT_NEAR(Fit()[0], 80.3, kTolerancePx);
  EXPECT_NEAR(Fit()[1], 70.6, kTolerancePx);
  EXPECT_NEAR(Fit()[2], 45.25, kTolerancePx);
  EXPECT_EQ(Record().points.size(), Record().rectangles.size());
}

TEST_F(MeasuredPicture, InwardScanFindsTheSameCircle) {
  Measure(Disc({80.3, 70.6, 0, 45.25, 45.25}),
          {kToolCircle, {78, 72, 44, 0, 0}},
          {20, 6, 20, 1, 2, 0, -1, "first+"});
  EXPECT_NEAR(Fit()[0], 80.3, kTolerancePx);
  EXPECT_NEAR(Fit()[2], 45.25, kTolerancePx);
}

TEST_F(MeasuredPicture, EllipseIsFoundWhereItIs) {
  Measure(Disc({80.3, 70.6, 25, 60.5, 35.25}),
          {kToolEllipse, {79, 71, 22, 59, 36}},
          {20, 6, 20, 1, 2, 0, 1, "first-"});
  EXPECT_NEAR(Fit()[0], 80.3, kTolerancePx);
  EXPECT_NEAR(Fit()[1], 70.6, kTolerancePx);
  EXPECT_NEAR(Fit()[2], 25, 0.1);
  EXPECT_NEAR(Fit()[3], 60.5, kTolerancePx);
  EXPECT_NEAR(Fit()[4], 35.25, kTolerancePx);
}

TEST_F(MeasuredPicture, LineIsFoundWhereItIs) {
  synthetic::coverage part(kImageSize.width, kImageSize.height);
  // Its normal points 30 degrees below the columns' direction.
  synthetic::add_half_plane(80.3, 70.6, -60, kBlur, 1, &part);
  Measure(Exposed(part), {kToolLine, {50, 85, 110, 53, 0}},
          {30, 6, 20, 1, 2, 0, 1, "first+"});
  const double distance =
      (80.3 - Fit()[2]) * -Fit()[1] + (70.6 - Fit()[3]) * Fit()[0];
  EXPECT_NEAR(distance, 0, kTolerancePx);
  EXPECT_NEAR(LineAngle(Fit()[0], Fit()[1]), 30, 0.02);
  EXPECT_NEAR(PrintedAfter("angle = "), 30, 0.02);
}

TEST_F(MeasuredPicture, BandFindsBothEdgesOfAStripe) {
  Measure(Stripe(60.3, 95.8), {kToolBand, {30, 70, 130, 70, 0}});
  ASSERT_EQ(Record().points.size(), 2u);
  EXPECT_NEAR(Record().points[0].x, 60.3, kTolerancePx);
  EXPECT_NEAR(Record().points[1].x, 95.8, kTolerancePx);
  EXPECT_NEAR(PrintedAfter("i =   2, x = "), 95.8, kTolerancePx);
}

// Drawn pixels of the fit against the disc that was rendered.
class FitOnScreen : public MeasuredPicture,
                    public testing::WithParamInterface<float> {
 protected:
  static constexpr double kX = 80.3, kY = 70.6, kRadius = 45.25;
  // What the fit itself may be off [image px]; it shows when enlarged.
  static constexpr double kFitErrorPx = 0.001;

  // All of the disc, or a piece of its edge when it is larger than the view.
  cv::Mat DiscAt(float zoom) {
    constexpr double kDirection = 0.7;
    const double aside = kRadius * zoom < 290 ? 0 : kRadius;
    return PictureAt(zoom, cv::Point2d(kX + aside * std::cos(kDirection),
                                       kY + aside * std::sin(kDirection)));
  }
  cv::Point2d Center() const {
    return {kX * view.zoom + view.offsetX, kY * view.zoom + view.offsetY};
  }
};

// How far a circle stays outside of a pixel's square at most, when it misses
// it: at or below 0 it runs through the pixel.
double Missing(cv::Point2d center, double radius, int u, int v) {
  const double dx = u - center.x;
  const double dy = v - center.y;
  const double distance = std::hypot(dx, dy);
  const double half_pixel = 0.5 * (std::abs(dx) + std::abs(dy)) / distance;
  return std::abs(distance - radius) - half_pixel;
}

TEST_P(FitOnScreen, TrueCircleRunsThroughEveryDrawnPixel) {
  MeasureDisc({kX, kY, 0, kRadius, kRadius});
  const cv::Mat picture = DiscAt(GetParam());
  const double radius = kRadius * view.zoom;
  int drawn = 0;
  double worst = -1;
  for (int v = 0; v < picture.rows; ++v) {
    for (int u = 0; u < picture.cols; ++u) {
      if (picture.at<Pixel>(v, u) != kFitColor) continue;
      ++drawn;
      worst = std::max(worst, Missing(Center(), radius, u, v));
    }
  }
  EXPECT_LE(worst, 0.05 + kFitErrorPx * view.zoom);
  EXPECT_GT(drawn, 40);
}

TEST_P(FitOnScreen, TrueCircleIsDrawnWithoutAGap) {
  MeasureDisc({kX, kY, 0, kRadius, kRadius});
  const cv::Mat picture = DiscAt(GetParam());
  cv::Mat fit;
  cv::inRange(picture, cv::Scalar(255, 0, 0), cv::Scalar(255, 0, 0), fit);
  const double radius = kRadius * view.zoom;
  const cv::Rect inner(1, 1, picture.cols - 2, picture.rows - 2);
  const int steps = static_cast<int>(8 * radius) + 64;
  int shown = 0;
  for (int i = 0; i < steps; ++i) {
    const double a = 2 * std::numbers::pi * i / steps;
    const cv::Point at(cvRound(Center().x + radius * std::cos(a)),
                       cvRound(Center().y + radius * std::sin(a)));
    if (!inner.contains(at)) continue;
    ++shown;
    ASSERT_GT(cv::countNonZero(fit(cv::Rect(at.x - 1, at.y - 1, 3, 3))), 0)
        << at;
  }
  EXPECT_GT(shown, 100);
}

INSTANTIATE_TEST_SUITE_P(Zooms, FitOnScreen,
                         testing::Values(0.25f, 0.5f, 1.0f, 1.25f, 2.0f, 6.1f,
                                         32.0f, 128.0f));

// What is drawn as the image and what is drawn over it share their mapping: a
// line fitted to a sharp edge stands where the grey changes on screen.
TEST_F(MeasuredPicture, FittedLineStandsWhereTheGreyChanges) {
  cv::Mat image(kImageSize, CV_8U, cv::Scalar(20));
  image.colRange(80, kImageSize.width).setTo(220);
  Measure(image, {kToolLine, {79, 130, 79, 10, 0}},
          {20, 6, 20, 1, 2, 0, 1, "first+"});
  for (const float zoom : {1.0f, 2.0f, 5.0f, 8.0f, 32.0f, 128.0f}) {
    const cv::Mat picture = PictureAt(zoom, {79.5f, 5});
    const Pixel* const row = picture.ptr<Pixel>(300);
    const auto line = std::find(row, row + picture.cols, kFitColor) - row;
    const auto bright =
        std::find_if(row, row + picture.cols,
                     [](const Pixel& p) { return p == Pixel(220, 220, 220); }) -
        row;
    EXPECT_LE(std::abs(line - bright), 1) << zoom;
  }
}

}  // namespace
}  // namespace rendal
