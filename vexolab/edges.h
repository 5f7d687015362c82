// SPDX-License-Identifier: MIT
//
// Which edges a profile has, and which of them a selection means.
#ifndef VEXOLAB_EDGES_H_
#define VEXOLAB_EDGES_H_

#include <vector>

#include "vexolab/profile.h"

namespace vexolab {

// A local extremum of the derivative.
struct edge {
  int index;         // of the largest derivative value
  double u;          // position of the peak through it and its neighbours
  double amplitude;  // estimated step height, positive from dark to bright
};

// The largest value of the logarithmic parabola through three neighbouring
// derivative values (exact for a Gaussian peak), where it lies relative to the
// middle one, and the variance of that Gaussian. Falls back to the middle value
// when the three do not form a peak of one sign.
struct peak {
  double offset;  // in [-1, 1]
  double height;
  double variance;  // 0: not known
};
peak peak_of(double before, double at, double after);

// The variance that sampling adds to an edge's blur in the derivative: bilinear
// interpolation 1/6, the pixel 1/12, first differences 1/12.
constexpr double kSamplingVariance = 1.0 / 3.0;

// Appends every edge of at least the given |amplitude|, in order of u.
//
// amplitude = peak height * sqrt(2 pi (sigma^2 + 1/3)): the height of an ideal
// step, whatever sigma. An edge already blurred in the image by PSF reads lower
// by sqrt((sigma^2 + 1/3) / (sigma^2 + 1/3 + PSF^2)).
void find_edges(const profile& p, const derivative& d, double sigma,
                double threshold, std::vector<edge>* edges);

enum class polarity { any, rising, falling };
enum class choice { first, last, strongest };

struct selection {
  choice which;
  polarity sign;
};

// False for NULL and for any text but "first", "first+", "first-", "last",
// "last+", "last-", "strongest".
bool parse_selection(const char* text, selection* result);

// The edge that the selection means, or nullptr.
const edge* select(const std::vector<edge>& edges, const selection& s);

}  // namespace vexolab

#endif  // VEXOLAB_EDGES_H_
