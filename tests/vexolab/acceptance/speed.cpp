// SPDX-License-Identifier: MIT
//
// G: time. Limits leave a factor of three over an ordinary machine's core; the
// best of many short runs counts, so that other work on the machine matters
// little.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using synthetic::random;

constexpr double kEdgeAngle = 3;                    // of the normal, degrees
constexpr double kEdgeSlope = 0.05240777928304121;  // its tangent

// Microseconds of one call, the shortest of `runs`.
template <typename Call>
double shortest(int runs, Call call) {
  double best = 1e30;
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    call();
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    best = std::min(best, taken.count());
  }
  return best;
}

// A vertical edge through the whole image.
synthetic::grey_image tall_edge(random* r) {
  synthetic::coverage c(400, 800);
  synthetic::add_half_plane(200.3, 400, kEdgeAngle, 0.7, 1, &c);
  return synthetic::expose(c, {50, 150, 2, nullptr}, r);
}

void rectangles(report* out, random* r) {
  const auto image = tall_edge(r);
  const struct {
    double length, width, limit, goal;
  } cases[] = {{10, 5, 12, NAN},
               {20, 10, 18, 4},
               {40, 20, 35, NAN},
               {200, 40, 120, NAN}};
  for (const auto& c : cases) {
    // Few enough to be measured by one thread, and each turned a little: no
    // angle is special.
    constexpr int kCount = 40;
    std::vector<library::rectangle> rects;
    for (int i = 0; i < kCount; ++i) {
      const double y = r->uniform(250, 550);
      const double x = 200.3 + (y - 400) * kEdgeSlope + r->uniform(-1, 1);
      rects.push_back({static_cast<float>(x), static_cast<float>(y),
                       static_cast<float>(r->uniform(0, 6)),
                       static_cast<float>(c.length / 2),
                       static_cast<float>(c.width / 2)});
    }
    const double time = shortest(
        60, [&] { library::measured(image, 1, 20, "strongest", rects); });
    out->at_most("G1",
                 text("us a rectangle, %g x %g, one core", c.length, c.width),
                 time / kCount, c.limit, c.goal);
  }
}

void calls(report* out, random* r) {
  out->at_most(
      "G5", "us for 1000 rectangles on an ellipse",
      shortest(
          20,
          [] { library::on_ellipse(500, 400, 30, 300, 200, 20, 10, 1, 1000); }),
      1000);
  const auto image = tall_edge(r);
  out->at_most("G6", "us for one measure_pos_d, 20 x 10",
               shortest(60,
                        [&] {
                          library::edges_in(image, {200, 400, 3, 10, 5}, 1, 20);
                        }),
               60);
  const auto many =
      library::on_line(200.3 - 350 * kEdgeSlope, 50, 200.3 + 350 * kEdgeSlope,
                       750, 20, 10, -1, 10000);
  const auto points = library::measured(image, 1, 20, "strongest", many.list);
  out->holds("G7", "10 000 rectangles are measured", points.n == 10000);
}

}  // namespace

void speed(report* out, uint64_t seed) {
  random r(700 + seed);
  rectangles(out, &r);
  calls(out, &r);
}

}  // namespace acceptance
