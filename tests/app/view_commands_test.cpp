// SPDX-License-Identifier: MIT
#include "app/view/view_commands.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "tools/blob_tool.h"
#include "tools/console_text.h"

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

class ShownComponents : public ViewCommands {
 protected:
  // A square near the corner and one far off, at 100 % with the image at (0,
  // 0).
  ShownComponents() {
    m_bench.m_srcImage.setTo(0);
    m_bench.m_srcImage(cv::Rect(10, 20, 8, 8)).setTo(200);
    m_bench.m_srcImage(cv::Rect(3000, 2000, 9, 9)).setTo(200);
    m_view.zoom = 1;
    m_view.offsetX = m_view.offsetY = 0;
    Threshold(m_bench, {100, 255});
    Connection(m_bench);
    m_bench.m_redraw = -1;
  }
  const ConsoleCapture m_console;
};

TEST_F(ShownComponents, HighlightAsksForOnePicture) {
  Highlight(m_bench, m_view, {1});
  EXPECT_EQ(m_view.highlighted, std::vector<int32_t>{1});
  EXPECT_EQ(m_bench.m_redraw, 1);
  m_bench.m_redraw = -1;
  Highlight(m_bench, m_view, {1});
  EXPECT_EQ(m_bench.m_redraw, -1);
  Highlight(m_bench, m_view, {});
  EXPECT_EQ(m_bench.m_redraw, 1);
}

TEST_F(ShownComponents, ComponentOutOfSightIsScrolledTo) {
  ShowComponent(m_bench, m_view, 0);
  EXPECT_EQ(m_view.offsetX, 0);
  ShowComponent(m_bench, m_view, 1);
  EXPECT_EQ(m_view.ToView(3004, 2004), cv::Point2f(500, 400));
  EXPECT_EQ(m_view.zoom, 1);
  EXPECT_EQ(m_bench.m_redraw, 1);
  m_bench.m_redraw = -1;
  ShowComponent(m_bench, m_view, 2);  // there is none
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(ShownComponents, ComponentIsFoundUnderAViewPixel) {
  EXPECT_EQ(ComponentAt(m_bench, m_view, 17, 27), 0u);
  EXPECT_EQ(ComponentAt(m_bench, m_view, 18, 27), std::nullopt);
  m_view.zoom = 4;
  m_view.offsetX = -12000 + 100;
  m_view.offsetY = -8000 + 100;
  EXPECT_EQ(ComponentAt(m_bench, m_view, 98, 98), 1u);
  EXPECT_EQ(ComponentAt(m_bench, m_view, 97, 98), std::nullopt);
}

TEST_F(ShownComponents, NothingIsFoundWhileTheyAreNotShown) {
  ASSERT_TRUE(ComponentAt(m_bench, m_view, 12, 22));
  ClearDisplay(m_bench);
  EXPECT_FALSE(ComponentAt(m_bench, m_view, 12, 22));
  Connection(m_bench);
  ASSERT_TRUE(ComponentAt(m_bench, m_view, 12, 22));
  ApplyRegionOperation(m_bench, RegionOperation::kFillUp, {});
  EXPECT_FALSE(ComponentAt(m_bench, m_view, 12, 22));
}

}  // namespace
}  // namespace rendal
