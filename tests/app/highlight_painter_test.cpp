// SPDX-License-Identifier: MIT
#include "app/view/highlight_painter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "app/view/view_painter.h"
#include "tools/blob_tool.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

using Pixel = cv::Vec3b;

const Pixel kBlack(0, 0, 0);
const Pixel kWhite(255, 255, 255);
const Pixel kGrey(50, 50, 50);

class HighlightPainter : public testing::Test {
 protected:
  HighlightPainter() {
    m_bench.m_srcImage = cv::Mat(60, 80, CV_8U, cv::Scalar(50));
    m_view.viewWidth = 80;
    m_view.viewHeight = 60;
  }

  void AddShape(const cv::Rect& where) { m_bench.m_srcImage(where).setTo(200); }
  cv::Mat Picture(std::vector<int32_t> highlighted) {
    Threshold(m_bench, {100, 255});
    Connection(m_bench);
    m_view.highlighted = std::move(highlighted);
    m_bench.m_redraw = 1;
    cv::Mat picture;
    RefreshView(m_bench, m_view, &picture);
    return picture;
  }
  // What the rule says, one view pixel at a time.
  cv::Mat SlowPicture(size_t component) {
    cv::Mat picture = Picture({});
    const auto shows = [&](int u, int v) {
      return m_bench.m_components.At(m_view.ImageColumn(u),
                                     m_view.ImageRow(v)) == component;
    };
    const auto near = [&](int u, int v, int far) {
      for (int dv = -far; dv <= far; ++dv) {
        for (int du = -far; du <= far; ++du) {
          if (shows(u + du, v + dv)) return true;
        }
      }
      return false;
    };
    for (int v = 0; v < picture.rows; ++v) {
      for (int u = 0; u < picture.cols; ++u) {
        if (shows(u, v)) continue;
        if (near(u, v, kHighlightRingPx)) {
          picture.at<Pixel>(v, u) = kWhite;
        } else if (near(u, v, 2 * kHighlightRingPx)) {
          picture.at<Pixel>(v, u) = kBlack;
        }
      }
    }
    return picture;
  }

  const ConsoleCapture m_console;
  Workbench m_bench;
  ViewState m_view;
};

TEST_F(HighlightPainter, WhiteAndBlackRingLieAroundTheComponent) {
  AddShape({20, 20, 10, 10});
  AddShape({50, 20, 10, 10});
  const cv::Mat picture = Picture({1});
  const Pixel inside = picture.at<Pixel>(25, 55);
  EXPECT_EQ(picture.at<Pixel>(20, 50), inside);
  EXPECT_EQ(picture.at<Pixel>(20, 49), kWhite);
  EXPECT_EQ(picture.at<Pixel>(18, 48), kWhite);
  EXPECT_EQ(picture.at<Pixel>(20, 47), kBlack);
  EXPECT_EQ(picture.at<Pixel>(16, 46), kBlack);
  EXPECT_EQ(picture.at<Pixel>(20, 45), kGrey);
  EXPECT_EQ(picture.at<Pixel>(33, 55), kBlack);
  EXPECT_EQ(picture.at<Pixel>(34, 55), kGrey);
  EXPECT_EQ(picture.at<Pixel>(19, 25), kGrey);  // around the other one
}

TEST_F(HighlightPainter, FollowsTheRuleAtEveryZoomAndOffset) {
  AddShape({20, 20, 12, 9});
  m_bench.m_srcImage(cv::Rect(24, 24, 3, 2)).setTo(50);
  AddShape({32, 29, 5, 5});
  for (const float zoom : {0.5f, 1.0f, 1.25f, 3.0f, 16.0f}) {
    for (const float offset : {0.0f, -7.0f, -70.0f, -330.0f, 25.0f}) {
      m_view.zoom = zoom;
      m_view.offsetX = offset;
      m_view.offsetY = offset + 3;
      EXPECT_EQ(cv::norm(Picture({0}), SlowPicture(0), cv::NORM_INF), 0)
          << zoom << ' ' << offset;
    }
  }
}

TEST_F(HighlightPainter, ComponentSmallerThanAViewPixelIsSeen) {
  AddShape({22, 21, 1, 1});
  m_view.zoom = 0.25f;  // shows columns 20 and 24
  const cv::Mat picture = Picture({0});
  EXPECT_EQ(std::count(picture.begin<Pixel>(), picture.end<Pixel>(), kWhite),
            24);
}

TEST_F(HighlightPainter, OutOfSightOrUnknownDrawsNothing) {
  AddShape({20, 20, 10, 10});
  const cv::Mat plain = Picture({});
  EXPECT_EQ(cv::norm(Picture({1, 7, -1}), plain, cv::NORM_INF), 0);
  m_view.offsetX = 500;
  EXPECT_EQ(cv::norm(Picture({0}), Picture({}), cv::NORM_INF), 0);
}

TEST_F(HighlightPainter, NeighboursAreOutlinedTogether) {
  AddShape({20, 20, 10, 10});
  AddShape({31, 20, 10, 10});
  const cv::Mat picture = Picture({0, 1});
  EXPECT_EQ(picture.at<Pixel>(25, 30), kWhite);
  EXPECT_EQ(picture.at<Pixel>(25, 29), picture.at<Pixel>(22, 22));
  EXPECT_EQ(picture.at<Pixel>(25, 31), picture.at<Pixel>(22, 35));
}

TEST_F(HighlightPainter, LiesUnderTheRegionOfInterest) {
  AddShape({20, 20, 10, 10});
  m_bench.m_roiShapes[kToolLine] = {kToolLine, {0, 19, 79, 19, 0}};
  m_bench.m_toolMode = kToolLine;
  EXPECT_EQ(Picture({0}).at<Pixel>(19, 25), Pixel(0, 255, 255));
}

}  // namespace
}  // namespace rendal
