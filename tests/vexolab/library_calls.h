// SPDX-License-Identifier: MIT
//
// The C functions in a form that tests can read: results copied, memory
// released.
#ifndef TESTS_VEXOLAB_LIBRARY_CALLS_H_
#define TESTS_VEXOLAB_LIBRARY_CALLS_H_

#include <array>
#include <cmath>
#include <vector>

#include "tests/vexolab/synthetic_image.h"
#include "vexolab/vexolab.h"

namespace library {

using rectangle = std::array<float, 5>;

struct rectangles {
  int code = 0;
  std::vector<rectangle> list;
};

inline rectangles taken(int id, float* data, int count) {
  rectangles result;
  result.code = id;
  for (int i = 0; i < count; ++i) {
    rectangle r;
    for (int k = 0; k < 5; ++k) r[k] = data[5 * i + k];
    result.list.push_back(r);
  }
  clear_mems(id);
  return result;
}

inline rectangles on_line(double x1, double y1, double x2, double y2,
                          double length, double width, int direction = 1,
                          int count = 0) {
  float* data = nullptr;
  int n = 0;
  const int id = gen_measure_line(x1, y1, x2, y2, length, width, direction,
                                  count, &data, &n);
  return taken(id, data, n);
}

inline rectangles on_circle(double cx, double cy, double r, double length,
                            double width, int direction = 1, int count = 0) {
  float* data = nullptr;
  int n = 0;
  const int id =
      gen_measure_circle(cx, cy, r, length, width, direction, count, &data, &n);
  return taken(id, data, n);
}

inline rectangles on_ellipse(double cx, double cy, double angle, double a,
                             double b, double length, double width,
                             int direction = 1, int count = 0) {
  float* data = nullptr;
  int n = 0;
  const int id = gen_measure_ellipse(cx, cy, angle, a, b, length, width,
                                     direction, count, &data, &n);
  return taken(id, data, n);
}

struct point_list {
  int code = 0;
  int n = 0;
  std::vector<double> values;  // the n x, then the n y

  double x(int i) const { return values[static_cast<size_t>(i)]; }
  double y(int i) const { return values[static_cast<size_t>(n + i)]; }
};

inline point_list measured(const synthetic::grey_image& g, double sigma,
                           double amplitude, const char* selection,
                           const std::vector<rectangle>& rects) {
  double* data = nullptr;
  point_list result;
  result.code = do_measure(g.data(), g.width, g.height, sigma, amplitude,
                           selection, rects.empty() ? nullptr : rects[0].data(),
                           static_cast<int>(rects.size()), &data, &result.n);
  if (result.n > 0) result.values.assign(data, data + 2 * result.n);
  clear_mems(result.code);
  return result;
}

struct edge_point {
  double x;
  double y;
  double amplitude;
};

struct edge_list {
  int code = 0;
  std::vector<edge_point> list;
};

inline edge_list edges_in(const synthetic::grey_image& g, const rectangle& r,
                          double sigma, double amplitude) {
  double* data = nullptr;
  int count = 0;
  edge_list result;
  result.code = measure_pos_d(r[0], r[1], r[2], r[3], r[4], g.data(), g.width,
                              g.height, sigma, amplitude, &data, &count);
  for (int i = 0; i + 2 < count; i += 3) {
    result.list.push_back({data[i], data[i + 1], data[i + 2]});
  }
  clear_mems(result.code);
  return result;
}

// Where a point lies along the rectangle's scan, from its centre.
inline double along(const rectangle& r, double x, double y) {
  const double phi = r[2] * 3.14159265358979323846 / 180;
  return (x - r[0]) * std::cos(phi) - (y - r[1]) * std::sin(phi);
}

}  // namespace library

#endif  // TESTS_VEXOLAB_LIBRARY_CALLS_H_
