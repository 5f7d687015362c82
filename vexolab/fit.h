// SPDX-License-Identifier: MIT
//
// do_fit() behind the C interface: the arguments, codes and zeroed outputs
// documented in vexolab.h. May throw std::bad_alloc; the caller fences.
#ifndef VEXOLAB_FIT_H_
#define VEXOLAB_FIT_H_

namespace vexolab {

int fit(const double* points, int n, int shape, int method, float factor,
        int iterations, int least, double* out);

}  // namespace vexolab

#endif  // VEXOLAB_FIT_H_
