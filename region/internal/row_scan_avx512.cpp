// SPDX-License-Identifier: MIT
//
// 64 pixels a step: compare, find the edges in the bits, keep the words that
// have any (compress), then spell out their columns (compress again). Nothing
// branches on the picture but the number of such words.
#include "region/internal/row_scan.h"

#ifdef VEXO_X86_VECTORS

// The compiler's own header starts many intrinsics from an undefined vector.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include "region/internal/lane_count.h"
#include "region/internal/row_bits.h"

#define VEXO_TARGET                                           \
  __attribute__((                                             \
      target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi," \
             "avx512vbmi2,avx512vpopcntdq,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

// Bits of the low n lanes, n <= 64.
VEXO_TARGET inline __mmask64 low_bits(size_t n) {
  return _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(n));
}

// The band test: p - min <= max - min without sign.
struct band {
  __m512i min;
  __m512i range;

  VEXO_TARGET explicit band(const scan_input& in)
      : min(_mm512_set1_epi8(static_cast<char>(in.min))),
        range(_mm512_set1_epi8(static_cast<char>(in.max - in.min))) {}

  VEXO_TARGET uint64_t test(__m512i pixels) const {
    return _mm512_cmple_epu8_mask(_mm512_sub_epi8(pixels, min), range);
  }
  VEXO_TARGET uint64_t full(const uint8_t* pixels) const {
    return test(_mm512_loadu_si512(pixels));
  }
  VEXO_TARGET uint64_t part(const uint8_t* pixels, size_t n) const {
    const __mmask64 lanes = low_bits(n);
    return test(_mm512_maskz_loadu_epi8(lanes, pixels)) & lanes;
  }
};

VEXO_TARGET size_t count(const scan_input& in) {
  const band inside(in);
  size_t runs = 0;
  const uint8_t* row = in.pixels;
  for (size_t r = 0; r < in.rows(); ++r, row += in.width) {
    uint64_t carry = 0;
    size_t c = 0;
    for (; c + 64 <= in.width; c += 64) {
      const uint64_t w = inside.full(row + c);
      runs += static_cast<size_t>(_mm_popcnt_u64(w & ~(w << 1 | carry)));
      carry = w >> 63;
    }
    if (c < in.width) {
      const uint64_t w = inside.part(row + c, in.width - c);
      runs += static_cast<size_t>(_mm_popcnt_u64(w & ~(w << 1 | carry)));
    }
  }
  return runs;
}

VEXO_TARGET void row_to_bits(const uint8_t* row, size_t width,
                             const band& inside, uint64_t* bits) {
  size_t c = 0;
  for (; c + 64 <= width; c += 64) *bits++ = inside.full(row + c);
  *bits = c < width ? inside.part(row + c, width - c) : 0;
}

// Appends the words of a row that have edges; returns how many edges.
VEXO_TARGET size_t find_edges(const uint64_t* bits, size_t words,
                              uint64_t** edge_words, int32_t** columns) {
  __m512i edges = _mm512_setzero_si512();
  __m256i column = _mm256_setr_epi32(0, 64, 128, 192, 256, 320, 384, 448);
  for (size_t k = 0; k < words; k += 8) {
    // Words behind the row are 0 and stay so: rows are padded.
    const __m512i w = _mm512_loadu_si512(bits + k);
    const __m512i before = _mm512_loadu_si512(bits + k - 1);
    const __m512i t = _mm512_xor_si512(w, _mm512_shldi_epi64(w, before, 1));
    const __mmask8 any = _mm512_test_epi64_mask(t, t);
    edges = _mm512_add_epi64(edges, _mm512_popcnt_epi64(t));
    _mm512_storeu_si512(*edge_words, _mm512_maskz_compress_epi64(any, t));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(*columns),
                        _mm256_maskz_compress_epi32(any, column));
    const size_t n = lane_count(any);
    *edge_words += n;
    *columns += n;
    column = _mm256_add_epi32(column, _mm256_set1_epi32(512));
  }
  return static_cast<size_t>(_mm512_reduce_add_epi64(edges));
}

alignas(64) constexpr uint8_t kIota[64] = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
    16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
    32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47,
    48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

template <int kQuarter>
VEXO_TARGET inline void store_columns(__m512i bytes, __m512i base,
                                      int32_t* out) {
  const __m128i part = _mm512_extracti32x4_epi32(bytes, kQuarter);
  _mm512_storeu_si512(out + 16 * kQuarter,
                      _mm512_add_epi32(base, _mm512_cvtepu8_epi32(part)));
}

// Writes the columns of all edges; may overrun by kSlack.
VEXO_TARGET void spell_out(const uint64_t* words, const int32_t* columns,
                           size_t n, int32_t* out) {
  const __m512i iota = _mm512_load_si512(kIota);
  for (size_t i = 0; i < n; ++i) {
    const uint64_t t = words[i];
    const auto edges = _mm_popcnt_u64(t);
    const __m512i base = _mm512_set1_epi32(columns[i]);
    const __m512i bytes = _mm512_maskz_compress_epi8(t, iota);
    store_columns<0>(bytes, base, out);
    if (edges > 16) {
      store_columns<1>(bytes, base, out);
      if (edges > 32) {
        store_columns<2>(bytes, base, out);
        store_columns<3>(bytes, base, out);
      }
    }
    out += edges;
  }
}

// Calls emit(edges, runs, row) for every row of the input that has runs.
template <class Emit>
VEXO_TARGET inline void scan(const scan_input& in, char* scratch, Emit emit) {
  const band inside(in);
  const row_bits block(in.width, scratch);
  for (size_t first = 0; first < in.rows(); first += block.rows) {
    const size_t rows = std::min(block.rows, in.rows() - first);
    const uint8_t* pixels = in.pixels + first * in.width;
    for (size_t r = 0; r < rows; ++r, pixels += in.width) {
      row_to_bits(pixels, in.width, inside, block.row(r));
    }
    uint64_t* words = block.words;
    int32_t* columns = block.columns;
    for (size_t r = 0; r < rows; ++r) {
      block.row_edges[r] =
          find_edges(block.row(r), block.words_per_row, &words, &columns);
    }
    spell_out(block.words, block.columns,
              static_cast<size_t>(words - block.words), block.edges);
    const int32_t* edge = block.edges;
    for (size_t r = 0; r < rows; ++r) {
      emit(edge, block.row_edges[r] / 2,
           in.first_row + static_cast<int32_t>(first + r));
      edge += block.row_edges[r];
    }
  }
}

VEXO_TARGET void to_runs(const scan_input& in, char* scratch,
                         const run_arrays& out) {
  run_arrays to = out;
  const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20,
                                         22, 24, 26, 28, 30);
  const __m512i one = _mm512_set1_epi32(1);
  const __m512i odd = _mm512_add_epi32(even, one);
  scan(in, scratch,
       [&](const int32_t* edge, size_t runs, int32_t row) VEXO_TARGET {
         const __m512i rows = _mm512_set1_epi32(row);
         for (size_t i = 0; i < runs; i += 16) {
           const auto lanes =
               static_cast<__mmask16>(low_bits(std::min<size_t>(16, runs - i)));
           const __m512i low = _mm512_loadu_si512(edge + 2 * i);
           const __m512i high = _mm512_loadu_si512(edge + 2 * i + 16);
           const __m512i ends = _mm512_permutex2var_epi32(low, odd, high);
           _mm512_mask_storeu_epi32(to.rows + i, lanes, rows);
           _mm512_mask_storeu_epi32(to.begins + i, lanes,
                                    _mm512_permutex2var_epi32(low, even, high));
           _mm512_mask_storeu_epi32(to.ends + i, lanes,
                                    _mm512_sub_epi32(ends, one));
         }
         to = {to.rows + runs, to.begins + runs, to.ends + runs};
       });
}

VEXO_TARGET void to_chords(const scan_input& in, char* scratch, chord* out) {
  const __m512i spread = _mm512_setr_epi64(0, 4, 1, 4, 2, 4, 3, 4);
  const __m512i one_end = _mm512_set1_epi64(int64_t{1} << 32);
  scan(in, scratch,
       [&](const int32_t* edge, size_t runs, int32_t row) VEXO_TARGET {
         const __m512i rows = _mm512_set1_epi64(
             static_cast<int64_t>(static_cast<uint32_t>(row)));
         for (size_t i = 0; i < runs; i += 4) {
           const auto lanes = static_cast<__mmask8>(
               low_bits(2 * std::min<size_t>(4, runs - i)));
           const __m512i pairs =
               _mm512_sub_epi32(_mm512_loadu_si512(edge + 2 * i), one_end);
           const __m512i chords =
               _mm512_mask_permutexvar_epi64(rows, 0x55, spread, pairs);
           _mm512_mask_storeu_epi64(out + i, lanes, chords);
         }
         out += runs;
       });
}

}  // namespace

const row_scan kRowScanAvx512{row_bits::bytes, count, to_runs, to_chords};

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
