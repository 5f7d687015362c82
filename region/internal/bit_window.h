// SPDX-License-Identifier: MIT
//
// The rows of a window that slides down a picture, united or intersected bit by
// bit: sums of 1, 2, 4, ... rows, each from two of the sums before, and two of
// the largest for the window itself.
#ifndef VEXO_REGION_INTERNAL_BIT_WINDOW_H_
#define VEXO_REGION_INTERNAL_BIT_WINDOW_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "region/internal/bit_lines.h"

namespace vexo::internal {

class bit_window {
 public:
  // What a row costs, in merges of one row into another.
  static size_t steps(size_t height) { return 2 * doublings(height) + 3; }

  // At least two rows high. Above the first row lie rows of zeros.
  bit_window(size_t height, size_t words)
      : words_(words),
        doublings_(doublings(height)),
        rest_(height - (size_t{1} << doublings_)),
        lines_(height + 1, words) {
    // Of 2^k rows the last 2^k sums are kept, of the largest the last rest_.
    for (size_t i = 0; i <= height; ++i) free_.push_back(lines_.line(i));
    for (size_t k = 0; k < doublings_; ++k) keep(size_t{1} << k);
    keep(rest_);
  }

  // The next row. The window that ends there is whole() joined with
  // earlier(), which is null when there is no need for it.
  template <typename Join>
  void push(const uint64_t* row, Join join) {
    uint64_t* sum = free_[0];
    uint64_t* spare = free_[1];
    std::memcpy(sum, row, words_ * sizeof(uint64_t));
    for (size_t k = 0; k < doublings_; ++k) {
      uint64_t*& old = kept_[k][place_ & ((size_t{1} << k) - 1)];
      join(sum, old, spare, words_);
      std::swap(old, sum);    // this sum is kept,
      std::swap(sum, spare);  // the next one goes on
    }
    whole_ = sum;
    earlier_ = nullptr;
    if (rest_ > 0) {
      uint64_t*& old = kept_[doublings_][place_ % rest_];
      earlier_ = old;
      std::swap(old, sum);
    }
    free_ = {sum, spare};
    ++place_;
  }
  // A row of no matter to any window that will be looked at.
  void skip() { ++place_; }

  const uint64_t* whole() const { return whole_; }
  const uint64_t* earlier() const { return earlier_; }

 private:
  static size_t doublings(size_t height) {
    return static_cast<size_t>(std::bit_width(height)) - 1;
  }
  void keep(size_t sums) {
    kept_.emplace_back(free_.end() - static_cast<ptrdiff_t>(sums), free_.end());
    free_.resize(free_.size() - sums);
  }

  size_t words_;
  size_t doublings_;
  size_t rest_;
  bit_lines lines_;
  std::vector<uint64_t*> free_;
  std::vector<std::vector<uint64_t*>> kept_;  // in rings
  size_t place_ = 0;
  const uint64_t* whole_ = nullptr;
  const uint64_t* earlier_ = nullptr;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_BIT_WINDOW_H_
