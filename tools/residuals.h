// SPDX-License-Identifier: MIT
//
// How well measured points agree with the shape that was fitted to them.
#ifndef RENDAL_TOOLS_RESIDUALS_H_
#define RENDAL_TOOLS_RESIDUALS_H_

#include <vector>

namespace rendal {

// A point that was measured.
struct EdgePoint {
  double x = 0;  // [image px]
  double y = 0;
  double amplitude = 0;  // [grey levels]; bands and line finder only
  int caliper = 0;       // from 0; line finder only
  double distance = 0;   // from the fitted shape [image px]
  bool used = false;     // see Residuals
};

// Over the points used: those no farther from the shape than `factor` robust
// standard deviations, 1.4826 times the median distance; all with factor 0.
// Those are the points that the fit gives their full weight, but for its own,
// finer estimate of the deviation.
struct Residuals {
  int used = 0;
  double rms = 0;  // [image px]
  double max = 0;
};

// `shape` and `values` as do_fit has them. Fills in distance and used of every
// point. Without points everything is 0.
Residuals MeasureResiduals(int shape, const double* values, double factor,
                           std::vector<EdgePoint>* points);

// Of a point from an ellipse about (0, 0) with half axes a, b > 0 along the
// axes of coordinates. Exact to rounding.
double DistanceFromEllipse(double x, double y, double a, double b);

}  // namespace rendal

#endif  // RENDAL_TOOLS_RESIDUALS_H_
