// SPDX-License-Identifier: MIT
//
// A: where the generators put their rectangles.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using library::rectangle;
using library::rectangles;

constexpr double kPi = 3.14159265358979323846;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double difference(double a, double b) {
  return std::fabs(std::remainder(a - b, 360.0));
}

void lines(report* out) {
  double place = 0;
  double angle = 0;
  double size = 0;
  for (int direction = -1; direction <= 1; direction += 2) {
    for (int i = 0; i < 24; ++i) {
      const double t = i * kPi / 12;
      const double tx = std::cos(t);
      const double ty = std::sin(t);
      const auto r = library::on_line(200, 150, 200 + 90 * tx, 150 + 90 * ty,
                                      30, 8, direction, 9);
      // To the right of the travel on screen: (-ty, tx).
      const double phi = std::atan2(-direction * tx, -direction * ty);
      for (int k = 0; k < static_cast<int>(r.list.size()); ++k) {
        const rectangle& q = r.list[static_cast<size_t>(k)];
        const double along = 10 * k + 5;
        place = std::max(place, std::hypot(q[0] - 200 - along * tx,
                                           q[1] - 150 - along * ty));
        angle = std::max(angle, difference(q[2], phi * 180 / kPi));
        size = std::max({size, std::fabs(q[3] - 15.0), std::fabs(q[4] - 4.0)});
      }
    }
  }
  out->at_most("A1", "line: centres from start to end, px", place, 1e-4);
  out->at_most("A2", "line: scan to the right of travel, deg", angle, 1e-4);
  out->at_most("A3", "line: full extents in, halves out, px", size, 1e-6);
  out->holds("A4", "line: automatic count tiles the segment",
             library::on_line(0, 0, 100, 0, 10, 5).list.size() == 20 &&
                 library::on_line(0, 0, 99.9, 0, 10, 5).list.size() == 19 &&
                 library::on_line(0, 0, 100, 0, 10, 0).list.size() == 100 &&
                 library::on_line(0, 0, 3, 0, 10, 50).list.size() == 2 &&
                 library::on_line(0, 0, 9000, 0, 10, 1).list.size() == 1000);
}

void circles(report* out) {
  double place = 0;
  double angle = 0;
  for (int direction = -1; direction <= 1; direction += 2) {
    const auto r = library::on_circle(120, 90, 50, 20, 10, direction, 12);
    for (int k = 0; k < static_cast<int>(r.list.size()); ++k) {
      const rectangle& q = r.list[static_cast<size_t>(k)];
      const double phi = 30.0 * k;
      place = std::max(place,
                       std::hypot(q[0] - 120 - 50 * std::cos(phi * kPi / 180),
                                  q[1] - 90 + 50 * std::sin(phi * kPi / 180)));
      angle =
          std::max(angle, difference(q[2], direction > 0 ? phi : phi + 180));
    }
  }
  out->at_most("A5", "circle: counter-clockwise from 3 o'clock, px", place,
               1e-4);
  out->at_most("A6", "circle: +1 outward, -1 inward, deg", angle, 1e-4);
  out->holds("A7", "circle: automatic count, at least 3",
             library::on_circle(0, 0, 60, 20, 10).list.size() == 37 &&
                 library::on_circle(0, 0, 1, 20, 10).list.size() == 3 &&
                 library::on_circle(0, 0, 9, 20, 10, 1, 2).list.size() == 3);
}

void ellipses(report* out) {
  double place = 0;
  double angle = 0;
  double spacing = 0;
  for (const double turned : {0.0, 35.0, -60.0, 90.0}) {
    for (const double b : {45.0, 80.0, 130.0}) {
      const auto r =
          library::on_ellipse(300, 200, turned, 80, b, 20, 10, 1, 24);
      const double c = std::cos(turned * kPi / 180);
      const double s = std::sin(turned * kPi / 180);
      double before = 0;
      double shortest = 1e9;
      double longest = 0;
      for (int k = 0; k < 24; ++k) {
        const rectangle& q = r.list[static_cast<size_t>(k)];
        const double right = q[0] - 300;
        const double up = 200 - q[1];
        const double u = (right * c + up * s) / 80;
        const double v = (up * c - right * s) / b;
        place = std::max(place, std::fabs(std::hypot(u, v) - 1));
        angle = std::max(
            angle,
            difference(q[2], turned + std::atan2(v / b, u / 80) * 180 / kPi));
        // Arc length by chords in the parameter.
        double t = std::atan2(v, u);
        if (t < before) t += 2 * kPi;
        double arc = 0;
        for (int i = 0; i < 500; ++i) {
          const double p = before + (t - before) * (i + 0.5) / 500;
          arc += std::hypot(80 * std::sin(p), b * std::cos(p)) * (t - before) /
                 500;
        }
        before = t;
        if (k == 0) continue;
        shortest = std::min(shortest, arc);
        longest = std::max(longest, arc);
      }
      spacing = std::max(spacing, longest / shortest - 1);
    }
  }
  out->at_most("A8", "ellipse: centres on it, relative", place, 1e-5);
  out->at_most("A9", "ellipse: scan along the outward normal, deg", angle,
               1e-2);
  out->at_most("A10", "ellipse: equal arc lengths, relative", spacing, .01);
  const auto r = library::on_ellipse(0, 0, 90, 80, 45, 20, 10, 1, 8);
  out->holds("A11", "ellipse: from the first half-axis, counter-clockwise",
             std::fabs(r.list[0][1] + 80) < 1e-4 &&
                 std::fabs(r.list[2][0] + 45) < 1e-4);
  out->holds("A12", "ellipse: at least 6",
             library::on_ellipse(0, 0, 0, 5, 4, 20, 10, 1, 2).list.size() == 6);
}

void angles_in_range(report* out) {
  bool in_range = true;
  for (int i = 0; i <= 720; ++i) {
    for (const int direction : {-1, 1}) {
      for (const auto& list :
           {library::on_circle(0, 0, 9, 5, 5, direction, 8).list,
            library::on_ellipse(0, 0, i - 360.0, 9, 7, 5, 5, direction, 8).list,
            library::on_line(0, 0, std::cos(i * kPi / 360),
                             std::sin(i * kPi / 360), 5, 5, direction, 2)
                .list}) {
        for (const rectangle& r : list) {
          in_range = in_range && r[2] > -180 && r[2] <= 180;
        }
      }
    }
  }
  out->holds("A13", "angles in (-180, 180]", in_range);
}

void band(report* out) {
  float r[5];
  ppw_to_rr(10, 20, 40, -20, 6, r);
  const double phi = r[2] * kPi / 180;
  out->holds("A14", "ppw_to_rr: from start to end",
             r[0] == 25 && r[1] == 0 && std::fabs(std::cos(phi) - 0.6) < 1e-6 &&
                 std::fabs(std::sin(phi) - 0.8) < 1e-6 && r[3] == 25 &&
                 r[4] == 3);
  ppw_to_rr(7, 8, 7, 8, 6, r);
  const bool nothing = r[2] == 0 && r[3] == 0;
  ppw_to_rr(7, 8, 7, 8, 6, nullptr);
  out->holds("A14", "ppw_to_rr: coincident points, NULL", nothing);
}

void refusals(report* out) {
  const struct {
    const char* what;
    int code;
    rectangles answer;
  } cases[] = {
      {"line: ends coincide", -4, library::on_line(3, 4, 3, 4, 10, 5)},
      {"circle: radius 0", -4, library::on_circle(3, 4, 0, 10, 5)},
      {"circle: radius negative", -4, library::on_circle(3, 4, -9, 10, 5)},
      {"ellipse: an axis 0", -4, library::on_ellipse(3, 4, 0, 9, 0, 10, 5)},
      {"length 0", -1, library::on_line(0, 0, 9, 9, 0, 5)},
      {"length negative", -1, library::on_circle(0, 0, 9, -1, 5)},
      {"width negative", -1, library::on_line(0, 0, 9, 9, 10, -1)},
      {"direction 0", -1, library::on_circle(0, 0, 9, 10, 5, 0)},
      {"direction 2", -1, library::on_ellipse(0, 0, 0, 9, 8, 10, 5, 2)},
      {"count negative", -1, library::on_line(0, 0, 9, 9, 10, 5, 1, -1)},
      {"not a number", -2, library::on_line(kNaN, 0, 9, 9, 10, 5)},
      {"infinite", -2, library::on_circle(0, 0, kInfinity, 10, 5)},
      {"too many", -6, library::on_line(0, 0, 9, 9, 10, 5, 1, 10001)},
  };
  for (const auto& c : cases) {
    out->holds("A15", std::string("refused: ") + c.what,
               c.answer.code == c.code && c.answer.list.empty());
  }
}

}  // namespace

void generators(report* out) {
  lines(out);
  circles(out);
  ellipses(out);
  angles_in_range(out);
  band(out);
  refusals(out);
}

}  // namespace acceptance
