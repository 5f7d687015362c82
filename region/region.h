// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_REGION_H_
#define VEXO_REGION_REGION_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <tuple>

namespace vexo {

// One run: the pixels col_begin..col_end (inclusive) of one row.
struct chord {
  int32_t col_begin;
  int32_t col_end;
  int32_t row;
  int32_t label;
};
static_assert(sizeof(chord) == 16);

// A set of pixels held as runs, in two forms that live side by side: three run
// arrays and a chord array. Copies share storage through a plain (not atomic)
// count: copy and destroy the copies of one region on one thread only.
class region {
 public:
  size_t run_count;
  int32_t* rows;
  int32_t* col_begins;
  int32_t* col_ends;
  int32_t bbox[4];  // min row, min col, max row, max col
  // Centre col, centre row, rectangle half length 1, rectangle half length 2,
  // ra, rb, phi (degrees), (not written).
  double reals[8];
  chord* chords;
  int32_t chord_count;
  int32_t area;
  double more_reals[3];  // rectangle angle (degrees), (spare), circularity
  int32_t width;
  int32_t height;
  int32_t child_count;
  region** children;
  int32_t* ref_count;
  size_t capacity;

  region();
  explicit region(int32_t capacity);
  region(const region& other);
  region& operator=(const region& other);
  ~region();

  void reserve(size_t n);
  void to_3();
  void from_3();

  double center_col() const { return reals[0]; }
  double center_row() const { return reals[1]; }
  double rect_half_length1() const { return reals[2]; }
  double rect_half_length2() const { return reals[3]; }
  double ra() const { return reals[4]; }
  double rb() const { return reals[5]; }
  double phi() const { return reals[6]; }
  double rect_angle() const { return more_reals[0]; }
  double circularity() const { return more_reals[2]; }
};

}  // namespace vexo

// Row first, then begin, then end.
template <>
struct std::less<vexo::chord> {
  bool operator()(const vexo::chord& a, const vexo::chord& b) const {
    return std::tie(a.row, a.col_begin, a.col_end) <
           std::tie(b.row, b.col_begin, b.col_end);
  }
};

#endif  // VEXO_REGION_REGION_H_
