// SPDX-License-Identifier: MIT
//
// One way to read runs, whichever form holds them: algorithms are written once
// over a view.
#ifndef VEXO_REGION_INTERNAL_VIEWS_H_
#define VEXO_REGION_INTERNAL_VIEWS_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"
#include "region/region.h"

namespace vexo::internal {

struct run_view {
  const int32_t* rows;
  const int32_t* begins;
  const int32_t* ends;
  size_t count;

  int32_t row(size_t i) const { return rows[i]; }
  int32_t begin(size_t i) const { return begins[i]; }
  int32_t end(size_t i) const { return ends[i]; }
};

struct chord_view {
  const chord* chords;
  size_t count;

  int32_t row(size_t i) const { return chords[i].row; }
  int32_t begin(size_t i) const { return chords[i].col_begin; }
  int32_t end(size_t i) const { return chords[i].col_end; }
};

inline run_view runs_of(const region& r) {
  return {r.rows, r.col_begins, r.col_ends, r.run_count};
}

inline chord_view chords_of(const region& r) {
  const int32_t n = r.chord_count;
  return {r.chords, n > 0 ? static_cast<size_t>(n) : 0};
}

// Index one past the last run of the row that run `first` lies in.
template <class View>
size_t row_end(const View& runs, size_t first) {
  const int32_t row = runs.row(first);
  size_t last = first + 1;
  while (last < runs.count && runs.row(last) == row) ++last;
  return last;
}

// The rows that hold runs, in order: row i is runs first(i)..first(i + 1) - 1.
// Takes 8 bytes a row that holds runs, however far apart the rows are.
class row_table {
 public:
  template <class View>
  explicit row_table(const View& runs) : firsts_(count_rows(runs) + 1) {
    size_t rows = 0;
    for (size_t i = 0; i < runs.count; ++i) {
      if (i == 0 || runs.row(i) != runs.row(i - 1)) firsts_[rows++] = i;
    }
    firsts_[rows] = runs.count;
  }

  size_t count() const { return firsts_.size() - 1; }
  size_t first(size_t i) const { return firsts_[i]; }
  size_t last(size_t i) const { return firsts_[i + 1]; }  // one past

 private:
  template <class View>
  static size_t count_rows(const View& runs) {
    size_t rows = runs.count > 0;
    for (size_t i = 1; i < runs.count; ++i) {
      rows += runs.row(i) != runs.row(i - 1);
    }
    return rows;
  }

  buffer<size_t> firsts_;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_VIEWS_H_
