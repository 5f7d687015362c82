// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_INTERNAL_BIT_BOUNDARY_H_
#define VEXO_REGION_INTERNAL_BIT_BOUNDARY_H_

#include "region/internal/runs.h"

namespace vexo::internal {

enum class edge { inner, outer };

// Whether runs are so dense that their boundary is best found in bits.
bool dense_boundary(const run_view& source);

// The inner or outer boundary by edge neighbours, in bits: three source rows at
// a time, without the eroded or dilated region in between. Canonical runs whose
// neighbours fit into 32 bits.
run_buffer bit_boundary(const run_view& source, edge which);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_BIT_BOUNDARY_H_
