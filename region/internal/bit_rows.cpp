// SPDX-License-Identifier: MIT
#include "region/internal/bit_rows.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "region/internal/row_scan.h"

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>
#define VEXO_VECTORS 1
#define VEXO_INLINE inline __attribute__((always_inline))
#define VEXO_AVX2 __attribute__((target("avx2,bmi,bmi2,lzcnt,popcnt")))
#define VEXO_AVX512                                                           \
  __attribute__((                                                             \
      target("avx2,bmi,bmi2,lzcnt,popcnt,avx512f,avx512bw,avx512dq,avx512vl," \
             "avx512vbmi,avx512vbmi2")))
#else
#define VEXO_VECTORS 0
#define VEXO_INLINE inline
#endif

namespace vexo::internal {
namespace {

// --- Bodies, compiled once for every vector width ---------------------------

// Every bit becomes the parity of itself and all lower bits.
VEXO_INLINE uint64_t running_parity(uint64_t x) {
  x ^= x << 1;
  x ^= x << 2;
  x ^= x << 4;
  x ^= x << 8;
  x ^= x << 16;
  x ^= x << 32;
  return x;
}

VEXO_INLINE size_t row_end_body(const int32_t* rows, size_t first,
                                size_t count) {
  constexpr size_t kBatch = 16;
  const int32_t row = rows[first];
  size_t i = first + 1;
  // Rows ascend: a batch is of one row if its last entry is.
  while (i + kBatch <= count && rows[i + kBatch - 1] == row) i += kBatch;
  while (i < count && rows[i] == row) ++i;
  return i;
}

VEXO_INLINE bool are_canonical_body(const int32_t* rows, const int32_t* begins,
                                    const int32_t* ends, size_t count) {
  uint32_t wrong = count > 0 && begins[0] > ends[0];
  for (size_t i = 1; i < count; ++i) {
    // Modulo 2^32: behind the last column there is none.
    const auto behind =
        static_cast<int32_t>(static_cast<uint32_t>(ends[i - 1]) + 1);
    const uint32_t same_row = rows[i] == rows[i - 1];
    const uint32_t overlapping = begins[i] <= ends[i - 1];
    const uint32_t touching = overlapping | (begins[i] == behind);
    const uint32_t descending = rows[i] < rows[i - 1];
    const uint32_t inverted = begins[i] > ends[i];
    wrong |= (same_row & touching) | descending | inverted;
  }
  return wrong == 0;
}

VEXO_INLINE void span_body(const int32_t* begins, const int32_t* ends,
                           size_t count, int32_t* min, int32_t* max) {
  int32_t low = INT32_MAX;
  int32_t high = INT32_MIN;
  for (size_t i = 0; i < count; ++i) {
    low = std::min(low, begins[i]);
    high = std::max(high, ends[i]);
  }
  *min = std::min(*min, low);
  *max = std::max(*max, high);
}

VEXO_INLINE bool reaches_body(const int32_t* begins, const int32_t* ends,
                              size_t count, int64_t length) {
  if (length > UINT32_MAX) return false;
  constexpr size_t kBatch = 1024;
  for (size_t i = 0; i < count;) {
    const size_t last = std::min(count, i + kBatch);
    uint32_t most = 0;  // differences of 32 bits need no sign
    for (; i < last; ++i) {
      most = std::max(most, static_cast<uint32_t>(ends[i]) -
                                static_cast<uint32_t>(begins[i]));
    }
    if (most >= length) return true;
  }
  return false;
}

VEXO_INLINE void dilate_strip_body(const int32_t* begins, const int32_t* ends,
                                   size_t length, const int32_t* element_begins,
                                   const int32_t* element_ends, size_t height,
                                   int32_t* __restrict result_begins,
                                   int32_t* __restrict result_ends) {
  // Sums are symmetric: the longer of the two is gone through at once.
  if (length < height) {
    std::swap(begins, element_begins);
    std::swap(ends, element_ends);
    std::swap(length, height);
  }
  std::fill_n(result_begins, length + height - 1, INT32_MAX);
  std::fill_n(result_ends, length + height - 1, INT32_MIN);
  for (size_t j = 0; j < height; ++j) {
    const int32_t begin = element_begins[j];
    const int32_t end = element_ends[j];
    for (size_t i = 0; i < length; ++i) {
      result_begins[i + j] = std::min(result_begins[i + j], begins[i] + begin);
      result_ends[i + j] = std::max(result_ends[i + j], ends[i] + end);
    }
  }
}

VEXO_INLINE void mark_runs_body(const int32_t* begins, const int32_t* ends,
                                size_t count, int64_t origin,
                                unsigned char* marks) {
  for (size_t i = 0; i < count; ++i) {
    marks[begins[i] - origin] = 0xff;
    marks[ends[i] - origin + 1] = 0xff;
  }
}

// `mask_of` turns 64 marks into 64 bits.
template <typename MaskOf>
VEXO_INLINE void fill_between_body(unsigned char* marks, size_t words,
                                   uint64_t* bits, MaskOf mask_of) {
  uint64_t inside = 0;  // all ones between runs' ends
  for (size_t w = 0; w < words; ++w) {
    bits[w] = running_parity(mask_of(marks + 64 * w)) ^ inside;
    inside = uint64_t{0} - (bits[w] >> 63);
  }
  std::memset(marks, 0, 64 * words);
}

VEXO_INLINE uint64_t mask_of_plain(const unsigned char* marks) {
  uint64_t mask = 0;
  for (int part = 0; part < 8; ++part) {
    uint64_t eight;
    std::memcpy(&eight, marks + 8 * part, 8);
    // One bit of each byte, gathered in the top byte.
    eight = (eight & 0x0101010101010101u) * 0x0102040810204080u;
    mask |= (eight >> 56) << (8 * part);
  }
  return mask;
}

VEXO_INLINE size_t count_runs_body(const uint64_t* bits, size_t words) {
  size_t count = 0;
  uint64_t before = 0;
  for (size_t w = 0; w < words; ++w) {
    count +=
        static_cast<size_t>(std::popcount(bits[w] & ~(bits[w] << 1 | before)));
    before = bits[w] >> 63;
  }
  return count;
}

// `expand` writes the columns of a mask's bits.
template <typename Expand>
VEXO_INLINE size_t write_runs_body(const uint64_t* bits, size_t words,
                                   int32_t origin, int32_t* begins,
                                   int32_t* ends, Expand expand) {
  const int32_t* const first = begins;
  uint64_t before = 0;
  for (size_t w = 0; w < words; ++w) {
    const uint64_t word = bits[w];
    const uint64_t after = w + 1 < words ? bits[w + 1] << 63 : 0;
    const uint64_t starts = word & ~(word << 1 | before);
    const uint64_t stops = word & ~(word >> 1 | after);
    before = word >> 63;
    if ((starts | stops) == 0) continue;
    // Modulo 2^32: column 0 of the row need not be a column.
    const auto column = static_cast<int32_t>(static_cast<uint32_t>(origin) +
                                             static_cast<uint32_t>(64 * w));
    expand(starts, column, begins);
    expand(stops, column, ends);
    begins += std::popcount(starts);
    ends += std::popcount(stops);
  }
  return static_cast<size_t>(begins - first);
}

VEXO_INLINE void expand_plain(uint64_t mask, int32_t column, int32_t* out) {
  for (; mask != 0; mask &= mask - 1) {
    *out++ =
        static_cast<int32_t>(static_cast<uint32_t>(column) +
                             static_cast<uint32_t>(std::countr_zero(mask)));
  }
}

// kWordsPerBlock words at once. They lie at any address: not every compiler
// reads through a reference to an under-aligned vector as it should, so words
// are copied in and out.
#if defined(__GNUC__)
typedef uint64_t block
    __attribute__((vector_size(8 * kWordsPerBlock), aligned(8)));
constexpr size_t kStep = kWordsPerBlock;
#else
using block = uint64_t;
constexpr size_t kStep = 1;
#endif

VEXO_INLINE void load(const uint64_t* words, block* value) {
  std::memcpy(value, words, sizeof *value);
}
VEXO_INLINE void store(const block& value, uint64_t* words) {
  std::memcpy(words, &value, sizeof value);
}

// words moved up by `up` bits (below 64), filled from the word before.
VEXO_INLINE void load_raised(const uint64_t* words, size_t up, block* value) {
  block before;
  load(words, value);
  load(words - 1, &before);
  // A shift by 64 is undefined; two shifts are not.
  *value = *value << up | before >> 1 >> (63 - up);
}
VEXO_INLINE void load_lowered(const uint64_t* words, size_t down,
                              block* value) {
  block after;
  load(words, value);
  load(words + 1, &after);
  *value = *value >> down | after << 1 << (63 - down);
}

struct unite {
  VEXO_INLINE static void add(const block& from, block* to) { *to |= from; }
};
struct subtract {
  VEXO_INLINE static void add(const block& from, block* to) { *to &= ~from; }
};
struct intersect {
  VEXO_INLINE static void add(const block& from, block* to) { *to &= from; }
};

template <typename Combine>
VEXO_INLINE void spread_body(const uint64_t* from, uint64_t* to, size_t words,
                             size_t down, size_t up) {
  const uint64_t* low = from - static_cast<ptrdiff_t>(up / 64);
  const uint64_t* high = from + down / 64;
  for (size_t w = 0; w < words; w += kStep) {
    block sum, raised, lowered;
    load(from + w, &sum);
    load_raised(low + w, up % 64, &raised);
    load_lowered(high + w, down % 64, &lowered);
    Combine::add(raised, &sum);
    Combine::add(lowered, &sum);
    store(sum, to + w);
  }
}

VEXO_INLINE void move_body(const uint64_t* from, uint64_t* to, size_t words,
                           ptrdiff_t up) {
  // Whole words first, rounded down; what is left moves up.
  const ptrdiff_t whole = up >= 0 ? up / 64 : -((-up + 63) / 64);
  const uint64_t* low = from - whole;
  const auto rest = static_cast<size_t>(up - 64 * whole);
  for (size_t w = 0; w < words; w += kStep) {
    block moved;
    load_raised(low + w, rest, &moved);
    store(moved, to + w);
  }
}

template <bool inner>
VEXO_INLINE void edge_body(const uint64_t* above, const uint64_t* at,
                           const uint64_t* below, uint64_t* to, size_t words) {
  for (size_t w = 0; w < words; w += kStep) {
    block here, left, right, up, down;
    load(at + w, &here);
    load_raised(at + w, 1, &left);
    load_lowered(at + w, 1, &right);
    load(above + w, &up);
    load(below + w, &down);
    if constexpr (inner) {
      store(here & ~(left & right & up & down), to + w);
    } else {
      store((left | right | up | down) & ~here, to + w);
    }
  }
}

template <typename Combine>
VEXO_INLINE void join_body(const uint64_t* a, const uint64_t* b, uint64_t* to,
                           size_t words) {
  for (size_t w = 0; w < words; w += kStep) {
    block first, sum;
    load(a + w, &first);
    load(b + w, &sum);
    Combine::add(first, &sum);
    store(sum, to + w);
  }
}

template <typename Combine>
VEXO_INLINE void merge_body(const uint64_t* from, uint64_t* const* into,
                            size_t count, size_t words) {
  for (size_t t = 0; t < count; ++t) {
    uint64_t* row = into[t];
    for (size_t w = 0; w < words; w += kStep) {
      block own, merged;
      load(from + w, &own);
      load(row + w, &merged);
      Combine::add(own, &merged);
      store(merged, row + w);
    }
  }
}

#define VEXO_KERNELS(width, attribute, mask_of, expand)                        \
  attribute void dilate_strip_##width(                                         \
      const int32_t* begins, const int32_t* ends, size_t length,               \
      const int32_t* element_begins, const int32_t* element_ends,              \
      size_t height, int32_t* result_begins, int32_t* result_ends) {           \
    dilate_strip_body(begins, ends, length, element_begins, element_ends,      \
                      height, result_begins, result_ends);                     \
  }                                                                            \
  attribute void mark_runs_##width(const int32_t* begins, const int32_t* ends, \
                                   size_t count, int64_t origin,               \
                                   unsigned char* marks) {                     \
    mark_runs_body(begins, ends, count, origin, marks);                        \
  }                                                                            \
  attribute void fill_between_##width(unsigned char* marks, size_t words,      \
                                      uint64_t* bits) {                        \
    fill_between_body(marks, words, bits, mask_of);                            \
  }                                                                            \
  attribute size_t row_end_##width(const int32_t* rows, size_t first,          \
                                   size_t count) {                             \
    return row_end_body(rows, first, count);                                   \
  }                                                                            \
  attribute bool are_canonical_##width(const int32_t* rows,                    \
                                       const int32_t* begins,                  \
                                       const int32_t* ends, size_t count) {    \
    return are_canonical_body(rows, begins, ends, count);                      \
  }                                                                            \
  attribute void span_##width(const int32_t* begins, const int32_t* ends,      \
                              size_t count, int32_t* min, int32_t* max) {      \
    span_body(begins, ends, count, min, max);                                  \
  }                                                                            \
  attribute bool reaches_##width(const int32_t* begins, const int32_t* ends,   \
                                 size_t count, int64_t length) {               \
    return reaches_body(begins, ends, count, length);                          \
  }                                                                            \
  attribute size_t count_runs_##width(const uint64_t* bits, size_t words) {    \
    return count_runs_body(bits, words);                                       \
  }                                                                            \
  attribute size_t write_runs_##width(const uint64_t* bits, size_t words,      \
                                      int32_t origin, int32_t* begins,         \
                                      int32_t* ends) {                         \
    return write_runs_body(bits, words, origin, begins, ends, expand);         \
  }                                                                            \
  attribute void spread_or_##width(const uint64_t* from, uint64_t* to,         \
                                   size_t words, size_t down, size_t up) {     \
    spread_body<unite>(from, to, words, down, up);                             \
  }                                                                            \
  attribute void spread_and_##width(const uint64_t* from, uint64_t* to,        \
                                    size_t words, size_t down, size_t up) {    \
    spread_body<intersect>(from, to, words, down, up);                         \
  }                                                                            \
  attribute void move_##width(const uint64_t* from, uint64_t* to,              \
                              size_t words, ptrdiff_t up) {                    \
    move_body(from, to, words, up);                                            \
  }                                                                            \
  attribute void inner_edge_##width(const uint64_t* above, const uint64_t* at, \
                                    const uint64_t* below, uint64_t* to,       \
                                    size_t words) {                            \
    edge_body<true>(above, at, below, to, words);                              \
  }                                                                            \
  attribute void outer_edge_##width(const uint64_t* above, const uint64_t* at, \
                                    const uint64_t* below, uint64_t* to,       \
                                    size_t words) {                            \
    edge_body<false>(above, at, below, to, words);                             \
  }                                                                            \
  attribute void join_or_##width(const uint64_t* a, const uint64_t* b,         \
                                 uint64_t* to, size_t words) {                 \
    join_body<unite>(a, b, to, words);                                         \
  }                                                                            \
  attribute void join_and_##width(const uint64_t* a, const uint64_t* b,        \
                                  uint64_t* to, size_t words) {                \
    join_body<intersect>(a, b, to, words);                                     \
  }                                                                            \
  attribute void merge_or_##width(const uint64_t* from, uint64_t* const* into, \
                                  size_t count, size_t words) {                \
    merge_body<unite>(from, into, count, words);                               \
  }                                                                            \
  attribute void merge_and_##width(const uint64_t* from,                       \
                                   uint64_t* const* into, size_t count,        \
                                   size_t words) {                             \
    merge_body<intersect>(from, into, count, words);                           \
  }                                                                            \
  attribute void merge_and_not_##width(const uint64_t* from,                   \
                                       uint64_t* const* into, size_t count,    \
                                       size_t words) {                         \
    merge_body<subtract>(from, into, count, words);                            \
  }                                                                            \
  constexpr bit_kernels kKernels_##width = {                                   \
      dilate_strip_##width, mark_runs_##width,     fill_between_##width,       \
      row_end_##width,      are_canonical_##width, span_##width,               \
      reaches_##width,      count_runs_##width,    write_runs_##width,         \
      spread_or_##width,    spread_and_##width,    move_##width,               \
      inner_edge_##width,   outer_edge_##width,    join_or_##width,            \
      join_and_##width,     merge_or_##width,      merge_and_##width,          \
      merge_and_not_##width};

VEXO_KERNELS(plain, , mask_of_plain, expand_plain)

#if VEXO_VECTORS

struct mask_of_avx2 {
  VEXO_AVX2 uint64_t operator()(const unsigned char* marks) const {
    const auto* halves = reinterpret_cast<const __m256i*>(marks);
    const auto low =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_loadu_si256(halves)));
    const auto high = static_cast<uint32_t>(
        _mm256_movemask_epi8(_mm256_loadu_si256(halves + 1)));
    return uint64_t{high} << 32 | low;
  }
};

struct mask_of_avx512 {
  VEXO_AVX512 uint64_t operator()(const unsigned char* marks) const {
    return _mm512_movepi8_mask(_mm512_loadu_si512(marks));
  }
};

// 16 columns at a time, more than there are: hence kRunSlack.
struct expand_avx512 {
  VEXO_AVX512 void operator()(uint64_t mask, int32_t column,
                              int32_t* out) const {
    alignas(64) static constexpr unsigned char kCounting[64] = {
        0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
        16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
        32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47,
        48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};
    // Masked forms throughout: the others read registers not yet written.
    constexpr __mmask16 kAll = 0xffff;
    const __m512i bytes =
        _mm512_maskz_compress_epi8(mask, _mm512_load_si512(kCounting));
    const __m512i base = _mm512_set1_epi32(column);
    const __m512i low = _mm512_maskz_cvtepu8_epi32(
        kAll, _mm512_maskz_extracti32x4_epi32(0xf, bytes, 0));
    _mm512_storeu_si512(out, _mm512_add_epi32(base, low));
    if (std::popcount(mask) > 16) {
      const __m512i high = _mm512_maskz_cvtepu8_epi32(
          kAll, _mm512_maskz_extracti32x4_epi32(0xf, bytes, 1));
      _mm512_storeu_si512(out + 16, _mm512_add_epi32(base, high));
    }
  }
};

VEXO_KERNELS(avx2, VEXO_AVX2, mask_of_avx2{}, expand_plain)
VEXO_KERNELS(avx512, VEXO_AVX512, mask_of_avx512{}, expand_avx512{})

#endif

}  // namespace

const bit_kernels& kernels() {
#if VEXO_VECTORS
  const vector_level level = current_vector_level();
  if (level == vector_level::kAvx512) return kKernels_avx512;
  if (level == vector_level::kAvx2) return kKernels_avx2;
#endif
  return kKernels_plain;
}

}  // namespace vexo::internal
