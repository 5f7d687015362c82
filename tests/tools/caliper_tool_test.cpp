// SPDX-License-Identifier: MIT
//
// One press of the measure button against a library that writes down its calls.
#include "tools/caliper_tool.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/console_times.h"
#include "tests/tools/recorded_library.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

using Calls = std::vector<std::string>;

class Caliper : public testing::Test {
 protected:
  Caliper() {
    bench.m_measurementLibrary = RecordedLibrary::Table();
    bench.m_srcImage = cv::Mat(80, 120, CV_8U, cv::Scalar(0));
    library.image = bench.m_srcImage.data;
    bench.m_roiShapes = {{kToolLine, {1.5f, 2, 3, 4, 0}},
                         {kToolCircle, {50, 40, 20, 0, 0}},
                         {kToolBand, {5, 6, 7, 8, 0}},
                         {kToolEllipse, {60, 30, 15, 25, 10}}};
    bench.m_hideResults = 1;
  }

  // The console's text of one press, without the seconds.
  std::string Press(int32_t mode) {
    bench.m_toolMode = mode;
    testing::internal::CaptureStdout();
    Measure(bench, parameters);
    return WithoutTimes(testing::internal::GetCapturedStdout());
  }

  MeasureReport Report(int32_t mode) {
    const ConsoleCapture console;
    bench.m_toolMode = mode;
    return Measure(bench, parameters);
  }

  void ExpectNothingHappened(const std::string& console) {
    EXPECT_EQ(console, "");
    EXPECT_EQ(library.calls, Calls());
    EXPECT_EQ(bench.m_redraw, 0);
    EXPECT_EQ(bench.m_hideResults, 1);
  }

  // What a record's only shape holds.
  void ExpectShape(uint8_t kind, const std::array<float, 5>& values) {
    ASSERT_EQ(bench.m_results.size(), 1u);
    ASSERT_EQ(bench.m_results[0].shapes.size(), 1u);
    const ShapeEntry& shape = bench.m_results[0].shapes[0];
    EXPECT_EQ(shape.kind, kind);
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(shape.values[i], values[i]) << i;
  }

  RecordedLibrary library;
  Workbench bench;
  CaliperParameters parameters = {31, 7, 12, 1.25, 2.5, 9, -1, "last-"};
};

TEST_F(Caliper, LineIsGeneratedMeasuredFittedAndReleased) {
  Press(kToolLine);
  EXPECT_EQ(library.calls,
            Calls({"gen_measure_line(1.5, 2, 3, 4, 31, 7, -1, 9)",
                   "do_measure(image, 120, 80, 1.25, 12, \"last-\", "
                   "rectangles, 2)",
                   "do_fit(points, 2, 0, 7, 2.5, 20, 2)", "clear_mems(1)",
                   "clear_mems(2)"}));
}

TEST_F(Caliper, CircleIsGeneratedMeasuredFittedAndReleased) {
  Press(kToolCircle);
  EXPECT_EQ(library.calls,
            Calls({"gen_measure_circle(50, 40, 20, 31, 7, -1, 9)",
                   "do_measure(image, 120, 80, 1.25, 12, \"last-\", "
                   "rectangles, 2)",
                   "do_fit(points, 2, 1, 7, 2.5, 20, 3)", "clear_mems(1)",
                   "clear_mems(2)"}));
}

TEST_F(Caliper, EllipseIsGeneratedMeasuredFittedAndReleased) {
  Press(kToolEllipse);
  EXPECT_EQ(library.calls,
            Calls({"gen_measure_ellipse(60, 30, 15, 25, 10, 31, 7, -1, 9)",
                   "do_measure(image, 120, 80, 1.25, 12, \"last-\", "
                   "rectangles, 2)",
                   "do_fit(points, 2, 2, 0, 2.5, 20, 3)", "clear_mems(1)",
                   "clear_mems(2)"}));
}

TEST_F(Caliper, BandIsOneRectangleOfTheCaliperWidth) {
  Press(kToolBand);
  EXPECT_EQ(library.calls,
            Calls({"ppw_to_rr(5, 6, 7, 8, 7)",
                   "measure_pos_d(50, 60, 70, 80, 90, image, 120, 80, 1.25, "
                   "12)",
                   "clear_mems(1)"}));
}

TEST_F(Caliper, RepsAreHandedOnInSinglePrecision) {
  parameters.reps = 0.1;
  Press(kToolLine);
  // 0.1f, not 0.1: the recorded factor is that of a float.
  EXPECT_EQ(library.calls[2], "do_fit(points, 2, 0, 7, 0.1, 20, 2)");
}

TEST_F(Caliper, LinePrintsItsCentreAndAngleBelowTheTime) {
  library.fit = {0, 1, 12.34567, 8.5};
  EXPECT_EQ(Press(kToolLine),
            "measure line\nelasped time:Ts\n\n"
            "line center = (   12.3457,     8.5000), angle = -90.0000\n");
}

TEST_F(Caliper, CirclePrintsItsCentreAndRadiusBelowTheTime) {
  library.fit = {12.34567, 8.5, 1234.5};
  EXPECT_EQ(Press(kToolCircle),
            "measure circle\nelasped time:Ts\n\n"
            "circle center = (   12.3457,     8.5000), radius =  1234.5000\n");
}

TEST_F(Caliper, EllipsePrintsItsSizesBeforeItsAngle) {
  library.fit = {1, 2, 3, 4, 5};
  EXPECT_EQ(Press(kToolEllipse),
            "measure ellipse\nelasped time:Ts\n\n"
            "ellipse center = (    1.0000,     2.0000), "
            "size = (    4.0000,     5.0000), angle =     3.0000\n");
}

TEST_F(Caliper, BandPrintsEveryEdgeCountingFromOne) {
  library.edges = {{1, 2, 30, 4, 5, -60, 7, 8, 90, 10.5, 11.25, -120.125}};
  EXPECT_EQ(Press(kToolBand),
            "measure pos\nelasped time:Ts\n\n"
            "i =   1, x =    1.0000, y =    2.0000, amp =   30.0000\n"
            "i =   2, x =    4.0000, y =    5.0000, amp =  -60.0000\n"
            "i =   3, x =    7.0000, y =    8.0000, amp =   90.0000\n"
            "i =   4, x =   10.5000, y =   11.2500, amp = -120.1250\n");
  ASSERT_EQ(bench.m_results.size(), 1u);
  const Result& result = bench.m_results[0];
  EXPECT_EQ(result.points, (std::vector<cv::Point2f>{
                               {1, 2}, {4, 5}, {7, 8}, {10.5f, 11.25f}}));
  EXPECT_TRUE(result.rectangles.empty());
  EXPECT_TRUE(result.shapes.empty());
}

TEST_F(Caliper, ReportOfABandHoldsItsEdges) {
  library.edges = {{1, 2, 30, 4, 5, -60}};
  const MeasureReport report = Report(kToolBand);
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.calipers, 1);
  ASSERT_EQ(report.points.size(), 2u);
  EXPECT_EQ(report.points[0].x, 1);
  EXPECT_EQ(report.points[0].y, 2);
  EXPECT_EQ(report.points[0].amplitude, 30);
  EXPECT_EQ(report.points[1].x, 4);
  EXPECT_EQ(report.points[1].y, 5);
  EXPECT_EQ(report.points[1].amplitude, -60);
}

TEST_F(Caliper, ReportHoldsTheFirstOfSeveralErrors) {
  bench.m_measurementLibrary = LinkedMeasurementLibrary();
  parameters.length = 0;
  EXPECT_EQ(Report(kToolCircle).code, VEXOLAB_E_ARGUMENT);
}

TEST_F(Caliper, AngleOfALineCountsFromItsFirstComponent) {
  EXPECT_EQ(LineAngle(0, 1), -90);
  EXPECT_EQ(LineAngle(1, 0), 0);
  EXPECT_EQ(LineAngle(0, -1), 90);
  // In (-180, 180]: half a turn is positive, whichever way it is reached.
  EXPECT_EQ(LineAngle(-1, 0), 180);
  EXPECT_NEAR(LineAngle(-1, 1e-9), -180, 1e-6);
  EXPECT_NEAR(LineAngle(-1, -1e-9), 180, 1e-6);
  EXPECT_EQ(LineAngle(-0.0, -1), 90);
  // Rising to the right on screen, where rows count downwards.
  EXPECT_NEAR(LineAngle(1, -1), 45, 1e-12);
  // A horizontal line prints without a sign.
  EXPECT_FALSE(std::signbit(LineAngle(1, 0)));
}

TEST_F(Caliper, RecordHoldsRectanglesPointsAndTheFit) {
  library.fit = {0.6, 0.8, 30, 40};
  Press(kToolLine);
  ExpectShape(kFittedLine, {0.6f, 0.8f, 30, 40, 0});
  const Result& result = bench.m_results[0];
  EXPECT_EQ(result.rectangles,
            (std::vector<MeasureRectangle>{{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}}));
  EXPECT_EQ(result.points, (std::vector<cv::Point2f>{{10, 20}, {11, 21}}));
}

TEST_F(Caliper, CircleIsStoredAsKindOne) {
  library.fit = {10, 20, 30};
  Press(kToolCircle);
  ExpectShape(kFittedCircle, {10, 20, 30, 0, 0});
}

TEST_F(Caliper, EllipseIsStoredAsKindThreeInTheOrderOfTheFit) {
  library.fit = {10, 20, 30, 40, 50};
  Press(kToolEllipse);
  ExpectShape(kFittedEllipse, {10, 20, 30, 40, 50});
}

TEST_F(Caliper, EveryPressLeavesOneShownRecord) {
  bench.m_regionOverlay.Replace(
      {OverlayItem{{0, 0, 255, 0}, {}, {{0, 9, 1, 0}}}});
  Press(kToolLine);
  Press(kToolCircle);
  EXPECT_EQ(bench.m_results.size(), 1u);
  EXPECT_EQ(bench.m_results[0].shapes[0].kind, kFittedCircle);
  EXPECT_EQ(bench.m_redraw, 1);
  EXPECT_EQ(bench.m_hideResults, 0);
  EXPECT_TRUE(bench.m_regionOverlay.empty());
}

TEST_F(Caliper, RedrawAndHideAreNeighbours) {
  EXPECT_EQ(offsetof(Workbench, m_hideResults),
            offsetof(Workbench, m_redraw) + sizeof(int32_t));
}

TEST_F(Caliper, NothingHappensWithoutAnImage) {
  bench.m_srcImage.release();
  bench.m_results.emplace_back();
  ExpectNothingHappened(Press(kToolLine));
  EXPECT_EQ(bench.m_results.size(), 1u);
}

TEST_F(Caliper, ARefusedImageIsNoImage) {
  bench.m_srcImage = cv::Mat(80, 120, CV_8UC2, cv::Scalar::all(0));
  ExpectNothingHappened(Press(kToolLine));
}

TEST_F(Caliper, ModeNoneKeepsEarlierResults) {
  bench.m_results.emplace_back();
  bench.m_regionOverlay.Replace(
      {OverlayItem{{0, 0, 255, 0}, {}, {{0, 9, 1, 0}}}});
  ExpectNothingHappened(Press(kToolNone));
  EXPECT_EQ(bench.m_results.size(), 1u);
  EXPECT_EQ(bench.m_regionOverlay.size(), 1u);
}

TEST_F(Caliper, ModesWithoutARecordKeepEarlierResults) {
  bench.m_results.emplace_back();
  ExpectNothingHappened(Press(-1));
  ExpectNothingHappened(Press(4));
  EXPECT_EQ(bench.m_results.size(), 1u);
}

TEST_F(Caliper, RecordOfAnUnknownKindOnlyEmptiesTheResults) {
  bench.m_results.emplace_back();
  bench.m_roiShapes[0].kind = 4;
  ExpectNothingHappened(Press(kToolLine));
  EXPECT_TRUE(bench.m_results.empty());
}

TEST_F(Caliper, KindOfTheRecordDecidesNotItsIndex) {
  bench.m_roiShapes[kToolLine] = {kToolCircle, {50, 40, 20, 0, 0}};
  Press(kToolLine);
  EXPECT_EQ(library.calls[0], "gen_measure_circle(50, 40, 20, 31, 7, -1, 9)");
}

TEST_F(Caliper, FailedFitIsPrintedAndStoredAsItStands) {
  library.fit = {7, 8, 9};
  library.fit_code = VEXOLAB_E_DEGENERATE;
  EXPECT_NE(Press(kToolCircle).find("radius =     9.0000\n"),
            std::string::npos);
  ExpectShape(kFittedCircle, {7, 8, 9, 0, 0});
}

// Whatever the fit left behind, in every mode that fits.
TEST_F(Caliper, FailedFitsPrintTheBuffer) {
  library.fit = {1, 0, 3, 4, 5};
  library.fit_code = VEXOLAB_E_TOO_FEW;
  EXPECT_EQ(Press(kToolLine),
            "measure line\nelasped time:Ts\n\n"
            "line center = (    3.0000,     4.0000), angle =   0.0000\n");
  EXPECT_EQ(Press(kToolCircle),
            "measure circle\nelasped time:Ts\n\n"
            "circle center = (    1.0000,     0.0000), radius =     3.0000\n");
  EXPECT_EQ(Press(kToolEllipse),
            "measure ellipse\nelasped time:Ts\n\n"
            "ellipse center = (    1.0000,     0.0000), "
            "size = (    4.0000,     5.0000), angle =     3.0000\n");
  EXPECT_EQ(library.calls.size(), 15u);  // each released its two ids
  EXPECT_EQ(bench.m_hideResults, 0);
}

TEST_F(Caliper, NoPointsGiveAFitOnNone) {
  library.points.clear();
  library.fit.clear();
  EXPECT_EQ(Press(kToolLine),
            "measure line\nelasped time:Ts\n\n"
            "line center = (    0.0000,     0.0000), angle = -90.0000\n");
  EXPECT_EQ(library.calls[2].rfind("do_fit(", 0), 0u);
  EXPECT_NE(library.calls[2].find(", 0, 0, 7, "), std::string::npos);
  EXPECT_TRUE(bench.m_results[0].points.empty());
}

TEST_F(Caliper, BandWithoutEdgesPrintsOnlyTheTime) {
  EXPECT_EQ(Press(kToolBand), "measure pos\nelasped time:Ts\n\n");
  EXPECT_EQ(bench.m_results.size(), 1u);
  EXPECT_EQ(library.calls.back(), "clear_mems(1)");
}

TEST_F(Caliper, FirstDirectionIsPositiveAndAnyOtherNegative) {
  EXPECT_EQ(ScanDirection(0), 1);
  for (const int index : {1, 2, -1}) EXPECT_EQ(ScanDirection(index), -1);
}

TEST_F(Caliper, PartOfALargerImageIsMeasuredWithoutItsSurroundings) {
  const cv::Mat large(100, 200, CV_8U, cv::Scalar(0));
  bench.m_srcImage = large(cv::Rect(30, 10, 120, 80));
  library.image = bench.m_srcImage.data;
  Press(kToolLine);
  EXPECT_EQ(library.calls[1],
            "do_measure(?, 120, 80, 1.25, 12, \"last-\", rectangles, 2)");
}

// With the library itself: generators that refuse give zeros, no crash.
TEST_F(Caliper, RefusedParametersPrintZeros) {
  bench.m_measurementLibrary = LinkedMeasurementLibrary();
  parameters.length = 0;
  EXPECT_EQ(Press(kToolCircle),
            "measure circle\nelasped time:Ts\n\n"
            "circle center = (    0.0000,     0.0000), radius =     0.0000\n");
  ExpectShape(kFittedCircle, {0, 0, 0, 0, 0});
  EXPECT_TRUE(bench.m_results[0].rectangles.empty());
}

}  // namespace
}  // namespace rendal
