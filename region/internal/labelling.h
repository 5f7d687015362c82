// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_INTERNAL_LABELLING_H_
#define VEXO_REGION_INTERNAL_LABELLING_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"
#include "region/internal/views.h"

namespace vexo::internal {

// The component of every run, numbered from 0 in the order in which the
// components are first met.
struct labelling {
  buffer<int32_t> labels;  // one a run
  buffer<size_t> counts;   // runs of each component
  int32_t components = 0;
};

// Runs of neighbouring rows belong together when they are at most `reach`
// columns apart: 0 joins those that share a column. At most kMaxChords runs,
// else "realloc failed". Bands of rows are labelled side by side and joined at
// their seams.
labelling label_runs(const run_view& runs, int32_t reach);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_LABELLING_H_
