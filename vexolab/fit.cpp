// SPDX-License-Identifier: MIT
#include "vexolab/fit.h"

#include "vexolab/vexolab.h"

namespace vexolab {

// Not there yet: refuses everything.
int fit(const double* /*points*/, int /*n*/, int /*shape*/, int /*method*/,
        float /*factor*/, int /*iterations*/, int /*least*/, double* /*out*/) {
  return VEXOLAB_E_TOO_FEW;
}

}  // namespace vexolab
