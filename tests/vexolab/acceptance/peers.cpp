// SPDX-License-Identifier: MIT
//
// P: what others reach on the same images: circles through the points of
// OpenCV's edge detector, its Hough transform, and the iso-contour at the exact
// middle grey, which in practice nobody knows.
#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using synthetic::grey_image;
using synthetic::random;

struct circle {
  double x, y, r;
};

cv::Mat view_of(const grey_image& g) {
  return cv::Mat(g.height, g.width, CV_8UC1,
                 const_cast<unsigned char*>(g.data()));
}

// Least squares on the distances, no outliers left out.
circle through(const std::vector<cv::Point2d>& points) {
  std::vector<double> xy;
  for (const auto& p : points) xy.push_back(p.x);
  for (const auto& p : points) xy.push_back(p.y);
  double fit[3] = {NAN, NAN, NAN};
  if (do_fit(xy.data(), static_cast<int>(points.size()), VEXOLAB_CIRCLE, 7, 0,
             0, 3, fit) != 0) {
    return {NAN, NAN, NAN};
  }
  return {fit[0], fit[1], fit[2]};
}

circle ours(const grey_image& g, const circle& drawn) {
  const auto rects = library::on_circle(drawn.x, drawn.y, drawn.r, 40, 20).list;
  const auto found = library::measured(g, 1, 20, "strongest", rects);
  double fit[3] = {NAN, NAN, NAN};
  do_fit(found.values.data(), found.n, VEXOLAB_CIRCLE, 7, 2, 20, 3, fit);
  return {fit[0], fit[1], fit[2]};
}

circle canny(const grey_image& g) {
  cv::Mat edges;
  cv::Canny(view_of(g), edges, 100, 200, 3, true);
  std::vector<cv::Point> pixels;
  cv::findNonZero(edges, pixels);
  return through({pixels.begin(), pixels.end()});
}

circle hough(const grey_image& g, double radius) {
  cv::Mat smooth;
  cv::GaussianBlur(view_of(g), smooth, cv::Size(5, 5), 1);
  std::vector<cv::Vec3f> found;
  cv::HoughCircles(smooth, found, cv::HOUGH_GRADIENT, 1, g.width, 200, 20,
                   static_cast<int>(radius) - 10,
                   static_cast<int>(radius) + 10);
  if (found.empty()) return {NAN, NAN, NAN};
  return {found[0][0], found[0][1], found[0][2]};
}

// Crossings of the level on the lines between neighbouring pixels, as marching
// squares finds them.
circle iso_contour(const grey_image& g, double level) {
  std::vector<cv::Point2d> points;
  const auto at = [&](int x, int y) {
    return static_cast<double>(g.pixels[static_cast<size_t>(y * g.width + x)]);
  };
  for (int y = 0; y < g.height; ++y) {
    for (int x = 0; x < g.width; ++x) {
      const double here = at(x, y);
      if (x + 1 < g.width && (here < level) != (at(x + 1, y) < level)) {
        points.emplace_back(x + (level - here) / (at(x + 1, y) - here), y);
      }
      if (y + 1 < g.height && (here < level) != (at(x, y + 1) < level)) {
        points.emplace_back(x, y + (level - here) / (at(x, y + 1) - here));
      }
    }
  }
  return through(points);
}

struct errors {
  statistics centre;
  statistics radius;

  void add(const circle& found, const circle& truth) {
    // A peer that finds nothing has an error like everything else.
    const bool nothing = !std::isfinite(found.r);
    centre.add(nothing ? truth.r
                       : std::hypot(found.x - truth.x, found.y - truth.y));
    radius.add(nothing ? truth.r : found.r - truth.r);
  }
};

struct comparison {
  errors own, iso, canny_fit, hough_circle;
};

comparison compare(double noise, int trials, random* r) {
  comparison result;
  for (int i = 0; i < trials; ++i) {
    const circle truth = {90 + r->uniform(-0.5, 0.5),
                          90 + r->uniform(-0.5, 0.5),
                          60 + r->uniform(-0.5, 0.5)};
    synthetic::coverage c(181, 181);
    synthetic::add_ellipse({truth.x, truth.y, 0, truth.r, truth.r}, 0.7, 1, &c);
    const grey_image g = synthetic::expose(c, {50, 100, noise, nullptr}, r);
    const circle drawn = {truth.x + r->uniform(-2, 2),
                          truth.y + r->uniform(-2, 2), 60};
    result.own.add(ours(g, drawn), truth);
    result.iso.add(iso_contour(g, 100), truth);
    result.canny_fit.add(canny(g), truth);
    result.hough_circle.add(hough(g, truth.r), truth);
  }
  return result;
}

void print(report* out, const char* title, const comparison& c) {
  out->note(text("%s: rms error of centre and radius, px", title));
  const struct {
    const char* name;
    const errors& e;
  } rows[] = {{"this library, 40 x 20", c.own},
              {"iso-contour at the exact level", c.iso},
              {"Canny, circle fit", c.canny_fit},
              {"HoughCircles", c.hough_circle}};
  for (const auto& row : rows) {
    out->note(text("  %-32s %9.5f %9.5f", row.name, row.e.centre.rms(),
                   row.e.radius.rms()));
  }
}

}  // namespace

void peers(report* out, uint64_t seed) {
  random r(800 + seed);
  const comparison quiet = compare(0, 40, &r);
  print(out, "disc R 60, no noise", quiet);
  print(out, "disc R 60, noise 5 of 100", compare(5, 40, &r));
  const double own = quiet.own.radius.rms();
  out->at_least("P1", "radius error of the iso-contour over ours",
                quiet.iso.radius.rms() / own, 5);
  out->at_least("P2", "radius error of Canny and a fit over ours",
                quiet.canny_fit.radius.rms() / own, 15);
  out->at_least("P3", "radius error of HoughCircles over ours",
                quiet.hough_circle.radius.rms() / own, 100);
}

}  // namespace acceptance
