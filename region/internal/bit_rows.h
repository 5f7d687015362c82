// SPDX-License-Identifier: MIT
//
// Rows of bits, one bit a pixel, and what the dense forms do with them. Every
// function exists for several vector widths; results are the same bit by bit.
//
// A row is a number of words, a multiple of kWordsPerBlock. Bit b of word w is
// column 64 * w + b of the row.
#ifndef VEXO_REGION_INTERNAL_BIT_ROWS_H_
#define VEXO_REGION_INTERNAL_BIT_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace vexo::internal {

constexpr size_t kWordsPerBlock = 8;
// write_runs() may write this many entries past the last run.
constexpr size_t kRunSlack = 32;

// How bits move along a row: towards higher columns by `up`, lower by `down`.
struct bit_kernels {
  // A strip of `length` rows and an element of `height` rows give length +
  // height - 1: row k has the lowest begins[i] + element_begins[k - i] and the
  // highest ends[i] + element_ends[k - i].
  void (*dilate_strip)(const int32_t* begins, const int32_t* ends,
                       size_t length, const int32_t* element_begins,
                       const int32_t* element_ends, size_t height,
                       int32_t* result_begins, int32_t* result_ends);

  // Marks where the runs begin and one past where they end; column `origin` is
  // mark 0. The runs are canonical, so that no mark is set twice.
  void (*mark_runs)(const int32_t* begins, const int32_t* ends, size_t count,
                    int64_t origin, unsigned char* marks);
  // Bits between an odd and the next even mark (0xff), the odd one included.
  // Clears the marks: 64 * words of them, one a column.
  void (*fill_between)(unsigned char* marks, size_t words, uint64_t* bits);

  // One past the last of the entries from `first` on that equal rows[first].
  size_t (*row_end)(const int32_t* rows, size_t first, size_t count);
  // Whether rows ascend, no run ends before it begins, and no two neighbours of
  // one row touch, overlap or stand in the wrong order.
  bool (*are_canonical)(const int32_t* rows, const int32_t* begins,
                        const int32_t* ends, size_t count);
  // Lowers *min to the smallest begin, raises *max to the greatest end.
  void (*span)(const int32_t* begins, const int32_t* ends, size_t count,
               int32_t* min, int32_t* max);
  // Whether some end - begin is at least `length`.
  bool (*reaches)(const int32_t* begins, const int32_t* ends, size_t count,
                  int64_t length);

  // The number of runs of ones, and the runs themselves; column 0 of the row
  // is column `origin`. write_runs() returns their number.
  size_t (*count_runs)(const uint64_t* bits, size_t words);
  size_t (*write_runs)(const uint64_t* bits, size_t words, int32_t origin,
                       int32_t* begins, int32_t* ends);

  // to = from, from moved up and from moved down, united or intersected.
  // Words outside the row are read as far as the moves reach.
  void (*spread_or)(const uint64_t* from, uint64_t* to, size_t words,
                    size_t down, size_t up);
  void (*spread_and)(const uint64_t* from, uint64_t* to, size_t words,
                     size_t down, size_t up);
  // to = from moved up (or down, when negative).
  void (*move)(const uint64_t* from, uint64_t* to, size_t words, ptrdiff_t up);
  // Bits of `at` with an edge neighbour that is 0; bits that are 0 in `at` with
  // one that is 1.
  void (*inner_edge)(const uint64_t* above, const uint64_t* at,
                     const uint64_t* below, uint64_t* to, size_t words);
  void (*outer_edge)(const uint64_t* above, const uint64_t* at,
                     const uint64_t* below, uint64_t* to, size_t words);
  // to = a | b, to = a & b.
  void (*join_or)(const uint64_t* a, const uint64_t* b, uint64_t* to,
                  size_t words);
  void (*join_and)(const uint64_t* a, const uint64_t* b, uint64_t* to,
                   size_t words);
  // into |= from, into &= from, into &= ~from, for several rows `into`.
  void (*merge_or)(const uint64_t* from, uint64_t* const* into, size_t count,
                   size_t words);
  void (*merge_and)(const uint64_t* from, uint64_t* const* into, size_t count,
                    size_t words);
  void (*merge_and_not)(const uint64_t* from, uint64_t* const* into,
                        size_t count, size_t words);
};

// For current_vector_level().
const bit_kernels& kernels();

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_BIT_ROWS_H_
