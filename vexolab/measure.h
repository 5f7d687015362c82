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

// What measuring a rectangle of these half lengths costs, in samples as
// vexolab.h counts them: never fewer than its profile has.
double samples_of(const image& picture, double sigma, double half_length,
                  double half_width);

// Of all rectangles that are measured.
double samples_of(const image& picture, double sigma, const float* rectangles,
                  int n);

// do_measure() behind the C interface: appends the x and then the y of the
// points. `rectangles` holds five floats each.
void measure_rectangles(const image& picture, const detection& how,
                        const selection& which, const float* rectangles, int n,
                        std::vector<double>* points);

// A very large rectangle may have hundreds of edges as wide as itself. After so
// many pixels and samples the rest keep the detector's position.
constexpr double kMostWork = 8e6;

// measure_pos_d() behind the C interface: appends (x, y, amplitude) of every
// edge. Returns the number of samples and pixels visited.
double measure_all_edges(const image& picture, const detection& how,
                         const frame& f, std::vector<double>* triples);

}  // namespace vexolab

#endif  // VEXOLAB_MEASURE_H_
