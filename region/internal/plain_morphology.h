// SPDX-License-Identifier: MIT
//
// Dilation and erosion as their definitions read, run by run, in 64-bit
// arithmetic: for coordinates near the ends of 32 bits, where the fast forms
// do not go, and as what the fast forms are compared with. Sources are in
// order, and no two of their runs touch.
#ifndef VEXO_REGION_INTERNAL_PLAIN_MORPHOLOGY_H_
#define VEXO_REGION_INTERNAL_PLAIN_MORPHOLOGY_H_

#include "region/internal/element.h"
#include "region/internal/runs.h"

namespace vexo::internal {

run_buffer plain_dilate(const run_view& source, const element_runs& element);
run_buffer plain_erode(const run_view& source, const element_runs& element);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_PLAIN_MORPHOLOGY_H_
