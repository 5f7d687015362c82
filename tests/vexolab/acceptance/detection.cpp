// SPDX-License-Identifier: MIT
//
// C: which edges are found, selected and refused.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using library::rectangle;
using synthetic::coverage;
using synthetic::grey_image;
using synthetic::random;

// A bright stripe for every pair of places along the scan, which runs at the
// given angle through the middle of a square image.
struct stripes {
  grey_image image;
  rectangle rect;
  std::vector<double> edges;
};

stripes stripes_at(const std::vector<double>& edges, double angle, random* r) {
  constexpr int kSize = 121;
  const float middle = kSize / 2;
  coverage c(kSize, kSize);
  const double phi = angle * 3.14159265358979323846 / 180;
  for (size_t i = 0; i < edges.size(); ++i) {
    synthetic::add_half_plane(middle + edges[i] * std::cos(phi),
                              middle - edges[i] * std::sin(phi), angle, 0.7,
                              i % 2 == 0 ? 1 : -1, &c);
  }
  return {synthetic::expose(c, {}, r),
          {middle, middle, static_cast<float>(angle), 45, 5},
          edges};
}

void selections(report* out, random* r) {
  const stripes s = stripes_at({-30.2, -14.7, 5.1, 27.4}, 17, r);
  const struct {
    const char* text;
    double expected;
  } cases[] = {{"first", -30.2}, {"first+", -30.2}, {"first-", -14.7},
               {"last", 27.4},   {"last+", 5.1},    {"last-", 27.4}};
  for (const auto& c : cases) {
    const auto found = library::measured(s.image, 1, 50, c.text, {s.rect});
    out->at_most("C1", std::string("selection ") + c.text + ", error px",
                 found.n == 1 ? std::fabs(library::along(s.rect, found.x(0),
                                                         found.y(0)) -
                                          c.expected)
                              : INFINITY,
                 .02);
  }
  // The step at -10 is half as high as the one at 10.
  coverage c(121, 121);
  synthetic::add_half_plane(50, 60, 0, 0.7, 0.4, &c);
  synthetic::add_half_plane(70, 60, 0, 0.7, 0.6, &c);
  const grey_image g = synthetic::expose(c, {}, r);
  const auto found =
      library::measured(g, 1, 20, "strongest", {{60, 60, 0, 30, 5}});
  out->at_most("C1", "selection strongest, error px",
               found.n == 1 ? std::fabs(found.x(0) - 70) : INFINITY, .02);
  out->holds(
      "C1", "no edge of that polarity: no point",
      library::measured(g, 1, 20, "first-", {{60, 60, 0, 30, 5}}).n == 0);
}

void order(report* out, random* r) {
  const stripes s = stripes_at({-30.2, -14.7, 5.1, 27.4}, -70, r);
  const auto found = library::edges_in(s.image, s.rect, 1, 50);
  bool ascending = found.list.size() == 4;
  bool signs = ascending;
  for (size_t i = 0; ascending && i < 4; ++i) {
    ascending =
        std::fabs(library::along(s.rect, found.list[i].x, found.list[i].y) -
                  s.edges[i]) < .02;
    signs = signs && (found.list[i].amplitude > 0) == (i % 2 == 0);
  }
  out->holds("C2", "all edges in order along the scan", ascending);
  out->holds("C3", "rising edges positive, falling ones negative", signs);
  const double height = found.list.empty() ? 0 : found.list[0].amplitude;
  out->holds(
      "C5", "the threshold is the reported amplitude",
      library::edges_in(s.image, s.rect, 1, height * 0.999).list.size() >= 1 &&
          library::edges_in(s.image, s.rect, 1, 160).list.empty());
  out->holds("C5", "a negative threshold is 0",
             library::edges_in(s.image, s.rect, 1, -5).list.size() >= 4);
}

void near_edges(report* out, random* r) {
  for (const double apart : {12.0, 6.0}) {
    double largest = 0;
    for (int i = 0; i < 60; ++i) {
      const double first = r->uniform(-20, -19);
      std::vector<double> edges;
      for (int k = 0; k < 6; ++k) edges.push_back(first + k * apart);
      const stripes s = stripes_at(edges, r->uniform(-180, 180), r);
      const auto found = library::edges_in(s.image, s.rect, 1, 50);
      if (found.list.size() != edges.size()) largest = INFINITY;
      for (size_t k = 0; k < found.list.size() && k < edges.size(); ++k) {
        largest = std::max(
            largest,
            std::fabs(library::along(s.rect, found.list[k].x, found.list[k].y) -
                      edges[k]));
      }
    }
    out->at_most(apart > 6 ? "C4" : "C6",
                 text("stripes %g px apart, largest error px", apart), largest,
                 apart > 6 ? .015 : .03);
  }
}

void nothing_to_find(report* out, random* r) {
  const rectangle rect = {60, 60, 20, 30, 10};
  coverage flat(121, 121);
  out->holds("C7", "a constant image has no edge",
             library::edges_in(synthetic::expose(flat, {}, r), rect, 1, 0)
                 .list.empty());
  const grey_image noise = synthetic::expose(flat, {100, 0, 5, nullptr}, r);
  out->holds("C8", "noise alone has no edge of 20",
             library::edges_in(noise, rect, 1, 20).list.empty());
  const grey_image bright = synthetic::expose(flat, {200, 0, 0, nullptr}, r);
  bool none = true;
  for (int i = 0; i < 72; ++i) {
    const rectangle across = {static_cast<float>(r->uniform(-10, 131)),
                              static_cast<float>(r->uniform(-10, 131)),
                              static_cast<float>(5 * i), 40, 10};
    none = none && library::edges_in(bright, across, 1, 0).list.empty();
  }
  out->holds("C9", "the border of the image is no edge", none);
}

void partly_outside(report* out, random* r) {
  coverage c(121, 121);
  synthetic::add_half_plane(6.3, 60, 0, 0.7, 1, &c);
  const grey_image g = synthetic::expose(c, {}, r);
  double largest = 0;
  for (const rectangle& rect :
       {rectangle{0, 60, 0, 20, 5}, {10, 0, 0, 9, 5}, {10, 120, 0, 9, 5}}) {
    const auto found = library::measured(g, 1, 20, "first", {rect});
    largest = std::max(largest,
                       found.n == 1 ? std::fabs(found.x(0) - 6.3) : INFINITY);
  }
  out->at_most("C10", "rectangles partly outside the image, error px", largest,
               .02);
  out->holds("C10", "less than half inside: nothing",
             library::measured(g, 1, 20, "first", {{10, -6, 0, 9, 5}}).n == 0);
}

void skipped(report* out, random* r) {
  const stripes s = stripes_at({0.3}, 0, r);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinite = std::numeric_limits<float>::infinity();
  std::vector<rectangle> rects = {s.rect,
                                  {nan, 60, 0, 20, 5},
                                  {60, infinite, 0, 20, 5},
                                  {60, 60, 0, 0, 5},
                                  {60, 60, 0, 20, -1},
                                  {60, 60, 0, 20001, 5},
                                  s.rect};
  out->holds("C11", "unusable rectangles are skipped",
             library::measured(s.image, 1, 20, "first", rects).n == 2);
  out->holds(
      "C12", "sigma far above the profile is no harm",
      library::measured(s.image, 100, 1, "first", {{60, 60, 0, 3, 5}}).code >=
          1);
  rects.assign(10001, s.rect);
  out->holds("C13", "10 001 rectangles are refused",
             library::measured(s.image, 1, 20, "first", rects).code == -6);
  out->holds("C14", "no rectangles: success without points",
             library::measured(s.image, 1, 20, "first", {}).code >= 1);
}

void refused(report* out, random* r) {
  const stripes s = stripes_at({0.3}, 0, r);
  const std::vector<rectangle> one = {s.rect};
  bool texts = true;
  for (const char* bad : {"", "First", "first +", "all", "last+ ", "strong"}) {
    texts = texts && library::measured(s.image, 1, 20, bad, one).code == -1;
  }
  out->holds(
      "C15", "unknown selections and NULL are refused",
      texts && library::measured(s.image, 1, 20, nullptr, one).code == -1);
  const grey_image row = {40, 1, std::vector<unsigned char>(40)};
  const grey_image column = {1, 40, std::vector<unsigned char>(40)};
  const grey_image four = {2, 2, {0, 255, 0, 255}};
  out->holds("C16", "images of one row or column are refused",
             library::measured(row, 1, 20, "first", one).code == -1 &&
                 library::measured(column, 1, 20, "first", one).code == -1 &&
                 library::measured(four, 1, 20, "first", one).code >= 1);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  out->holds("C17", "sigma 0, negative, not a number",
             library::measured(s.image, 0, 20, "first", one).code == -1 &&
                 library::measured(s.image, -1, 20, "first", one).code == -1 &&
                 library::measured(s.image, nan, 20, "first", one).code == -2 &&
                 library::measured(s.image, 1, nan, "first", one).code == -2);
  out->holds(
      "C18", "measure_pos_d: values that make no rectangle",
      library::edges_in(s.image, {60, 60, 0, 0, 5}, 1, 20).code == -1 &&
          library::edges_in(s.image, {60, 60, 0, 9, -1}, 1, 20).code == -1 &&
          library::edges_in(s.image, {60, 60, 0, 30000, 5}, 1, 20).code == -6);
}

}  // namespace

void detection(report* out, uint64_t seed) {
  random r(200 + seed);
  selections(out, &r);
  order(out, &r);
  near_edges(out, &r);
  nothing_to_find(out, &r);
  partly_outside(out, &r);
  skipped(out, &r);
  refused(out, &r);
}

}  // namespace acceptance
