// SPDX-License-Identifier: MIT
//
// G, from G8 on: the longest calls within the documented limits, with the input
// that search found slowest. One run each: they are long.
#include <chrono>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/fit_points.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using fit_points::point;
using fit_points::points;
using synthetic::random;

constexpr double kLimitMs = 1000;
constexpr double kGoalMs = 600;

template <typename Call>
double milliseconds(Call call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  const std::chrono::duration<double, std::milli> taken =
      std::chrono::steady_clock::now() - start;
  return taken.count();
}

struct cloud {
  const char* name;
  std::function<point(int i, int n, random*)> place;
};

const fit_points::ellipse kEllipse{500, 400, 30, 300, 170};

const cloud kClouds[] = {
    {"40 % outliers",
     [](int i, int n, random* r) {
       if (i % 5 < 2) return point{r->uniform(0, 1000), r->uniform(0, 1000)};
       return kEllipse.at(2 * fit_points::kPi * i / n, 0.3 * r->normal());
     }},
    {"a short arc",
     [](int i, int n, random* r) {
       return kEllipse.at(0.3 * i / n, 0.3 * r->normal());
     }},
    {"a round cloud",
     [](int, int, random* r) {
       return point{100 * r->normal(), 100 * r->normal()};
     }},
    {"two clusters",
     [](int i, int, random* r) {
       return point{500 * (i % 2) + r->normal(), r->normal()};
     }},
    {"a hyperbola",
     [](int i, int n, random*) {
       const double t = 4.0 * i / n - 2;
       return point{100 * std::cosh(t), 80 * std::sinh(t)};
     }},
};

// The longest of fits to n points, all shapes and both methods.
void fits_of(report* out, int n, const cloud& c, random* r) {
  points p;
  for (int i = 0; i < n; ++i) p.push_back(c.place(i, n, r));
  const std::vector<double> data = packed(p);
  double longest = 0;
  for (int shape = VEXOLAB_LINE; shape <= VEXOLAB_ELLIPSE; ++shape) {
    for (const int method : {0, 7}) {
      double v[5];
      longest = std::max(longest, milliseconds([&] {
                           do_fit(data.data(), n, shape, method, 2, 1000000,
                                  n / 2, v);
                         }));
    }
  }
  out->at_most("G8", text("ms for a fit to %d points, %s", n, c.name), longest,
               kLimitMs, kGoalMs);
}

// Rings of grey, hard or soft, a little noise on them.
synthetic::grey_image rings(int size, double period, double noise, random* r) {
  synthetic::grey_image g = {size, size, {}};
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const double d = std::hypot(x - size / 2, y - size / 2);
      const double grey = 128 + 90 * std::sin(d * 2 * fit_points::kPi / period);
      g.pixels.push_back(
          static_cast<unsigned char>(grey + r->uniform(-noise, noise)));
    }
  }
  return g;
}

// As many equal rectangles as the limits allow, anywhere.
double rectangles_of(const synthetic::grey_image& g, double l1, double l2,
                     random* r) {
  const double each = (2 * l1 + 1) * (2 * l2 + 2);
  const int n = static_cast<int>(
      std::min<double>(VEXOLAB_MAX_RECTANGLES, VEXOLAB_MAX_SAMPLES / each));
  std::vector<library::rectangle> rects;
  for (int i = 0; i < n; ++i) {
    rects.push_back({static_cast<float>(r->uniform(0, g.width)),
                     static_cast<float>(r->uniform(0, g.height)),
                     static_cast<float>(r->uniform(-180, 180)),
                     static_cast<float>(l1), static_cast<float>(l2)});
  }
  return milliseconds([&] { library::measured(g, 1, 0, "strongest", rects); });
}

void measurements(report* out, random* r) {
  const struct {
    double l1, l2;
  } sizes[] = {{10, 5}, {10, 23}, {3, 250}, {500, 499}};
  for (const auto& size : sizes) {
    double longest = 0;
    for (const double period : {6.0, 30.0, 200.0}) {
      const auto g = rings(1000, period, 30, r);
      longest = std::max(longest, rectangles_of(g, size.l1, size.l2, r));
    }
    out->at_most("G9",
                 text("ms for as many rectangles %g x %g as are allowed",
                      2 * size.l1, 2 * size.l2),
                 longest, kLimitMs, kGoalMs);
  }
  double longest = 0;
  for (const double period : {6.0, 30.0, 200.0}) {
    const auto g = rings(1500, period, 0, r);
    for (const float angle : {0.0f, 25.0f}) {
      longest =
          std::max(longest, milliseconds([&] {
                     library::edges_in(g, {750, 750, angle, 700, 712}, 0.5, 0);
                   }));
    }
  }
  out->at_most("G10", "ms for the largest measure_pos_d", longest, kLimitMs,
               kGoalMs);
}

}  // namespace

void worst_calls(report* out, uint64_t seed) {
  random r(800 + seed);
  for (const int n : {1000, 10000, VEXOLAB_MAX_POINTS}) {
    for (const cloud& c : kClouds) fits_of(out, n, c, &r);
  }
  measurements(out, &r);
}

}  // namespace acceptance
