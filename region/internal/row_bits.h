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

namespace vexo::internal {

class row_bits {
 public:
  static constexpr size_t kSlack = 64;  // entries that vectors may overrun

  // Bytes of memory that rows of this width take, a multiple of 64.
  static size_t bytes(size_t width) {
    row_bits layout(width);
    layout.place(nullptr);
    return layout.used_;
  }

  // Lays itself out in bytes(width) bytes of memory.
  row_bits(size_t width, char* memory) : row_bits(width) {
    place(memory);
    std::fill_n(bits_, rows * row_stride_ + kSlack, uint64_t{0});
  }

  uint64_t* row(size_t r) const { return bits_ + r * row_stride_ + 8; }

  const size_t words_per_row;
  const size_t row_stride_;  // in words; a multiple of 8, a 0 word before each
  const size_t rows;         // in a block
  uint64_t* words;           // those with edges: a bit for each edge
  int32_t* columns;          // of bit 0 of these
  size_t* row_edges;         // how many edges each row has
  int32_t* edges;            // columns of all edges of the block

 private:
  static constexpr size_t kBlockWords = 256;

  explicit row_bits(size_t width)
      : words_per_row(width / 64 + 1),
        row_stride_((words_per_row + 15) / 8 * 8),
        rows(std::max<size_t>(1, kBlockWords / row_stride_)) {}

  void place(char* memory) {
    const size_t all_words = rows * words_per_row + kSlack;
    bits_ = take<uint64_t>(memory, rows * row_stride_ + kSlack);
    words = take<uint64_t>(memory, all_words);
    columns = take<int32_t>(memory, all_words);
    row_edges = take<size_t>(memory, rows);
    edges = take<int32_t>(memory, rows * words_per_row * 64 + kSlack);
  }

  template <class T>
  T* take(char* memory, size_t n) {
    const size_t at = used_;
    used_ += (n * sizeof(T) + 63) / 64 * 64;
    return memory == nullptr ? nullptr : reinterpret_cast<T*>(memory + at);
  }

  uint64_t* bits_ = nullptr;
  size_t used_ = 0;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_BITS_H_
