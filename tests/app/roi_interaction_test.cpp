// SPDX-License-Identifier: MIT
#include "app/view/roi_interaction.h"

#include <gtest/gtest.h>

#include <cmath>

namespace rendal {
namespace {

// A 400 x 300 image at 50 % and offset (100, 50) in a 1000 x 800 view.
class RoiInteraction : public testing::Test {
 protected:
  RoiInteraction() {
    m_bench.m_srcImage = cv::Mat(300, 400, CV_8U, cv::Scalar(1));
    m_bench.m_roiShapes = ShapesForImage(400, 300);
    m_bench.m_hideResults = 1;
    m_bench.m_redraw = -1;
    m_view.viewWidth = 1000;
    m_view.viewHeight = 800;
    m_view.zoom = 0.5f;
    m_view.offsetX = 100;
    m_view.offsetY = 50;
  }

  void Send(int code, int x, int y) { OnMouse({code, x, y}, m_bench, m_view); }
  // Whether that is the end of a click.
  bool Ends(int code, int x, int y) {
    return OnMouse({code, x, y}, m_bench, m_view);
  }
  float Value(int kind, int i) const {
    return m_bench.m_roiShapes[kind].values[i];
  }

  Workbench m_bench;
  ViewState m_view;
};

TEST_F(RoiInteraction, NothingHappensWithoutAnImage) {
  m_bench.m_srcImage.release();
  Send(kMouseMove, 5, 6);
  Send(kLeftDown, 5, 6);
  EXPECT_EQ(m_view.hoverX, 0);
  EXPECT_FALSE(m_view.dragging);
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(RoiInteraction, PositionsOutsideTheViewAreIgnored) {
  for (const cv::Point at : {cv::Point(-1, 5), cv::Point(5, -1),
                             cv::Point(1000, 5), cv::Point(5, 800)}) {
    for (const int code : {0, 1, 7, 8, 9}) Send(code, at.x, at.y);
  }
  EXPECT_FALSE(m_view.dragging);
  EXPECT_EQ(m_view.hoverX, 0);
  EXPECT_EQ(m_view.zoom, 0.5f);
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(RoiInteraction, OtherEventsChangeNothing) {
  // Right and middle buttons, both wheels.
  for (const int code : {2, 3, 5, 6, 10, 11}) Send(code, 5, 6);
  EXPECT_FALSE(m_view.dragging);
  EXPECT_EQ(m_view.hoverX, 0);
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(RoiInteraction, MovingWithoutPressingOnlyFollowsThePointer) {
  Send(kMouseMove, 123, 45);
  EXPECT_EQ(m_view.hoverX, 123);
  EXPECT_EQ(m_view.hoverY, 45);
  EXPECT_EQ(m_view.pointerX, 0);
  EXPECT_EQ(m_view.offsetX, 100);
  EXPECT_EQ(m_bench.m_redraw, 1);
}

TEST_F(RoiInteraction, MovingBeforeTheFirstRequestRequestsNothing) {
  m_bench.m_redraw = 0;
  Send(kMouseMove, 123, 45);
  EXPECT_EQ(m_bench.m_redraw, 0);
}

TEST_F(RoiInteraction, PressInModeNonePans) {
  Send(kLeftDown, 200, 125);  // on the line's start point
  EXPECT_TRUE(m_view.dragging);
  EXPECT_EQ(m_view.grabbed, kNothingGrabbed);
  Send(kMouseMove, 210, 120);
  Send(kMouseMove, 213, 121);
  EXPECT_EQ(m_view.offsetX, 113);
  EXPECT_EQ(m_view.offsetY, 46);
  EXPECT_EQ(m_view.pointerX, 213);
  EXPECT_EQ(m_view.pointerY, 121);
  Send(kLeftUp, 213, 121);
  EXPECT_FALSE(m_view.dragging);
  Send(kMouseMove, 300, 300);
  EXPECT_EQ(m_view.offsetX, 113);
}

TEST_F(RoiInteraction, ButtonLetGoOutsideTheViewEndsTheDrag) {
  Send(kLeftDown, 500, 700);
  Send(kLeftUp, 1200, 700);
  OnMouse({kMouseMove, 400, 300, false}, m_bench, m_view);
  Send(kMouseMove, 410, 310);
  EXPECT_FALSE(m_view.dragging);
  EXPECT_EQ(m_view.offsetX, 100);
  EXPECT_EQ(m_view.hoverX, 410);
}

TEST_F(RoiInteraction, PressOutsideEveryHandlePans) {
  m_bench.m_toolMode = kToolLine;
  // Start point (100, 150) lies at (150, 125); the radius is 10 view pixels.
  Send(kLeftDown, 160, 125);
  EXPECT_EQ(m_view.grabbed, kNothingGrabbed);
  Send(kMouseMove, 161, 125);
  EXPECT_EQ(m_view.offsetX, 101);
  EXPECT_EQ(Value(kToolLine, 0), 100);
}

TEST_F(RoiInteraction, HandleIsHitLessThanTwentyImagePixelsAway) {
  m_bench.m_toolMode = kToolLine;
  Send(kLeftDown, 159, 125);
  EXPECT_EQ(m_view.grabbed, 0);
  Send(kLeftDown, 250, 134);  // the end point lies at (250, 125)
  EXPECT_EQ(m_view.grabbed, 1);
  Send(kLeftDown, 250, 135);
  EXPECT_EQ(m_view.grabbed, kNothingGrabbed);
}

TEST_F(RoiInteraction, StartPointIsTestedBeforeTheEndPoint) {
  m_bench.m_toolMode = kToolLine;
  m_bench.m_roiShapes[kToolLine] = {kToolLine, {100, 150, 104, 150, 0}};
  Send(kLeftDown, 152, 125);  // on the end point, near the start point
  EXPECT_EQ(m_view.grabbed, 0);
}

TEST_F(RoiInteraction, GrabbedHoldsKindAndHandleNumber) {
  m_bench.m_toolMode = kToolBand;
  Send(kLeftDown, 250, 125);
  EXPECT_EQ(m_view.grabbed, 2 << 16 | 1);
  m_bench.m_toolMode = kToolCircle;
  Send(kLeftDown, 200, 125);
  EXPECT_EQ(m_view.grabbed, 1 << 16 | 0);
}

TEST_F(RoiInteraction, GrabbedHandleMovesToThePointersImagePosition) {
  m_bench.m_toolMode = kToolLine;
  Send(kLeftDown, 250, 125);
  Send(kMouseMove, 301, 52);
  EXPECT_EQ(Value(kToolLine, 2), 402);
  EXPECT_EQ(Value(kToolLine, 3), 4);
  EXPECT_EQ(Value(kToolLine, 0), 100);
  EXPECT_EQ(m_view.offsetX, 100);
  EXPECT_EQ(m_bench.m_redraw, 1);
  // The band has a record of its own.
  EXPECT_EQ(Value(kToolBand, 2), 300);
}

TEST_F(RoiInteraction, ShownResultsMakePressesPan) {
  m_bench.m_toolMode = kToolLine;
  m_bench.m_hideResults = 0;
  Send(kLeftDown, 150, 125);
  EXPECT_EQ(m_view.grabbed, kNothingGrabbed);
  m_bench.m_hideResults = 1;
  Send(kLeftDown, 150, 125);
  EXPECT_EQ(m_view.grabbed, 0);
}

TEST_F(RoiInteraction, ANewPressStartsWithNothingGrabbed) {
  m_bench.m_toolMode = kToolLine;
  Send(kLeftDown, 150, 125);
  Send(kLeftUp, 150, 125);
  EXPECT_EQ(m_view.grabbed, 0);
  Send(kLeftDown, 500, 500);
  EXPECT_EQ(m_view.grabbed, kNothingGrabbed);
}

TEST_F(RoiInteraction, CircleHasACentreAndASizeHandle) {
  m_bench.m_toolMode = kToolCircle;  // centre (200, 150), radius 75
  Send(kLeftDown, 237, 125);         // (275, 150) lies at (237.5, 125)
  ASSERT_EQ(m_view.grabbed, 1 << 16 | 1);
  Send(kMouseMove, 200, 185);
  EXPECT_EQ(Value(kToolCircle, 2), 120);
  Send(kMouseMove, 200, 125);
  EXPECT_EQ(Value(kToolCircle, 2), 1);  // never smaller
  Send(kLeftDown, 199, 126);
  ASSERT_EQ(m_view.grabbed, 1 << 16);
  Send(kMouseMove, 110, 60);
  EXPECT_EQ(Value(kToolCircle, 0), 20);
  EXPECT_EQ(Value(kToolCircle, 1), 20);
}

TEST_F(RoiInteraction, EllipseHandlesStandInHitOrder) {
  const RoiShape shape{kToolEllipse, {200, 150, 0, 100, 50}};
  const std::vector<cv::Point2f> handles = HandlesOf(shape);
  ASSERT_EQ(handles.size(), 4u);
  EXPECT_EQ(handles[0], cv::Point2f(200, 150));
  EXPECT_EQ(handles[1], cv::Point2f(300, 150));
  // A positive quarter turn on screen leads upwards.
  EXPECT_NEAR(handles[2].x, 200, 1e-3);
  EXPECT_NEAR(handles[2].y, 100, 1e-3);
  EXPECT_EQ(handles[3], cv::Point2f(100, 150));
}

// Small shapes: several handles are within reach.
TEST_F(RoiInteraction, HandlesAreTestedInTheirOrderTheFirstHitWins) {
  m_view.zoom = 1;
  m_view.offsetX = m_view.offsetY = 0;
  const RoiShape circle{kToolCircle, {200, 150, 15, 0, 0}};
  EXPECT_EQ(HitHandle(circle, m_view, 215, 150), 0);
  EXPECT_EQ(HitHandle(circle, m_view, 221, 150), 1);
  const RoiShape ellipse{kToolEllipse, {200, 150, 0, 25, 25}};
  EXPECT_EQ(HitHandle(ellipse, m_view, 210, 140), 0);
  EXPECT_EQ(HitHandle(ellipse, m_view, 218, 132), 1);  // 1 and 2 in reach
  EXPECT_EQ(HitHandle(ellipse, m_view, 182, 132), 2);  // 2 and 3 in reach
  EXPECT_EQ(HitHandle(ellipse, m_view, 175, 160), 3);
  EXPECT_EQ(HitHandle(ellipse, m_view, 200, 175), -1);
}

TEST_F(RoiInteraction, EllipseMovesByItsCentre) {
  RoiShape shape{kToolEllipse, {200, 150, 30, 100, 50}};
  MoveHandle(shape, 0, {210, 140});
  EXPECT_EQ(shape, (RoiShape{kToolEllipse, {210, 140, 30, 100, 50}}));
}

TEST_F(RoiInteraction, EllipseAxisEndsSizeTheirAxes) {
  RoiShape shape{kToolEllipse, {200, 150, 0, 100, 50}};
  MoveHandle(shape, 1, {260, 170});
  EXPECT_FLOAT_EQ(shape.values[3], 60);
  EXPECT_FLOAT_EQ(shape.values[4], 50);
  MoveHandle(shape, 2, {200, 110});
  EXPECT_NEAR(shape.values[4], 40, 1e-3);
  MoveHandle(shape, 1, {200, 150});
  EXPECT_EQ(shape.values[3], 1);
  EXPECT_EQ(shape.values[2], 0);
}

TEST_F(RoiInteraction, EllipseTurnsByTheOppositeEnd) {
  RoiShape shape{kToolEllipse, {200, 150, 0, 100, 50}};
  // Dragged straight down, the first axis points straight up.
  MoveHandle(shape, 3, {200, 250});
  EXPECT_NEAR(shape.values[2], 90, 1e-4);
  EXPECT_EQ(shape.values[3], 100);
  MoveHandle(shape, 3,
             shape.values[2] > 0 ? cv::Point2f(200, 150) : cv::Point2f());
  EXPECT_NEAR(shape.values[2], 90, 1e-4);  // the centre gives no direction
}

TEST_F(RoiInteraction, EllipseAngleStaysWithinHalfTurn) {
  RoiShape shape{kToolEllipse, {0, 0, 170, 100, 50}};
  for (int degrees = -720; degrees <= 720; degrees += 15) {
    const double t = degrees * 0.017453292519943295;
    MoveHandle(shape, 3,
               {static_cast<float>(50 * std::cos(t)),
                static_cast<float>(50 * std::sin(t))});
    EXPECT_LE(std::abs(shape.values[2]), 180) << degrees;
  }
}

TEST_F(RoiInteraction, LeftDoubleClickShowsFullSizeAtTheClick) {
  Send(kLeftDoubleClick, 150, 100);  // image point (100, 100)
  EXPECT_EQ(m_view.zoom, 1);
  EXPECT_EQ(m_view.offsetX, 50);
  EXPECT_EQ(m_view.offsetY, 0);
  EXPECT_EQ(m_bench.m_redraw, 1);
}

TEST_F(RoiInteraction, RightAndMiddleDoubleClickFitTheView) {
  for (const int code : {8, 9}) {
    m_view.zoom = 7;
    m_view.fitZoom = 0.5f;
    m_bench.m_redraw = -1;
    Send(code, 150, 100);
    EXPECT_EQ(m_view.zoom, 0.5f);
    EXPECT_EQ(m_view.offsetX, 400);
    EXPECT_EQ(m_view.offsetY, 325);
    EXPECT_EQ(m_bench.m_redraw, 1);
  }
}

TEST_F(RoiInteraction, PressWithoutADragIsAClick) {
  EXPECT_FALSE(Ends(kLeftDown, 500, 400));
  EXPECT_FALSE(Ends(kMouseMove, 503, 397));
  EXPECT_EQ(m_view.offsetX, 103);  // pans all the same
  EXPECT_TRUE(Ends(kLeftUp, 503, 397));
  EXPECT_FALSE(Ends(kLeftUp, 503, 397));
}

TEST_F(RoiInteraction, DragIsNoClickEvenWhenItComesBack) {
  for (const cv::Point away : {cv::Point(504, 400), cv::Point(500, 396)}) {
    Send(kLeftDown, 500, 400);
    Send(kMouseMove, away.x, away.y);
    Send(kMouseMove, 500, 400);
    EXPECT_FALSE(Ends(kLeftUp, 500, 400)) << away;
  }
  Send(kLeftDown, 500, 400);
  EXPECT_TRUE(Ends(kLeftUp, 500, 400));
}

TEST_F(RoiInteraction, PressOnAHandleIsNoClick) {
  m_bench.m_toolMode = kToolLine;
  const cv::Point2f start = m_view.ToView(Value(0, 0), Value(0, 1));
  const int x = static_cast<int>(start.x);
  const int y = static_cast<int>(start.y);
  Send(kLeftDown, x, y);
  ASSERT_NE(m_view.grabbed, kNothingGrabbed);
  EXPECT_FALSE(Ends(kLeftUp, x, y));
  m_bench.m_hideResults = 0;
  Send(kLeftDown, x, y);
  EXPECT_TRUE(Ends(kLeftUp, x, y));
}

// The system sends 1, 4, 7, 4.
TEST_F(RoiInteraction, DoubleClickIsOneClick) {
  EXPECT_FALSE(Ends(kLeftDown, 500, 400));
  EXPECT_TRUE(Ends(kLeftUp, 500, 400));
  EXPECT_FALSE(Ends(kLeftDoubleClick, 500, 400));
  EXPECT_FALSE(Ends(kLeftUp, 500, 400));
}

}  // namespace
}  // namespace rendal
