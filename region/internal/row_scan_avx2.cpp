// SPDX-License-Identifier: MIT
//
// 64 pixels a step: compare, find the edges in the bits, and count trailing
// zeros through them, eight edges at a time without looking whether they exist.
#include "region/internal/row_scan.h"

#ifdef VEXO_X86_VECTORS

#include <immintrin.h>

#include <algorithm>

#define VEXO_TARGET __attribute__((target("avx2,bmi,bmi2,popcnt,lzcnt")))

namespace vexo::internal {
namespace {

struct band {
  __m256i min;
  __m256i range;

  VEXO_TARGET explicit band(const scan_input& in)
      : min(_mm256_set1_epi8(static_cast<char>(in.min))),
        range(_mm256_set1_epi8(static_cast<char>(in.max - in.min))) {}

  VEXO_TARGET uint64_t half(const uint8_t* pixels) const {
    const __m256i p =
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
    const __m256i above = _mm256_sub_epi8(p, min);
    const __m256i in = _mm256_cmpeq_epi8(_mm256_min_epu8(above, range), above);
    return static_cast<uint32_t>(_mm256_movemask_epi8(in));
  }
  VEXO_TARGET uint64_t full(const uint8_t* pixels) const {
    return half(pixels) | half(pixels + 32) << 32;
  }
  VEXO_TARGET uint64_t part(const uint8_t* pixels, size_t n) const {
    alignas(32) uint8_t copy[64] = {};
    std::copy(pixels, pixels + n, copy);
    return _bzhi_u64(full(copy), static_cast<unsigned>(n));
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

// Writes the columns of the edges in t and returns how many there are; may
// overrun by 8.
VEXO_TARGET inline size_t spell_out(uint64_t t, int32_t column, int32_t* out) {
  const auto edges = static_cast<size_t>(_mm_popcnt_u64(t));
  for (size_t i = 0; i < edges; i += 8) {
    for (size_t k = 0; k < 8; ++k) {
      out[i + k] = column + static_cast<int32_t>(_tzcnt_u64(t));
      t = _blsr_u64(t);
    }
  }
  return edges;
}

VEXO_TARGET size_t row_edges(const uint8_t* row, size_t width,
                             const band& inside, int32_t* out) {
  size_t edges = 0;
  uint64_t carry = 0;
  for (size_t c = 0; c <= width; c += 64) {
    const uint64_t w = c + 64 <= width ? inside.full(row + c)
                                       : inside.part(row + c, width - c);
    const uint64_t t = w ^ (w << 1 | carry);
    carry = w >> 63;
    if (t == 0) continue;
    edges += spell_out(t, static_cast<int32_t>(c), out + edges);
  }
  return edges;
}

// The edges of a row.
size_t scratch_bytes(size_t width) {
  constexpr size_t kSlack = 8;
  return ((width + 1 + kSlack) * sizeof(int32_t) + 63) / 64 * 64;
}

// Calls emit(edges, runs, row) for every row of the input.
template <class Emit>
VEXO_TARGET inline void scan(const scan_input& in, char* scratch, Emit emit) {
  const band inside(in);
  auto* const edges = reinterpret_cast<int32_t*>(scratch);
  const uint8_t* pixels = in.pixels;
  for (int32_t row = in.first_row; row < in.last_row; ++row) {
    const size_t n = row_edges(pixels, in.width, inside, edges);
    emit(edges, n / 2, row);
    pixels += in.width;
  }
}

VEXO_TARGET void to_runs(const scan_input& in, char* scratch,
                         const run_arrays& out) {
  run_arrays to = out;
  scan(in, scratch,
       [&](const int32_t* edge, size_t runs, int32_t row) VEXO_TARGET {
         for (size_t i = 0; i < runs; ++i) {
           to.rows[i] = row;
           to.begins[i] = edge[2 * i];
           to.ends[i] = edge[2 * i + 1] - 1;
         }
         to = {to.rows + runs, to.begins + runs, to.ends + runs};
       });
}

VEXO_TARGET void to_chords(const scan_input& in, char* scratch, chord* out) {
  scan(in, scratch,
       [&](const int32_t* edge, size_t runs, int32_t row) VEXO_TARGET {
         for (size_t i = 0; i < runs; ++i) {
           *out++ = {edge[2 * i], edge[2 * i + 1] - 1, row, 0};
         }
       });
}

}  // namespace

const row_scan kRowScanAvx2{scratch_bytes, count, to_runs, to_chords};

}  // namespace vexo::internal

#endif  // VEXO_X86_VECTORS
