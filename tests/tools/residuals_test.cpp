// SPDX-License-Identifier: MIT
#include "tools/residuals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "vexolab/vexolab.h"

namespace rendal {
namespace {

TEST(Residuals, OfALineAreDistancesAcrossIt) {
  // Through (1, 2) towards the lower right.
  const double line[] = {0.6, 0.8, 1, 2};
  std::vector<EdgePoint> points = {{1 - 0.8, 2 + 0.6}, {1 + 1.6, 2 - 1.2}};
  const Residuals residuals = MeasureResiduals(VEXOLAB_LINE, line, 0, &points);
  EXPECT_NEAR(points[0].distance, 1, 1e-12);
  EXPECT_NEAR(points[1].distance, 2, 1e-12);
  EXPECT_EQ(residuals.used, 2);
  EXPECT_NEAR(residuals.rms, std::sqrt(2.5), 1e-12);
  EXPECT_NEAR(residuals.max, 2, 1e-12);
}

TEST(Residuals, OutliersAreNotUsed) {
  const double circle[] = {10, 20, 5};
  std::vector<EdgePoint> points;
  for (int i = 0; i < 9; ++i) points.push_back({10, 25 + 0.01 * i});
  points.push_back({10, 40});
  // Deviation 1.4826 * 0.05, twice that is 0.148.
  const Residuals residuals =
      MeasureResiduals(VEXOLAB_CIRCLE, circle, 2, &points);
  EXPECT_EQ(residuals.used, 9);
  EXPECT_FALSE(points[9].used);
  EXPECT_NEAR(points[9].distance, 15, 1e-12);
  EXPECT_NEAR(residuals.max, 0.08, 1e-9);
  EXPECT_EQ(MeasureResiduals(VEXOLAB_CIRCLE, circle, 0, &points).used, 10);
}

TEST(Residuals, PointsOnTheShapeAreAllUsed) {
  const double circle[] = {0, 0, 5};
  std::vector<EdgePoint> points = {{5, 0}, {3, 4}, {0, -5}, {-4, 3 + 1e-9}};
  EXPECT_EQ(MeasureResiduals(VEXOLAB_CIRCLE, circle, 2, &points).used, 4);
}

TEST(Residuals, WithoutPointsAreZero) {
  const double circle[] = {0, 0, 5};
  std::vector<EdgePoint> points;
  EXPECT_EQ(MeasureResiduals(VEXOLAB_CIRCLE, circle, 2, &points).used, 0);
}

TEST(Residuals, OfATurnedEllipseFollowItsAngle) {
  // The long axis rises to the right on screen, by 30 degrees.
  const double ellipse[] = {50, 40, 30, 20, 10};
  const double c = std::cos(std::numbers::pi / 6);
  const double s = std::sin(std::numbers::pi / 6);
  std::vector<EdgePoint> points = {{50 + 23 * c, 40 - 23 * s},
                                   {50 + 7 * s, 40 + 7 * c}};
  MeasureResiduals(VEXOLAB_ELLIPSE, ellipse, 0, &points);
  EXPECT_NEAR(points[0].distance, 3, 1e-9);
  EXPECT_NEAR(points[1].distance, 3, 1e-9);
}

TEST(DistanceFromEllipse, IsThatOfTheNearestOfManyPoints) {
  for (const auto& [a, b] :
       {std::pair(7.0, 3.0), {3.0, 7.0}, {5.0, 5.0}, {100.0, 0.5}}) {
    for (const double x : {-9.0, -4.0, 0.0, 1e-9, 0.3, 2.0, 5.0, 6.9}) {
      for (const double y : {-8.0, -3.0, 0.0, 1e-9, 0.2, 2.9, 7.0}) {
        double nearest = 1e9;
        for (int i = 0; i < 20000; ++i) {
          const double t = 2 * std::numbers::pi * i / 20000;
          nearest = std::min(
              nearest, std::hypot(a * std::cos(t) - x, b * std::sin(t) - y));
        }
        const double distance = DistanceFromEllipse(x, y, a, b);
        EXPECT_LE(distance, nearest + 1e-9) << a << b << ' ' << x << ' ' << y;
        EXPECT_GE(distance, nearest - 2e-2 * (a / 100))
            << a << ' ' << b << ' ' << x << ' ' << y;
      }
    }
  }
}

}  // namespace
}  // namespace rendal
