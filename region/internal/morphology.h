// SPDX-License-Identifier: MIT
//
// Dilation and erosion of runs by an element. Both results are canonical and
// not clipped. A result that would need a coordinate beyond 32 bits throws
// "realloc failed".
#ifndef VEXO_REGION_INTERNAL_MORPHOLOGY_H_
#define VEXO_REGION_INTERNAL_MORPHOLOGY_H_

#include "region/internal/element.h"
#include "region/internal/runs.h"

namespace vexo::internal {

// { a + b : a in source, b in element }
run_buffer dilate(const run_view& source, const element_runs& element);

// { p : p + b in source for every b in element }
run_buffer erode(const run_view& source, const element_runs& element);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_MORPHOLOGY_H_
