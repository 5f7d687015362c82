// SPDX-License-Identifier: MIT
//
// An ellipse, and the exact distances of points to it.
#ifndef VEXOLAB_ELLIPSE_H_
#define VEXOLAB_ELLIPSE_H_

#include "vexolab/least_squares.h"
#include "vexolab/shape_fit.h"

namespace vexolab {

// The image of the unit circle under the symmetric matrix with eigenvalues
// a >= b > 0 and first eigenvector (cs, sn), moved to (cx, cy). As parameters
// serve the centre and the three entries of that matrix: unlike an angle, they
// stay good when the ellipse is a circle.
struct ellipse {
  static constexpr int kFreedom = 5;
  double cx, cy, cs, sn, a, b;

  // Signed orthogonal distances (outside positive) of n points.
  void distances(const point_set& points, double* distance) const;

  normal_equations<5> linearise(const point_set& points,
                                const double* weight) const;

  // step: centre and matrix entries (11, 12, 22) along the ellipse's own axes.
  // False if the matrix is no longer positive.
  bool move(const Eigen::Matrix<double, 5, 1>& step);
};

// The axes of the symmetric matrix {{xx, xy}, {xy, yy}}: eigenvalues
// large >= small, (cs, sn) the unit eigenvector of the larger; (1, 0) if the
// two are equal.
struct axes {
  double large, small, cs, sn;
  axes(double xx, double xy, double yy);
};

}  // namespace vexolab

#endif  // VEXOLAB_ELLIPSE_H_
