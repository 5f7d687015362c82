// SPDX-License-Identifier: MIT
//
// Union, difference and intersection of runs in (row, begin) order. The results
// are canonical: ordered, and no two runs of a row overlap or touch.
#ifndef VEXO_REGION_INTERNAL_SET_RUNS_H_
#define VEXO_REGION_INTERNAL_SET_RUNS_H_

#include "region/internal/runs.h"

namespace vexo::internal {

run_buffer unite_runs(const run_view& first, const run_view& second);
run_buffer subtract_runs(const run_view& first, const run_view& second);
run_buffer intersect_runs(const run_view& first, const run_view& second);

// The runs cut to rows 0..height - 1 and columns 0..width - 1.
run_buffer clip_runs(const run_view& runs, int32_t width, int32_t height);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_SET_RUNS_H_
