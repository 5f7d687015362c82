// SPDX-License-Identifier: MIT
//
// The curvature of the edge under each rectangle, from its neighbours.
//
// The mean position of an edge of curvature c over a strip of width w is off by
// c w^2 / 24: 0.28 px for a width of 20 on a radius of 60. One strip alone says
// little about its own curvature; the rectangles around it say nearly all.
#ifndef VEXOLAB_CURVATURE_H_
#define VEXOLAB_CURVATURE_H_

#include <vector>

#include "vexolab/frame.h"

namespace vexolab {

// How the path is bent that the rectangles' centres follow, at each of them.
// The list is taken as closed. Straight for rectangles in a row, and where
// neighbours do not turn with the path that their centres suggest: those are
// unrelated. The derivatives of the curvature are known on ellipses only.
std::vector<arc> arcs_of_rectangles(const std::vector<frame>& frames);

struct measured_point {
  bool found;
  double x;
  double y;
  double curvature;  // along which it was measured
};

// Curvature of the measured edge at each point, where its neighbours agree
// about it: that of the rectangles times the ratio that the points show.
// Elsewhere, and where the rectangles have none, what the point was measured
// along.
std::vector<double> curvature_of_points(
    const std::vector<frame>& frames, const std::vector<arc>& drawn,
    const std::vector<measured_point>& points);

}  // namespace vexolab

#endif  // VEXOLAB_CURVATURE_H_
