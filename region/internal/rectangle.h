// SPDX-License-Identifier: MIT
//
// The smallest rectangle around a convex polygon of pixel centres.
#ifndef VEXO_REGION_INTERNAL_RECTANGLE_H_
#define VEXO_REGION_INTERNAL_RECTANGLE_H_

#include <cstddef>
#include <cstdint>

namespace vexo::internal {

// Column and row, relative to any origin.
struct point {
  double x;
  double y;
};

// side_w and side_h are the extents along u and along (-u.y, u.x), where u
// points right or down-right: u.x > 0, u.y >= 0. The length of u means nothing.
struct rectangle {
  double side_w;
  double side_h;
  point u;
};

// hull: n >= 2 corners, each a strict left turn (columns right, rows down).
// Of equally small rectangles the one whose u turns least from the columns'
// direction. For two corners side_w is their distance and side_h is 0.
// Cost: O(n).
rectangle smallest_rectangle(const point* hull, size_t n);

// The direction of the longer side, side_w's only if it is strictly longer, in
// degrees in (-90, 90]; 0 along a row, positive when rising to the right.
double rectangle_angle(const rectangle& r);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_RECTANGLE_H_
