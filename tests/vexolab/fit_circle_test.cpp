// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/vexolab/fit_points.h"

using namespace fit_points;

namespace {

constexpr ellipse kCircle{120.25, 80.5, 0, 40, 40};

void expect_circle(const result& r, double cx, double cy, double radius,
                   double tolerance) {
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], cx, tolerance);
  EXPECT_NEAR(r.v[1], cy, tolerance);
  EXPECT_NEAR(r.v[2], radius, tolerance);
}

double sum_of_squares(const points& p, const double* v) {
  double sum = 0;
  for (const point& q : p) {
    const double d = std::hypot(q.x - v[0], q.y - v[1]) - v[2];
    sum += d * d;
  }
  return sum;
}

}  // namespace

TEST(FitCircle, ExactPointsGiveTheCircle) {
  for (const parameters how : {kRobust, kShortTail, kPlain}) {
    for (const int n : {3, 4, 5, 6, 50}) {
      expect_circle(fit(on(kCircle, n), VEXOLAB_CIRCLE, how), 120.25, 80.5, 40,
                    1e-12);
    }
  }
}

TEST(FitCircle, ShortExactArcsGiveTheCircle) {
  for (const double turn : {0.5, 0.25, 0.1, 0.05}) {
    expect_circle(fit(on(kCircle, 30, 1, turn), VEXOLAB_CIRCLE), 120.25, 80.5,
                  40, 1e-9);
  }
}

TEST(FitCircle, ArcFlatterThanAHundredExtentsIsRefused) {
  const double radius = 1000;
  const auto arc = [&](double extent) {
    return on({0, 0, 0, radius, radius}, 50, 0, extent / radius / 2 / kPi);
  };
  EXPECT_EQ(fit(arc(10.5), VEXOLAB_CIRCLE, kPlain).code, 0);
  EXPECT_EQ(fit(arc(9.5), VEXOLAB_CIRCLE, kPlain).code, VEXOLAB_E_DEGENERATE);
}

TEST(FitCircle, PlainFitIsTheLeastSumOfSquaredDistances) {
  synthetic::random random(2);
  for (int trial = 0; trial < 20; ++trial) {
    const points p = on(kCircle, 15, random.uniform(0, 6), 0.4,
                        [&](int) { return random.normal(); });
    const result r = fit(p, VEXOLAB_CIRCLE, kPlain);
    ASSERT_EQ(r.code, 0);
    const double least = sum_of_squares(p, r.v);
    for (int k = 0; k < 3; ++k) {
      for (const double step : {-1e-3, 1e-3}) {
        double v[3] = {r.v[0], r.v[1], r.v[2]};
        v[k] += step;
        EXPECT_GT(sum_of_squares(p, v), least);
      }
    }
  }
}

TEST(FitCircle, DistancesOfAPlainFitAddUpToNothing) {
  synthetic::random random(5);
  const points p =
      on(kCircle, 15, 1, 0.4, [&](int) { return random.normal(); });
  const result r = fit(p, VEXOLAB_CIRCLE, kPlain);
  double sum = 0;
  for (const point& q : p) {
    sum += std::hypot(q.x - r.v[0], q.y - r.v[1]) - r.v[2];
  }
  EXPECT_NEAR(sum, 0, 1e-9);
}

TEST(FitCircle, ThirtyPercentOutliersOfAnyKindDoNotShow) {
  synthetic::random random(3);
  const auto noise = [&](int) { return 0.02 * random.normal(); };
  points scattered = on(kCircle, 60, 0, 1, noise);
  points covered = scattered, blob = scattered;
  for (int i = 0; i < 18; ++i) {
    scattered[(i * 7) % 60] = {random.uniform(60, 180),
                               random.uniform(20, 140)};
    covered[20 + i] = kCircle.at(2 * kPi * (20 + i) / 60, 2.5);
    blob[(i * 11) % 60] = {150 + random.normal(), 60 + random.normal()};
  }
  for (const points& p : {scattered, covered, blob}) {
    expect_circle(fit(p, VEXOLAB_CIRCLE), 120.25, 80.5, 40, 0.02);
    expect_circle(fit(p, VEXOLAB_CIRCLE, kShortTail), 120.25, 80.5, 40, 0.02);
  }
}

TEST(FitCircle, StraightEdgeWithOutliersIsRefusedNotBentRound) {
  points p = on_segment({0, 0}, {80, 30}, 30);
  for (int i = 0; i < 30; i += 4) p[i].y += 10 + i;
  EXPECT_EQ(fit(p, VEXOLAB_CIRCLE).code, VEXOLAB_E_DEGENERATE);
}

TEST(FitCircle, FarFromTheOriginAndTinyAndHugeCirclesAreExact) {
  const points p = on({3, 4, 0, 10, 10}, 40);
  for (const double scale : {1e-9, 1e-3, 1.0, 1e3, 1e5}) {
    expect_circle(fit(scaled(p, scale), VEXOLAB_CIRCLE), 3 * scale, 4 * scale,
                  10 * scale, 1e-13 * 20 * scale);
  }
  expect_circle(fit(moved(p, 1e5, -1e5), VEXOLAB_CIRCLE), 1e5 + 3, -1e5 + 4, 10,
                1e-10);
}

TEST(FitCircle, QuarterTurnOfThePointsTurnsTheResult) {
  synthetic::random random(4);
  points p = on(kCircle, 30, 0, 1, [&](int) { return 0.3 * random.normal(); });
  points turned = p;
  for (point& q : turned) q = {-q.y, q.x};
  const result a = fit(p, VEXOLAB_CIRCLE), b = fit(turned, VEXOLAB_CIRCLE);
  expect_circle(b, -a.v[1], a.v[0], a.v[2], 1e-9);
}
