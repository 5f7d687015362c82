// SPDX-License-Identifier: MIT
#include "region/internal/row_labels.h"

#ifdef VEXO_X86_VECTORS
// The compiler's own header starts many intrinsics from an undefined vector.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include "region/internal/lane_count.h"
#endif

#include <algorithm>

namespace vexo::internal {
namespace {

int32_t take_labels_plain(const row_contacts& row, const int32_t* labels_above,
                          int32_t next, int32_t* labels, int32_t* parent,
                          label_pairs* pairs) {
  // The only branch that depends on the picture is the rare third contact.
  for (size_t i = 0; i < row.count; ++i) {
    const size_t low = row.low[i], high = row.high[i];
    labels[i] = parent[next] = next;
    next += low >= high;
    const int32_t* const from = low < high ? labels_above + low : labels + i;
    const int32_t label = labels[i] = *from;
    const bool second = low + 1 < high;
    // The entry behind the row above is that of this row's first run.
    pairs->first[pairs->count] = label;
    pairs->second[pairs->count] = labels_above[low + second];
    pairs->count += second;
    for (size_t k = low + 2; k < high; ++k) pairs->push(label, labels_above[k]);
  }
  return next;
}

#ifdef VEXO_X86_VECTORS
#define VEXO_TARGET \
  __attribute__((target("avx512f,avx512bw,avx512vl,bmi,bmi2,popcnt")))

VEXO_TARGET inline __mmask16 low_lanes(size_t n) {
  return static_cast<__mmask16>(
      _bzhi_u32(0xffff, static_cast<uint32_t>(std::min<size_t>(n, 16))));
}

VEXO_TARGET int32_t take_labels_avx512(const row_contacts& row,
                                       const int32_t* labels_above,
                                       int32_t next, int32_t* labels,
                                       int32_t* parent, label_pairs* pairs) {
  // Vectors would wait for the labels of the row above to reach the cache.
  if (row.count < 8) {
    return take_labels_plain(row, labels_above, next, labels, parent, pairs);
  }
  const __m512i one = _mm512_set1_epi32(1);
  const __m512i iota =
      _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  for (size_t i = 0; i < row.count; i += 16) {
    const __mmask16 lanes = low_lanes(row.count - i);
    const __m512i low = _mm512_maskz_loadu_epi32(lanes, row.low + i);
    const __m512i high = _mm512_maskz_loadu_epi32(lanes, row.high + i);
    const __mmask16 touches = _mm512_cmplt_epu32_mask(low, high);
    const auto alone = static_cast<__mmask16>(lanes & ~touches);
    const __m512i fresh = _mm512_add_epi32(iota, _mm512_set1_epi32(next));
    const __m512i own = _mm512_mask_i32gather_epi32(
        _mm512_maskz_expand_epi32(alone, fresh), touches, low, labels_above, 4);
    _mm512_mask_storeu_epi32(labels + i, lanes, own);
    const auto fresh_count = static_cast<int>(lane_count(alone));
    _mm512_mask_storeu_epi32(
        parent + next, low_lanes(static_cast<size_t>(fresh_count)), fresh);
    next += fresh_count;
    __m512i further = _mm512_add_epi32(low, one);
    __mmask16 more = _mm512_mask_cmplt_epu32_mask(touches, further, high);
    while (more != 0) {
      const __m512i other =
          _mm512_mask_i32gather_epi32(own, more, further, labels_above, 4);
      _mm512_storeu_si512(pairs->first.data() + pairs->count,
                          _mm512_maskz_compress_epi32(more, own));
      _mm512_storeu_si512(pairs->second.data() + pairs->count,
                          _mm512_maskz_compress_epi32(more, other));
      pairs->count += lane_count(more);
      further = _mm512_add_epi32(further, one);
      more = _mm512_mask_cmplt_epu32_mask(more, further, high);
    }
  }
  return next;
}
#endif

}  // namespace

take_labels_function current_take_labels() {
#ifdef VEXO_X86_VECTORS
  if (current_vector_level() == vector_level::kAvx512) {
    return take_labels_avx512;
  }
#endif
  return take_labels_plain;
}

}  // namespace vexo::internal
