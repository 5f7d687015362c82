// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_INTERNAL_CONTOUR_H_
#define VEXO_REGION_INTERNAL_CONTOUR_H_

#include "region/internal/runs.h"

namespace vexo::internal {

// The outer contour of every 8-connected component: its pixels that share an
// edge with the background that surrounds the component, holes apart. These
// are the pixels that a walk around the component visits (a step goes to any
// of eight neighbours), found without walking. Cost follows the runs, not the
// pixels.
run_buffer outer_contours(const run_view& source);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_CONTOUR_H_
