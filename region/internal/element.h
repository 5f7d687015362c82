// SPDX-License-Identifier: MIT
//
// Structuring elements as the morphology works with them: runs relative to the
// reference point.
#ifndef VEXO_REGION_INTERNAL_ELEMENT_H_
#define VEXO_REGION_INTERNAL_ELEMENT_H_

#include <cstdint>
#include <vector>

#include "region/internal/runs.h"

namespace vexo::internal {

// 64 bits: a run less a reference point need not fit into 32.
struct element_run {
  int64_t row;
  int64_t begin;
  int64_t end;
};
using element_runs = std::vector<element_run>;  // in (row, begin) order

struct point {
  int64_t col;
  int64_t row;
};

// min + (max - min + 1) / 2 per axis: the right and lower of two middles.
point upper_middle(const run_view& element);
// (min + max) / 2 per axis, truncated toward zero.
point lower_middle(const run_view& element);

// The runs seen from `reference`.
element_runs placed(const run_view& element, point reference);

// Mirrored through the reference point, in (row, begin) order again.
element_runs reflected(const element_runs& element);

// The element of a fast form: around (ref_col, ref_row), or around its upper
// middle when either is -1. Reads the run arrays.
element_runs placed_by_request(const region& element, int ref_col, int ref_row);

// The element of a reference form: around its lower middle, or as it stands
// when it has children. Reads the chords.
element_runs centred_by_chords(const region& element);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ELEMENT_H_
