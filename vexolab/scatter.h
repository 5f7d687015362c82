// SPDX-License-Identifier: MIT
//
// Weighted centre and second moments of points, which all three fits start
// from.
#ifndef VEXOLAB_SCATTER_H_
#define VEXOLAB_SCATTER_H_

#include <algorithm>
#include <cmath>

#include "vexolab/shape_fit.h"

namespace vexolab {

struct scatter {
  double weight = 0;              // sum of the weights
  double x = 0, y = 0;            // weighted centre
  double xx = 0, xy = 0, yy = 0;  // weighted sums about it
  double extent = 0;  // longer side of the upright box around the points used

  scatter(const point_set& p, const double* w) {
    double left = INFINITY, right = -INFINITY, top = INFINITY;
    double bottom = -INFINITY;
    for (int i = 0; i < p.n; ++i) {
      if (w[i] == 0) continue;
      weight += w[i];
      x += w[i] * p.x[i];
      y += w[i] * p.y[i];
      left = std::min(left, p.x[i]);
      right = std::max(right, p.x[i]);
      top = std::min(top, p.y[i]);
      bottom = std::max(bottom, p.y[i]);
    }
    if (weight == 0) return;
    x /= weight;
    y /= weight;
    extent = std::max(right - left, bottom - top);
    for (int i = 0; i < p.n; ++i) {
      const double dx = p.x[i] - x, dy = p.y[i] - y;
      xx += w[i] * dx * dx;
      xy += w[i] * dx * dy;
      yy += w[i] * dy * dy;
    }
  }

  // Whether the points lie on a line: an arc this flat has a radius of well
  // above 100 times its extent, an ellipse this flat axes below 1 : 10000.
  bool is_thin() const {
    const double trace = xx + yy;
    return !(xx * yy - xy * xy > 1e-8 * trace * trace);
  }
};

}  // namespace vexolab

#endif  // VEXOLAB_SCATTER_H_
