// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <initializer_list>

#include "tests/vexolab/fit_points.h"
#include "tests/vexolab/spoilt_points.h"
#include "vexolab/ellipse.h"

using namespace fit_points;

namespace {

constexpr ellipse kEllipse{150.25, 120.75, 30, 80, 45};

void expect_ellipse(const result& r, const ellipse& e, double tolerance) {
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], e.cx, tolerance);
  EXPECT_NEAR(r.v[1], e.cy, tolerance);
  // As a displacement of the ends of the long axis; half turns do not matter.
  const double turn = std::remainder(r.v[2] - e.angle, 180) * kPi / 180;
  EXPECT_NEAR(turn * e.a, 0, tolerance);
  EXPECT_NEAR(r.v[3], e.a, tolerance);
  EXPECT_NEAR(r.v[4], e.b, tolerance);
}

vexolab::ellipse upright(double a, double b) { return {0, 0, 1, 0, a, b}; }

double distance(const vexolab::ellipse& e, double x, double y) {
  double d;
  e.distances({&x, &y, 1}, &d);
  return d;
}

// By search along the contour, refined around the best.
double searched_distance(double a, double b, double x, double y) {
  double best = INFINITY, at = 0, width = kPi;
  for (int round = 0; round < 8; ++round, width /= 50) {
    const double middle = at;
    for (int i = -100; i <= 100; ++i) {
      const double t = middle + width * i / 100;
      const double d = std::hypot(a * std::cos(t) - x, b * std::sin(t) - y);
      if (d < best) best = d, at = t;
    }
  }
  const bool inside = x * x / (a * a) + y * y / (b * b) < 1;
  return inside ? -best : best;
}

double sum_of_squares(const points& p, const double* v) {
  const double t = v[2] * kPi / 180;
  const vexolab::ellipse e{v[0], v[1], std::cos(t), -std::sin(t), v[3], v[4]};
  double sum = 0;
  for (const point& q : p) {
    const double d = distance(e, q.x, q.y);
    sum += d * d;
  }
  return sum;
}

}  // namespace

TEST(EllipseDistance, AgreesWithASearchAlongTheContour) {
  synthetic::random random(11);
  for (const double b : {1.0, 0.999999, 0.7, 0.2, 0.01}) {
    for (int i = 0; i < 300; ++i) {
      const double x = random.uniform(-2, 2), y = random.uniform(-2, 2);
      EXPECT_NEAR(distance(upright(1, b), x, y), searched_distance(1, b, x, y),
                  1e-9)
          << b << " " << x << " " << y;
    }
  }
}

TEST(EllipseDistance, OnTheAxesAndInTheCentre) {
  const vexolab::ellipse e = upright(5, 3);
  EXPECT_NEAR(distance(e, 0, 0), -3, 1e-9);
  EXPECT_NEAR(distance(e, 4.9, 0), -0.1, 1e-9);
  EXPECT_NEAR(distance(e, 7, 0), 2, 1e-9);
  EXPECT_NEAR(distance(e, -7, 0), 2, 1e-9);
  EXPECT_NEAR(distance(e, 0, 7), 4, 1e-9);
  EXPECT_NEAR(distance(e, 0, -2), -1, 1e-9);
  // Inside the evolute the nearest point of the long axis is not its end.
  EXPECT_NEAR(distance(e, 1, 0), searched_distance(5, 3, 1, 0), 1e-9);
  EXPECT_NEAR(distance(upright(2, 2), 0, 0), -2, 1e-9);
  EXPECT_NEAR(distance(upright(2, 2), 1, 0), -1, 1e-9);
}

TEST(EllipseDistance, PointsInBlocksAreAsPointsAlone) {
  synthetic::random random(12);
  std::vector<double> x(200), y(200), d(200);
  for (int i = 0; i < 200; ++i) {
    x[i] = random.uniform(-9, 9);
    y[i] = random.uniform(-9, 9);
  }
  const vexolab::ellipse e{1, 2, 0.6, 0.8, 5, 3};
  e.distances({x.data(), y.data(), 200}, d.data());
  for (int i = 0; i < 200; ++i) {
    EXPECT_NEAR(d[i], distance(e, x[i], y[i]), 1e-12);
  }
}

TEST(FitEllipse, ExactPointsGiveTheEllipse) {
  for (const parameters how : {kRobust, kShortTail, kPlain}) {
    for (const int n : {5, 6, 7, 8, 20, 100}) {
      SCOPED_TRACE(n);
      expect_ellipse(fit(on(kEllipse, n, 0.2), VEXOLAB_ELLIPSE, how), kEllipse,
                     n < 8 ? 1e-10 : 1e-12);
    }
  }
}

TEST(FitEllipse, AnglesAreCounterClockwiseOnScreenOfTheLongAxis) {
  for (int angle = -85; angle <= 90; angle += 5) {
    const ellipse e{100, 90, static_cast<double>(angle), 50, 20};
    const result r = fit(on(e, 40), VEXOLAB_ELLIPSE);
    ASSERT_EQ(r.code, 0);
    EXPECT_NEAR(std::remainder(r.v[2] - angle, 180), 0, 1e-9);
    EXPECT_GT(r.v[2], -90);
    EXPECT_LE(r.v[2], 90);
    EXPECT_GE(r.v[3], r.v[4]);
  }
}

TEST(FitEllipse, FirstAxisIsTheLongOneHoweverTheShapeWasDrawn) {
  const result r = fit(on({50, 60, 30, 20, 40}, 40), VEXOLAB_ELLIPSE);
  expect_ellipse(r, {50, 60, -60, 40, 20}, 1e-11);
  EXPECT_NEAR(r.v[2], -60, 1e-9);
}

TEST(FitEllipse, CircleHasAngleZero) {
  const result r = fit(on({50, 60, 30, 25, 25}, 40), VEXOLAB_ELLIPSE);
  expect_ellipse(r, {50, 60, 0, 25, 25}, 1e-11);
  EXPECT_EQ(r.v[2], 0);
}

TEST(FitEllipse, NoisyCircleIsNoSingularCase) {
  synthetic::random random(13);
  const result r = fit(on({50, 60, 0, 25, 25}, 100, 0, 1,
                          [&](int) { return 0.05 * random.normal(); }),
                       VEXOLAB_ELLIPSE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], 50, 0.03);
  EXPECT_NEAR(r.v[1], 60, 0.03);
  EXPECT_NEAR(r.v[3], 25, 0.05);
  EXPECT_NEAR(r.v[4], 25, 0.05);
}

TEST(FitEllipse, SlenderAndShortArcsAreFitted) {
  const ellipse slender{0, 0, 10, 100, 1};
  expect_ellipse(fit(on(slender, 60), VEXOLAB_ELLIPSE), slender, 1e-9);
  expect_ellipse(fit(on(kEllipse, 60, 0.5, 0.3), VEXOLAB_ELLIPSE), kEllipse,
                 1e-9);
}

TEST(FitEllipse, FlatterThanTenThousandthOfItsLengthIsRefused) {
  const auto flat = [](double b) { return on({0, 0, 0, 1000, b}, 200); };
  EXPECT_EQ(fit(flat(0.11), VEXOLAB_ELLIPSE, kPlain).code, 0);
  EXPECT_EQ(fit(flat(0.09), VEXOLAB_ELLIPSE, kPlain).code,
            VEXOLAB_E_DEGENERATE);
}

TEST(FitEllipse, AxisAboveAHundredExtentsIsRefused) {
  // The end of a long ellipse, about as high as wide: x from 1000 (1 - e).
  const auto end = [](double extent) {
    points p;
    for (int i = -25; i <= 25; ++i) {
      const double x = 1000 - extent * (i / 25.0) * (i / 25.0);
      const double y = std::sqrt(1 - x * x * 1e-6) * extent / 5;
      p.push_back({x, i < 0 ? -y : y});
    }
    return p;
  };
  EXPECT_EQ(fit(end(10.5), VEXOLAB_ELLIPSE, kPlain).code, 0);
  EXPECT_EQ(fit(end(9.5), VEXOLAB_ELLIPSE, kPlain).code, VEXOLAB_E_DEGENERATE);
}

TEST(FitEllipse, PlainFitIsTheLeastSumOfSquaredDistances) {
  synthetic::random random(14);
  for (int trial = 0; trial < 20; ++trial) {
    const points p = on(kEllipse, 25, random.uniform(0, 6), 0.8,
                        [&](int) { return random.normal(); });
    const result r = fit(p, VEXOLAB_ELLIPSE, kPlain);
    ASSERT_EQ(r.code, 0);
    const double least = sum_of_squares(p, r.v);
    for (int k = 0; k < 5; ++k) {
      for (const double step : {-1e-3, 1e-3}) {
        double v[5];
        std::copy(r.v, r.v + 5, v);
        v[k] += step;
        EXPECT_GT(sum_of_squares(p, v), least);
      }
    }
  }
}

TEST(FitEllipse, ThirtyPercentOutliersOfAnyKindDoNotShow) {
  synthetic::random random(15);
  const auto noise = [&](int) { return 0.02 * random.normal(); };
  points scattered = on(kEllipse, 60, 0, 1, noise);
  points covered = scattered, blob = scattered;
  for (int i = 0; i < 18; ++i) {
    scattered[(i * 7) % 60] = {random.uniform(50, 250),
                               random.uniform(20, 220)};
    covered[20 + i] = kEllipse.at(2 * kPi * (20 + i) / 60, 2.5);
    blob[(i * 11) % 60] = {190 + random.normal(), 90 + random.normal()};
  }
  for (const points& p : {scattered, covered, blob}) {
    expect_ellipse(fit(p, VEXOLAB_ELLIPSE), kEllipse, 0.05);
    expect_ellipse(fit(p, VEXOLAB_ELLIPSE, kShortTail), kEllipse, 0.05);
  }
}

TEST(FitEllipse, HyperbolasGiveAnEllipseWithinLimitsOrARefusal) {
  for (const parameters how : {kRobust, kShortTail, kPlain}) {
    points p;
    for (int i = -10; i <= 10; ++i) {
      const double t = i * 0.1;
      p.push_back({200 + 20 * std::cosh(t), 100 + 30 * std::sinh(t)});
    }
    const result r = fit(p, VEXOLAB_ELLIPSE, how);
    if (r.code == 0) {
      EXPECT_GE(r.v[3], r.v[4]);
      EXPECT_LE(r.v[3], 100 * 2 * 30 * std::sinh(1.0));
      EXPECT_GE(r.v[4], 1e-4 * r.v[3]);
    } else {
      EXPECT_EQ(r.code, VEXOLAB_E_DEGENERATE);
    }
  }
}

TEST(FitEllipse, FarFromTheOriginAndTinyAndHugeEllipsesAreExact) {
  const ellipse e{3, 4, 25, 10, 6};
  const points p = on(e, 40);
  for (const double s : {1e-9, 1e-3, 1.0, 1e3, 1e5}) {
    SCOPED_TRACE(s);
    expect_ellipse(fit(scaled(p, s), VEXOLAB_ELLIPSE),
                   {3 * s, 4 * s, 25, 10 * s, 6 * s}, 1e-12 * 20 * s);
  }
  expect_ellipse(fit(moved(p, 1e5, -1e5), VEXOLAB_ELLIPSE),
                 {1e5 + 3, -1e5 + 4, 25, 10, 6}, 1e-9);
}

TEST(FitEllipse, LargeResidualsOfAnArcEndInAMinimumAllTheSame) {
  synthetic::random random(16);
  int fitted = 0;
  for (int trial = 0; trial < 200; ++trial) {
    const points p = on(kEllipse, 20, random.uniform(0, 6), 0.4,
                        [&](int) { return 2 * random.normal(); });
    const result r = fit(p, VEXOLAB_ELLIPSE, kPlain);
    if (r.code != 0) continue;
    ++fitted;
    const double least = sum_of_squares(p, r.v);
    for (int k = 0; k < 5; ++k) {
      for (const double step : {-0.01, 0.01}) {
        double v[5];
        std::copy(r.v, r.v + 5, v);
        v[k] += step;
        EXPECT_GT(sum_of_squares(p, v), least - 1e-6) << trial << " " << k;
      }
    }
  }
  EXPECT_GT(fitted, 100);
}

TEST(FitEllipse, FortyPercentOnAnotherContourRarelyWinOverSixtyOnTheRightOne) {
  synthetic::random random(17);
  for (const auto kind : {spoilt_points::outliers::kOtherEdge,
                          spoilt_points::outliers::kStraight}) {
    int lost = 0;
    for (int trial = 0; trial < 300; ++trial) {
      const auto truth = spoilt_points::any_shape(VEXOLAB_ELLIPSE, &random);
      const auto p = spoilt_points::spoil(truth, 30, 12, kind, &random);
      const result r = fit(p.all, VEXOLAB_ELLIPSE, kShortTail);
      lost += r.code != 0 || spoilt_points::error_of(truth, r.v) > 0.5;
    }
    EXPECT_LE(lost, 6);  // 2 %
  }
}
