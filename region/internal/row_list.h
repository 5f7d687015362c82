// SPDX-License-Identifier: MIT
//
// The rows that hold runs. Takes 16 bytes a row that holds runs, however far
// apart the rows are.
#ifndef VEXO_REGION_INTERNAL_ROW_LIST_H_
#define VEXO_REGION_INTERNAL_ROW_LIST_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "region/internal/bit_rows.h"
#include "region/internal/memory.h"
#include "region/internal/views.h"

namespace vexo::internal {

struct row_entry {
  int64_t row;
  size_t first;  // its first run; the next entry's is one past its last
};

class row_list {
 public:
  explicit row_list(const run_view& runs) : entries_(most_rows(runs) + 1) {
    // Of few runs a row, all are looked at: where a row ends comes as a
    // surprise to the branch predictor.
    constexpr size_t kFewRuns = 16;
    if (runs.count < kFewRuns * (entries_.size() - 1)) {
      add_each(runs);
    } else {
      add_by_search(runs);
    }
    entries_[count_] = {INT64_MAX, runs.count};
  }

  size_t count() const { return count_; }
  // INT64_MAX at the end.
  int64_t row(size_t i) const { return entries_[i].row; }
  size_t first(size_t i) const { return entries_[i].first; }
  size_t last(size_t i) const { return entries_[i + 1].first; }
  // The first one not above `row`; count() when all are above it.
  size_t find(int64_t row) const {
    size_t low = 0;
    size_t high = count();
    while (low < high) {
      const size_t middle = low + (high - low) / 2;
      if (entries_[middle].row < row) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }

 private:
  static size_t most_rows(const run_view& runs) {
    if (runs.count == 0) return 0;
    const int64_t height =
        int64_t{runs.rows[runs.count - 1]} - runs.rows[0] + 1;
    return std::min(runs.count, static_cast<size_t>(height));
  }

  // Writes every run where the next row begins; stays there if it is of the
  // row before.
  void add_each(const run_view& runs) {
    int64_t above = INT64_MIN;
    for (size_t i = 0; i < runs.count; ++i) {
      entries_[count_] = {runs.rows[i], i};
      count_ += runs.rows[i] != above;
      above = runs.rows[i];
    }
  }

  void add_by_search(const run_view& runs) {
    const bit_kernels& k = kernels();
    for (size_t i = 0; i < runs.count;) {
      entries_[count_++] = {runs.rows[i], i};
      i = k.row_end(runs.rows, i, runs.count);
    }
  }

  buffer<row_entry> entries_;
  size_t count_ = 0;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_LIST_H_
