// SPDX-License-Identifier: MIT
//
// The start of a robust fit: the shape that half of the points agree on best.
#ifndef VEXOLAB_ROBUST_START_H_
#define VEXOLAB_ROBUST_START_H_

#include "vexolab/shape_fit.h"

namespace vexolab {

// Unsigned distances of all points from the start, and the standard deviation
// that goes with it (not below `smallest_sigma`); false if no sample of the
// points determines a shape.
bool robust_start(const point_set& points, const shape_fit& shape,
                  double smallest_sigma, double* distance, double* sigma);

}  // namespace vexolab

#endif  // VEXOLAB_ROBUST_START_H_
