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
#include <limits>

#define VEXO_TARGET \
  __attribute__((target("avx512f,avx512bw,avx512vl,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

// How many of n ascending values from index `start` on are below the limit, at
// most 16, plus start.
VEXO_TARGET inline size_t first_not_below(const int32_t* values, size_t n,
                                          size_t start, __m512i limit) {
  const auto lanes = static_cast<__mmask16>(_bzhi_u32(
      0xffff, static_cast<unsigned>(std::min<size_t>(n - start, 16))));
  const __m512i v = _mm512_maskz_loadu_epi32(lanes, values + start);
  const uint32_t below = _mm512_mask_cmplt_epi32_mask(lanes, v, limit);
  return start + _tzcnt_u32(~below);
}

// Walks through ascending values for ascending limits. The search starts where
// it ended two limits ago, so that it need not wait for the last one's result.
class cursor {
 public:
  VEXO_TARGET cursor(const int32_t* values, size_t n)
      : values_(values), n_(n) {}

  VEXO_TARGET size_t advance(int64_t limit) {
    // No value is below the smallest; limits above the largest are cut to it,
    // which only callers with a reach beyond all columns can tell.
    const auto cut = static_cast<int32_t>(
        std::clamp<int64_t>(limit, std::numeric_limits<int32_t>::min(),
                            std::numeric_limits<int32_t>::max()));
    const __m512i limits = _mm512_set1_epi32(cut);
    size_t found = first_not_below(values_, n_, start_, limits);
    while (found == start_ + 16) {
      start_ = found;
      found = first_not_below(values_, n_, start_, limits);
    }
    start_ = std::max(start_, last_);
    last_ = found;
    return found;
  }

 private:
  const int32_t* values_;
  size_t n_;
  size_t start_ = 0;
  size_t last_ = 0;
};

}  // namespace

VEXO_TARGET void count_overlaps_avx512(const intervals& above,
                                       const intervals& row, int32_t reach,
                                       uint32_t* low, uint32_t* high) {
  cursor lows(above.ends, above.count);
  cursor highs(above.begins, above.count);
  for (size_t i = 0; i < row.count; ++i) {
    const int64_t begin = int64_t{row.begins[i]} - reach;
    const int64_t end = int64_t{row.ends[i]} + reach;
    low[i] = static_cast<uint32_t>(lows.advance(begin));
    high[i] = static_cast<uint32_t>(highs.advance(end + 1));
  }
}

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
