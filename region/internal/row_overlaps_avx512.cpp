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
// ascending limits. 16 limits are compared with one value after the other until
// a value is not below the last of them; those behind it count for none, so
// they are taken eight at a time.
VEXO_TARGET void count_below(const int32_t* values, size_t n,
                             const int32_t* limits, size_t count,
                             int32_t offset, uint32_t* out) {
  const __m512i offsets = _mm512_set1_epi32(offset);
  const __m512i one = _mm512_set1_epi32(1);
  size_t found = 0;
  for (size_t i = 0; i < count; i += 16) {
    const size_t lanes = std::min<size_t>(count - i, 16);
    const auto some =
        static_cast<__mmask16>(_bzhi_u32(0xffff, static_cast<uint32_t>(lanes)));
    const __m512i limit =
        _mm512_add_epi32(_mm512_maskz_loadu_epi32(some, limits + i), offsets);
    const int32_t last = limits[i + lanes - 1] + offset;
    const auto count_one = [&](__m512i below, size_t k) VEXO_TARGET {
      return _mm512_mask_add_epi32(
          below, _mm512_cmpgt_epi32_mask(limit, _mm512_set1_epi32(values[k])),
          below, one);
    };
    __m512i below = _mm512_set1_epi32(static_cast<int32_t>(found));
    size_t k = found;
    for (; k + 8 <= n && values[k] < last; k += 8) {
      for (size_t j = 0; j < 8; ++j) below = count_one(below, k + j);
    }
    if (k + 8 > n) {
      for (; k < n && values[k] < last; ++k) below = count_one(below, k);
    }
    _mm512_mask_storeu_epi32(out + i, some, below);
    found = out[i + lanes - 1];
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
