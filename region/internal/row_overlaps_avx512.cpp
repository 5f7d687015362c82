// SPDX-License-Identifier: MIT
#include "region/internal/row_overlaps.h"

#ifdef VEXO_X86_VECTORS

// The compiler's own header starts many intrinsics from an undefined vector.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <algorithm>

#define VEXO_TARGET \
  __attribute__((target("avx512f,avx512bw,avx512vl,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

// out[i] = how many of n ascending values are below limits[i] + offset, for
// ascending limits. 16 values are compared at once, from where the search ended
// four limits ago: so that it need not wait for the last ones' results.
VEXO_TARGET void count_below(const int32_t* values, size_t n,
                             const int32_t* limits, size_t count,
                             int32_t offset, uint32_t* out) {
  const __m512i offsets = _mm512_set1_epi32(offset);
  size_t ago4 = 0, ago3 = 0, ago2 = 0, ago1 = 0;
  for (size_t i = 0; i < count; ++i) {
    const __m512i limit =
        _mm512_add_epi32(_mm512_set1_epi32(limits[i]), offsets);
    size_t found = ago4;
    for (;;) {
      const auto lanes = static_cast<__mmask16>(_bzhi_u32(
          0xffff, static_cast<uint32_t>(std::min<size_t>(n - found, 16))));
      const __m512i v = _mm512_maskz_loadu_epi32(lanes, values + found);
      const uint32_t below = _mm512_mask_cmplt_epi32_mask(lanes, v, limit);
      found += _tzcnt_u32(~below);
      if (below != 0xffff) break;
    }
    ago4 = ago3;
    ago3 = ago2;
    ago2 = ago1;
    ago1 = found;
    out[i] = static_cast<uint32_t>(found);
  }
}

// Whether limits and values can be shifted by a few columns.
bool far_from_overflow(const intervals& row) {
  constexpr int32_t kFar = 1 << 30;
  return row.count == 0 ||
         (row.begins[0] > -kFar && row.ends[row.count - 1] < kFar);
}

}  // namespace

VEXO_TARGET void count_overlaps_avx512(const intervals& above,
                                       const intervals& row, int32_t reach,
                                       uint32_t* low, uint32_t* high) {
  if (!far_from_overflow(row)) {
    count_overlaps_plain(above, row, reach, low, high);
    return;
  }
  count_below(above.ends, above.count, row.begins, row.count, -reach, low);
  count_below(above.begins, above.count, row.ends, row.count, reach + 1, high);
}

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
