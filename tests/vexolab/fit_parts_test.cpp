// SPDX-License-Identifier: MIT
//
// The parts of a fit, each against values worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/vexolab/fit_points.h"
#include "vexolab/cholesky.h"
#include "vexolab/conic.h"
#include "vexolab/least_squares.h"
#include "vexolab/scale.h"
#include "vexolab/shape_fit.h"

using namespace fit_points;
using vexolab::guess;

namespace {

struct separate_points {
  std::vector<double> x, y;
  explicit separate_points(const points& p) {
    for (const point& q : p) {
      x.push_back(q.x);
      y.push_back(q.y);
    }
  }
  vexolab::point_set set() const {
    return {x.data(), y.data(), static_cast<int>(x.size())};
  }
};

// The weight that one point `sigmas` standard deviations above the middle of an
// exact line of n - 1 others gets. sigma is the smallest in use, 0.01 px, times
// 1 + 3 / (n - 2); the centre's height is w d / (n - 1 + w).
double weight_at(double sigmas, int method, float factor, int n) {
  points p;
  for (int i = 0; i + 1 < n; ++i) p.push_back({i - (n - 2) / 2.0, 0});
  const double d = sigmas * 0.01 * (1 + 3.0 / (n - 2));
  p.push_back({0, d});
  const result r = fit(p, VEXOLAB_LINE, {method, factor, 1, 2});
  EXPECT_EQ(r.code, 0);
  return r.v[3] * (n - 1) / (d - r.v[3]);
}

// Its one residual is atan(x), on which plain Gauss-Newton steps from beyond
// 1.4 only grow.
struct arc_tangent {
  static constexpr int kFreedom = 1;
  double x;

  vexolab::normal_equations<1> linearise(const vexolab::point_set&,
                                         const double*) const {
    vexolab::residual_block<1> block;
    block.weight[0] = 1;
    block.residual[0] = std::atan(x);
    block.row[0][0] = 1 / (1 + x * x);
    block.n = 1;
    vexolab::normal_equations<1> sums;
    sums.add(&block);
    return sums;
  }
  bool move(const Eigen::Matrix<double, 1, 1>& step) {
    x += step[0];
    return true;
  }
};

}  // namespace

TEST(Weights, LongTailIsHubersTimesALine) {
  for (const int n : {32, 302}) {
    EXPECT_NEAR(weight_at(2.9, 7, 3, n), 1, 1e-9);
    // core 2, end 3.5: (0.5 / 1.5) (2 / 3)
    EXPECT_NEAR(weight_at(3, 7, 2, n), 2.0 / 9, 1e-9);
    // core 4, end 1.75 * 4 = 7: (1 / 3) (4 / 6)
    EXPECT_NEAR(weight_at(6, 7, 4, n), 2.0 / 9, 1e-9);
    EXPECT_NEAR(weight_at(7.01, 7, 4, n), 0, 1e-9);
  }
}

TEST(Weights, ShortTailIsALineAfterAtLeastTwoSigma) {
  for (const int n : {32, 302}) {
    EXPECT_NEAR(weight_at(3, 0, 2, n), 1.0 / 3, 1e-9);
    EXPECT_NEAR(weight_at(3, 0, 0.5f, n), 1.0 / 3, 1e-9);
    EXPECT_NEAR(weight_at(5, 0, 4, n), 1.0 / 3, 1e-9);
    EXPECT_NEAR(weight_at(3.51, 0, 2, n), 0, 1e-9);
  }
}

TEST(Scale, OrderStatisticsCountFromOne) {
  double values[] = {5, 1, 4, 2, 3};
  EXPECT_EQ(vexolab::order_statistic(values, 5, 1), 1);
  EXPECT_EQ(vexolab::order_statistic(values, 5, 4), 4);
}

TEST(Scale, StartsFromTheHalfDistanceCorrectedForFewPoints) {
  EXPECT_NEAR(vexolab::first_sigma(2, 12, 2), 1.4826 * 1.5 * 2, 1e-12);
}

TEST(Scale, IsThatOfTheDistancesWithinTheCutCorrectedForIt) {
  const double d[] = {1, 1, 1, 2.8, 9};
  EXPECT_NEAR(vexolab::next_sigma(d, 5, 2, 1, false), std::sqrt(3 / 0.911253),
              1e-12);
  EXPECT_NEAR(vexolab::next_sigma(d, 5, 2, 1, true),
              std::sqrt((3 + 2.8 * 2.8) / (2 * 0.973344)), 1e-12);
  // As many as the fit has unknowns say nothing.
  EXPECT_EQ(vexolab::next_sigma(d, 5, 3, 1, false), 1);
}

TEST(Minimise, DampsStepsThatWouldMakeItWorse) {
  const double origin = 0;
  for (const double start : {0.5, 3.0, -30.0}) {
    arc_tangent shape{start};
    vexolab::minimise({&origin, &origin, 1}, nullptr, {1e-8, 18}, &shape);
    EXPECT_NEAR(shape.x, 0, 1e-8) << start;
  }
}

TEST(NormalEquations, SumBlocksThatAreNoMultipleOfTheLanes) {
  vexolab::residual_block<2> block;
  for (int i = 0; i < 6; ++i) {
    block.weight[i] = i == 5 ? 0.5 : 1;
    block.residual[i] = i;
    block.row[0][i] = 1;
    block.row[1][i] = 2 - i;
  }
  block.n = 6;
  vexolab::normal_equations<2> sums;
  sums.add(&block);
  EXPECT_EQ(sums.hessian(0, 0), 5.5);
  EXPECT_EQ(sums.hessian(1, 0), 2 + 1 + 0 - 1 - 2 - 1.5);
  EXPECT_EQ(sums.hessian(1, 1), 4 + 1 + 0 + 1 + 4 + 4.5);
  EXPECT_EQ(sums.gradient(0), 10 + 2.5);
  EXPECT_EQ(sums.gradient(1), 0 + 1 + 0 - 3 - 8 - 7.5);
  EXPECT_EQ(sums.cost, 1 + 4 + 9 + 16 + 12.5);
}

TEST(Cholesky, KeepsWhatIsHardlyDeterminedAndTakesOutWhatIsNot) {
  vexolab::matrix_n<2> hardly = {{{1, 0}, {0.999, 1}}};
  vexolab::factorise(&hardly);
  const auto x =
      vexolab::backward<2>(hardly, vexolab::forward<2>(hardly, {1, 1}));
  EXPECT_NEAR(x[0], 1 / 1.999, 1e-9);
  EXPECT_NEAR(x[1], 1 / 1.999, 1e-9);
  vexolab::matrix_n<2> singular = {{{1, 0}, {1, 1}}};
  vexolab::factorise(&singular);
  const auto y =
      vexolab::backward<2>(singular, vexolab::forward<2>(singular, {3, 3}));
  EXPECT_EQ(y[0], 3);
  EXPECT_EQ(y[1], 0);
}

TEST(CircleGuess, CountsWhatIsWithinTheToleranceOnBothSides) {
  const auto shape = vexolab::make_circle_fit();
  const separate_points three({{1, 0}, {0, 1}, {-1, 0}});
  const int index[] = {0, 1, 2};
  guess unit;
  ASSERT_TRUE(shape->through(three.set(), index, &unit));
  const float x[] = {0.795f, 0.805f, 1.195f, 1.205f}, y[] = {0, 0, 0, 0};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(shape->count_within({x + i, y, 1}, unit, 0.2), i == 1 || i == 2);
  }
}

TEST(CircleGuess, NoiseDoesNotMakeTheAlgebraicFitLarger) {
  // Plain algebraic fits are too large by sigma^2 / R = 0.25 %.
  synthetic::random random(31);
  points noisy = on({0, 0, 0, 1, 1}, 40000);
  for (point& q : noisy) {
    q.x += 0.05 * random.normal();
    q.y += 0.05 * random.normal();
  }
  const separate_points p(noisy);
  const std::vector<double> ones(p.x.size(), 1.0);
  guess g;
  ASSERT_TRUE(vexolab::make_circle_fit()->refit(p.set(), ones.data(), &g));
  EXPECT_NEAR(0.5 / g[0], 1, 8e-4);
}

TEST(EllipseGuess, NoneGoesThroughPointsOfAHyperbola) {
  // x^2 - y^2 / 4 = 1
  const separate_points p({{1, 0},
                           {std::sqrt(2), 2},
                           {std::sqrt(2), -2},
                           {-1, 0},
                           {-std::sqrt(5), 4}});
  const int index[] = {0, 1, 2, 3, 4};
  guess g;
  EXPECT_FALSE(vexolab::ellipse_through(p.set(), index, &g));
}

TEST(EllipseGuess, AlgebraicFitToExactPointsIsExact) {
  const separate_points p(on({0.3, -0.2, 25, 1, 0.4}, 30));
  const std::vector<double> ones(30, 1.0);
  const auto shape = vexolab::make_ellipse_fit();
  guess g;
  ASSERT_TRUE(shape->refit(p.set(), ones.data(), &g));
  std::vector<double> distance(30);
  shape->distances(p.set(), g, distance.data());
  for (const double d : distance) EXPECT_LT(d, 1e-10);
}

TEST(Fit, OnePointMoreThanNeededIsFittedPlainly) {
  const points line = {{0, 0}, {10, 0}, {20, 3}};
  const points circle = {{10, 0}, {0, 10}, {-10, 0}, {0, -13}};
  points ellipse = on({0, 0, 0, 20, 10}, 6);
  ellipse[4].x += 1;
  const points* const lists[] = {&line, &circle, &ellipse};
  for (int shape = 0; shape < 3; ++shape) {
    const result plain = fit(*lists[shape], shape, kPlain);
    const result robust = fit(*lists[shape], shape, kRobust);
    ASSERT_EQ(plain.code, 0);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(robust.v[i], plain.v[i]) << shape;
  }
}

// Where the iteration rests, the weights that the result's own distances call
// for give the result again.
TEST(Fit, RobustLineIsTheCentreOfItsOwnWeights) {
  synthetic::random random(32);
  points p = on_segment({0, 5}, {60, 5}, 61,
                        [&](int) { return 0.3 * random.normal(); });
  for (int i = 0; i < 61; i += 6) p[i].y += random.uniform(-3, 3);
  const result r = fit(p, VEXOLAB_LINE, {7, 2, 1000, 2});
  ASSERT_EQ(r.code, 0);
  std::vector<double> d;
  for (const point& q : p) {
    d.push_back(std::fabs(r.v[0] * (q.y - r.v[3]) - r.v[1] * (q.x - r.v[2])));
  }
  double sigma = 0.3;
  for (int i = 0; i < 200; ++i) {
    sigma = vexolab::next_sigma(d.data(), 61, 2, sigma, true);
  }
  const double s = (1 + 3.0 / 59) * sigma;
  double sum = 0, x = 0, y = 0;
  for (int i = 0; i < 61; ++i) {
    const double t = d[i] / s;
    const double w = t <= 2 ? 1 : t >= 3.5 ? 0 : (3.5 - t) / 1.5 * 2 / t;
    sum += w;
    x += w * p[i].x;
    y += w * p[i].y;
  }
  EXPECT_NEAR(r.v[2], x / sum, 1e-4);
  EXPECT_NEAR(r.v[3], y / sum, 1e-5);
}
