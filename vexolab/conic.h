// SPDX-License-Identifier: MIT
//
// Ellipses by their equation: the algebraic fits from which geometric ones
// start.
#ifndef VEXOLAB_CONIC_H_
#define VEXOLAB_CONIC_H_

#include "vexolab/ellipse.h"
#include "vexolab/scatter.h"
#include "vexolab/shape_fit.h"

namespace vexolab {

// a x^2 + b x y + c y^2 + d x + e y + f = 0, with a + c > 0.
using conic = guess;

// The ellipse through five points; false if their conic is none.
bool ellipse_through(const point_set& points, const int* index, conic* result);

// Least squares on the equation under 4 a c - b^2 = 1, which admits ellipses
// only [R. Halir, J. Flusser, Numerically stable direct least squares fitting
// of ellipses, 1998]. False if the points are too few or on a line.
bool direct_fit(const point_set& points, const double* weight,
                const scatter& moments, conic* result);

// False if no point satisfies the equation, or not an ellipse's.
bool to_ellipse(const conic& equation, ellipse* result);

}  // namespace vexolab

#endif  // VEXOLAB_CONIC_H_
