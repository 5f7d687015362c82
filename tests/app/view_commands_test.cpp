// SPDX-License-Identifier: MIT
#include "app/view/view_commands.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace rendal {
namespace {

class ViewCommands : public testing::Test {
 protected:
  ViewCommands() {
    m_view.viewWidth = 1000;
    m_view.viewHeight = 800;
    m_bench.m_srcImage = cv::Mat(3000, 4000, CV_8U, cv::Scalar(9));
    m_view.FitTo(m_bench.m_srcImage.size());
    m_bench.m_redraw = -1;
  }

  Workbench m_bench;
  ViewState m_view;
};

TEST_F(ViewCommands, ZoomCommandsDoNothingWithoutAnImage) {
  m_bench.m_srcImage.release();
  m_view.zoom = 3;
  ZoomOne(m_bench, m_view);
  ZoomFit(m_bench, m_view);
  ZoomWheel(m_bench, m_view, 10, 10, 120);
  EXPECT_EQ(m_view.zoom, 3);
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(ViewCommands, EachZoomCommandRearmsTheRedraw) {
  ZoomOne(m_bench, m_view);
  EXPECT_EQ(m_view.zoom, 1);
  EXPECT_EQ(m_bench.m_redraw, 1);
  m_bench.m_redraw = -1;
  ZoomFit(m_bench, m_view);
  EXPECT_EQ(m_view.zoom, 0.25f);
  EXPECT_EQ(m_bench.m_redraw, 1);
  m_bench.m_redraw = -1;
  ZoomWheel(m_bench, m_view, 10, 10, 120);
  EXPECT_EQ(m_view.zoom, 0.3125f);
  EXPECT_EQ(m_bench.m_redraw, 1);
}

TEST_F(ViewCommands, RearmingBeforeTheFirstRequestRequestsNothing) {
  m_bench.m_redraw = 0;
  ZoomFit(m_bench, m_view);
  EXPECT_EQ(m_bench.m_redraw, 0);
}

TEST_F(ViewCommands, WheelOutsideTheViewRequestsNothing) {
  ZoomWheel(m_bench, m_view, 1000, 10, 120);
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(ViewCommands, ToolModeRequestsARedraw) {
  SelectToolMode(m_bench, kToolEllipse);
  EXPECT_EQ(m_bench.m_toolMode, 3);
  EXPECT_EQ(m_bench.m_redraw, 1);
}

TEST_F(ViewCommands, ClearDisplayHidesResultsAndForgetsTheOverlay) {
  m_bench.m_results.resize(1);
  m_bench.m_regionOverlay.Replace({OverlayItem{{0, 0, 255, 0}, {}, {}}});
  const Status status = ClearDisplay(m_bench);
  EXPECT_EQ(m_bench.m_hideResults, 1);
  EXPECT_EQ(m_bench.m_redraw, 1);
  EXPECT_TRUE(m_bench.m_regionOverlay.empty());
  EXPECT_EQ(m_bench.m_results.size(), 1u);
  EXPECT_EQ(status.tone, Tone::kNotice);
  EXPECT_EQ(status.text, "");
}

TEST(Workbench, StartsWithoutToolRequestOrHistory) {
  const Workbench bench;
  EXPECT_EQ(bench.m_language, 0);
  EXPECT_EQ(bench.m_parallelMode, 1);
  EXPECT_EQ(bench.m_redraw, 0);
  EXPECT_EQ(bench.m_toolMode, 99);
  EXPECT_TRUE(bench.m_regionHistory.empty());
  EXPECT_GE(bench.m_regionHistory.capacity(), 3u);
  EXPECT_TRUE(bench.m_regionOverlay.empty());
  EXPECT_EQ(bench.CurrentShape(), nullptr);
}

TEST(Workbench, HideResultsStandsRightAfterRedraw) {
  const Workbench bench;
  EXPECT_EQ(&bench.m_hideResults, &bench.m_redraw + 1);
}

TEST(Workbench, ShapesBeforeTheFirstImageHaveTheirDefaults) {
  const Workbench bench;
  ASSERT_EQ(bench.m_roiShapes.size(), 4u);
  const float expected[4][5] = {{0, 0, 100, 100, 0},
                                {0, 0, 100, 0, 0},
                                {0, 0, 100, 100, 0},
                                {100, 100, 0, 40, 20}};
  for (int kind = 0; kind < 4; ++kind) {
    EXPECT_EQ(bench.m_roiShapes[kind].kind, kind);
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(bench.m_roiShapes[kind].values[i], expected[kind][i]);
    }
  }
}

TEST(Workbench, TwoChannelImageCountsAsNone) {
  Workbench bench;
  bench.m_srcImage = cv::Mat(2, 2, CV_8UC2);
  EXPECT_FALSE(bench.HasImage());
  bench.m_srcImage = cv::Mat(2, 2, CV_8U);
  EXPECT_TRUE(bench.HasImage());
}

}  // namespace
}  // namespace rendal
