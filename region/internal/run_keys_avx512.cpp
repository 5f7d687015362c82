// SPDX-License-Identifier: MIT
#include "region/internal/run_keys.h"

#ifdef VEXO_X86_VECTORS

// The compiler's own header starts many intrinsics from an undefined vector.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <algorithm>

#include "region/internal/lane_count.h"
#include "region/internal/run_key_bodies.h"

#define VEXO_TARGET \
  __attribute__((target("avx512f,avx512bw,avx512vl,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

VEXO_TARGET void widen_avx512(const run_view& runs, key_columns* columns) {
  widen_body(runs, columns);
}

VEXO_TARGET key_extent make_avx512(const run_view& runs, const key_frame& frame,
                                   const key_list& to) {
  return make_body(runs, frame, to);
}

VEXO_TARGET void move_avx512(const key_list& keys, uint32_t begins,
                             uint32_t ends) {
  move_body(keys, begins, ends);
}

VEXO_TARGET bool are_apart_avx512(const key_list& keys) {
  return are_apart_body(keys);
}

constexpr size_t kLanes = 16;

VEXO_TARGET VEXO_INLINE __m512i load(const void* from) {
  return _mm512_loadu_si512(from);
}

// Words 0 and 1 of eight chords, or words 2 and 3.
VEXO_TARGET VEXO_INLINE __m512i two_words(__m512i low, __m512i high,
                                          int first) {
  const __m512i chords = _mm512_set_epi32(29, 25, 21, 17, 13, 9, 5, 1, 28, 24,
                                          20, 16, 12, 8, 4, 0);
  return _mm512_permutex2var_epi32(
      low, _mm512_add_epi32(chords, _mm512_set1_epi32(first)), high);
}

VEXO_TARGET int32_t split_avx512(const chord* chords, size_t count,
                                 int32_t* rows, int32_t* begins,
                                 int32_t* ends) {
  __m512i words = _mm512_setzero_si512();
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const __m512i a = load(chords + i), b = load(chords + i + 4);
    const __m512i c = load(chords + i + 8), d = load(chords + i + 12);
    const __m512i low = two_words(a, b, 0), high = two_words(c, d, 0);
    _mm512_storeu_si512(begins + i, _mm512_shuffle_i64x2(low, high, 0x44));
    _mm512_storeu_si512(ends + i, _mm512_shuffle_i64x2(low, high, 0xee));
    _mm512_storeu_si512(
        rows + i,
        _mm512_shuffle_i64x2(two_words(a, b, 2), two_words(c, d, 2), 0x44));
    words = _mm512_or_si512(_mm512_or_si512(words, _mm512_or_si512(a, b)),
                            _mm512_or_si512(c, d));
  }
  const int32_t labels = _mm512_mask_reduce_or_epi32(0x8888, words);
  return labels |
         split_body(chords + i, count - i, rows + i, begins + i, ends + i);
}

VEXO_TARGET void join_avx512(const int32_t* rows, const int32_t* begins,
                             const int32_t* ends, size_t count, chord* chords) {
  const __m512i pairs =
      _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
  const __m512i quads = _mm512_set_epi64(11, 3, 10, 2, 9, 1, 8, 0);
  const __m512i half = _mm512_set1_epi32(8), quarter = _mm512_set1_epi64(4);
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const __m512i begin = load(begins + i), end = load(ends + i);
    const __m512i row = load(rows + i);
    for (size_t k = 0; k < 2; ++k) {
      const __m512i at = k == 0 ? pairs : _mm512_add_epi32(pairs, half);
      const __m512i columns = _mm512_permutex2var_epi32(begin, at, end);
      const __m512i row_and_0 =
          _mm512_cvtepu32_epi64(k == 0 ? _mm512_castsi512_si256(row)
                                       : _mm512_extracti64x4_epi64(row, 1));
      chord* to = chords + i + 8 * k;
      _mm512_storeu_si512(to,
                          _mm512_permutex2var_epi64(columns, quads, row_and_0));
      _mm512_storeu_si512(
          to + 4, _mm512_permutex2var_epi64(
                      columns, _mm512_add_epi64(quads, quarter), row_and_0));
    }
  }
  join_body(rows + i, begins + i, ends + i, count - i, chords + i);
}

// One step of a bitonic merge: lanes of `upper` keep the greater of the pair.
VEXO_TARGET VEXO_INLINE __m512i exchange(__m512i v, __m512i other,
                                         __mmask16 upper) {
  return _mm512_mask_max_epu32(_mm512_min_epu32(v, other), upper, v, other);
}

VEXO_TARGET VEXO_INLINE __m512i sort_bitonic(__m512i v) {
  v = exchange(v, _mm512_shuffle_i64x2(v, v, 0x4e), 0xff00);
  v = exchange(v, _mm512_shuffle_i64x2(v, v, 0xb1), 0xf0f0);
  v = exchange(v, _mm512_shuffle_epi32(v, _MM_PERM_BADC), 0xcccc);
  return exchange(v, _mm512_shuffle_epi32(v, _MM_PERM_CDAB), 0xaaaa);
}

// Two ascending lists with slack behind them, 16 keys at a time: the block that
// follows is the one of the smaller head.
class merger {
 public:
  VEXO_TARGET VEXO_INLINE merger(const uint32_t* a, const uint32_t* b)
      : a_(a + kLanes),
        b_(b + kLanes),
        held_(_mm512_loadu_si512(a)),
        next_(_mm512_loadu_si512(b)) {}

  VEXO_TARGET VEXO_INLINE __m512i take() {
    const __m512i reversed = _mm512_permutexvar_epi32(
        _mm512_set_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
        next_);
    const __m512i low = _mm512_min_epu32(held_, reversed);
    held_ = sort_bitonic(_mm512_max_epu32(held_, reversed));
    const bool from_a = *a_ <= *b_;
    const uint32_t* from = from_a ? a_ : b_;
    next_ = _mm512_loadu_si512(from);
    a_ += from_a ? kLanes : 0;
    b_ += from_a ? 0 : kLanes;
    return sort_bitonic(low);
  }

 private:
  const uint32_t* a_;
  const uint32_t* b_;
  __m512i held_;
  __m512i next_;
};

VEXO_TARGET void merge_avx512(const key_list& a, const key_list& b,
                              const key_list& to) {
  merger begins(a.begins, b.begins);
  merger ends(a.ends, b.ends);
  for (size_t i = 0; i < to.count; i += kLanes) {
    _mm512_storeu_si512(to.begins + i, begins.take());
    _mm512_storeu_si512(to.ends + i, ends.take());
  }
}

struct vector_decoder {
  __m128i bits;
  __m512i columns, first_row, first_col;

  VEXO_TARGET VEXO_INLINE explicit vector_decoder(const key_frame& frame)
      : bits(_mm_cvtsi32_si128(static_cast<int>(frame.bits))),
        columns(_mm512_set1_epi32(
            static_cast<int>((uint32_t{1} << frame.bits) - 1))),
        first_row(_mm512_set1_epi32(frame.first_row)),
        first_col(_mm512_set1_epi32(frame.first_col)) {}

  VEXO_TARGET VEXO_INLINE void rows(__m512i keys, int32_t* to) const {
    _mm512_storeu_si512(
        to, _mm512_add_epi32(_mm512_srl_epi32(keys, bits), first_row));
  }
  VEXO_TARGET VEXO_INLINE void cols(__m512i keys, int32_t* to) const {
    _mm512_storeu_si512(
        to, _mm512_add_epi32(_mm512_and_epi32(keys, columns), first_col));
  }
};

VEXO_TARGET size_t write_united_avx512(const key_list& keys,
                                       const key_frame& frame, int32_t* rows,
                                       int32_t* begins, int32_t* ends) {
  const vector_decoder d(frame);
  const __m512i one = _mm512_set1_epi32(1);
  size_t started = 0, stopped = 0;
  for (size_t i = 0; i < keys.count; i += kLanes) {
    const auto valid = static_cast<__mmask16>(_bzhi_u32(
        0xffff, static_cast<uint32_t>(std::min(keys.count - i, kLanes))));
    const __m512i begin = _mm512_loadu_si512(keys.begins + i);
    const __m512i after = _mm512_loadu_si512(keys.begins + i + 1);
    const __m512i end = _mm512_loadu_si512(keys.ends + i);
    const __m512i before = _mm512_loadu_si512(keys.ends + i - 1);
    const __mmask16 starts = _mm512_mask_cmpgt_epu32_mask(
        valid, _mm512_sub_epi32(begin, one), before);
    const __mmask16 stops =
        _mm512_mask_cmpgt_epu32_mask(valid, _mm512_sub_epi32(after, one), end);
    const __m512i first = _mm512_maskz_compress_epi32(starts, begin);
    d.rows(first, rows + started);
    d.cols(first, begins + started);
    d.cols(_mm512_maskz_compress_epi32(stops, end), ends + stopped);
    started += lane_count(starts);
    stopped += lane_count(stops);
  }
  return started;
}

VEXO_TARGET size_t write_common_avx512(const key_list& keys, size_t lists,
                                       const key_frame& frame, int32_t* rows,
                                       int32_t* begins, int32_t* ends) {
  const vector_decoder d(frame);
  const __m512i one = _mm512_set1_epi32(1);
  size_t n = 0;
  for (size_t i = 0; i < keys.count; i += kLanes) {
    const __m512i begin = _mm512_loadu_si512(keys.begins + i + lists - 1);
    const __m512i end = _mm512_loadu_si512(keys.ends + i);
    // kLastKey + 1 is 0: nothing begins below it.
    const __mmask16 common =
        _mm512_cmplt_epu32_mask(begin, _mm512_add_epi32(end, one));
    const __m512i first = _mm512_maskz_compress_epi32(common, begin);
    d.rows(first, rows + n);
    d.cols(first, begins + n);
    d.cols(_mm512_maskz_compress_epi32(common, end), ends + n);
    n += lane_count(common);
  }
  return n;
}

}  // namespace

const key_kernels kKeyKernelsAvx512 = {
    widen_avx512,        make_avx512,  move_avx512,
    are_apart_avx512,    merge_avx512, write_united_avx512,
    write_common_avx512, split_avx512, join_avx512};

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
