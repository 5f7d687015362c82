// SPDX-License-Identifier: MIT
//
// The convex hull of a region's pixel centres.
#ifndef VEXO_REGION_INTERNAL_HULL_H_
#define VEXO_REGION_INTERNAL_HULL_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"
#include "region/internal/views.h"

namespace vexo::internal {

// Corners relative to the bounding box's first column and row, each a strict
// left turn (columns right, rows down). Two when all pixels lie on a line. The
// first corner stands again behind the last; kSlack entries can be read.
struct hull {
  static constexpr size_t kSlack = 8;

  const double* x;
  const double* y;
  size_t size;
};

// Grows to the tallest region that it has been used for. Small ones take none
// from the heap.
class hull_memory {
 public:
  void ensure(size_t n) {
    if (n <= kSmall) return;
    x_.ensure(n);
    y_.ensure(n);
  }
  double* x() { return x_.size() > 0 ? x_.data() : small_x_; }
  double* y() { return y_.size() > 0 ? y_.data() : small_y_; }

 private:
  static constexpr size_t kSmall = 128;
  double small_x_[kSmall], small_y_[kSmall];
  buffer<double> x_, y_;
};

namespace hull_detail {

// Both chains of corners: down the right ends of the rows, up their left ends.
class builder {
 public:
  builder(double* x, double* y) : x_(x), y_(y) {}

  void push(double x, double y) {
    while (size_ >= chain_ + 2 && !left_turn(x, y)) --size_;
    x_[size_] = x;
    y_[size_] = y;
    ++size_;
  }
  void start_second_chain() { chain_ = size_; }

  // The chains may share their first and their last corners.
  hull close() {
    if (x_[size_ - 1] == x_[0] && y_[size_ - 1] == y_[0]) --size_;
    if (chain_ < size_ && x_[chain_] == x_[chain_ - 1] &&
        y_[chain_] == y_[chain_ - 1]) {
      std::copy(x_ + chain_ + 1, x_ + size_, x_ + chain_);
      std::copy(y_ + chain_ + 1, y_ + size_, y_ + chain_);
      --size_;
    }
    x_[size_] = x_[0];
    y_[size_] = y_[0];
    return {x_, y_, size_};
  }

 private:
  bool left_turn(double x, double y) const {
    const double ax = x_[size_ - 1] - x_[size_ - 2];
    const double ay = y_[size_ - 1] - y_[size_ - 2];
    return ax * (y - y_[size_ - 1]) - ay * (x - x_[size_ - 1]) > 0;
  }

  double* x_;
  double* y_;
  size_t size_ = 0;
  size_t chain_ = 0;
};

}  // namespace hull_detail

// runs: at least one, rows in order. Only the outermost ends of a row can be
// corners. The result lives in `memory` until its next use.
template <class View>
hull hull_of(const View& runs, const int32_t* bbox, hull_memory* memory) {
  const int64_t rows = int64_t{bbox[2]} - bbox[0] + 1;
  const auto most = 2 * std::min(static_cast<size_t>(rows), runs.count) + 2;
  memory->ensure(most);
  hull_detail::builder corners(memory->x(), memory->y());
  const double col0 = bbox[1];
  const double row0 = bbox[0];
  for (size_t i = 0; i < runs.count;) {
    const int32_t row = runs.row(i);
    int32_t end = runs.end(i);
    while (++i < runs.count && runs.row(i) == row) {
      end = std::max(end, runs.end(i));
    }
    corners.push(end - col0, row - row0);
  }
  corners.start_second_chain();
  for (size_t i = runs.count; i > 0;) {
    const int32_t row = runs.row(--i);
    int32_t begin = runs.begin(i);
    while (i > 0 && runs.row(i - 1) == row) {
      begin = std::min(begin, runs.begin(--i));
    }
    corners.push(begin - col0, row - row0);
  }
  return corners.close();
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_HULL_H_
