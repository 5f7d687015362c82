// SPDX-License-Identifier: MIT
#include "region/internal/row_overlaps.h"

namespace vexo::internal {

void count_overlaps_plain(const intervals& above, const intervals& row,
                          int32_t reach, uint32_t* low, uint32_t* high) {
  size_t lo = 0, hi = 0;
  for (size_t i = 0; i < row.count; ++i) {
    const int64_t begin = int64_t{row.begins[i]} - reach;
    const int64_t end = int64_t{row.ends[i]} + reach;
    while (lo < above.count && above.ends[lo] < begin) ++lo;
    while (hi < above.count && above.begins[hi] <= end) ++hi;
    low[i] = static_cast<uint32_t>(lo);
    high[i] = static_cast<uint32_t>(hi);
  }
}

count_overlaps_function current_count_overlaps() {
#ifdef VEXO_X86_VECTORS
  if (current_vector_level() == vector_level::kAvx512) {
    return count_overlaps_avx512;
  }
#endif
  return count_overlaps_plain;
}

}  // namespace vexo::internal
