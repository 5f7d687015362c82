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

#include "region/internal/run_key_bodies.h"

#define VEXO_TARGET __attribute__((target("avx2,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

VEXO_TARGET void widen_avx2(const run_view& runs, key_columns* columns) {
  widen_body(runs, columns);
}

VEXO_TARGET key_extent make_avx2(const run_view& runs, const key_frame& frame,
                                 const key_list& to) {
  return make_body(runs, frame, to);
}

VEXO_TARGET void move_avx2(const key_list& keys, uint32_t begins,
                           uint32_t ends) {
  move_body(keys, begins, ends);
}

VEXO_TARGET bool are_apart_avx2(const key_list& keys) {
  return are_apart_body(keys);
}

VEXO_TARGET int32_t split_avx2(const chord* chords, size_t count, int32_t* rows,
                               int32_t* begins, int32_t* ends) {
  return split_body(chords, count, rows, begins, ends);
}

VEXO_TARGET void join_avx2(const int32_t* rows, const int32_t* begins,
                           const int32_t* ends, size_t count, chord* chords) {
  join_body(rows, begins, ends, count, chords);
}

constexpr size_t kLanes = 8;

VEXO_TARGET VEXO_INLINE __m256i load(const uint32_t* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
VEXO_TARGET VEXO_INLINE void store(__m256i v, void* to) {
  _mm256_storeu_si256(static_cast<__m256i*>(to), v);
}

// One step of a bitonic merge: lanes of `upper` keep the greater of the pair.
template <int upper>
VEXO_TARGET VEXO_INLINE __m256i exchange(__m256i v, __m256i other) {
  return _mm256_blend_epi32(_mm256_min_epu32(v, other),
                            _mm256_max_epu32(v, other), upper);
}

VEXO_TARGET VEXO_INLINE __m256i sort_bitonic(__m256i v) {
  v = exchange<0xf0>(v, _mm256_permute2x128_si256(v, v, 1));
  v = exchange<0xcc>(v, _mm256_shuffle_epi32(v, 0x4e));
  return exchange<0xaa>(v, _mm256_shuffle_epi32(v, 0xb1));
}

// Two ascending lists with slack behind them, 8 keys at a time: the block that
// follows is the one of the smaller head.
class merger {
 public:
  VEXO_TARGET VEXO_INLINE merger(const uint32_t* a, const uint32_t* b)
      : a_(a + kLanes), b_(b + kLanes), held_(load(a)), next_(load(b)) {}

  VEXO_TARGET VEXO_INLINE __m256i take() {
    const __m256i reversed = _mm256_permutevar8x32_epi32(
        next_, _mm256_set_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    const __m256i low = _mm256_min_epu32(held_, reversed);
    held_ = sort_bitonic(_mm256_max_epu32(held_, reversed));
    const bool from_a = *a_ <= *b_;
    next_ = load(from_a ? a_ : b_);
    a_ += from_a ? kLanes : 0;
    b_ += from_a ? 0 : kLanes;
    return sort_bitonic(low);
  }

 private:
  const uint32_t* a_;
  const uint32_t* b_;
  __m256i held_;
  __m256i next_;
};

VEXO_TARGET void merge_avx2(const key_list& a, const key_list& b,
                            const key_list& to) {
  merger begins(a.begins, b.begins);
  merger ends(a.ends, b.ends);
  for (size_t i = 0; i < to.count; i += kLanes) {
    store(begins.take(), to.begins + i);
    store(ends.take(), to.ends + i);
  }
}

// For every set of lanes, which ones they are, from the lowest on.
struct lane_table {
  uint8_t lanes[256][kLanes] = {};
  constexpr lane_table() {
    for (int mask = 0; mask < 256; ++mask) {
      size_t n = 0;
      for (uint8_t lane = 0; lane < kLanes; ++lane)
        if (mask >> lane & 1) lanes[mask][n++] = lane;
    }
  }
};
constexpr lane_table kLaneTable;

VEXO_TARGET VEXO_INLINE __m256i compress(uint32_t mask, __m256i v) {
  const __m128i lanes =
      _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kLaneTable.lanes[mask]));
  return _mm256_permutevar8x32_epi32(v, _mm256_cvtepu8_epi32(lanes));
}

// The lanes with a <= b.
VEXO_TARGET VEXO_INLINE uint32_t at_most(__m256i a, __m256i b) {
  return static_cast<uint32_t>(_mm256_movemask_ps(
      _mm256_castsi256_ps(_mm256_cmpeq_epi32(_mm256_min_epu32(a, b), a))));
}

struct vector_decoder {
  __m128i bits;
  __m256i columns, first_row, first_col;

  VEXO_TARGET VEXO_INLINE explicit vector_decoder(const key_frame& frame)
      : bits(_mm_cvtsi32_si128(static_cast<int>(frame.bits))),
        columns(_mm256_set1_epi32(
            static_cast<int>((uint32_t{1} << frame.bits) - 1))),
        first_row(_mm256_set1_epi32(frame.first_row)),
        first_col(_mm256_set1_epi32(frame.first_col)) {}

  VEXO_TARGET VEXO_INLINE void rows(__m256i keys, int32_t* to) const {
    store(_mm256_add_epi32(_mm256_srl_epi32(keys, bits), first_row), to);
  }
  VEXO_TARGET VEXO_INLINE void cols(__m256i keys, int32_t* to) const {
    store(_mm256_add_epi32(_mm256_and_si256(keys, columns), first_col), to);
  }
};

VEXO_TARGET size_t write_united_avx2(const key_list& keys,
                                     const key_frame& frame, int32_t* rows,
                                     int32_t* begins, int32_t* ends) {
  const vector_decoder d(frame);
  const __m256i one = _mm256_set1_epi32(1);
  size_t started = 0, stopped = 0;
  for (size_t i = 0; i < keys.count; i += kLanes) {
    const uint32_t valid = _bzhi_u32(
        0xff, static_cast<uint32_t>(std::min(keys.count - i, kLanes)));
    const __m256i begin = load(keys.begins + i);
    const __m256i end = load(keys.ends + i);
    const uint32_t starts =
        valid & ~at_most(_mm256_sub_epi32(begin, one), load(keys.ends + i - 1));
    const uint32_t stops =
        valid & ~at_most(_mm256_sub_epi32(load(keys.begins + i + 1), one), end);
    const __m256i first = compress(starts, begin);
    d.rows(first, rows + started);
    d.cols(first, begins + started);
    d.cols(compress(stops, end), ends + stopped);
    started += static_cast<size_t>(_mm_popcnt_u32(starts));
    stopped += static_cast<size_t>(_mm_popcnt_u32(stops));
  }
  return started;
}

VEXO_TARGET size_t write_common_avx2(const key_list& keys, size_t lists,
                                     const key_frame& frame, int32_t* rows,
                                     int32_t* begins, int32_t* ends) {
  const vector_decoder d(frame);
  const __m256i one = _mm256_set1_epi32(1);
  size_t n = 0;
  for (size_t i = 0; i < keys.count; i += kLanes) {
    const __m256i begin = load(keys.begins + i + lists - 1);
    const __m256i end = load(keys.ends + i);
    // kLastKey + 1 is 0: nothing begins below it.
    const uint32_t common = 0xff & ~at_most(_mm256_add_epi32(end, one), begin);
    const __m256i first = compress(common, begin);
    d.rows(first, rows + n);
    d.cols(first, begins + n);
    d.cols(compress(common, end), ends + n);
    n += static_cast<size_t>(_mm_popcnt_u32(common));
  }
  return n;
}

}  // namespace

const key_kernels kKeyKernelsAvx2 = {
    widen_avx2,        make_avx2,  move_avx2,
    are_apart_avx2,    merge_avx2, write_united_avx2,
    write_common_avx2, split_avx2, join_avx2};

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
