// SPDX-License-Identifier: MIT
//
// What can be typed into the caliper's fields, taken through measuring and
// drawing: nothing may crash, hang or ask the measurement library for more than
// it grants.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "app/view/view_painter.h"
#include "controls/number_format.h"
#include "tools/caliper_tool.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

std::vector<std::wstring> TypedTexts() {
  return {L"",       L"abc",
          L"-1",     L"0",
          L"1e308",  L"-1e308",
          L"1e-308", L"nan",
          L"-inf",   L"1,5",
          L"1.5.5",  L"0x7f",
          L" 7",     std::wstring(400, L'9')};
}

cv::Mat Disc() {
  cv::Mat image(60, 60, CV_8U, cv::Scalar(20));
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) {
      if ((x - 30) * (x - 30) + (y - 30) * (y - 30) < 121) {
        image.at<unsigned char>(y, x) = 220;
      }
    }
  }
  return image;
}

class TypedNumbers : public testing::TestWithParam<int> {
 protected:
  TypedNumbers() {
    m_bench.m_srcImage = Disc();
    m_bench.m_roiShapes = ShapesForImage(60, 60);
    m_bench.m_toolMode = GetParam();
    m_view.viewWidth = m_view.viewHeight = 90;
    m_view.FitTo(m_bench.m_srcImage.size());
  }

  void MeasureAndDraw(const CaliperParameters& parameters) {
    const ConsoleCapture quiet;
    m_bench.m_bandWidth = parameters.width;
    m_report = Measure(m_bench, parameters);
    cv::Mat picture;
    RefreshView(m_bench, m_view, &picture);
    EXPECT_FALSE(picture.empty());
  }

  // The only record is that of this press, and it can be drawn and printed.
  void ExpectHarmless(const CaliperParameters& parameters) {
    MeasureAndDraw(parameters);
    ASSERT_EQ(m_bench.m_results.size(), 1u);
    EXPECT_LE(m_bench.m_results[0].rectangles.size(),
              size_t{VEXOLAB_MAX_RECTANGLES});
    for (const cv::Point2f& p : m_bench.m_results[0].points) {
      EXPECT_TRUE(p.x >= -1 && p.x <= 60 && p.y >= -1 && p.y <= 60);
    }
  }

  Workbench m_bench;
  ViewState m_view;
  MeasureReport m_report;
};

INSTANTIATE_TEST_SUITE_P(EveryTool, TypedNumbers,
                         testing::Values(kToolLine, kToolCircle, kToolBand,
                                         kToolEllipse));

TEST_P(TypedNumbers, NoTextInAnyFieldDoesHarm) {
  double CaliperParameters::*const fields[] = {
      &CaliperParameters::length, &CaliperParameters::width,
      &CaliperParameters::amplitude, &CaliperParameters::sigma,
      &CaliperParameters::reps};
  for (size_t field = 0; field < std::size(fields); ++field) {
    for (const std::wstring& text : TypedTexts()) {
      SCOPED_TRACE(std::to_string(field) + " \"" +
                   std::string(text.begin(), text.end()) + '"');
      CaliperParameters parameters;
      parameters.*fields[field] = ParseNumber(text.c_str());
      ExpectHarmless(parameters);
    }
  }
  // And the next measurement is as good as any.
  CaliperParameters parameters;
  parameters.selection = "strongest";
  MeasureAndDraw(parameters);
  EXPECT_EQ(m_report.code, 0);
  EXPECT_GE(m_bench.m_results.at(0).points.size(), 2u);
}

TEST_P(TypedNumbers, NoCountDoesHarm) {
  for (const int count :
       {-1, 1, 1000, VEXOLAB_MAX_RECTANGLES, VEXOLAB_MAX_RECTANGLES + 1,
        std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    for (const double width : {0.0, 20.0, 1e7, 1e308}) {
      SCOPED_TRACE(std::to_string(count) + " " + std::to_string(width));
      CaliperParameters parameters;
      parameters.count = count;
      parameters.width = width;
      ExpectHarmless(parameters);
    }
  }
}

TEST_P(TypedNumbers, WhatTheLibraryRefusesIsReported) {
  for (const double length : {-1.0, 0.0, 1e308, std::nan("")}) {
    CaliperParameters parameters;
    parameters.length = length;
    parameters.sigma = length;  // the band has no length
    MeasureAndDraw(parameters);
    EXPECT_LT(m_report.code, 0) << length;
    EXPECT_TRUE(m_bench.m_results.at(0).points.empty());
  }
}

}  // namespace
}  // namespace rendal
