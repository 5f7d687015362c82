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

// { a + b : a in runs, b in element }
run_buffer dilate(const run_view& runs, const element_runs& element);

// { p : p + b in runs for every b in element }
run_buffer erode(const run_view& runs, const element_runs& element);

// Which form does the work; results are the same.
enum class morphology_form {
  cheapest,  // by the runs and rows of each band
  keys,      // where the element allows it, else strips or bits
  strips,    // where the element allows it, else bits
  bits,
  plain,
  candidates  // erosions; dilations by strips or bits
};

// For tests and benches. Not to be called while an operation runs.
void set_morphology_form(morphology_form form);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_MORPHOLOGY_H_
