// SPDX-License-Identifier: MIT
//
// What features need of the runs of a region, in one pass each; in vectors
// where the processor has them, with the same results.
#ifndef VEXO_REGION_INTERNAL_RUN_SUMS_H_
#define VEXO_REGION_INTERNAL_RUN_SUMS_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/hull.h"
#include "region/internal/vector_level.h"
#include "region/internal/views.h"

namespace vexo::internal {

// Sums are about the first run's begin and row, in whole numbers that may wrap:
// whether they have is seen afterwards, from the area and the bounding box.
struct run_sums {
  int32_t min_col, max_col;
  size_t rows = 1;               // that hold runs, if rows_in_order
  bool rows_in_order = true;     // ascending
  bool columns_in_order = true;  // begins and ends within each row
  int64_t area = 0;
  uint64_t x2 = 0;    // 2 * sum of x
  uint64_t y = 0;     // sum of y
  uint64_t xx12 = 0;  // 12 * sum of x^2
  uint64_t xy2 = 0;   // 2 * sum of x * y
  uint64_t yy = 0;    // sum of y^2
};

// At least one run.
run_sums sum_runs_plain(const run_view& runs);

#ifdef VEXO_X86_VECTORS
run_sums sum_runs_avx512(const run_view& runs);

// The hull of a narrow region that has runs in every row of its bounding box,
// all in order. Looks at 16 rows at a time for those whose ends lie outside the
// line between the ends of rows above and below: no others can be corners.
hull<int16_t> hull_of_rows_avx512(const run_view& runs, size_t rows,
                                  int32_t min_col, hull_memory* memory);
#endif

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_RUN_SUMS_H_
