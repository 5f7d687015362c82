// SPDX-License-Identifier: MIT
//
// A small raster for the fuzzers: every operation of the region library written
// once more on single pixels, straight from its set definition, with nothing in
// common with the library's own code but the meaning.
#ifndef RENDAL_FUZZ_GRID_H_
#define RENDAL_FUZZ_GRID_H_

#include <algorithm>
#include <bitset>
#include <functional>
#include <vector>

#include "region/region.h"

namespace fuzz {

// Rows and columns kLow .. kHigh - 1. Regions that the fuzzers build stay so
// far inside that no operation of theirs reaches the rim.
constexpr int kLow = -40;
constexpr int kHigh = 72;
constexpr int kSide = kHigh - kLow;

struct Pixel {
  int row;
  int col;
};

class Grid {
 public:
  bool at(int row, int col) const {
    return inside(row, col) && bits_[index(row, col)];
  }
  void set(int row, int col) {
    if (inside(row, col)) bits_.set(index(row, col));
  }
  bool any() const { return bits_.any(); }
  size_t count() const { return bits_.count(); }
  bool operator==(const Grid& other) const = default;

  Grid operator|(const Grid& b) const { return Grid(bits_ | b.bits_); }
  Grid operator&(const Grid& b) const { return Grid(bits_ & b.bits_); }
  Grid operator-(const Grid& b) const { return Grid(bits_ & ~b.bits_); }

  // Calls f(row, col) for the pixels in row-major order.
  template <class F>
  void each(F f) const {
    for (size_t i = bits_._Find_first(); i < bits_.size();
         i = bits_._Find_next(i))
      f(static_cast<int>(i) / kSide + kLow, static_cast<int>(i) % kSide + kLow);
  }

  Grid() = default;

 private:
  using Bits = std::bitset<static_cast<size_t>(kSide) * kSide>;
  explicit Grid(const Bits& bits) : bits_(bits) {}
  static bool inside(int row, int col) {
    return row >= kLow && row < kHigh && col >= kLow && col < kHigh;
  }
  static size_t index(int row, int col) {
    return static_cast<size_t>(row - kLow) * kSide + (col - kLow);
  }
  Bits bits_;
};

struct Box {
  int min_row = kHigh, min_col = kHigh, max_row = kLow - 1, max_col = kLow - 1;
};

inline Box box_of(const Grid& grid) {
  Box box;
  grid.each([&](int row, int col) {
    box.min_row = std::min(box.min_row, row);
    box.max_row = std::max(box.max_row, row);
    box.min_col = std::min(box.min_col, col);
    box.max_col = std::max(box.max_col, col);
  });
  return box;
}

// The element's pixels as offsets from its reference point.
std::vector<Pixel> offsets(const Grid& element, int ref_row, int ref_col);

Grid dilate(const Grid& source, const std::vector<Pixel>& element);
Grid erode(const Grid& source, const std::vector<Pixel>& element);
Grid clip(const Grid& source, int width, int height);
Grid fill_holes(const Grid& source);
// Components in the order of their first pixels; 4- or 8-connected.
std::vector<Grid> components(const Grid& source, bool diagonal);
// Pixels of each 8-connected component next to the ground outside of it.
Grid outer_contours(const Grid& source);

}  // namespace fuzz

#endif  // RENDAL_FUZZ_GRID_H_
