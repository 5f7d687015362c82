// SPDX-License-Identifier: MIT
//
// How often a fit visits its points, counted, however hostile they are: time
// would depend on the machine.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "tests/vexolab/fit_points.h"
#include "vexolab/robust.h"

using namespace fit_points;

namespace {

using vexolab::effort;
using vexolab::guess;
using vexolab::point_set;

constexpr int kForEver = std::numeric_limits<int>::max();

// A shape that counts visits of points on their way to another.
class counting_fit : public vexolab::shape_fit {
 public:
  explicit counting_fit(std::unique_ptr<vexolab::shape_fit> shape)
      : shape_(std::move(shape)) {}

  long long visits() const { return visits_; }

  int freedom() const override { return shape_->freedom(); }
  int samples() const override { return shape_->samples(); }
  int finalists() const override { return shape_->finalists(); }
  bool through(const point_set& p, const int* index, guess* g) const override {
    return shape_->through(p, index, g);
  }
  int count_within(const vexolab::rough_points& p, const guess& g,
                   double tolerance) const override {
    visits_ += p.n;
    return shape_->count_within(p, g, tolerance);
  }
  void distances(const point_set& p, const guess& g,
                 double* distance) const override {
    visits_ += p.n;
    shape_->distances(p, g, distance);
  }
  bool refit(const point_set& p, const double* weight,
             guess* g) const override {
    visits_ += 2 * p.n;
    return shape_->refit(p, weight, g);
  }
  bool fit(const point_set& p, const double* weight, bool warm,
           const effort& most) override {
    visits_ += (most.most_steps + 3LL) * p.n;
    return shape_->fit(p, weight, warm, most);
  }
  void distances(const point_set& p, double* distance) const override {
    visits_ += p.n;
    shape_->distances(p, distance);
  }
  void report(double x, double y, double unit, double* out) const override {
    shape_->report(x, y, unit, out);
  }

 private:
  std::unique_ptr<vexolab::shape_fit> shape_;
  mutable long long visits_ = 0;
};

// Point i of n, about 1 from the origin.
using cloud = std::function<point(int i, int n, synthetic::random*)>;

const cloud kClouds[] = {
    [](int i, int n, synthetic::random*) {
      return ellipse{0, 0, 20, 1, 0.6}.at(2 * kPi * i / n);
    },
    [](int i, int n, synthetic::random* r) {  // 40 % anywhere
      if (i % 5 < 2) return point{r->uniform(-2, 2), r->uniform(-2, 2)};
      return ellipse{0, 0, 20, 1, 0.6}.at(2 * kPi * i / n, 1e-3 * r->normal());
    },
    [](int i, int n, synthetic::random* r) {  // a short noisy arc
      return ellipse{0, 0, 20, 1, 0.6}.at(0.3 * i / n, 1e-3 * r->normal());
    },
    [](int, int, synthetic::random* r) {
      return point{r->normal(), r->normal()};
    },
    [](int i, int, synthetic::random* r) {  // three clusters
      return point{i % 3 + 0.01 * r->normal(), i % 3 / 2 + 0.01 * r->normal()};
    },
    [](int i, int n, synthetic::random*) {  // one branch of a hyperbola
      const double t = 4.0 * i / n - 2;
      return point{std::cosh(t), 0.8 * std::sinh(t)};
    },
};

long long visits_of(int shape, int n, const cloud& place, double factor) {
  synthetic::random random(21);
  std::vector<double> x, y;
  for (int i = 0; i < n; ++i) {
    const point p = place(i, n, &random);
    x.push_back(p.x);
    y.push_back(p.y);
  }
  counting_fit fit(shape == VEXOLAB_LINE     ? vexolab::make_line_fit()
                   : shape == VEXOLAB_CIRCLE ? vexolab::make_circle_fit()
                                             : vexolab::make_ellipse_fit());
  vexolab::robust_options options;
  options.factor = factor;
  options.iterations = factor > 0 ? kForEver : 0;
  options.smallest_sigma = 1e-6;
  vexolab::fit_points({x.data(), y.data(), n}, options, &fit);
  return fit.visits();
}

}  // namespace

TEST(FitWork, IsBoundedWhateverThePointsAndHoweverManyRoundsAreAllowed) {
  for (const int shape : {VEXOLAB_LINE, VEXOLAB_CIRCLE, VEXOLAB_ELLIPSE}) {
    for (const int n : {7, 400, 10000, 10001}) {
      for (const cloud& place : kClouds) {
        for (const double factor : {0.0, 0.001, 2.0}) {
          EXPECT_LE(visits_of(shape, n, place, factor), vexolab::kMostVisits)
              << shape << " " << n << " " << &place - kClouds << " " << factor;
        }
      }
    }
    EXPECT_LE(visits_of(shape, VEXOLAB_MAX_POINTS, std::end(kClouds)[-1], 2),
              vexolab::kMostVisits);
  }
}
