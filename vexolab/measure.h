// SPDX-License-Identifier: MIT
//
// Measuring rectangles: profile, edges, locations, curvature.
#ifndef VEXOLAB_MEASURE_H_
#define VEXOLAB_MEASURE_H_

#include <vector>

#include "vexolab/edges.h"
#include "vexolab/frame.h"

namespace vexolab {

// sigma within what the profile can be smoothed with, see vexolab.h.
struct detection {
  double sigma;
  double threshold;
};

// do_measure() behind the C interface: appends the x and then the y of the
// points. `rectangles` holds five floats each.
void measure_rectangles(const image& picture, const detection& how,
                        const selection& which, const float* rectangles, int n,
                        std::vector<double>* points);

// measure_pos_d() behind the C interface: appends (x, y, amplitude) of every
// edge.
void measure_all_edges(const image& picture, const detection& how,
                       const frame& f, std::vector<double>* triples);

}  // namespace vexolab

#endif  // VEXOLAB_MEASURE_H_
