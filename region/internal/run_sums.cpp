// SPDX-License-Identifier: MIT
#include "region/internal/run_sums.h"

#include <algorithm>

namespace vexo::internal {

// With n pixels from b to e and s = b + e, a run adds n s / 2 to the sum of x
// and n (3 s^2 + n^2 - 1) / 12 to that of x^2.
run_sums sum_runs_plain(const run_view& runs) {
  const int64_t col = runs.begin(0);
  const int64_t row = runs.row(0);
  run_sums sums{runs.begin(0), runs.end(0)};
  for (size_t i = 0; i < runs.count; ++i) {
    if (i > 0) {
      const bool same = runs.row(i) == runs.row(i - 1);
      sums.rows += !same;
      sums.rows_in_order &= runs.row(i) >= runs.row(i - 1);
      sums.columns_in_order &= !same || (runs.begin(i) >= runs.begin(i - 1) &&
                                         runs.end(i) >= runs.end(i - 1));
    }
    sums.min_col = std::min(sums.min_col, runs.begin(i));
    sums.max_col = std::max(sums.max_col, runs.end(i));
    const auto y = static_cast<uint64_t>(runs.row(i) - row);
    const auto s =
        static_cast<uint64_t>(runs.begin(i) + (runs.end(i) - 2 * col));
    const int64_t pixels = int64_t{runs.end(i)} - runs.begin(i) + 1;
    sums.area += pixels;
    const auto n = static_cast<uint64_t>(pixels);
    const uint64_t ns = n * s;
    const uint64_t ny = n * y;
    sums.x2 += ns;
    sums.y += ny;
    sums.xx12 += n * (3 * s * s + n * n - 1);
    sums.xy2 += ns * y;
    sums.yy += ny * y;
  }
  return sums;
}

}  // namespace vexo::internal
