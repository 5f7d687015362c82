// SPDX-License-Identifier: MIT
//
// The working memory of the vector forms of row_scan: a block of rows as bits
// (1 = inside), the words in which something begins or ends, and the columns
// where it does. Small enough to stay in the caches.
//
// A row takes width / 64 + 1 words, so that the last one always has a 0 behind
// the row's last pixel: every run has an end, and a row an even number of
// edges (first column inside, first column outside, ...).
#ifndef VEXO_REGION_INTERNAL_ROW_BITS_H_
#define VEXO_REGION_INTERNAL_ROW_BITS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"

namespace vexo::internal {

struct row_bits {
  static constexpr size_t kBlockWords = 256;
  static constexpr size_t kSlack = 64;  // entries that vectors may overrun

  explicit row_bits(size_t width)
      : words_per_row(width / 64 + 1),
        // Rows start at multiples of 8 words; one 0 word stands before each.
        row_stride((words_per_row + 8 + 7) / 8 * 8),
        rows(std::max<size_t>(1, kBlockWords / row_stride)),
        bits(rows * row_stride + kSlack),
        words(rows * words_per_row + kSlack),
        columns(rows * words_per_row + kSlack),
        row_edges(rows) {
    std::fill(bits.begin(), bits.end(), uint64_t{0});
  }

  uint64_t* row(size_t r) const { return bits.data() + r * row_stride + 8; }

  size_t words_per_row;
  size_t row_stride;
  size_t rows;  // in a block
  buffer<uint64_t> bits;
  buffer<uint64_t> words;    // those with edges: a bit for each edge
  buffer<int32_t> columns;   // of bit 0 of these
  buffer<size_t> row_edges;  // how many edges each row has
  buffer<int32_t> edges;     // columns of all edges of the block
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_BITS_H_
