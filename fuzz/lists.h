// SPDX-License-Identifier: MIT
//
// What the region fuzzers share: the input's bytes, a failure that ends the
// program, and regions as plain lists of runs.
#ifndef RENDAL_FUZZ_LISTS_H_
#define RENDAL_FUZZ_LISTS_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fuzz/grid.h"
#include "region/region.h"

namespace fuzz {

inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "region_fuzz: %s\n", what);
  std::abort();
}

class Bytes {
 public:
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  int next() { return position_ < size_ ? data_[position_++] : 0; }
  int between(int low, int high) { return low + next() % (high - low + 1); }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t position_ = 0;
};

struct Run {
  int row, begin, end;
  bool operator==(const Run& other) const = default;
};

inline std::vector<Run> runs_of(const Grid& grid) {
  std::vector<Run> runs;
  grid.each([&](int row, int col) {
    if (!runs.empty() && runs.back().row == row && runs.back().end == col - 1)
      runs.back().end = col;
    else
      runs.push_back({row, col, col});
  });
  return runs;
}

inline std::vector<Run> runs_of(const vexo::region& r) {
  std::vector<Run> runs;
  for (size_t i = 0; i < r.run_count; ++i)
    runs.push_back({r.rows[i], r.col_begins[i], r.col_ends[i]});
  return runs;
}

inline std::vector<Run> chords_of(const vexo::region& r) {
  std::vector<Run> runs;
  for (int i = 0; i < r.chord_count; ++i)
    runs.push_back(
        {r.chords[i].row, r.chords[i].col_begin, r.chords[i].col_end});
  return runs;
}

// Both forms of an empty region.
inline void fill(vexo::region& r, const std::vector<Run>& runs) {
  r.reserve(runs.size());
  for (const Run& run : runs) {
    r.rows[r.run_count] = run.row;
    r.col_begins[r.run_count] = run.begin;
    r.col_ends[r.run_count] = run.end;
    ++r.run_count;
  }
  r.to_3();
}

}  // namespace fuzz

#endif  // RENDAL_FUZZ_LISTS_H_
