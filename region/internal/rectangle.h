// SPDX-License-Identifier: MIT
//
// The smallest rectangle around a convex polygon of pixel centres.
#ifndef VEXO_REGION_INTERNAL_RECTANGLE_H_
#define VEXO_REGION_INTERNAL_RECTANGLE_H_

#include "region/internal/hull.h"

namespace vexo::internal {

// side_w and side_h are the extents along (ux, uy) and along (-uy, ux), where u
// points right or down-right: ux > 0, uy >= 0. Its length means nothing.
struct rectangle {
  double side_w;
  double side_h;
  double ux;
  double uy;
};

// Of equally small rectangles the one whose u turns least from the columns'
// direction. For two corners side_w is their distance, u their direction (any
// quadrant) and side_h is 0.
//
// Cost: O(n) for large n; all edges at once, O(n^2), for few corners.
template <class T>
rectangle smallest_rectangle(const hull<T>& corners);

// The direction of the longer side, side_w's only if it is strictly longer, in
// degrees in (-90, 90]; 0 along a row, positive when rising to the right.
double rectangle_angle(const rectangle& r);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_RECTANGLE_H_
