// SPDX-License-Identifier: MIT
//
// What do_fit() answers whatever the shape: codes, what it writes, and that
// equal arguments give equal bits.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "tests/vexolab/fit_points.h"

using namespace fit_points;

namespace {

constexpr int kShapes[] = {VEXOLAB_LINE, VEXOLAB_CIRCLE, VEXOLAB_ELLIPSE};
constexpr int kDoubles[] = {4, 3, 5};
constexpr int kFewest[] = {2, 3, 5};
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr ellipse kEllipse{100, 80, 20, 40, 25};

points sample_points(int shape, int n) {
  if (shape == VEXOLAB_LINE) return on_segment({10, 20}, {60, 50}, n);
  if (shape == VEXOLAB_CIRCLE) return on({50, 60, 0, 30, 30}, n);
  return on(kEllipse, n);
}

// The code, and the shape's own doubles zeroed with nothing behind them
// touched.
void expect_refused(const result& r, int shape, int code) {
  EXPECT_EQ(r.code, code);
  for (int i = 0; i < kDoubles[shape]; ++i) EXPECT_EQ(r.v[i], 0) << i;
  for (int i = kDoubles[shape]; i < 6; ++i) EXPECT_EQ(r.v[i], kGuard) << i;
}

}  // namespace

TEST(Fit, WritesTheShapesOwnDoublesAndNoMore) {
  for (const int shape : kShapes) {
    SCOPED_TRACE(shape);
    const result r = fit(sample_points(shape, 20), shape);
    EXPECT_EQ(r.code, 0);
    for (int i = 0; i < kDoubles[shape]; ++i) EXPECT_NE(r.v[i], kGuard);
    for (int i = kDoubles[shape]; i < 6; ++i) EXPECT_EQ(r.v[i], kGuard);
  }
}

TEST(Fit, RefusesFewerPointsThanTheShapeNeeds) {
  for (const int shape : kShapes) {
    for (int n = 0; n < kFewest[shape]; ++n) {
      SCOPED_TRACE(testing::Message() << shape << " " << n);
      parameters how;
      how.least = 0;
      expect_refused(fit(sample_points(shape, n), shape, how), shape,
                     VEXOLAB_E_TOO_FEW);
    }
    EXPECT_EQ(fit(sample_points(shape, kFewest[shape]), shape).code, 0);
  }
}

TEST(Fit, RefusesFewerPointsThanTheCallerAsksFor) {
  for (const int shape : kShapes) {
    SCOPED_TRACE(shape);
    parameters how;
    how.least = 11;
    expect_refused(fit(sample_points(shape, 10), shape, how), shape,
                   VEXOLAB_E_TOO_FEW);
    EXPECT_EQ(fit(sample_points(shape, 11), shape, how).code, 0);
  }
}

TEST(Fit, ThreePointsAreTooFewForAnEllipseThoughTheToolAsksForThree) {
  parameters how{0, 2, 20, 3};
  expect_refused(fit(on(kEllipse, 4), VEXOLAB_ELLIPSE, how), VEXOLAB_ELLIPSE,
                 VEXOLAB_E_TOO_FEW);
}

TEST(Fit, NoPointsNeedNoArray) {
  for (const int shape : kShapes) {
    result r{0, {kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}};
    r.code = do_fit(nullptr, 0, shape, 7, 2.0f, 20, 2, r.v);
    expect_refused(r, shape, VEXOLAB_E_TOO_FEW);
  }
}

TEST(Fit, RefusesNullArrays) {
  const std::vector<double> data = packed(sample_points(VEXOLAB_LINE, 10));
  for (const int shape : kShapes) {
    result r{0, {kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}};
    r.code = do_fit(nullptr, 10, shape, 7, 2.0f, 20, 2, r.v);
    expect_refused(r, shape, VEXOLAB_E_ARGUMENT);
    EXPECT_EQ(do_fit(data.data(), 10, shape, 7, 2.0f, 20, 2, nullptr),
              VEXOLAB_E_ARGUMENT);
  }
}

TEST(Fit, UnknownShapeWritesNothing) {
  for (const int shape : {-1, 3, 99, std::numeric_limits<int>::max()}) {
    const result r = fit(sample_points(VEXOLAB_LINE, 10), shape);
    EXPECT_EQ(r.code, VEXOLAB_E_ARGUMENT);
    for (const double value : r.v) EXPECT_EQ(value, kGuard);
  }
}

TEST(Fit, RefusesUnknownMethodsNegativeFactorsAndNegativeCounts) {
  for (const int shape : kShapes) {
    const points p = sample_points(shape, 20);
    for (const int method : {-1, 1, 6, 8}) {
      expect_refused(fit(p, shape, {method, 2, 20, 2}), shape,
                     VEXOLAB_E_ARGUMENT);
    }
    expect_refused(fit(p, shape, {7, -0.5f, 20, 2}), shape, VEXOLAB_E_ARGUMENT);
    const std::vector<double> data = packed(p);
    result r{0, {kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}};
    r.code = do_fit(data.data(), -5, shape, 7, 2.0f, 20, 2, r.v);
    expect_refused(r, shape, VEXOLAB_E_ARGUMENT);
  }
}

TEST(Fit, RefusesNumbersThatAreNotFiniteOrTooLarge) {
  for (const int shape : kShapes) {
    for (const double bad : {kNan, kInfinity, -kInfinity, 1.1e7, -1e300}) {
      SCOPED_TRACE(testing::Message() << shape << " " << bad);
      points p = sample_points(shape, 20);
      p[13].x = bad;
      expect_refused(fit(p, shape), shape, VEXOLAB_E_NUMBER);
      p = sample_points(shape, 20);
      p[19].y = bad;
      expect_refused(fit(p, shape), shape, VEXOLAB_E_NUMBER);
      expect_refused(fit(p, shape, kPlain), shape, VEXOLAB_E_NUMBER);
      p = sample_points(shape, 20);
      expect_refused(fit(p, shape, {7, static_cast<float>(bad), 20, 2}), shape,
                     VEXOLAB_E_NUMBER);
    }
  }
}

TEST(Fit, RefusesMoreThanAMillionPointsWithoutReadingThem) {
  for (const int shape : kShapes) {
    const double one[2] = {1, 2};
    result r{0, {kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}};
    r.code = do_fit(one, VEXOLAB_MAX_POINTS + 1, shape, 7, 2, 20, 2, r.v);
    expect_refused(r, shape, VEXOLAB_E_LIMIT);
  }
}

TEST(Fit, RefusesCoincidentPoints) {
  for (const int shape : kShapes) {
    for (const double at : {0.0, 123.456, 1e5 + 0.1}) {
      const points p(20, point{at, -at / 3});
      expect_refused(fit(p, shape), shape, VEXOLAB_E_DEGENERATE);
      expect_refused(fit(p, shape, kPlain), shape, VEXOLAB_E_DEGENERATE);
      expect_refused(fit(p, shape, kShortTail), shape, VEXOLAB_E_DEGENERATE);
    }
  }
}

TEST(Fit, RefusesPointsOnALineForRoundShapes) {
  for (const int shape : {VEXOLAB_CIRCLE, VEXOLAB_ELLIPSE}) {
    for (const point to : {point{90, 20}, point{10, 80}, point{47, 93.7}}) {
      for (const double origin : {0.0, 1e5}) {
        SCOPED_TRACE(testing::Message()
                     << shape << " " << to.x << " " << origin);
        const points p =
            moved(on_segment({10, 20}, to, 20), origin, origin / 7);
        for (const parameters how : {kRobust, kShortTail, kPlain}) {
          expect_refused(fit(p, shape, how), shape, VEXOLAB_E_DEGENERATE);
        }
      }
    }
  }
}

TEST(Fit, AlmostAllPointsCoincidingIsNoCrash) {
  for (const int shape : kShapes) {
    for (int others = 1; others <= 10; ++others) {
      points p(20, point{50, 60});
      for (int i = 0; i < others; ++i) p[2 * i] = {i * 7.0, i * i + 3.0};
      for (const parameters how : {kRobust, kShortTail, kPlain}) {
        const result r = fit(p, shape, how);
        if (r.code == 0) {
          for (int i = 0; i < kDoubles[shape]; ++i) {
            EXPECT_TRUE(std::isfinite(r.v[i]));
          }
        } else {
          expect_refused(r, shape, VEXOLAB_E_DEGENERATE);
        }
      }
    }
  }
}

TEST(Fit, RepetitionAndThreadsGiveEqualBits) {
  synthetic::random random(5);
  for (const int shape : kShapes) {
    points p = sample_points(shape, 60);
    for (point& q : p) {
      q.x += 0.1 * random.normal();
      q.y += 0.1 * random.normal();
    }
    for (int i = 0; i < 12; ++i) p[5 * i].y += random.uniform(-30, 30);
    const result once = fit(p, shape);
    ASSERT_EQ(once.code, 0);
    std::vector<result> others(6);
    std::vector<std::thread> threads;
    for (result& other : others) {
      threads.emplace_back([&] {
        for (int i = 0; i < 20; ++i) other = fit(p, shape);
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const result& other : others) {
      EXPECT_EQ(std::memcmp(once.v, other.v, sizeof once.v), 0);
    }
  }
}

TEST(Fit, TheLengthOfTheFactorsTailNeverMakesAFitFail) {
  synthetic::random random(6);
  for (const int shape : kShapes) {
    points p = sample_points(shape, 30);
    for (point& q : p) q.x += 0.2 * random.normal();
    for (const float factor : {1e-30f, 0.01f, 0.5f, 1.0f, 5.0f, 1e3f, 1e7f}) {
      for (const int method : {0, 7}) {
        for (const int iterations : {1, 2, 20, 1000}) {
          EXPECT_EQ(fit(p, shape, {method, factor, iterations, 2}).code, 0)
              << shape << " " << factor << " " << method << " " << iterations;
        }
      }
    }
  }
}

TEST(Fit, MillionPointsWithOutliersAreFitted) {
  constexpr int kMany = VEXOLAB_MAX_POINTS;
  synthetic::random random(7);
  points p =
      on(kEllipse, kMany, 0, 1, [&](int) { return random.uniform(-0.1, 0.1); });
  for (int i = 0; i < kMany; i += 4) p[i].x += random.uniform(-30, 30);
  const result r = fit(p, VEXOLAB_ELLIPSE);
  ASSERT_EQ(r.code, 0);
  EXPECT_NEAR(r.v[0], kEllipse.cx, 0.003);
  EXPECT_NEAR(r.v[1], kEllipse.cy, 0.003);
  EXPECT_NEAR(r.v[3], kEllipse.a, 0.003);
  EXPECT_NEAR(r.v[4], kEllipse.b, 0.003);
}

TEST(Fit, ManyPointsAreFittedAsWellAsTheGoodOnesAlone) {
  constexpr int kMany = 100000;
  synthetic::random random(9);
  for (const int shape : kShapes) {
    points good = sample_points(shape, kMany), all;
    for (point& q : good) {
      q.x += 0.3 * random.normal();
      q.y += 0.3 * random.normal();
      all.push_back(q);
      if (all.size() % 3 == 0) {
        all.push_back({random.uniform(0, 150), random.uniform(0, 150)});
      }
    }
    const result best = fit(good, shape, kPlain), r = fit(all, shape);
    ASSERT_EQ(r.code, 0);
    // One point's deviation over the root of their number is 0.001. A line's
    // centre is that of outliers on the line as well.
    const int comparable = shape == VEXOLAB_LINE ? 2 : kDoubles[shape];
    for (int i = 0; i < comparable; ++i) {
      EXPECT_NEAR(r.v[i], best.v[i], 0.005) << shape << " " << i;
    }
  }
}

TEST(Fit, OfManyPointsAsManyAreKeptAsTheCallerAsksFor) {
  constexpr int kMany = 600000;
  points p = on_segment({0, 0}, {300, 0}, kMany);
  for (int i = 0; i < kMany; i += 3) p[i].y = 9;
  EXPECT_NEAR(fit(p, VEXOLAB_LINE, {7, 2, 20, kMany}).v[3], 3, 0.01);
  EXPECT_NEAR(fit(p, VEXOLAB_LINE, {7, 2, 20, kMany / 2}).v[3], 0, 1e-9);
}

TEST(Fit, PointsApartByRoundingOnlyCoincide) {
  for (const int shape : kShapes) {
    points p;
    const double x = 1e5 + 0.1, y = -3e4;
    for (int i = 0; i < 20; ++i) {
      p.push_back({i % 3 ? x : std::nextafter(x, 1e6),
                   i % 5 ? y : std::nextafter(y, 0)});
    }
    for (const parameters how : {kRobust, kPlain}) {
      expect_refused(fit(p, shape, how), shape, VEXOLAB_E_DEGENERATE);
    }
  }
}

TEST(Fit, MovingThePointsMovesARobustFit) {
  synthetic::random random(8);
  for (const int shape : kShapes) {
    points p = sample_points(shape, 60);
    for (point& q : p) q.y += 0.05 * random.normal();
    for (int i = 0; i < 60; i += 3) p[i].x += random.uniform(-25, 25);
    const double far = 4194304;  // a power of two: moving is nearly exact
    const result here = fit(p, shape), there = fit(moved(p, far, far), shape);
    ASSERT_EQ(here.code, 0);
    ASSERT_EQ(there.code, 0);
    const bool line = shape == VEXOLAB_LINE;
    for (int i = 0; i < kDoubles[shape]; ++i) {
      const bool coordinate = line ? i >= 2 : i < 2;
      EXPECT_NEAR(there.v[i] - (coordinate ? far : 0), here.v[i], 1e-6);
    }
  }
}

TEST(Fit, AlmostNoDistanceBetweenMostPointsIsNoOverflow) {
  for (const int shape : kShapes) {
    for (const double tiny : {1e-300, 1e-160, 1e-80, 1e-20}) {
      points p;
      for (int i = 0; i < 20; ++i) p.push_back({i * tiny, (i % 3) * tiny});
      for (const bool stray : {false, true}) {
        if (stray) p[3] = {50.65, 20};
        for (const parameters how : {kRobust, kShortTail, kPlain}) {
          const result r = fit(p, shape, how);
          if (r.code != 0) {
            expect_refused(r, shape, VEXOLAB_E_DEGENERATE);
            continue;
          }
          for (int i = 0; i < kDoubles[shape]; ++i) {
            EXPECT_TRUE(std::isfinite(r.v[i])) << tiny << " " << i;
          }
        }
      }
    }
  }
}
