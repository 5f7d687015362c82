// SPDX-License-Identifier: MIT
//
// Where an edge is: maximum likelihood on the raw pixels.
//
// The unknowns of step_model.h are fitted to the pixels around the edge by
// Gauss-Newton steps; for white noise least squares is maximum likelihood. The
// flat parts further out enter by their sums. No resampling takes place, so the
// result has no preferred sub-pixel phases.
#ifndef VEXOLAB_LOCATION_H_
#define VEXOLAB_LOCATION_H_

#include "vexolab/edges.h"
#include "vexolab/frame.h"
#include "vexolab/pixel_strip.h"
#include "vexolab/profile.h"
#include "vexolab/step_model.h"

namespace vexolab {

// What a term that the model leaves out would do to the position: the shift
// that the pixels ask for, and the variance of that shift if the term is truly
// absent. How much of it to admit is another matter: see admitted().
struct doubt {
  double shift = 0;
  double variance = 0;
};

// The part of a doubt to believe: nearly all of it when it stands far above its
// noise, none of it below sqrt(caution) standard deviations, without a jump in
// between (positive-part shrinkage; James and Stein 1961).
double admitted(const doubt& d, double caution);

struct location {
  bool fitted = false;  // false: u is the detector's, the rest is unknown
  double u = 0;
  double tilt = 0;      // du / dv
  double blur = 0;      // standard deviation of the whole blur
  double variance = 0;  // of u, from the noise of the pixels
  // du / d(assumed curvature): what a wrong curvature does to u, about -<v^2>
  // / 2.
  double per_curvature = 0;
  doubt curvature;     // the edge is bent otherwise than assumed
  double bent = 0;     // by this much more, as far as the pixels know
  doubt illumination;  // the grey beside the edge is not flat but a ramp
};

// Where the fit of an edge starts from, by the profile's derivative.
struct edge_start {
  int index;  // of the derivative's peak
  double u;
  double blur;
  int flat_begin;  // profile positions that belong to this edge alone
  int flat_end;
};

// Finds the exact place of edges; keeps its buffers from one to the next.
class locator {
 public:
  // `p` is the profile of the rectangle `f`, `found` one of its edges, detected
  // with `sigma`: the location differs by max(1, 0.6 sigma) px at most, else
  // the detector's position stands. `bend` is the edge's, if known.
  location locate(const image& picture, const frame& f, const profile& p,
                  const edge& found, double sigma, const arc& bend);

  // To be called for every new profile, before the first edge of it.
  void prepare(const profile& p) { fine_.compute(p, kernel_); }

  // The work done so far.
  double pixels_gathered() const { return strip_.pixels_gathered(); }

 private:
  bool find_start(const profile& p, const edge& found, double sigma,
                  edge_start* s) const;
  double width_of_peak(int index) const;
  void find_flats(const profile& p, edge_start* s) const;

  gaussian_kernel kernel_{1.0};
  derivative fine_;
  pixel_strip strip_;
};

}  // namespace vexolab

#endif  // VEXOLAB_LOCATION_H_
