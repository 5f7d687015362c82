// SPDX-License-Identifier: MIT
#include "region/internal/run_sums.h"

#ifdef VEXO_X86_VECTORS

// The compiler's own header starts many intrinsics from an undefined vector.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <algorithm>

#include "region/internal/lane_count.h"

#define VEXO_TARGET \
  __attribute__((   \
      target("avx512f,avx512bw,avx512dq,avx512vl,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

// Bits of the lanes first..first + 31 that are below n, from lane 0.
VEXO_TARGET inline uint32_t lanes_below(size_t n, size_t first) {
  return _bzhi_u32(~0u, static_cast<unsigned>(
                            std::min<size_t>(n > first ? n - first : 0, 32)));
}

VEXO_TARGET inline __m256i load8(__mmask8 lanes, const int32_t* p) {
  return _mm256_maskz_loadu_epi32(lanes, p);
}

// The sum of all lanes, which may wrap.
VEXO_TARGET inline uint64_t total(__m512i v) {
  const __m256i four = _mm256_add_epi64(_mm512_castsi512_si256(v),
                                        _mm512_extracti64x4_epi64(v, 1));
  const __m128i two = _mm_add_epi64(_mm256_castsi256_si128(four),
                                    _mm256_extracti128_si256(four, 1));
  return static_cast<uint64_t>(_mm_cvtsi128_si64(two)) +
         static_cast<uint64_t>(_mm_extract_epi64(two, 1));
}

}  // namespace

// Factors of 32 bits suffice wherever the sums are used.
VEXO_TARGET run_sums sum_runs_avx512(const run_view& runs) {
  const __m512i col2 = _mm512_set1_epi64(2 * int64_t{runs.begins[0]});
  const __m512i row = _mm512_set1_epi64(runs.rows[0]);
  const __m512i one = _mm512_set1_epi64(1);
  __m512i area = _mm512_setzero_si512(), x2 = area, y1 = area, xx12 = area,
          xy2 = area, yy = area;
  __m256i min_col = _mm256_set1_epi32(runs.begins[0]);
  __m256i max_col = _mm256_set1_epi32(runs.ends[0]);
  size_t same_rows = 0;
  uint32_t rows_back = 0, columns_back = 0;
  uint32_t not_first = 0xfe;
  for (size_t i = 0; i < runs.count; i += 8) {
    const auto lanes = static_cast<__mmask8>(lanes_below(runs.count, i));
    const __m256i b = load8(lanes, runs.begins + i);
    const __m256i e = load8(lanes, runs.ends + i);
    const __m256i r = load8(lanes, runs.rows + i);
    const auto later = static_cast<__mmask8>(lanes & not_first);
    const __m256i r0 = load8(later, runs.rows + i - 1);
    const __m256i b0 = load8(later, runs.begins + i - 1);
    const __m256i e0 = load8(later, runs.ends + i - 1);
    not_first = 0xff;
    const __mmask8 same = _mm256_mask_cmpeq_epi32_mask(later, r, r0);
    same_rows += lane_count(same);
    rows_back |= _mm256_mask_cmplt_epi32_mask(later, r, r0);
    columns_back |= _mm256_mask_cmplt_epi32_mask(same, b, b0) |
                    _mm256_mask_cmplt_epi32_mask(same, e, e0);
    min_col = _mm256_mask_min_epi32(min_col, lanes, min_col, b);
    max_col = _mm256_mask_max_epi32(max_col, lanes, max_col, e);
    const __m512i b64 = _mm512_cvtepi32_epi64(b);
    const __m512i e64 = _mm512_cvtepi32_epi64(e);
    const __m512i n =
        _mm512_maskz_add_epi64(lanes, _mm512_sub_epi64(e64, b64), one);
    const __m512i y = _mm512_sub_epi64(_mm512_cvtepi32_epi64(r), row);
    const __m512i s = _mm512_sub_epi64(_mm512_add_epi64(b64, e64), col2);
    const __m512i ns = _mm512_mul_epi32(n, s);
    const __m512i ny = _mm512_mul_epi32(n, y);
    const __m512i ss = _mm512_mul_epi32(s, s);
    const __m512i nn = _mm512_mul_epi32(n, n);
    const __m512i ss3 = _mm512_add_epi64(_mm512_add_epi64(ss, ss), ss);
    const __m512i to_12 = _mm512_add_epi64(ss3, _mm512_sub_epi64(nn, one));
    area = _mm512_add_epi64(area, n);
    x2 = _mm512_add_epi64(x2, ns);
    y1 = _mm512_add_epi64(y1, ny);
    xx12 = _mm512_add_epi64(xx12, _mm512_mullo_epi64(n, to_12));
    xy2 = _mm512_add_epi64(xy2, _mm512_mullo_epi64(ns, y));
    yy = _mm512_add_epi64(yy, _mm512_mullo_epi64(ny, y));
  }
  run_sums sums{};
  sums.min_col = _mm512_reduce_min_epi32(_mm512_broadcast_i32x8(min_col));
  sums.max_col = _mm512_reduce_max_epi32(_mm512_broadcast_i32x8(max_col));
  sums.rows = runs.count - same_rows;
  sums.rows_in_order = rows_back == 0;
  sums.columns_in_order = columns_back == 0;
  sums.area = static_cast<int64_t>(total(area));
  sums.x2 = total(x2);
  sums.y = total(y1);
  sums.xx12 = total(xx12);
  sums.xy2 = total(xy2);
  sums.yy = total(yy);
  return sums;
}

namespace {

// The columns of the outermost ends, one a row.
struct row_ends {
  const int32_t* right;
  const int32_t* left;
};

VEXO_TARGET row_ends outermost(const run_view& runs, int32_t* right,
                               int32_t* left) {
  const row_ends result{right, left};
  uint32_t not_first = 0xfffe;
  for (size_t i = 0; i < runs.count; i += 16) {
    const auto lanes = static_cast<__mmask16>(lanes_below(runs.count, i));
    const auto later = static_cast<__mmask16>(lanes & not_first);
    const auto earlier = static_cast<__mmask16>(lanes_below(runs.count, i + 1));
    not_first = 0xffff;
    const __m512i row = _mm512_maskz_loadu_epi32(lanes, runs.rows + i);
    const __mmask16 goes_on = _mm512_mask_cmpeq_epi32_mask(
        later, row, _mm512_maskz_loadu_epi32(later, runs.rows + i - 1));
    const __mmask16 continued = _mm512_mask_cmpeq_epi32_mask(
        earlier, row, _mm512_maskz_loadu_epi32(earlier, runs.rows + i + 1));
    const auto first = static_cast<__mmask16>(lanes & ~goes_on);
    const auto last = static_cast<__mmask16>(lanes & ~continued);
    _mm512_storeu_si512(
        left, _mm512_maskz_compress_epi32(
                  first, _mm512_maskz_loadu_epi32(lanes, runs.begins + i)));
    _mm512_storeu_si512(
        right, _mm512_maskz_compress_epi32(
                   last, _mm512_maskz_loadu_epi32(lanes, runs.ends + i)));
    left += lane_count(first);
    right += lane_count(last);
  }
  return result;
}

// How far a column lies beyond the middle of those `step` rows above and below,
// times two.
VEXO_TARGET inline __m512i bulge(__m512i v, const int32_t* columns, size_t step,
                                 __mmask16 inner) {
  const __m512i above = _mm512_maskz_loadu_epi32(inner, columns - step);
  const __m512i below = _mm512_maskz_loadu_epi32(inner, columns + step);
  return _mm512_add_epi32(_mm512_sub_epi32(v, above),
                          _mm512_sub_epi32(v, below));
}

struct candidate_list {
  narrow_point* right;
  narrow_point* left;
};

VEXO_TARGET candidate_list find_candidates(const row_ends& ends, size_t rows,
                                           int32_t min_col,
                                           candidate_list out) {
  const __m512i col0 = _mm512_set1_epi32(min_col);
  const __m512i zero = _mm512_setzero_si512();
  __m512i y = _mm512_slli_epi32(
      _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
      16);
  for (size_t i = 0; i < rows; i += 16) {
    const auto lanes = static_cast<__mmask16>(lanes_below(rows, i));
    const __m512i right = _mm512_maskz_loadu_epi32(lanes, ends.right + i);
    const __m512i left = _mm512_maskz_loadu_epi32(lanes, ends.left + i);
    __mmask16 flat_right = 0, flat_left = 0;
    for (const size_t step : {1, 2, 4}) {
      const auto inner = static_cast<__mmask16>(
          lanes_below(rows, i + step) & ~(i < step ? lanes_below(step, i) : 0));
      flat_right |= _mm512_mask_cmple_epi32_mask(
          inner, bulge(right, ends.right + i, step, inner), zero);
      flat_left |= _mm512_mask_cmpge_epi32_mask(
          inner, bulge(left, ends.left + i, step, inner), zero);
    }
    const auto keep_right = static_cast<__mmask16>(lanes & ~flat_right);
    const auto keep_left = static_cast<__mmask16>(lanes & ~flat_left);
    _mm512_storeu_si512(
        out.right,
        _mm512_maskz_compress_epi32(
            keep_right, _mm512_or_si512(y, _mm512_sub_epi32(right, col0))));
    _mm512_storeu_si512(
        out.left,
        _mm512_maskz_compress_epi32(
            keep_left, _mm512_or_si512(y, _mm512_sub_epi32(left, col0))));
    out.right += lane_count(keep_right);
    out.left += lane_count(keep_left);
    y = _mm512_add_epi32(y, _mm512_set1_epi32(16 << 16));
  }
  return out;
}

}  // namespace

VEXO_TARGET hull<int16_t> hull_of_rows_avx512(const run_view& runs, size_t rows,
                                              int32_t min_col,
                                              hull_memory* memory) {
  const hull_memory::ends place = memory->row_ends(rows);
  const row_ends ends = rows == runs.count
                            ? row_ends{runs.ends, runs.begins}
                            : outermost(runs, place.right, place.left);
  const candidate_list last = find_candidates(
      ends, rows, min_col, {place.right_corners, place.left_corners});
  hull_builder<int16_t> builder(memory->corners<int16_t>(2 * rows + 2));
  for (const narrow_point* p = place.right_corners; p < last.right; ++p) {
    builder.push(*p);
  }
  builder.start_second_chain();
  for (const narrow_point* p = last.left; p > place.left_corners;) {
    builder.push(*--p);
  }
  return builder.close();
}

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
