// SPDX-License-Identifier: MIT
#include "app/view/result_painter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "app/view/view_painter.h"

namespace rendal {
namespace {

using Pixel = cv::Vec3b;

const Pixel kBlack(0, 0, 0);
const Pixel kRed(0, 0, 255);
const Pixel kGreen(0, 255, 0);
const Pixel kBlue(255, 0, 0);
const Pixel kMagenta(255, 0, 255);
const Pixel kWhite(255, 255, 255);

class ResultPainter : public testing::Test {
 protected:
  ResultPainter() : m_picture(200, 300, CV_8UC3, cv::Scalar::all(0)) {
    m_view.viewWidth = 300;
    m_view.viewHeight = 200;
    m_view.zoom = 2;
    m_view.offsetX = 10;
    m_view.offsetY = 20;
  }

  void Shape(uint8_t kind, const std::array<float, 5>& v) {
    DrawShape({kind, {v[0], v[1], v[2], v[3], v[4]}}, m_view, m_picture);
  }
  void Clear() { m_picture.setTo(cv::Scalar::all(0)); }
  Pixel At(int u, int v) const { return m_picture.at<Pixel>(v, u); }
  int Count(Pixel color) const {
    return static_cast<int>(
        std::count(m_picture.begin<Pixel>(), m_picture.end<Pixel>(), color));
  }
  cv::Rect Box(Pixel color) const {
    cv::Mat mask;
    const cv::Scalar c(color[0], color[1], color[2]);
    cv::inRange(m_picture, c, c, mask);
    return cv::boundingRect(mask);
  }

  ViewState m_view;
  cv::Mat m_picture;
};

TEST_F(ResultPainter, RectangleAtAngleZeroIsScannedToTheRight) {
  // Centre (60, 40) lies at (130, 100); 20 and 5 become 40 and 10.
  DrawMeasureRectangle({60, 40, 0, 20, 5}, m_view, m_picture);
  EXPECT_EQ(Box(kGreen), cv::Rect(90, 90, 81, 21));
  EXPECT_EQ(At(130, 100), kRed);
  EXPECT_EQ(At(130, 90), kGreen);
  EXPECT_EQ(At(90, 105), kGreen);
  EXPECT_EQ(At(130, 95), kBlack);
  // The tip lies right: a tenth of 80 view pixels, at 45 degrees.
  EXPECT_EQ(At(165, 95), kRed);
  EXPECT_EQ(At(95, 95), kBlack);
}

TEST_F(ResultPainter, RectangleAtNinetyDegreesIsScannedUpwards) {
  DrawMeasureRectangle({60, 40, 90, 20, 5}, m_view, m_picture);
  EXPECT_EQ(Box(kGreen), cv::Rect(120, 60, 21, 81));
  EXPECT_EQ(At(125, 65), kRed);
  EXPECT_EQ(At(125, 135), kBlack);
}

TEST_F(ResultPainter, RectangleAngleCountsCounterClockwise) {
  DrawMeasureRectangle({60, 40, 30, 20, 0.5f}, m_view, m_picture);
  EXPECT_NE(At(130 + 35, 100 - 20), kBlack);
  EXPECT_EQ(At(130 + 35, 100 + 20), kBlack);
}

TEST_F(ResultPainter, MarkerStylesDiffer) {
  const cv::Point2f point(60.2f, 40.2f);  // at (130.4, 100.4)
  DrawMarker(point, 0, m_view, m_picture);
  EXPECT_EQ(Count(kMagenta), 1);
  EXPECT_EQ(At(130, 100), kMagenta);
  Clear();
  DrawMarker(point, 1, m_view, m_picture);
  EXPECT_EQ(Box(kMagenta), cv::Rect(110, 80, 41, 41));
  EXPECT_EQ(Count(kMagenta), 81);
  EXPECT_EQ(At(150, 100), kMagenta);
  Clear();
  DrawMarker(point, 2, m_view, m_picture);
  EXPECT_EQ(Box(kMagenta), cv::Rect(110, 80, 41, 41));
  EXPECT_EQ(Count(kMagenta), 81);
  EXPECT_EQ(At(110, 120), kMagenta);
  EXPECT_EQ(At(150, 100), kBlack);
  Clear();
  DrawMarker(point, 3, m_view, m_picture);
  EXPECT_EQ(At(132, 100), kMagenta);
  EXPECT_GE(Box(kMagenta).width, 5);
  EXPECT_LE(Box(kMagenta).width, 7);
  Clear();
  for (const int style : {4, 5, -1}) {
    DrawMarker(point, style, m_view, m_picture);
  }
  EXPECT_EQ(Count(kBlack), 300 * 200);
}

TEST_F(ResultPainter, SinglePixelMarkerOutsideThePictureDrawsNothing) {
  for (const cv::Point2f point : {cv::Point2f(-6, 40), cv::Point2f(60, -11),
                                  cv::Point2f(145, 40), cv::Point2f(60, 90)}) {
    DrawMarker(point, 0, m_view, m_picture);
  }
  EXPECT_EQ(Count(kBlack), 300 * 200);
}

TEST_F(ResultPainter, FittedLineRunsFromBorderToBorder) {
  Shape(kFittedLine, {1, 0, 60, 40, 0});
  EXPECT_EQ(Box(kBlue), cv::Rect(0, 100, 300, 1));
  EXPECT_EQ(Count(kBlue), 300);
  Clear();
  Shape(kFittedLine, {0, -1, 60, 40, 0});
  EXPECT_EQ(Box(kBlue), cv::Rect(130, 0, 1, 200));
  Clear();
  Shape(kFittedLine, {1, 1, 60, 40, 0});  // through (130, 100), downwards
  EXPECT_EQ(Box(kBlue), cv::Rect(30, 0, 200, 200));
  EXPECT_EQ(At(230 - 1, 199), kBlue);
}

TEST_F(ResultPainter, FittedLineMayHaveItsCentreOutsideThePicture) {
  Shape(kFittedLine, {2, 0, -5000, 40, 0});
  EXPECT_EQ(Count(kBlue), 300);
  Clear();
  Shape(kFittedLine, {1, 0, 60, 4000, 0});
  Shape(kFittedLine, {0.6f, 0.8f, 6000, 40, 0});
  EXPECT_EQ(Count(kBlue), 0);
}

TEST_F(ResultPainter, FittedCircleIsScaled) {
  Shape(kFittedCircle, {60, 40, 20, 0, 0});
  EXPECT_EQ(Box(kBlue), cv::Rect(90, 60, 81, 81));
  EXPECT_EQ(At(130, 100), kBlack);
}

TEST_F(ResultPainter, FittedEllipseTurnsCounterClockwise) {
  Shape(kFittedEllipse, {60, 40, 45, 30, 5});
  const int end = static_cast<int>(std::lround(60 * std::sqrt(0.5)));
  EXPECT_EQ(At(130 + end, 100 - end), kBlue);
  EXPECT_EQ(At(130 + end, 100 + end), kBlack);
}

TEST_F(ResultPainter, SegmentJoinsItsEnds) {
  Shape(kSegment, {0, 0, 50, 0, 0});
  EXPECT_EQ(Box(kWhite), cv::Rect(10, 20, 101, 1));
}

TEST_F(ResultPainter, NumberStandsAtItsPositionWithItsLine) {
  Shape(kNumber, {12.3456f, 20, 60, 120, 60});
  const cv::Rect box = Box(kWhite);
  EXPECT_EQ(box.x, 50);  // position (20, 60) lies at (50, 140)
  EXPECT_EQ(box.br(), cv::Point(251, 141));
  EXPECT_EQ(At(200, 140), kWhite);
  EXPECT_LT(box.y, 140);  // digits above the line
  // Digits differ with the value.
  const int count = Count(kWhite);
  Clear();
  Shape(kNumber, {1.1111f, 20, 60, 120, 60});
  EXPECT_NE(Count(kWhite), count);
}

TEST_F(ResultPainter, FailedFitsDrawNothing) {
  for (const uint8_t kind : {0, 1, 3, 4, 5}) Shape(kind, {0, 0, 0, 0, 0});
  Shape(kFittedLine, {0, 0, 60, 40, 0});
  Shape(kFittedCircle, {60, 40, 0, 0, 0});
  Shape(kFittedEllipse, {60, 40, 30, 0, 0});
  EXPECT_EQ(Count(kBlack), 300 * 200);
}

TEST_F(ResultPainter, OtherKindsDrawNothing) {
  for (const uint8_t kind : {2, 6, 255}) Shape(kind, {60, 40, 20, 9, 9});
  EXPECT_EQ(Count(kBlack), 300 * 200);
}

TEST_F(ResultPainter, ValuesThatAreNoNumbersDrawNothing) {
  const float bad[] = {std::numeric_limits<float>::quiet_NaN(),
                       std::numeric_limits<float>::infinity()};
  for (const float b : bad) {
    for (uint8_t kind = 0; kind < 6; ++kind) Shape(kind, {b, 40, 20, 9, 9});
    DrawMarker({b, 3}, kMarkerCircle, m_view, m_picture);
    DrawMeasureRectangle({60, 40, b, 20, 5}, m_view, m_picture);
  }
  EXPECT_EQ(Count(kBlack), 300 * 200);
}

TEST_F(ResultPainter, ValuesFarOutsideStayDefined) {
  const float far = 3e38f;
  for (uint8_t kind = 0; kind < 6; ++kind) {
    Shape(kind, {far, far, far, far, far});
    Shape(kind, {-far, far, -far, 1, 1});
  }
  for (int style = 0; style < 4; ++style) {
    DrawMarker({far, -far}, style, m_view, m_picture);
  }
  DrawMeasureRectangle({far, far, far, far, far}, m_view, m_picture);
  EXPECT_EQ(m_picture.size(), cv::Size(300, 200));
}

class RefreshWithResults : public ResultPainter {
 protected:
  RefreshWithResults() {
    m_bench.m_srcImage = cv::Mat(80, 120, CV_8U, cv::Scalar(50));
    m_bench.m_roiShapes = ShapesForImage(120, 80);
    m_bench.m_toolMode = kToolLine;
    m_bench.m_results.push_back({{{60, 40, 0, 20, 5}}, {{60, 40}}, {}});
    m_bench.m_results.push_back({{}, {}, {{kFittedLine, {0, 1, 20, 40, 0}}}});
  }
  void Refresh() {
    m_bench.RequestRedraw();
    RefreshView(m_bench, m_view, &m_picture);
  }

  Workbench m_bench;
};

TEST_F(RefreshWithResults, EveryRecordIsDrawnWhenShown) {
  m_bench.m_hideResults = 0;
  Refresh();
  EXPECT_GT(Count(kGreen), 0);
  EXPECT_GT(Count(kMagenta), 0);
  EXPECT_EQ(Count(kBlue), 200);
}

TEST_F(RefreshWithResults, ResultsAreDrawnOverTheRegionOfInterest) {
  m_bench.m_results.clear();
  Refresh();
  EXPECT_EQ(At(132, 100), Pixel(0, 255, 255));  // on the line of interest
  m_bench.m_results.push_back({{}, {{60, 40}}, {}});
  Refresh();
  EXPECT_EQ(At(132, 100), kMagenta);
}

// Rectangles, then points, then shapes of a record; records in their order.
TEST_F(RefreshWithResults, LaterPartsAndRecordsAreDrawnOverEarlierOnes) {
  const ShapeEntry line{kFittedLine, {1, 0, 60, 40, 0}};
  m_bench.m_toolMode = kToolNone;
  m_bench.m_results = {{{{60, 40, 0, 20, 5}}, {{60, 40}}, {}}};
  Refresh();
  EXPECT_EQ(At(131, 100), kMagenta);  // the marker over the scan's arrow
  m_bench.m_results = {{{}, {{60, 40}}, {line}}};
  Refresh();
  EXPECT_EQ(At(132, 100), kBlue);  // the fit over the marker
  m_bench.m_results = {{{}, {}, {line}}, {{}, {{60, 40}}, {}}};
  Refresh();
  EXPECT_EQ(At(132, 100), kMagenta);  // the second record over the first
}

TEST_F(RefreshWithResults, HiddenResultsLeaveTheRegionOfInterest) {
  m_bench.m_hideResults = 1;
  Refresh();
  EXPECT_EQ(Count(kGreen), 0);
  EXPECT_EQ(Count(kMagenta), 0);
  EXPECT_EQ(Count(kBlue), 0);
  EXPECT_GT(Count(Pixel(0, 255, 255)), 0);
}

}  // namespace
}  // namespace rendal
