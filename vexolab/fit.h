// SPDX-License-Identifier: MIT
//
// do_fit() behind the C interface: the arguments and codes documented in
// vexolab.h. `out` is written on success only, 4, 3 or 5 doubles by shape;
// do_fit() zeroes it otherwise. May throw std::bad_alloc; the caller fences.
//
// How a fit runs:
//
//   fit.cpp          checks; moves the points to their median, scales them
//   robust.cpp       a start that outliers cannot carry away, the standard
//                    deviation, the weights and their iteration
//   fit_line.cpp  fit_circle.cpp  fit_ellipse.cpp
//                    what the iteration asks of a shape (shape_fit.h)
//
// Nothing here keeps state, and random samples come from fixed seeds: equal
// arguments give equal bits, on every thread.
#ifndef VEXOLAB_FIT_H_
#define VEXOLAB_FIT_H_

namespace vexolab {

int fit(const double* points, int n, int shape, int method, float factor,
        int iterations, int least, double* out);

}  // namespace vexolab

#endif  // VEXOLAB_FIT_H_
