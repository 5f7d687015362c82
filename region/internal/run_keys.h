// SPDX-License-Identifier: MIT
//
// Runs of some rows as sorted numbers. A pixel's key is its row and its column
// side by side in 32 bits, so that runs of several rows, and of several lists,
// compare without a look at their rows. Begins and ends are sorted apart, each
// by a merge without branches; which of them belong together follows from their
// places alone. With begins b and ends e of intervals in ascending order,
//
//   b[i] starts a run of the union          if b[i] > e[i - 1] + 1,
//   b[i + k - 1]..e[i] is common to k lists if b[i + k - 1] <= e[i],
//
// the latter when the intervals of each list are disjoint: i + k intervals have
// begun there and no more than i have ended.
#ifndef VEXO_REGION_INTERNAL_RUN_KEYS_H_
#define VEXO_REGION_INTERNAL_RUN_KEYS_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"
#include "region/internal/vector_level.h"
#include "region/internal/views.h"

namespace vexo::internal {

// Keys behind the last one of a list, all kLastKey, that kernels may read or
// write; before the first one there is room, too, and the last of that is 0.
constexpr size_t kKeySlack = 64;
constexpr size_t kKeyLead = 16;
constexpr uint32_t kLastKey = UINT32_MAX;

struct key_list {
  uint32_t* begins;
  uint32_t* ends;
  size_t count;
};

// key = (row - first_row) << bits | (column - first_col)
struct key_frame {
  // Columns on either side that no run takes up.
  static constexpr uint32_t kSpare = 3;

  int32_t first_row = 0;
  int32_t first_col = 0;
  uint32_t bits = 3;

  // The last row and the last column of runs, from first_row and from
  // first_col + kSpare on. The row behind the last one belongs to the slack.
  uint32_t last_row() const { return (kLastKey >> bits) - 1; }
  uint32_t last_col() const { return (uint32_t{1} << bits) - 1 - 2 * kSpare; }
};

// Columns that some runs take up.
struct key_columns {
  int32_t min = INT32_MAX;
  int32_t max = INT32_MIN;

  // A frame for them, as many columns left over on either side. False, and *f
  // as it was, when there is none.
  bool frame(key_frame* f) const;
};

// Greatest row and column of some runs, counted as in key_frame, modulo 2^32.
struct key_extent {
  uint32_t last_row = 0;
  uint32_t last_col = 0;

  bool within(const key_frame& f) const {
    return last_row <= f.last_row() && last_col <= f.last_col();
  }
};

struct key_kernels {
  // Widens *columns by those of the runs.
  void (*widen)(const run_view& runs, key_columns* columns);
  // The runs' keys; of no use when the extent is not within the frame.
  key_extent (*make)(const run_view& runs, const key_frame& frame,
                     const key_list& to);
  // Moves begins and ends by a few columns each, modulo 2^32.
  void (*move)(const key_list& keys, uint32_t begins, uint32_t ends);
  // Whether the intervals ascend and no two of them touch.
  bool (*are_apart)(const key_list& keys);
  // Sorts the begins of both, and the ends; to.count is the sum of the counts.
  void (*merge)(const key_list& a, const key_list& b, const key_list& to);
  // Writes runs (up to kRunSlack entries more) and returns their number.
  size_t (*write_united)(const key_list& keys, const key_frame& frame,
                         int32_t* rows, int32_t* begins, int32_t* ends);
  size_t (*write_common)(const key_list& keys, size_t lists,
                         const key_frame& frame, int32_t* rows, int32_t* begins,
                         int32_t* ends);
  // Chords to runs, and back with fourth words of 0. split() returns the fourth
  // words united bit by bit.
  int32_t (*split)(const chord* chords, size_t count, int32_t* rows,
                   int32_t* begins, int32_t* ends);
  void (*join)(const int32_t* rows, const int32_t* begins, const int32_t* ends,
               size_t count, chord* chords);
};

const key_kernels& current_key_kernels();
#ifdef VEXO_X86_VECTORS
extern const key_kernels kKeyKernelsAvx2;
extern const key_kernels kKeyKernelsAvx512;
#endif

// Room for some lists, kept from one use to the next.
class key_room {
 public:
  // Lists 0..lists - 1, each of up to `most` keys.
  void ensure(size_t lists, size_t most);
  // List i; the slack behind its keys is filled in.
  key_list list(size_t i, size_t count) const;

 private:
  buffer<uint32_t> memory_;
  size_t stride_ = 0;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_RUN_KEYS_H_
