// SPDX-License-Identifier: MIT
#include "vexolab/rectangles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "vexolab/vexolab.h"

namespace vexolab {
namespace {

struct Rectangle {
  double x, y, phi, l1, l2;
};

Rectangle At(const std::vector<float>& r, int i) {
  return {r[5 * i], r[5 * i + 1], r[5 * i + 2], r[5 * i + 3], r[5 * i + 4]};
}

double Radians(double degrees) { return degrees * std::numbers::pi / 180; }

TEST(RectanglesOnLine, SitAtTheMiddlesOfEqualPieces) {
  std::vector<float> r;
  ASSERT_EQ(rectangles_on_line(10, 20, 110, 20, {30, 8, 1, 4}, &r), 0);
  ASSERT_EQ(r.size(), 20u);
  for (int i = 0; i < 4; ++i) {
    EXPECT_FLOAT_EQ(At(r, i).x, 10 + 25 * (i + 0.5));
    EXPECT_FLOAT_EQ(At(r, i).y, 20);
    EXPECT_FLOAT_EQ(At(r, i).l1, 15);
    EXPECT_FLOAT_EQ(At(r, i).l2, 4);
  }
}

TEST(RectanglesOnLine, ScanToTheRightHandSideOfTravel) {
  struct {
    double dx, dy, phi;
  } const cases[] = {{1, 0, -90}, {0, 1, 180},  {-1, 0, 90},
                     {0, -1, 0},  {1, 1, -135}, {-1, -1, 45}};
  for (const auto& c : cases) {
    std::vector<float> forward;
    std::vector<float> backward;
    ASSERT_EQ(rectangles_on_line(50, 50, 50 + 40 * c.dx, 50 + 40 * c.dy,
                                 {10, 5, 1, 2}, &forward),
              0);
    ASSERT_EQ(rectangles_on_line(50, 50, 50 + 40 * c.dx, 50 + 40 * c.dy,
                                 {10, 5, -1, 2}, &backward),
              0);
    EXPECT_FLOAT_EQ(At(forward, 0).phi, c.phi);
    // d = (cos phi, -sin phi) is the travel turned right: (-dy, dx).
    const double length = std::hypot(c.dx, c.dy);
    EXPECT_NEAR(std::cos(Radians(At(forward, 0).phi)), -c.dy / length, 1e-6);
    EXPECT_NEAR(-std::sin(Radians(At(forward, 0).phi)), c.dx / length, 1e-6);
    EXPECT_NEAR(std::cos(Radians(At(backward, 0).phi)), c.dy / length, 1e-6);
    EXPECT_NEAR(-std::sin(Radians(At(backward, 0).phi)), -c.dx / length, 1e-6);
  }
}

TEST(RectanglesOnLine, AutomaticCountTilesTheSegment) {
  const struct {
    double length, width;
    int count;
  } cases[] = {{100, 5, 20}, {104, 5, 20}, {100, 0, 100},   {100, 0.5, 100},
               {3, 5, 2},    {100, 30, 3}, {5000, 1, 1000}, {0.3, 0.1, 2}};
  for (const auto& c : cases) {
    std::vector<float> r;
    ASSERT_EQ(rectangles_on_line(0, 0, 0, c.length, {10, c.width, 1, 0}, &r),
              0);
    EXPECT_EQ(r.size() / 5, static_cast<size_t>(c.count)) << c.length;
  }
}

TEST(RectanglesOnLine, GivenCountIsRaisedToTwo) {
  std::vector<float> r;
  ASSERT_EQ(rectangles_on_line(0, 0, 9, 9, {10, 5, 1, 1}, &r), 0);
  EXPECT_EQ(r.size(), 10u);
}

TEST(RectanglesOnLine, CoincidentEndsAreDegenerate) {
  std::vector<float> r;
  EXPECT_EQ(rectangles_on_line(3, 4, 3, 4, {10, 5, 1, 0}, &r),
            VEXOLAB_E_DEGENERATE);
}

TEST(RectanglesOnCircle, GoCounterClockwiseFromThreeOClock) {
  std::vector<float> r;
  ASSERT_EQ(rectangles_on_circle(100, 80, 50, {20, 10, 1, 4}, &r), 0);
  const Rectangle expected[] = {{150, 80, 0, 10, 5},
                                {100, 30, 90, 10, 5},
                                {50, 80, 180, 10, 5},
                                {100, 130, -90, 10, 5}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(At(r, i).x, expected[i].x, 1e-5);
    EXPECT_NEAR(At(r, i).y, expected[i].y, 1e-5);
    EXPECT_FLOAT_EQ(At(r, i).phi, expected[i].phi);
  }
}

TEST(RectanglesOnCircle, MinusOneScansInward) {
  std::vector<float> r;
  ASSERT_EQ(rectangles_on_circle(100, 80, 50, {20, 10, -1, 4}, &r), 0);
  EXPECT_FLOAT_EQ(At(r, 0).phi, 180);
  EXPECT_FLOAT_EQ(At(r, 1).phi, -90);
  EXPECT_FLOAT_EQ(At(r, 2).phi, 0);
  EXPECT_FLOAT_EQ(At(r, 3).phi, 90);
}

TEST(RectanglesOnCircle, AutomaticCountFollowsTheCircumference) {
  std::vector<float> r;
  ASSERT_EQ(rectangles_on_circle(0, 0, 60, {20, 10, 1, 0}, &r), 0);
  EXPECT_EQ(r.size() / 5, 37u);  // 2 pi 60 / 10 = 37.7
  r.clear();
  ASSERT_EQ(rectangles_on_circle(0, 0, 1, {20, 10, 1, 0}, &r), 0);
  EXPECT_EQ(r.size() / 5, 3u);
}

TEST(RectanglesOnCircle, VanishingRadiusIsDegenerate) {
  for (const double radius : {0.0, -5.0, 1e-6}) {
    std::vector<float> r;
    EXPECT_EQ(rectangles_on_circle(0, 0, radius, {10, 5, 1, 0}, &r),
              VEXOLAB_E_DEGENERATE);
  }
}

// Every centre on the ellipse, its scan along the outward normal.
void ExpectOnEllipse(double cx, double cy, double angle, double a, double b,
                     const std::vector<float>& r) {
  const double c = std::cos(Radians(angle));
  const double s = std::sin(Radians(angle));
  for (int i = 0; i < static_cast<int>(r.size()) / 5; ++i) {
    const double right = At(r, i).x - cx;
    const double up = cy - At(r, i).y;
    const double u = (right * c + up * s) / a;
    const double v = (up * c - right * s) / b;
    EXPECT_NEAR(u * u + v * v, 1, 1e-5);
    const double normal = angle + std::atan2(v / b, u / a) / Radians(1);
    EXPECT_NEAR(std::remainder(At(r, i).phi - normal, 360), 0, 1e-3);
    EXPECT_GT(At(r, i).phi, -180);
    EXPECT_LE(At(r, i).phi, 180);
  }
}

TEST(RectanglesOnEllipse, LieOnItAlongItsNormals) {
  for (const double angle : {0.0, 30.0, 90.0, -75.0, 180.0}) {
    std::vector<float> r;
    ASSERT_EQ(
        rectangles_on_ellipse(200, 150, angle, 80, 45, {20, 10, 1, 0}, &r), 0);
    ExpectOnEllipse(200, 150, angle, 80, 45, r);
    r.clear();
    ASSERT_EQ(
        rectangles_on_ellipse(200, 150, angle, 20, 70, {20, 10, 1, 25}, &r), 0);
    EXPECT_EQ(r.size(), 125u);
    ExpectOnEllipse(200, 150, angle, 20, 70, r);
  }
}

TEST(RectanglesOnEllipse, StartAtTheFirstAxisAndGoCounterClockwise) {
  std::vector<float> r;
  ASSERT_EQ(rectangles_on_ellipse(0, 0, 90, 80, 45, {20, 10, 1, 8}, &r), 0);
  EXPECT_NEAR(At(r, 0).x, 0, 1e-4);
  EXPECT_NEAR(At(r, 0).y, -80, 1e-4);
  EXPECT_NEAR(At(r, 2).x, -45, 1e-4);
  EXPECT_NEAR(At(r, 2).y, 0, 1e-4);
  EXPECT_NEAR(At(r, 4).y, 80, 1e-4);
  EXPECT_NEAR(At(r, 6).x, 45, 1e-4);
}

// Arc length between consecutive centres by 2000 chords each.
double ArcBetween(double a, double b, double t0, double t1) {
  double sum = 0;
  for (int i = 0; i < 2000; ++i) {
    const double p = t0 + (t1 - t0) * i / 2000;
    const double q = t0 + (t1 - t0) * (i + 1) / 2000;
    sum += std::hypot(a * (std::cos(q) - std::cos(p)),
                      b * (std::sin(q) - std::sin(p)));
  }
  return sum;
}

TEST(RectanglesOnEllipse, AreSpacedEquallyAlongTheArc) {
  for (const double b : {80.0, 45.0, 8.0, 1.0}) {
    std::vector<float> r;
    ASSERT_EQ(rectangles_on_ellipse(0, 0, 0, 80, b, {20, 10, 1, 24}, &r), 0);
    const double whole = ArcBetween(80, b, 0, 2 * std::numbers::pi);
    for (int i = 0; i < 23; ++i) {
      double t0 = std::atan2(-At(r, i).y / b, At(r, i).x / 80);
      double t1 = std::atan2(-At(r, i + 1).y / b, At(r, i + 1).x / 80);
      if (t0 < -1e-3) t0 += 2 * std::numbers::pi;
      if (t1 < t0) t1 += 2 * std::numbers::pi;
      EXPECT_NEAR(ArcBetween(80, b, t0, t1), whole / 24, whole / 2400);
    }
  }
}

TEST(RectanglesOnEllipse, NeedTwoAxes) {
  std::vector<float> r;
  EXPECT_EQ(rectangles_on_ellipse(0, 0, 0, 0, 5, {10, 5, 1, 0}, &r),
            VEXOLAB_E_DEGENERATE);
  EXPECT_EQ(rectangles_on_ellipse(0, 0, 0, 5, 1e-6, {10, 5, 1, 0}, &r),
            VEXOLAB_E_DEGENERATE);
  EXPECT_EQ(rectangles_on_ellipse(0, 0, 0, 5, 3, {10, 5, 1, 2}, &r), 0);
  EXPECT_EQ(r.size(), 30u);
}

TEST(Rectangles, RefuseWhatTheyCannotDo) {
  const struct {
    caliper c;
    int code;
  } cases[] = {{{0, 5, 1, 0}, VEXOLAB_E_ARGUMENT},
               {{-1, 5, 1, 0}, VEXOLAB_E_ARGUMENT},
               {{10, -1, 1, 0}, VEXOLAB_E_ARGUMENT},
               {{10, 5, 0, 0}, VEXOLAB_E_ARGUMENT},
               {{10, 5, 2, 0}, VEXOLAB_E_ARGUMENT},
               {{10, 5, 1, -1}, VEXOLAB_E_ARGUMENT},
               {{10, 5, 1, 10001}, VEXOLAB_E_LIMIT},
               {{10, 5, 1, 10000}, 0}};
  for (const auto& c : cases) {
    std::vector<float> line;
    std::vector<float> circle;
    std::vector<float> ellipse;
    EXPECT_EQ(rectangles_on_line(0, 0, 50, 0, c.c, &line), c.code);
    EXPECT_EQ(rectangles_on_circle(0, 0, 50, c.c, &circle), c.code);
    EXPECT_EQ(rectangles_on_ellipse(0, 0, 0, 50, 40, c.c, &ellipse), c.code);
  }
}

TEST(RectangleBetween, ScansAlongTheSegment) {
  float r[5];
  rectangle_between(10, 20, 40, -20, 6, r);
  EXPECT_FLOAT_EQ(r[0], 25);
  EXPECT_FLOAT_EQ(r[1], 0);
  EXPECT_NEAR(std::cos(Radians(r[2])), 0.6, 1e-6);
  EXPECT_NEAR(-std::sin(Radians(r[2])), -0.8, 1e-6);
  EXPECT_FLOAT_EQ(r[3], 25);
  EXPECT_FLOAT_EQ(r[4], 3);
}

TEST(RectangleBetween, CoincidentPointsGiveAngleZeroAndNoLength) {
  float r[5];
  rectangle_between(7, 8, 7, 8, 6, r);
  EXPECT_EQ(r[2], 0);
  EXPECT_EQ(r[3], 0);
}

}  // namespace
}  // namespace vexolab
