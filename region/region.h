// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_REGION_H_
#define VEXO_REGION_REGION_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <tuple>

namespace vexo {

namespace internal {
class child_block;
}

// One run: the pixels col_begin..col_end (inclusive) of one row. The label is
// 0 except in the result of a labelling. Ordered by row, col_begin, col_end.
struct chord {
  int32_t col_begin;
  int32_t col_end;
  int32_t row;
  int32_t label;
};
static_assert(sizeof(chord) == 16);

// A set of pixels held as runs, in two forms that live side by side:
//
//   run arrays    rows[i], col_begins[i], col_ends[i] for i < run_count;
//                 operations ending in _y and the compositions read and write
//                 these
//   chord array   chords[i] for i < chord_count; the other operations read and
//                 write these
//
// to_3() and from_3() fill one form from the other. Operations expect the runs
// of either form in row-major order, those of one row disjoint.
//
// Fields are public and plain. A feature holds -1 until compute_features()
// (or a labelling, for its children) has filled it; width and height hold -1
// until an operation that knows the image has set them.
//
// Sharing: a copy copies the pointers and counts itself in *ref_count; the last
// one destroyed frees everything, children included. The count is not atomic:
// copy, assign and destroy the copies of one region on one thread. reserve(),
// to_3() and from_3() move the storage of one object only, so complete a region
// before copying it and write results into fresh regions. All arrays, *chords
// and children come from malloc; the child objects from new.
//
// Every member that allocates throws std::runtime_error with the text
// "malloc failed" or "realloc failed", and nothing else.
class region {
 public:
  size_t run_count;
  int32_t* rows;
  int32_t* col_begins;
  int32_t* col_ends;  // inclusive
  int32_t bbox[4];    // min row, min col, max row, max col
  // Centre col, centre row, rectangle half length 1, rectangle half length 2,
  // ra, rb, phi (degrees), (not written).
  double reals[8];
  chord* chords;
  int32_t chord_count;
  int32_t area;          // pixels; 2147483647 also stands for more
  double more_reals[3];  // rectangle angle (degrees), (spare), circularity
  int32_t width;         // of the image, -1 when not known
  int32_t height;
  int32_t child_count;
  region** children;
  int32_t* ref_count;  // shared by the copies; not atomic
  size_t capacity;     // entries in each of the three run arrays

  // No runs, room for 2000.
  region();
  // No runs, room for `capacity`; no run arrays at all when it is not positive.
  explicit region(int32_t capacity);
  // Shares the storage of `other`.
  region(const region& other);
  // Shares the storage of `other`. When this was the last owner of its own
  // storage, the run arrays, the count and the array `children` are freed; the
  // chord array and the child regions are not. Deliberate: assignment is
  // lighter than destruction, so do not assign over a region that owns any.
  region& operator=(const region& other);
  // The last owner frees the run arrays, the chord array, the count, the
  // children that are not null and the array of children.
  ~region();

  // Makes room for n runs; never shrinks. The runs are kept.
  void reserve(size_t n);
  // Fills the chord array from the run arrays. Nothing happens without runs.
  // Labels are left as they are: 0 in a fresh array.
  void to_3();
  // Fills the run arrays from the chord array. Nothing happens without chords.
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

  // Children of one labelling share one allocation; delete finds out whether
  // `r` is one of them.
  static void operator delete(region* r, std::destroying_delete_t);
  static void operator delete(void* memory) noexcept;
  static void* operator new(size_t bytes);
  static void* operator new(size_t bytes, const std::nothrow_t&) noexcept;
  static void* operator new(size_t, void* place) noexcept { return place; }

 private:
  friend class internal::child_block;
  explicit region(int32_t* count) noexcept;
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
