// SPDX-License-Identifier: MIT
//
// Holes in rows of bits: the outside floods what is not region, row by row,
// down the picture and up again, until nothing changes.
#ifndef VEXO_REGION_INTERNAL_BIT_FILL_H_
#define VEXO_REGION_INTERNAL_BIT_FILL_H_

#include <optional>

#include "region/internal/runs.h"

namespace vexo::internal {

// Whether runs are canonical and so dense that their holes are best filled in
// bits.
bool dense_gaps(const run_view& runs);

// Canonical runs with their holes filled; nothing when gaps wind so much that
// the flood would go up and down too often.
std::optional<run_buffer> bit_fill_up(const run_view& runs);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_BIT_FILL_H_
