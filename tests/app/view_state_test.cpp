// SPDX-License-Identifier: MIT
#include "app/view/view_state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "app/view/view_globals.h"

namespace rendal {
namespace {

const cv::Size kSmallImage(100, 80);
const cv::Size kLargeImage(4000, 3000);

ViewState View(int width = 1000, int height = 800) {
  ViewState view;
  view.viewWidth = width;
  view.viewHeight = height;
  return view;
}

TEST(ViewState, StartsAtFullSizeWithNothingGrabbed) {
  const ViewState view;
  EXPECT_EQ(view.zoom, 1.0f);
  EXPECT_EQ(view.fitZoom, 1.0f);
  EXPECT_EQ(view.minZoom, 0.125f);
  EXPECT_EQ(view.offsetX, 0);
  EXPECT_EQ(view.offsetY, 0);
  EXPECT_FALSE(view.dragging);
  EXPECT_EQ(view.grabbed, -1);
}

TEST(ViewState, SmallImageIsShownAtFullSizeAndCentred) {
  ViewState view = View();
  view.FitTo(kSmallImage);
  EXPECT_EQ(view.zoom, 1.0f);
  EXPECT_EQ(view.offsetX, 450);
  EXPECT_EQ(view.offsetY, 360);
}

TEST(ViewState, LargeImageShrinksToFitAndIsCentred) {
  ViewState view = View();
  view.FitTo(kLargeImage);
  EXPECT_EQ(view.fitZoom, 0.25f);
  EXPECT_EQ(view.zoom, 0.25f);
  EXPECT_EQ(view.minZoom, 0.125f);
  EXPECT_EQ(view.offsetX, 0);
  EXPECT_EQ(view.offsetY, 25);
}

TEST(ViewState, OddMarginIsCutByIntegerDivision) {
  ViewState view = View();
  view.FitTo({101, 81});
  EXPECT_EQ(view.offsetX, 449);
  EXPECT_EQ(view.offsetY, 359);
}

TEST(ViewState, ImageWithoutPixelsLiesAtTheViewCentre) {
  ViewState view = View();
  view.FitTo({0, 0});
  EXPECT_EQ(view.zoom, 1.0f);
  EXPECT_EQ(view.fitZoom, 1.0f);
  EXPECT_EQ(view.offsetX, 500);
  EXPECT_EQ(view.offsetY, 400);
}

TEST(ViewState, WheelDoesNotGoBelowHalfTheFittingZoom) {
  ViewState view = View();
  view.FitTo(kLargeImage);
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(view.WheelAt(kLargeImage, 500, 400, -120));
  }
  EXPECT_EQ(view.zoom, 0.125f);
}

TEST(ViewState, ZoomingInRepeatedlyStopsAt128) {
  ViewState view = View();
  view.FitTo(kLargeImage);
  for (int i = 0; i < 60; ++i) view.WheelAt(kLargeImage, 500, 400, 120);
  EXPECT_EQ(view.zoom, 128.0f);
}

TEST(ViewState, WheelStepIsTheSameForEveryDelta) {
  ViewState view = View();
  view.FitTo(kSmallImage);
  view.WheelAt(kSmallImage, 500, 400, 3);
  EXPECT_EQ(view.zoom, 1.25f);
  view.WheelAt(kSmallImage, 500, 400, -1200);
  EXPECT_FLOAT_EQ(view.zoom, 1.0f);
}

TEST(ViewState, WheelOutsideTheViewOrWithoutDeltaDoesNothing) {
  ViewState view = View();
  view.FitTo(kLargeImage);
  const ViewState before = view;
  EXPECT_FALSE(view.WheelAt(kLargeImage, -1, 400, 120));
  EXPECT_FALSE(view.WheelAt(kLargeImage, 500, -1, 120));
  EXPECT_FALSE(view.WheelAt(kLargeImage, 1000, 400, 120));
  EXPECT_FALSE(view.WheelAt(kLargeImage, 500, 800, 120));
  EXPECT_FALSE(view.WheelAt(kLargeImage, 500, 400, 0));
  EXPECT_EQ(view.zoom, before.zoom);
  EXPECT_EQ(view.offsetX, before.offsetX);
  EXPECT_EQ(view.offsetY, before.offsetY);
}

TEST(ViewState, WheelComputesTheOffsetFromTheShownSize) {
  ViewState view = View();
  view.FitTo(kSmallImage);  // at (450, 360), 100 x 80
  view.WheelAt(kSmallImage, 483, 391, 120);
  // 33 / 100 of 125 is 41.25, 31 / 80 of 100 is 38.75.
  EXPECT_EQ(view.offsetX, 483 - 41);
  EXPECT_EQ(view.offsetY, 391 - 39);
}

TEST(ViewState, PointUnderCursorStaysUnderCursor) {
  ViewState view = View();
  view.FitTo(kLargeImage);
  const cv::Point2f before = view.ToImage(700, 300);
  for (int i = 0; i < 12; ++i) {
    view.WheelAt(kLargeImage, 700, 300, 120);
    const cv::Point2f after = view.ToImage(700, 300);
    // Each step rounds the offset to whole view pixels and shown size.
    EXPECT_NEAR(after.x, before.x, 5) << i;
    EXPECT_NEAR(after.y, before.y, 5) << i;
  }
}

TEST(ViewState, PointUnderCursorStaysForAnImageThinnerThanAPixel) {
  ViewState view = View();
  const cv::Size thin(1, 30000);
  view.FitTo(thin);
  ASSERT_LT(view.zoom, 0.03f);
  for (int i = 0; i < 10; ++i) view.WheelAt(thin, 500, 400, 120);
  for (int i = 0; i < 10; ++i) view.WheelAt(thin, 500, 400, -120);
  EXPECT_NEAR(view.offsetX, 500, 2);
  EXPECT_NEAR(view.ToImage(500, 400).y, 15000, 200);
}

TEST(ViewState, OneToOneAnchorsAtThePointerInTheView) {
  ViewState view = View();
  view.FitTo(kLargeImage);  // 1000 x 750 at (0, 25)
  view.pointerX = 250;
  view.pointerY = 400;
  view.OneToOne(kLargeImage);
  EXPECT_EQ(view.zoom, 1.0f);
  EXPECT_EQ(view.offsetX, 250 - 1000);
  EXPECT_EQ(view.offsetY, 400 - 1500);
}

TEST(ViewState, OneToOneOutsideTheViewAnchorsAtHalfTheImageSize) {
  for (const cv::Point pointer : {cv::Point(-1, 0), cv::Point(0, -1),
                                  cv::Point(1000, 0), cv::Point(0, 800)}) {
    ViewState view = View();
    view.FitTo(kLargeImage);
    view.pointerX = pointer.x;
    view.pointerY = pointer.y;
    view.OneToOne(kLargeImage);
    // (2000, 1500) taken as a view position: twice the shown width to the
    // right of the image's left edge, 1475 / 750 of its height below its top.
    EXPECT_EQ(view.offsetX, 2000 - 8000);
    EXPECT_EQ(view.offsetY, 1500 - 5900);
  }
}

TEST(ViewState, ShowFitRestoresTheFittingZoomCentred) {
  ViewState view = View();
  view.FitTo(kLargeImage);
  view.WheelAt(kLargeImage, 3, 4, 120);
  view.ShowFit(kLargeImage);
  EXPECT_EQ(view.zoom, 0.25f);
  EXPECT_EQ(view.offsetX, 0);
  EXPECT_EQ(view.offsetY, 25);
}

TEST(ViewState, ImagePixelsAreRoundedHalfAwayFromZero) {
  ViewState view = View();
  view.zoom = 2;
  EXPECT_EQ(view.ImageColumn(1), 1);  // 0.5
  EXPECT_EQ(view.ImageColumn(3), 2);  // 1.5
  EXPECT_EQ(view.ImageColumn(5), 3);  // 2.5
  view.offsetX = view.offsetY = 10;
  EXPECT_EQ(view.ImageColumn(9), -1);  // -0.5
  EXPECT_EQ(view.ImageRow(7), -2);     // -1.5
  EXPECT_EQ(view.ImageRow(10), 0);
}

TEST(ViewState, ViewPositionIsScaledAndShifted) {
  ViewState view = View();
  view.zoom = 0.5f;
  view.offsetX = 7;
  view.offsetY = -3;
  EXPECT_EQ(view.ToView(10, 20), cv::Point2f(12, 7));
  EXPECT_EQ(view.ToImage(12, 7), cv::Point2f(10, 20));
}

TEST(ViewState, WholeNumbersStayInRange) {
  EXPECT_EQ(TruncateToInt(-1.9f), -1);
  EXPECT_EQ(TruncateToInt(1e30f), 1 << 30);
  EXPECT_EQ(TruncateToInt(-1e30f), -(1 << 30));
  EXPECT_EQ(TruncateToInt(std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(RoundToInt(2.5f), 3);
  EXPECT_EQ(RoundToInt(-2.5f), -3);
}

TEST(ViewState, DocumentedNamesReferToTheOneInstance) {
  g_zoom = 3;
  g_grabbed = 7;
  EXPECT_EQ(g_view.zoom, 3);
  EXPECT_EQ(g_view.grabbed, 7);
  EXPECT_EQ(&g_offsetX, &g_view.offsetX);
  EXPECT_EQ(&g_hoverY, &g_view.hoverY);
  g_view = ViewState();
  EXPECT_EQ(g_zoom, 1);
}

TEST(ViewState, WhatIsInSightStays) {
  for (const float zoom : {0.25f, 1.0f, 8.0f}) {
    ViewState view = View();
    view.zoom = zoom;
    view.offsetX = 0;
    view.offsetY = std::floor((zoom - 1) / 2 + 1);
    view.BringIntoSight({zoom > 1 ? 1 : 0, 0},
                        {static_cast<int>(999 / zoom) - (zoom > 1 ? 1 : 0),
                         static_cast<int>(780 / zoom)});
    EXPECT_EQ(view.offsetX, 0) << zoom;
    EXPECT_EQ(view.offsetY, std::floor((zoom - 1) / 2 + 1)) << zoom;
  }
}

TEST(ViewState, WhatIsOutOfSightComesToTheMiddle) {
  ViewState view = View();
  view.zoom = 2;
  view.offsetX = 10;
  view.offsetY = 20;
  view.BringIntoSight({700, 1}, {709, 3});
  EXPECT_EQ(view.ToView(704.5f, 0).x, view.viewWidth / 2);
  EXPECT_EQ(view.offsetY, 20);
  view.BringIntoSight({700, -300}, {709, -300});
  EXPECT_EQ(view.ToView(0, -300).y, view.viewHeight / 2);
  // Larger than the view: its middle.
  view.BringIntoSight({0, -300}, {1000, -300});
  EXPECT_EQ(view.ToView(500, 0).x, view.viewWidth / 2);
}

TEST(ViewState, EnlargedPixelThatIsCutComesIntoSight) {
  ViewState view = View();
  view.zoom = 64;
  view.BringIntoSight({0, 0}, {0, 0});  // its left half is hidden
  EXPECT_EQ(view.ToView(0, 0),
            cv::Point2f(view.viewWidth / 2.0f, view.viewHeight / 2.0f));
}

}  // namespace
}  // namespace rendal
