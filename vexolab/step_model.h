// SPDX-License-Identifier: MIT
//
// The model of a blurred straight step and its normal equations over a strip of
// pixels:
//
//   z = (t - position - tilt v) / blur
//   I = low + step * (Phi(z) - kurtosis * (z^3 - 3 z) * Phi'(z))
//
// t and v as the strip holds them (v in units of its half width). kurtosis is a
// constant: what the box of the square pixel lacks of a Gaussian.
#ifndef VEXOLAB_STEP_MODEL_H_
#define VEXOLAB_STEP_MODEL_H_

#include <cstddef>

#include "vexolab/cholesky.h"
#include "vexolab/pixel_strip.h"

namespace vexolab {

struct step_model {
  double low;
  double step;
  double position;
  double tilt;
  double blur;
  double kurtosis;
};

// The unknowns, in this order. The geometric ones are scaled by -step / blur,
// so that their columns are Phi', v Phi', z Phi' and v^2 Phi'.
enum unknown : size_t {
  kLow,
  kStep,
  kPosition,
  kTilt,
  kBlur,
  kCoreUnknowns,
  kCurvature = kCoreUnknowns,  // sagitta at the strip's border
  kRampBefore,                 // slope of the grey on the low-u side
  kRampAfter,
  kAllUnknowns
};

template <size_t N>
struct step_equations {
  matrix_n<N> matrix;    // lower triangle
  vector_n<N> gradient;  // columns times residuals
  double squares;        // of the residuals
};

// N is kCoreUnknowns or kAllUnknowns. Cost: 2.5 and 5 ns a pixel.
template <size_t N>
step_equations<N> equations_of(const pixel_strip& strip, const step_model& m);

extern template step_equations<kCoreUnknowns> equations_of(
    const pixel_strip& strip, const step_model& m);
extern template step_equations<kAllUnknowns> equations_of(
    const pixel_strip& strip, const step_model& m);

// Pixels so far from the edge that the model is flat there enter by their sums
// alone.
struct flat_side {
  double n = 0;  // number of pixels
  double grey = 0;
  double t = 0;
  double t_squared = 0;
  double t_grey = 0;

  void add(double position, double mean_grey, double pixels) {
    n += pixels;
    grey += pixels * mean_grey;
    t += pixels * position;
    t_squared += pixels * position * position;
    t_grey += pixels * position * mean_grey;
  }
};

template <size_t N>
void add_flat_sides(const flat_side& before, const flat_side& after,
                    const step_model& m, step_equations<N>* e);

extern template void add_flat_sides(const flat_side&, const flat_side&,
                                    const step_model&,
                                    step_equations<kCoreUnknowns>*);
extern template void add_flat_sides(const flat_side&, const flat_side&,
                                    const step_model&,
                                    step_equations<kAllUnknowns>*);

}  // namespace vexolab

#endif  // VEXOLAB_STEP_MODEL_H_
