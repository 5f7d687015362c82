// SPDX-License-Identifier: MIT
//
// The convex hull of a region's pixel centres, in 16-bit whole numbers where
// the region is small enough and in real numbers where it is not.
#ifndef VEXO_REGION_INTERNAL_HULL_H_
#define VEXO_REGION_INTERNAL_HULL_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "region/internal/memory.h"
#include "region/internal/views.h"

namespace vexo::internal {

template <class T>
struct point {
  T x;
  T y;
};

using narrow_point = point<int16_t>;
using wide_point = point<double>;

// Extents for which narrow points do, and all sums of two products of their
// differences fit 32 bits.
constexpr int64_t kNarrowExtent = 1 << 14;

// What products of differences are computed in.
template <class T>
using product = std::conditional_t<std::is_same_v<T, int16_t>, int32_t, T>;

// Corners relative to the bounding box's first column and row, each a strict
// left turn (columns right, rows down). Two when all pixels lie on a line.
// Behind the last stands the first, kSlack times.
template <class T>
struct hull {
  static constexpr size_t kSlack = 16;

  const point<T>* corners;
  size_t size;
};

// Memory of one thread for many regions: grows to the tallest of them.
class hull_memory {
 public:
  // Room for a hull of n corners.
  template <class T>
  point<T>* corners(size_t n) {
    buffer<point<T>>& all = points(point<T>());
    all.ensure(n + hull<T>::kSlack);
    return all.data();
  }
  // Room for the right and the left ends of n rows, with what vectors may
  // overrun.
  struct ends {
    int32_t *right, *left;
    narrow_point *right_corners, *left_corners;
  };
  ends row_ends(size_t n) {
    constexpr size_t kOverrun = 16;
    columns_.ensure(2 * (n + kOverrun));
    candidates_.ensure(2 * (n + kOverrun));
    return {columns_.data(), columns_.data() + n + kOverrun, candidates_.data(),
            candidates_.data() + n + kOverrun};
  }

  // The same runs in the other form, until the next use.
  run_view as_runs(const chord_view& chords) {
    const size_t n = chords.count;
    runs_.ensure(3 * n);
    int32_t* const to = runs_.data();
    for (size_t i = 0; i < n; ++i) {
      to[i] = chords.row(i);
      to[n + i] = chords.begin(i);
      to[2 * n + i] = chords.end(i);
    }
    return {to, to + n, to + 2 * n, n};
  }

 private:
  buffer<narrow_point>& points(narrow_point) { return narrow_; }
  buffer<wide_point>& points(wide_point) { return wide_; }

  buffer<narrow_point> narrow_;
  buffer<wide_point> wide_;
  buffer<int32_t> columns_;
  buffer<narrow_point> candidates_;
  buffer<int32_t> runs_;
};

// Both chains of corners: down the right ends of the rows, up their left ends.
template <class T>
class hull_builder {
 public:
  explicit hull_builder(point<T>* corners) : corners_(corners) {}

  void push(point<T> p) {
    while (size_ >= chain_ + 2 && !left_turn(p)) --size_;
    corners_[size_++] = p;
  }
  void start_second_chain() { chain_ = size_; }

  // The chains may share their first and their last corners.
  hull<T> close() {
    if (same(corners_[size_ - 1], corners_[0])) --size_;
    if (chain_ < size_ && same(corners_[chain_], corners_[chain_ - 1])) {
      std::copy(corners_ + chain_ + 1, corners_ + size_, corners_ + chain_);
      --size_;
    }
    std::fill_n(corners_ + size_, hull<T>::kSlack, corners_[0]);
    return {corners_, size_};
  }

 private:
  static bool same(const point<T>& a, const point<T>& b) {
    return a.x == b.x && a.y == b.y;
  }
  bool left_turn(const point<T>& p) const {
    using P = product<T>;
    const point<T>& a = corners_[size_ - 2];
    const point<T>& b = corners_[size_ - 1];
    return P(b.x - a.x) * P(p.y - b.y) - P(b.y - a.y) * P(p.x - b.x) > 0;
  }

  point<T>* corners_;
  size_t size_ = 0;
  size_t chain_ = 0;
};

// runs: at least one, rows in order. Only the outermost ends of a row can be
// corners. The result lives in `memory` until its next use.
template <class T>
hull<T> hull_of(const run_view& runs, const int32_t* bbox,
                hull_memory* memory) {
  const int64_t rows = int64_t{bbox[2]} - bbox[0] + 1;
  const auto most = 2 * std::min(static_cast<size_t>(rows), runs.count) + 2;
  hull_builder<T> builder(memory->corners<T>(most));
  const auto push = [&](int32_t col, int32_t row) {
    builder.push({static_cast<T>(int64_t{col} - bbox[1]),
                  static_cast<T>(int64_t{row} - bbox[0])});
  };
  for (size_t i = 0; i < runs.count;) {
    const int32_t row = runs.row(i);
    int32_t end = runs.end(i);
    while (++i < runs.count && runs.row(i) == row) {
      end = std::max(end, runs.end(i));
    }
    push(end, row);
  }
  builder.start_second_chain();
  for (size_t i = runs.count; i > 0;) {
    const int32_t row = runs.row(--i);
    int32_t begin = runs.begin(i);
    while (i > 0 && runs.row(i - 1) == row) {
      begin = std::min(begin, runs.begin(--i));
    }
    push(begin, row);
  }
  return builder.close();
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_HULL_H_
