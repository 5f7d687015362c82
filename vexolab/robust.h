// SPDX-License-Identifier: MIT
//
// Robust fitting, the same for all shapes: least median of squares to start
// [Rousseeuw 1984], then weighted geometric fits with a redescending tail and
// a scale estimated along the way (an MM-estimator in spirit [Yohai 1987]).
//
// However long the weights take to come to rest, and however many the points,
// no fit visits points more than kMostVisits times: about 0.4 s of an
// ellipse's.
#ifndef VEXOLAB_ROBUST_H_
#define VEXOLAB_ROBUST_H_

#include "vexolab/shape_fit.h"

namespace vexolab {

enum class tail {
  kShort,  // weight 1 up to max(factor, 2) sigma, falling to 0 over the next
           // 1.5 sigma
  kLong,   // 1 up to factor sigma, then as Huber's, times a line that reaches
           // 0 at max(1.75 factor, factor + 1.5) sigma
};

struct robust_options {
  tail weights = tail::kLong;
  double factor = 2;             // in units of sigma, > 0; raised to 0.01
  int iterations = 20;           // 0: plain least squares
  int least = 5;                 // points to keep whatever the weights say
  double smallest_sigma = 0.01;  // in the points' units, > 0
};

constexpr int kMostVisits = 12500000;

// Leaves the result in *shape; false: degenerate. Robust fits need more than
// shape->freedom() + 1 points.
bool fit_points(const point_set& points, const robust_options& options,
                shape_fit* shape);

}  // namespace vexolab

#endif  // VEXOLAB_ROBUST_H_
