// SPDX-License-Identifier: MIT
//
// The rows that hold runs. Takes 16 bytes a row that holds runs, however far
// apart the rows are.
#ifndef VEXO_REGION_INTERNAL_ROW_LIST_H_
#define VEXO_REGION_INTERNAL_ROW_LIST_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "region/internal/bit_rows.h"
#include "region/internal/views.h"

namespace vexo::internal {

struct row_entry {
  int64_t row;
  size_t first;  // its first run; the next entry's is one past its last
};

class row_list {
 public:
  explicit row_list(const run_view& runs) {
    const bit_kernels& k = kernels();
    for (size_t i = 0; i < runs.count;) {
      entries_.push_back({runs.rows[i], i});
      i = k.row_end(runs.rows, i, runs.count);
    }
    entries_.push_back({INT64_MAX, runs.count});
  }

  size_t count() const { return entries_.size() - 1; }
  int64_t row(size_t i) const {
    return entries_[i].row;
  }  // INT64_MAX at the end
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
  std::vector<row_entry> entries_;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_LIST_H_
