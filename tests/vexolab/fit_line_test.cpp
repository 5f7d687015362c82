// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/vexolab/fit_points.h"

using namespace fit_points;

namespace {

// The angle as the tools print it.
double printed_angle(const result& r) {
  const double angle = std::atan2(r.v[0], r.v[1]) * 180 / kPi - 90;
  return angle <= -180 ? angle + 360 : angle;
}

}  // namespace

TEST(FitLine, ExactPointsGiveTheLine) {
  for (const parameters how : {kRobust, kShortTail, kPlain}) {
    const result r = fit(on_segment({10, 20}, {50, 50}, 20), VEXOLAB_LINE, how);
    ASSERT_EQ(r.code, 0);
    EXPECT_NEAR(r.v[0], 0.8, 1e-14);
    EXPECT_NEAR(r.v[1], 0.6, 1e-14);
    EXPECT_NEAR(r.v[2], 30, 1e-12);
    EXPECT_NEAR(r.v[3], 35, 1e-12);
  }
}

TEST(FitLine, DirectionFollowsTheOrderOfThePoints) {
  for (int degrees = -175; degrees <= 180; degrees += 5) {
    const double t = degrees * kPi / 180;
    const point from{100, 100};
    const point to{100 + 50 * std::cos(t), 100 - 50 * std::sin(t)};
    const result r = fit(on_segment(from, to, 9), VEXOLAB_LINE);
    ASSERT_EQ(r.code, 0);
    EXPECT_NEAR(r.v[0], std::cos(t), 1e-12);
    EXPECT_NEAR(r.v[1], -std::sin(t), 1e-12);
    EXPECT_NEAR(std::remainder(printed_angle(r) - degrees, 360), 0, 1e-9);
  }
}

TEST(FitLine, PrintedAnglesOfTheAxes) {
  const point o{5, 5};
  EXPECT_EQ(printed_angle(fit(on_segment(o, {9, 5}, 5), VEXOLAB_LINE)), 0);
  EXPECT_EQ(printed_angle(fit(on_segment(o, {5, 9}, 5), VEXOLAB_LINE)), -90);
  EXPECT_EQ(printed_angle(fit(on_segment(o, {5, 1}, 5), VEXOLAB_LINE)), 90);
}

TEST(FitLine, TwoPointsAreEnough) {
  const result r = fit({{1, 1}, {4, 5}}, VEXOLAB_LINE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], 0.6, 1e-15);
  EXPECT_NEAR(r.v[1], 0.8, 1e-15);
  EXPECT_NEAR(r.v[2], 2.5, 1e-15);
  EXPECT_NEAR(r.v[3], 3, 1e-15);
}

TEST(FitLine, WithoutAnOrderTheDirectionIsToTheRight) {
  const result r =
      fit({{0, 0}, {-3, 4}, {-3, 4}, {0, 0}}, VEXOLAB_LINE, kPlain);
  EXPECT_NEAR(r.v[0], 0.6, 1e-12);
  EXPECT_NEAR(r.v[1], -0.8, 1e-12);
}

TEST(FitLine, PointsWithoutADirectionGiveALevelLine) {
  const result r = fit({{0, 0}, {2, 0}, {2, 2}, {0, 2}}, VEXOLAB_LINE, kPlain);
  ASSERT_EQ(r.code, 0);
  EXPECT_EQ(r.v[0], 1);
  EXPECT_EQ(r.v[1], 0);
  EXPECT_EQ(r.v[2], 1);
  EXPECT_EQ(r.v[3], 1);
}

TEST(FitLine, OneWildPointAmongFourIsLeftOut) {
  const result r = fit({{0, 0}, {10, 0}, {20, 40}, {30, 0}}, VEXOLAB_LINE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], 1, 1e-12);
  EXPECT_NEAR(r.v[1], 0, 1e-12);
  EXPECT_NEAR(r.v[3], 0, 1e-12);
}

TEST(FitLine, CentreIsThatOfThePointsUsed) {
  points p = on_segment({0, 7}, {30, 7}, 31);
  for (int i = 0; i < 31; i += 3) p[i].y += 20 + i;
  double sum = 0;
  for (int i = 0; i < 31; ++i) sum += i % 3 ? p[i].x : 0;
  const result r = fit(p, VEXOLAB_LINE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[2], sum / 20, 1e-12);
  EXPECT_NEAR(r.v[3], 7, 1e-12);
}

TEST(FitLine, PlainFitUsesEveryPoint) {
  points p = on_segment({0, 0}, {30, 0}, 31);
  p[15].y = 31;  // the middle one: lifts the line, does not turn it
  for (const parameters how :
       {kPlain, parameters{7, 2, 0, 2}, parameters{0, 0, 20, 2}}) {
    const result r = fit(p, VEXOLAB_LINE, how);
    ASSERT_EQ(r.code, 0);
    EXPECT_NEAR(r.v[3], 1, 1e-12);
    EXPECT_NEAR(r.v[1], 0, 1e-12);
  }
}

TEST(FitLine, ThirtyPercentCoherentOutliersDoNotShow) {
  synthetic::random random(1);
  points p = on_segment({0, 40}, {60, 40}, 61,
                        [&](int) { return 0.02 * random.normal(); });
  for (int i = 40; i < 58; ++i) p[i].y += 3;  // another edge
  const result r = fit(p, VEXOLAB_LINE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[1], 0, 5e-4);
  EXPECT_NEAR(r.v[3], 40, 0.01);
}

TEST(FitLine, FarFromTheOriginAndTinyAndHugeLinesAreExact) {
  const points p = on_segment({10, 20}, {50, 50}, 20);
  for (const double scale : {1e-9, 1e-3, 1.0, 1e3, 1e5}) {
    const result r = fit(scaled(p, scale), VEXOLAB_LINE);
    ASSERT_EQ(r.code, 0) << scale;
    EXPECT_NEAR(r.v[0], 0.8, 1e-13);
    EXPECT_NEAR(r.v[2], 30 * scale, 1e-13 * 50 * scale);
  }
  const result r = fit(moved(p, 1e5, -1e5), VEXOLAB_LINE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], 0.8, 1e-12);
  EXPECT_NEAR(r.v[2], 1e5 + 30, 1e-10);
  EXPECT_NEAR(r.v[3], -1e5 + 35, 1e-10);
}

TEST(FitLine, OneStrayPointAtTheEndOfTheWorldCostsNoDigits) {
  points p = on_segment({10, 20}, {50, 50}, 20);
  p[7] = {9.9e6, -9.9e6};
  const result r = fit(p, VEXOLAB_LINE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], 0.8, 1e-13);
  EXPECT_NEAR(r.v[1], 0.6, 1e-13);
}

TEST(FitLine, KeepsAsManyPointsAsTheCallerAsksFor) {
  points p = on_segment({0, 0}, {38, 0}, 20);
  for (int i = 0; i < 8; ++i) p[2 * i + 3].y = 3 + i;
  const result twelve = fit(p, VEXOLAB_LINE, {7, 2, 20, 12});
  ASSERT_EQ(twelve.code, 0);
  EXPECT_NEAR(twelve.v[3], 0, 1e-12);
  const result thirteen = fit(p, VEXOLAB_LINE, {7, 2, 20, 13});
  ASSERT_EQ(thirteen.code, 0);
  EXPECT_GT(thirteen.v[3], 0.1);
  const result sixteen = fit(p, VEXOLAB_LINE, {7, 2, 20, 16});
  ASSERT_EQ(sixteen.code, 0);
  EXPECT_GT(sixteen.v[3], 0.3);
}
