// SPDX-License-Identifier: MIT
//
// One press of the "Do" button, first against a library that writes down its
// calls, then on pictures with the library itself.
#include "tools/line_finder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "tests/tools/recorded_library.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

using Calls = std::vector<std::string>;

// Taller than wide, so that a line down it is long enough: bright left of
// column 40, dark from there on.
cv::Mat Wall() {
  cv::Mat image(120, 80, CV_8U, cv::Scalar(20));
  image.colRange(0, 40).setTo(220);
  return image;
}

class LineFinder : public testing::Test {
 protected:
  LineFinder() {
    bench.m_measurementLibrary = RecordedLibrary::Table();
    SetImage(Wall());
    bench.m_hideResults = 1;
    bench.m_results.resize(3);
    bench.m_regionOverlay.Replace(
        {OverlayItem{{0, 0, 255, 0}, {}, {{0, 9, 1, 0}}}});
  }

  void SetImage(const cv::Mat& image) {
    bench.m_srcImage = image;
    library.image = bench.m_srcImage.data;
  }
  std::string Press(int display) {
    testing::internal::CaptureStdout();
    FindLine(bench, display);
    return testing::internal::GetCapturedStdout();
  }
  const Result& Record() const { return bench.m_results.at(0); }

  RecordedLibrary library;
  Workbench bench;
};

TEST_F(LineFinder, CallsTheLibraryInOrderAndReleasesEveryId) {
  library.edges = {{1, 2, 30}, {4, 5, -60}};
  Press(kShowEdges);
  const std::string generate = "gen_measure_line(39, 119, 39, 0, 10, 5, 1, 0)";
  EXPECT_EQ(library.calls,
            Calls({generate,
                   "do_measure(image, 80, 120, 1, 50, \"first-\", rectangles, "
                   "2)",
                   "do_fit(points, 2, 0, 7, 2, 20, 2)", "clear_mems(1)",
                   "clear_mems(2)", generate,
                   "measure_pos_d(1, 2, 3, 4, 5, image, 80, 120, 1.5, 30)",
                   "clear_mems(4)",
                   "measure_pos_d(6, 7, 8, 9, 10, image, 80, 120, 1.5, 30)",
                   "clear_mems(5)", "clear_mems(3)"}));
}

TEST_F(LineFinder, PrintsCountsCodesAndEveryEdge) {
  library.edges = {{1, 2, 30, 4, 5, -60, 7, 8, 90}, {10.5, 11.25, -120.125}};
  EXPECT_EQ(Press(kShowEdges),
            "HoughLinesP found 1 lines\n"
            "num1 =  2, num2 =  2\n"
            "mem_id =   1, mem_id2 =   2, err_code =   0\n"
            "i =   1, x =    1.0000, y =    2.0000, amp =   30.0000\n"
            "i =   4, x =    4.0000, y =    5.0000, amp =  -60.0000\n"
            "i =   7, x =    7.0000, y =    8.0000, amp =   90.0000\n"
            "i =   1, x =   10.5000, y =   11.2500, amp = -120.1250\n");
}

TEST_F(LineFinder, FirstDisplayStillMeasuresEveryEdge) {
  library.edges = {{1, 2, 30}};
  const std::string text = Press(kShowSegment);
  const Calls calls = library.calls;
  EXPECT_NE(text.find("i =   1"), std::string::npos);
  EXPECT_EQ(calls.size(), 11u);
}

TEST_F(LineFinder, FirstDisplayShowsTheSegment) {
  Press(kShowSegment);
  EXPECT_TRUE(Record().rectangles.empty());
  EXPECT_TRUE(Record().points.empty());
  ASSERT_EQ(Record().shapes.size(), 1u);
  EXPECT_EQ(Record().shapes[0].kind, kSegment);
  const float expected[] = {39, 119, 39, 0, 0};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Record().shapes[0].values[i], expected[i]) << i;
  }
}

TEST_F(LineFinder, SecondDisplayShowsCalipersPointsAndTheFittedLine) {
  library.edges = {{1, 2, 30, 4, 5, -60}};
  Press(kShowCalipers);
  EXPECT_EQ(Record().rectangles,
            (std::vector<MeasureRectangle>{{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}}));
  EXPECT_EQ(Record().points, (std::vector<cv::Point2f>{{10, 20}, {11, 21}}));
  ASSERT_EQ(Record().shapes.size(), 1u);
  EXPECT_EQ(Record().shapes[0].kind, kFittedLine);
  const float expected[] = {1, 2, 3, 4, 0};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Record().shapes[0].values[i], expected[i]) << i;
  }
}

TEST_F(LineFinder, ThirdDisplayShowsEveryEdge) {
  library.edges = {{1, 2, 30}, {4, 5, -60, 7, 8, -90}};
  Press(kShowEdges);
  EXPECT_TRUE(Record().rectangles.empty());
  EXPECT_EQ(Record().points,
            (std::vector<cv::Point2f>{{1, 2}, {4, 5}, {7, 8}}));
  EXPECT_TRUE(Record().shapes.empty());  // no caliper has both polarities
}

TEST_F(LineFinder, ThirdDisplayMeasuresFromTheFirstRisingToTheFirstFalling) {
  library.edges = {{0, 0, -30, 10, 20, 40, 0, 1, -50, 0, 2, 60}};
  Press(kShowEdges);
  ASSERT_EQ(Record().shapes.size(), 1u);
  EXPECT_EQ(Record().shapes[0].kind, kNumber);
  const float expected[] = {std::sqrt(500.0f), 10, 20, 0, 0};
  for (int i = 0; i < 5; ++i) {
    EXPECT_FLOAT_EQ(Record().shapes[0].values[i], expected[i]) << i;
  }
}

TEST_F(LineFinder, AnEdgeWithoutAmplitudeIsNeitherRisingNorFalling) {
  library.edges = {{1, 2, 0, 4, 5, -60}};
  Press(kShowEdges);
  EXPECT_EQ(Record().points.size(), 2u);
  EXPECT_TRUE(Record().shapes.empty());
}

TEST_F(LineFinder, OtherDisplaysShowNothing) {
  for (const int display : {-1, 3}) {
    Press(display);
    EXPECT_TRUE(Record().rectangles.empty() && Record().points.empty() &&
                Record().shapes.empty());
  }
}

TEST_F(LineFinder, RecordReplacesResultsAndOverlayAndIsShown) {
  Press(kShowEdges);
  EXPECT_EQ(bench.m_results.size(), 1u);
  EXPECT_TRUE(bench.m_regionOverlay.empty());
  EXPECT_EQ(bench.m_hideResults, 0);
  EXPECT_EQ(bench.m_redraw, 1);
}

TEST_F(LineFinder, FailedFitEndsAfterItsLine) {
  library.fit_code = VEXOLAB_E_TOO_FEW;
  EXPECT_EQ(Press(kShowEdges),
            "HoughLinesP found 1 lines\n"
            "num1 =  2, num2 =  2\n"
            "mem_id =   1, mem_id2 =   2, err_code =  -3\n");
  EXPECT_EQ(library.calls.size(), 5u);
  EXPECT_EQ(library.calls[3], "clear_mems(1)");
  EXPECT_EQ(library.calls[4], "clear_mems(2)");
  EXPECT_TRUE(bench.m_regionOverlay.empty());
}

TEST_F(LineFinder, ReportHoldsTheFirstOfSeveralErrors) {
  bench.m_measurementLibrary.do_measure =
      [](const unsigned char*, int, int, double, double, const char*,
         const float*, int, double** points, int* n) -> int {
    *points = nullptr;
    *n = 0;
    return VEXOLAB_E_LIMIT;
  };
  library.fit_code = VEXOLAB_E_TOO_FEW;
  const ConsoleCapture console;
  EXPECT_EQ(FindLine(bench, kShowEdges).code, VEXOLAB_E_LIMIT);
}

TEST_F(LineFinder, FailedFitLeavesTheSegmentButNoCalipers) {
  library.fit_code = VEXOLAB_E_TOO_FEW;
  Press(kShowSegment);
  EXPECT_EQ(Record().shapes.size(), 1u);
  Press(kShowCalipers);
  EXPECT_TRUE(Record().rectangles.empty() && Record().points.empty() &&
              Record().shapes.empty());
}

TEST_F(LineFinder, NothingHappensWithoutAnImage) {
  bench.m_srcImage.release();
  EXPECT_EQ(Press(kShowEdges), "");
  EXPECT_EQ(bench.m_results.size(), 3u);
  EXPECT_EQ(bench.m_redraw, 0);
}

TEST_F(LineFinder, WithoutASegmentEverythingStays) {
  // One line, but shorter than the image is wide.
  cv::Mat image(120, 80, CV_8U, cv::Scalar(20));
  image(cv::Rect(0, 30, 40, 60)).setTo(220);
  SetImage(image);
  EXPECT_EQ(Press(kShowEdges), "HoughLinesP found 0 lines\n");
  EXPECT_EQ(library.calls, Calls());
  EXPECT_EQ(bench.m_results.size(), 3u);
  EXPECT_EQ(bench.m_regionOverlay.size(), 1u);
  EXPECT_EQ(bench.m_hideResults, 1);
  EXPECT_EQ(bench.m_redraw, 0);
}

// Across an image no segment is as long as the image is wide: it ends a pixel
// short of that.
TEST_F(LineFinder, LinesAcrossAnImageAreTooShort) {
  SetImage(Wall().t());
  EXPECT_EQ(Press(kShowEdges), "HoughLinesP found 0 lines\n");
}

// The smallest images have no line to find, but must not stop the program.
TEST_F(LineFinder, TinyImagesAreSearched) {
  for (const cv::Size size : {cv::Size(1, 1), {2, 1}, {3, 3}, {1, 50}}) {
    SetImage(cv::Mat(size, CV_8U, cv::Scalar(9)));
    EXPECT_EQ(Press(kShowEdges), "HoughLinesP found 0 lines\n") << size;
  }
}

class FoundLine : public LineFinder {
 protected:
  FoundLine() { bench.m_measurementLibrary = LinkedMeasurementLibrary(); }
};

TEST_F(FoundLine, FallingEdgeIsFittedOnItsPlace) {
  cv::Mat image;
  cv::GaussianBlur(Wall(), image, cv::Size(), 0.7);
  SetImage(image);
  const std::string text = Press(kShowCalipers);
  EXPECT_NE(text.find("err_code =   0\n"), std::string::npos) << text;
  ASSERT_EQ(Record().shapes.size(), 1u);
  const float* const line = Record().shapes[0].values;
  // Between the pixel columns 39 and 40.
  EXPECT_NEAR(line[2], 39.5, 0.01);
  EXPECT_NEAR(line[0], 0, 1e-4);
  EXPECT_EQ(Record().points.size(), Record().rectangles.size());
}

// The segment runs up, so calipers scan to the right.
TEST_F(FoundLine, RisingEdgeHasNoFallingPointsToFit) {
  SetImage(255 - Wall());
  const std::string text = Press(kShowEdges);
  EXPECT_NE(text.find("num2 =  0\n"), std::string::npos) << text;
  EXPECT_NE(text.find("err_code =  -3\n"), std::string::npos) << text;
  EXPECT_TRUE(Record().points.empty());
}

TEST_F(FoundLine, WidthOfAStripeIsMeasuredInEveryCaliper) {
  // A bright stripe 3 pixels wide: each caliper meets both of its edges.
  cv::Mat image(120, 80, CV_8U, cv::Scalar(20));
  image.colRange(40, 43).setTo(220);
  cv::GaussianBlur(image, image, cv::Size(), 0.5);
  SetImage(image);
  const std::string text = Press(kShowEdges);
  ASSERT_GE(Record().shapes.size(), 20u) << text;
  for (const ShapeEntry& entry : Record().shapes) {
    EXPECT_EQ(entry.kind, kNumber);
    EXPECT_NEAR(entry.values[0], 3, 0.02);
  }
}

}  // namespace
}  // namespace rendal
