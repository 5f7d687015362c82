// SPDX-License-Identifier: MIT
//
// D17 to D20: edges bent otherwise than the rectangles that measure them.
#include <algorithm>
#include <cmath>
#include <string>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using synthetic::coverage;
using synthetic::disc_shape;
using synthetic::exposure;
using synthetic::random;

constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr double kRadius = 60;

// Rectangles on a circle that touches a straight edge; those within 15 degrees
// of the touching point.
void straight_under_circle(report* out, random* r) {
  for (const double width : {10.0, 20.0}) {
    statistics error;
    int missed = 0;
    for (int i = 0; i < 30; ++i) {
      const double angle = r->uniform(-180, 180);
      const double nx = std::cos(angle * kDegree);
      const double ny = -std::sin(angle * kDegree);
      const double x = 100 + r->uniform(-0.5, 0.5);
      const double y = 100 + r->uniform(-0.5, 0.5);
      coverage c(201, 201);
      synthetic::add_half_plane(x, y, angle, 0.7, 1, &c);
      const auto g = synthetic::expose(c, {}, r);
      auto rects = library::on_circle(x - kRadius * nx, y - kRadius * ny,
                                      kRadius, 20, width);
      std::erase_if(rects.list, [&](const library::rectangle& q) {
        return std::fabs(std::remainder(q[2] - angle, 360.0)) > 15;
      });
      const auto found = library::measured(g, 1, 20, "strongest", rects.list);
      missed += static_cast<int>(rects.list.size()) - found.n;
      for (int k = 0; k < found.n; ++k) {
        error.add((found.x(k) - x) * nx + (found.y(k) - y) * ny);
      }
    }
    out->at_most("D17",
                 text("straight edge under a circle R 60, W %g, rms px", width),
                 missed == 0 ? error.rms() : INFINITY, .01);
  }
}

// The curvature changes within the rectangles at the tips.
void few_on_a_narrow_ellipse(double half_width, report* out, random* r) {
  for (const int count : {6, 8, 12}) {
    statistics error;
    int missed = 0;
    for (int i = 0; i < 20; ++i) {
      const disc_shape e = {110 + r->uniform(-0.5, 0.5),
                            110 + r->uniform(-0.5, 0.5), r->uniform(-90, 90),
                            80, half_width};
      coverage c(221, 221);
      synthetic::add_ellipse(e, 0.7, 1, &c);
      const auto g = synthetic::expose(c, {}, r);
      const auto rects =
          library::on_ellipse(e.x, e.y, e.angle, e.a, e.b, 20, 20, 1, count);
      const auto found = library::measured(g, 1, 20, "strongest", rects.list);
      missed += count - found.n;
      // The rectangles stand on the edge itself.
      for (int k = 0; k < found.n && found.n == count; ++k) {
        error.add(library::along(rects.list[static_cast<size_t>(k)], found.x(k),
                                 found.y(k)));
      }
    }
    out->at_most("D18",
                 text("%d rectangles on an ellipse 80 x %g, W 20, rms px",
                      count, half_width),
                 missed == 0 ? error.rms() : INFINITY, .005);
  }
}

// One rectangle alone across a disc: nothing but its own pixels tells the
// curvature.
void alone_on_a_disc(report* out, random* r) {
  for (const double noise : {0.0, 3.0}) {
    statistics error;
    for (int i = 0; i < 200; ++i) {
      const double x = 40 + r->uniform(-0.5, 0.5);
      const double y = 40 + r->uniform(-0.5, 0.5);
      const double angle = r->uniform(-180, 180);
      coverage c(81, 81);
      synthetic::add_ellipse(
          {x - kRadius * std::cos(angle * kDegree),
           y + kRadius * std::sin(angle * kDegree), 0, kRadius, kRadius},
          0.7, 1, &c);
      const auto g = synthetic::expose(c, {50, 150, noise, nullptr}, r);
      const library::rectangle q = {static_cast<float>(x),
                                    static_cast<float>(y),
                                    static_cast<float>(angle), 15, 10};
      const auto found = library::edges_in(g, q, 1, 40);
      error.add(found.list.size() == 1
                    ? std::hypot(found.list[0].x - x, found.list[0].y - y)
                    : 1e3);
    }
    out->at_most(
        noise > 0 ? "D20" : "D19",
        text("one rectangle, W 20, across a disc R 60, noise %g, rms px",
             noise),
        error.rms(), noise > 0 ? .05 : .01);
  }
}

}  // namespace

void bends(report* out, uint64_t seed) {
  random r(400 + seed);
  straight_under_circle(out, &r);
  few_on_a_narrow_ellipse(30, out, &r);
  alone_on_a_disc(out, &r);
  few_on_a_narrow_ellipse(20, out, &r);
}

}  // namespace acceptance
