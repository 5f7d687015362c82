// SPDX-License-Identifier: MIT
//
// Group G, fits: microseconds a call, as the caliper tool makes it, on points
// with noise and one outlier in ten.
#include <algorithm>
#include <chrono>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/fit_points.h"
#include "tests/vexolab/random.h"

namespace acceptance {
namespace {

using namespace fit_points;

std::vector<double> noisy_points(int shape, int n, synthetic::random* r) {
  const auto noise = [&](int) { return 0.05 * r->normal(); };
  const double b = shape == VEXOLAB_CIRCLE ? 80 : 45;
  points p = shape == VEXOLAB_LINE ? on_segment({10, 20}, {150, 90}, n, noise)
                                   : on({200, 200, 30, 80, b}, n, 0, 1, noise);
  for (int i = 0; i < n / 10; ++i) p[r->below(n)].x += r->uniform(-20, 20);
  return packed(p);
}

// The quickest of some batches: what else the machine does only adds.
double microseconds(int shape, int method, int n, uint64_t seed) {
  synthetic::random r(seed);
  std::vector<std::vector<double>> data;
  for (int i = 0; i < 20; ++i) data.push_back(noisy_points(shape, n, &r));
  double best = INFINITY;
  for (int batch = 0; batch < 40; ++batch) {
    const auto start = std::chrono::steady_clock::now();
    for (const std::vector<double>& points : data) {
      double out[5];
      do_fit(points.data(), n, shape, method, 2, 20, 2, out);
    }
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    best = std::min(best, taken.count() / static_cast<double>(data.size()));
  }
  return best;
}

}  // namespace

void fit_speed(report* r, uint64_t seed) {
  r->at_most("G2", "fit of a line to 20 points: us",
             microseconds(VEXOLAB_LINE, 7, 20, seed), 150, 8);
  r->at_most("G3", "fit of a circle to 100 points: us",
             microseconds(VEXOLAB_CIRCLE, 7, 100, seed), 500, 50);
  r->at_most("G4", "fit of an ellipse to 100 points: us",
             microseconds(VEXOLAB_ELLIPSE, 0, 100, seed), 4000, 600);
}

}  // namespace acceptance
