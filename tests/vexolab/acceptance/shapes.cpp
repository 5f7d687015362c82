// SPDX-License-Identifier: MIT
//
// D: lines, discs and ellipses measured by rings of rectangles and fitted.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using synthetic::coverage;
using synthetic::disc_shape;
using synthetic::exposure;
using synthetic::grey_image;
using synthetic::random;

constexpr double kPi = std::numbers::pi;

double bound(double step, double noise, double psf, double width) {
  const double s = std::sqrt(psf * psf + 1.0 / 12);
  return std::sqrt(noise * noise + 1.0 / 12) / step *
         std::sqrt(2 * std::sqrt(kPi) * s / width);
}

struct circle {
  double x, y, r;
};

// The bright disc `c` in an image of the given exposure.
grey_image disc_image(const circle& c, double psf, const exposure& light,
                      random* r) {
  const int size = 2 * static_cast<int>(std::ceil(c.r + 30)) + 1;
  coverage part(size, size);
  synthetic::add_ellipse({c.x, c.y, 0, c.r, c.r}, psf, 1, &part);
  return synthetic::expose(part, light, r);
}

circle random_circle(double radius, random* r) {
  const double middle = std::ceil(radius + 30);
  return {middle + r->uniform(-0.5, 0.5), middle + r->uniform(-0.5, 0.5),
          radius + r->uniform(-0.5, 0.5)};
}

struct caliper {
  double length;
  double width;
};

// Errors of centre (as a distance) and radius; infinite if nothing was fitted.
struct circle_error {
  double centre;
  double radius;
};

circle_error measure_circle(const grey_image& g, const circle& truth,
                            const circle& drawn, const caliper& c) {
  const auto rects =
      library::on_circle(drawn.x, drawn.y, drawn.r, c.length, c.width, 1, 0);
  const auto points = library::measured(g, 1, 20, "strongest", rects.list);
  double fit[3] = {};
  if (points.n == 0 || do_fit(points.values.data(), points.n, VEXOLAB_CIRCLE, 7,
                              2, 20, 3, fit) != 0) {
    return {INFINITY, INFINITY};
  }
  return {std::hypot(fit[0] - truth.x, fit[1] - truth.y), fit[2] - truth.r};
}

void discs_without_noise(report* out, random* r) {
  for (const double radius : {12.0, 20.0, 35.0, 60.0, 100.0}) {
    statistics centre;
    statistics size;
    for (const double psf : {0.5, 0.7, 1.0}) {
      for (const caliper c : {caliper{10, 5}, {20, 10}, {40, 20}}) {
        for (int i = 0; i < 4; ++i) {
          const circle truth = random_circle(radius, r);
          const auto e = measure_circle(disc_image(truth, psf, {}, r), truth,
                                        {truth.x, truth.y, radius}, c);
          centre.add(e.centre);
          size.add(e.radius);
        }
      }
    }
    std::string what = text("disc R %.0f, centre rms px", radius);
    out->at_most("D1", what, centre.rms(), .004);
    what = text("disc R %.0f, radius rms px", radius);
    out->at_most("D2", what, size.rms(), radius <= 20 ? .004 : .003, .0005);
  }
}

void discs_drawn_off(report* out, random* r) {
  for (const caliper c : {caliper{20, 10}, {40, 20}}) {
    statistics centre;
    statistics size;
    for (int i = 0; i < 24; ++i) {
      const circle truth = random_circle(60, r);
      const double angle = r->uniform(0, 2 * kPi);
      const double off = r->uniform(0, 3);
      const circle drawn = {truth.x + off * std::cos(angle),
                            truth.y + off * std::sin(angle),
                            truth.r + r->uniform(-4 + off, 4 - off)};
      const auto e =
          measure_circle(disc_image(truth, 0.7, {}, r), truth, drawn, c);
      centre.add(e.centre);
      size.add(e.radius);
    }
    std::string what =
        text("disc R 60 drawn up to 4 px off, %g x %g, radius px", c.length,
             c.width);
    out->at_most("D3", what, size.largest(), .008);
    out->at_most("D4", "  centre px", centre.largest(), .006);
  }
}

// Grey falls by half across the image, along a random direction.
exposure half_lit(double size, random* r) {
  const double angle = r->uniform(0, 2 * kPi);
  const double cx = std::cos(angle) / size;
  const double cy = std::sin(angle) / size;
  exposure light;
  light.illumination = [=](double x, double y) {
    return 0.75 + 0.5 * ((x - size / 2) * cx + (y - size / 2) * cy);
  };
  return light;
}

void illumination(report* out, random* r) {
  for (const caliper c : {caliper{20, 10}, {40, 20}}) {
    statistics centre;
    statistics size;
    for (int i = 0; i < 24; ++i) {
      const circle truth = random_circle(60, r);
      const auto g = disc_image(truth, 0.7, half_lit(181, r), r);
      const auto e = measure_circle(g, truth, {truth.x, truth.y, 60}, c);
      centre.add(e.centre);
      size.add(e.radius);
    }
    const std::string what = text(
        "50 %% illumination gradient, %g x %g, centre px", c.length, c.width);
    out->at_most("D5", what, centre.largest(), .03, .005);
    out->at_most("D6", "  radius px", size.largest(), .02, .005);
  }
}

void discs_in_noise(report* out, random* r) {
  const struct {
    double psf, step, noise;
  } images[] = {{0.7, 100, 5}, {0.7, 150, 2}, {1.0, 60, 3}};
  for (const caliper c : {caliper{10, 5}, {20, 10}, {40, 20}}) {
    for (const auto& image : images) {
      statistics centre;
      statistics size;
      for (int i = 0; i < 60; ++i) {
        const circle truth = random_circle(60, r);
        const exposure light = {50, image.step, image.noise, nullptr};
        const auto e = measure_circle(disc_image(truth, image.psf, light, r),
                                      truth, {truth.x, truth.y, 60}, c);
        centre.add(e.centre);
        size.add(e.radius);
      }
      const double one = bound(image.step, image.noise, image.psf, 1) /
                         std::sqrt(2 * kPi * 60);
      const std::string what =
          text("disc, A %g noise %g, %g x %g, centre / bound", image.step,
               image.noise, c.length, c.width);
      out->at_most("D7", what, centre.rms() / (2 * one),
                   c.width < 10 ? 2.0 : 1.6);
      out->at_most("D8", "  radius / bound", size.rms() / one,
                   c.width < 10 ? 2.3 : 1.84);
    }
  }
}

// A straight edge of 140 px through an image, measured along a drawn line.
struct line_error {
  double offset;
  double end;  // displacement of the ends by the error of the angle
};

line_error measure_line(double psf, const exposure& light, const caliper& c,
                        random* r) {
  constexpr double kLength = 140;
  const double angle = r->uniform(0, 2 * kPi);
  const double tx = std::cos(angle);
  const double ty = std::sin(angle);
  const double x = 100 + r->uniform(-0.5, 0.5);
  const double y = 100 + r->uniform(-0.5, 0.5);
  coverage part(201, 201);
  // Bright to the right-hand side of the travel, (-ty, tx).
  synthetic::add_half_plane(x, y, std::atan2(-tx, -ty) * 180 / kPi, psf, 1,
                            &part);
  const grey_image g = synthetic::expose(part, light, r);
  const double off = r->uniform(-1, 1);
  const double bx = x - off * ty;
  const double by = y + off * tx;
  const auto rects = library::on_line(
      bx - kLength / 2 * tx, by - kLength / 2 * ty, bx + kLength / 2 * tx,
      by + kLength / 2 * ty, c.length, c.width);
  const auto points = library::measured(g, 1, 20, "strongest", rects.list);
  double fit[4] = {};
  if (points.n == 0 || do_fit(points.values.data(), points.n, VEXOLAB_LINE, 7,
                              2, 20, 2, fit) != 0) {
    return {INFINITY, INFINITY};
  }
  const double turn = fit[0] * ty - fit[1] * tx;
  // Distance of the fitted line from the middle of the edge.
  const double offset = (fit[2] - x) * fit[1] - (fit[3] - y) * fit[0];
  return {offset, turn * kLength / 2};
}

void lines(report* out, random* r) {
  for (const caliper c : {caliper{20, 10}, {40, 20}}) {
    statistics offset;
    statistics end;
    for (int i = 0; i < 60; ++i) {
      const auto e = measure_line(i % 2 == 0 ? 0.5 : 1.0, {}, c, r);
      offset.add(e.offset);
      end.add(e.end);
    }
    const std::string what =
        text("line, %g x %g, end displacement rms px", c.length, c.width);
    out->at_most("D9", what, end.rms(), .003);
    out->at_most("D10", "  offset rms px", offset.rms(), .003);
  }
  for (const caliper c : {caliper{10, 5}, {20, 10}, {40, 20}}) {
    statistics offset;
    statistics end;
    for (int i = 0; i < 200; ++i) {
      const auto e = measure_line(0.7, {50, 100, 5, nullptr}, c, r);
      offset.add(e.offset);
      end.add(e.end);
    }
    const double one = bound(100, 5, 0.7, 140);
    const double limit = c.width < 10 ? 1.9 : 1.5;
    const std::string what =
        text("line in noise, %g x %g, end / bound", c.length, c.width);
    out->at_most("D11", what, end.rms() / (std::sqrt(3.0) * one), limit);
    out->at_most("D12", "  offset / bound", offset.rms() / one, limit);
  }
}

// Position in noise of the five parameters: bound of each from the contour's
// information, sum of J^T J over the arc.
struct parameters {
  double value[5];  // x, y, angle as displacement of the end, a, b
};

parameters ellipse_bound(const disc_shape& e, double one) {
  double m[5][5] = {};
  constexpr int kSteps = 2000;
  const double angle = e.angle * kPi / 180;
  for (int i = 0; i < kSteps; ++i) {
    const double t = 2 * kPi * i / kSteps;
    const double speed = std::hypot(e.a * std::sin(t), e.b * std::cos(t));
    const double n1 = e.b * std::cos(t) / speed;
    const double n2 = e.a * std::sin(t) / speed;
    const double nx = n1 * std::cos(angle) - n2 * std::sin(angle);
    const double ny = -(n1 * std::sin(angle) + n2 * std::cos(angle));
    // Moving the angle so that the end of the longer axis moves by 1.
    const double turn = (e.a * std::cos(t) * n2 - e.b * std::sin(t) * n1) / e.a;
    const double j[5] = {nx, ny, turn, n1 * std::cos(t), n2 * std::sin(t)};
    const double ds = speed * 2 * kPi / kSteps;
    for (int p = 0; p < 5; ++p) {
      for (int q = 0; q < 5; ++q) m[p][q] += j[p] * j[q] * ds;
    }
  }
  parameters result;
  for (int p = 0; p < 5; ++p) {
    // Gauss and Jordan on a copy with one right-hand side.
    double a[5][6];
    for (int i = 0; i < 5; ++i) {
      for (int j = 0; j < 5; ++j) a[i][j] = m[i][j];
      a[i][5] = i == p ? 1 : 0;
    }
    for (int i = 0; i < 5; ++i) {
      for (int k = 0; k < 5; ++k) {
        if (k == i) continue;
        const double f = a[k][i] / a[i][i];
        for (int j = 0; j < 6; ++j) a[k][j] -= f * a[i][j];
      }
    }
    result.value[p] = one * std::sqrt(a[p][5] / a[p][p]);
  }
  return result;
}

parameters measure_ellipse(const grey_image& g, const disc_shape& truth,
                           const disc_shape& drawn, const caliper& c,
                           int count) {
  const auto rects = library::on_ellipse(drawn.x, drawn.y, drawn.angle, drawn.a,
                                         drawn.b, c.length, c.width, 1, count);
  const auto points = library::measured(g, 1, 20, "strongest", rects.list);
  double fit[5] = {};
  if (points.n == 0 || do_fit(points.values.data(), points.n, VEXOLAB_ELLIPSE,
                              0, 2, 20, 3, fit) != 0) {
    return {{INFINITY, INFINITY, INFINITY, INFINITY, INFINITY}};
  }
  const double turn = std::remainder(fit[2] - truth.angle, 180.0) * kPi / 180;
  return {{fit[0] - truth.x, fit[1] - truth.y, turn * truth.a, fit[3] - truth.a,
           fit[4] - truth.b}};
}

disc_shape random_ellipse(double a, double b, random* r) {
  const double middle = std::ceil(a + 30);
  return {middle + r->uniform(-0.5, 0.5), middle + r->uniform(-0.5, 0.5),
          r->uniform(-90, 90), a, b};
}

grey_image ellipse_image(const disc_shape& e, double psf, const exposure& light,
                         random* r) {
  const int size = 2 * static_cast<int>(std::ceil(e.a + 30)) + 1;
  coverage part(size, size);
  synthetic::add_ellipse(e, psf, 1, &part);
  return synthetic::expose(part, light, r);
}

void ellipses(report* out, random* r) {
  const struct {
    double width, limit, in_noise;
  } cases[] = {{20, .015, 2.4}, {10, .005, 2.0}, {5, .004, 2.2}};
  for (const auto& c : cases) {
    double largest = 0;
    for (int i = 0; i < 12; ++i) {
      const disc_shape e = random_ellipse(80, 45, r);
      const auto p =
          measure_ellipse(ellipse_image(e, 0.7, {}, r), e, e, {40, c.width}, 0);
      for (const double error : p.value) {
        largest = std::max(largest, std::fabs(error));
      }
    }
    const std::string what =
        text("ellipse 80 x 45, width %g, worst parameter px", c.width);
    out->at_most("D13", what, largest, c.limit);
  }
  for (const auto& c : cases) {
    statistics each[5];
    for (int i = 0; i < 60; ++i) {
      const disc_shape e = random_ellipse(80, 45, r);
      const parameters least = ellipse_bound(e, bound(100, 5, 0.7, 1));
      const auto p =
          measure_ellipse(ellipse_image(e, 0.7, {50, 100, 5, nullptr}, r), e, e,
                          {40, c.width}, 0);
      for (int k = 0; k < 5; ++k) each[k].add(p.value[k] / least.value[k]);
    }
    double worst = 0;
    for (int k = 0; k < 5; ++k) {
      worst = std::max(worst, each[k].rms());
    }
    const std::string what =
        text("ellipse in noise, width %g, worst / bound", c.width);
    out->at_most("D14", what, worst, c.in_noise);
  }
}

// Squares of the background's or another grey on the contour.
void occlusions(report* out, random* r) {
  std::vector<double> errors;
  for (int i = 0; i < 60; ++i) {
    const circle truth = random_circle(60, r);
    const exposure light = {50, 100, 3, nullptr};
    grey_image g = disc_image(truth, 0.7, light, r);
    for (int k = 0; k < 5; ++k) {
      const double angle = r->uniform(0, 2 * kPi);
      const int cx = static_cast<int>(truth.x + truth.r * std::cos(angle));
      const int cy = static_cast<int>(truth.y + truth.r * std::sin(angle));
      const int grey = r->below(2) == 0 ? 50 : 150;
      for (int y = cy - 6; y <= cy + 6; ++y) {
        for (int x = cx - 6; x <= cx + 6; ++x) {
          g.pixels[static_cast<size_t>(y * g.width + x)] =
              static_cast<unsigned char>(grey);
        }
      }
    }
    errors.push_back(
        measure_circle(g, truth, {truth.x, truth.y, 60}, {20, 10}).centre);
  }
  std::sort(errors.begin(), errors.end());
  out->at_most("D15", "five squares on the contour, centre, median px",
               errors[errors.size() / 2], .03);
  out->at_most("D16", "  95 % px", errors[errors.size() * 95 / 100], .12);
}

}  // namespace

void shapes(report* out, uint64_t seed) {
  random r(300 + seed);
  discs_without_noise(out, &r);
  discs_drawn_off(out, &r);
  illumination(out, &r);
  discs_in_noise(out, &r);
  lines(out, &r);
  ellipses(out, &r);
  occlusions(out, &r);
}

}  // namespace acceptance
