// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_INTERNAL_FEATURES_H_
#define VEXO_REGION_INTERNAL_FEATURES_H_

#include "region/internal/hull.h"
#include "region/internal/views.h"
#include "region/region.h"

namespace vexo::internal {

// compute_features() for runs that are there, with memory that one thread uses
// for many regions.
void compute_features(const run_view& runs, hull_memory* memory, region* r);
void compute_features(const chord_view& runs, hull_memory* memory, region* r);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_FEATURES_H_
