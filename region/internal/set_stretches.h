// SPDX-License-Identifier: MIT
//
// Two lists of runs walked side by side, in either form: in pieces for threads,
// and in stretches of whole rows, short enough for the caches.
#ifndef VEXO_REGION_INTERNAL_SET_STRETCHES_H_
#define VEXO_REGION_INTERNAL_SET_STRETCHES_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "region/internal/bit_rows.h"
#include "region/internal/parallel.h"
#include "region/internal/views.h"

namespace vexo::internal {

// Runs first..last - 1 of a list.
template <class View>
struct stretch {
  const View& runs;
  size_t first;
  size_t last;

  size_t count() const { return last - first; }
  bool done() const { return first == last; }
  int32_t row() const { return runs.row(first); }
  int32_t begin() const { return runs.begin(first); }
  int32_t end() const { return runs.end(first); }
};

inline size_t end_of_row(const stretch<run_view>& s, size_t i) {
  return kernels().row_end(s.runs.rows, i, s.last);
}
inline size_t end_of_row(const stretch<chord_view>& s, size_t i) {
  const int32_t row = s.runs.row(i);
  while (i < s.last && s.runs.row(i) == row) ++i;
  return i;
}

// The first of runs first..last - 1 with a row from `row` on.
template <class View>
size_t find_row(const View& runs, size_t first, size_t last, int64_t row) {
  while (first < last) {
    const size_t middle = first + (last - first) / 2;
    if (runs.row(middle) < row) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  return first;
}

// Runs of either list that are combined at once, and the rest of their row.
constexpr size_t kStretchRuns = 512;

// The row of the last of them.
template <class View>
int32_t likely_row(const stretch<View>& s) {
  return s.runs.row(std::min(s.first + kStretchRuns, s.last) - 1);
}

// Takes the rows up to `row`, which is not above likely_row(*s).
template <class View>
stretch<View> take_until(stretch<View>* s, int32_t row) {
  const size_t first = s->first;
  const size_t likely = std::min(first + kStretchRuns, s->last);
  s->first = s->runs.row(likely - 1) <= row
                 ? end_of_row(*s, likely - 1)
                 : find_row(s->runs, first, likely, int64_t{row} + 1);
  return {s->runs, first, s->first};
}

// work(piece of a, piece of b, &part) for pieces of whole rows, each with about
// as many runs, side by side.
template <class Part, class View, class Work>
std::vector<Part> combine_pieces(const View& a, const View& b, Work work) {
  const View& larger = a.count >= b.count ? a : b;
  const size_t pieces = piece_count(larger.count, 16384);
  // In either list; ascending even if the rows are not.
  std::vector<size_t> begins_a{0}, begins_b{0};
  int64_t row = INT64_MIN;
  for (size_t p = 1; p < pieces; ++p) {
    const size_t first = piece_begin(larger.count, pieces, p);
    row = std::max<int64_t>(row, larger.row(first));
    begins_a.push_back(find_row(a, begins_a.back(), a.count, row));
    begins_b.push_back(find_row(b, begins_b.back(), b.count, row));
  }
  begins_a.push_back(a.count);
  begins_b.push_back(b.count);
  std::vector<Part> parts;
  while (parts.size() < pieces) parts.emplace_back(size_t{0});
  parallel_for(pieces, [&](size_t p) {
    work(stretch<View>{a, begins_a[p], begins_a[p + 1]},
         stretch<View>{b, begins_b[p], begins_b[p + 1]}, &parts[p]);
  });
  return parts;
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_SET_STRETCHES_H_
