// SPDX-License-Identifier: MIT
//
// A gap is what lies between two neighbouring runs of a row. Gaps that share a
// column in neighbouring rows belong together; so do all that share one with
// the outside, which is everything left of a row's first run, right of its last
// run, and every row without runs. What does not belong to the outside is a
// hole. This is the same as labelling the background inside the bounding box,
// without building it.
#include <cstring>

#include "region/internal/label_sets.h"
#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/views.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::label_sets;

constexpr int32_t kOutside = 0;  // the first set
constexpr int32_t kNone = -1;    // runs that touch have no gap between them

// The runs first..last - 1 of a row; gap i lies before run i.
struct row_range {
  size_t first;
  size_t last;
};

// Labels of the gaps: one entry a run, that of each row's first run unused.
template <class View>
class gap_labels {
 public:
  explicit gap_labels(const View& runs)
      : runs_(runs), labels_(runs.count), sets_(runs.count + 1) {
    sets_.make();  // kOutside
    row_range above{0, 0};
    for (size_t i = 0; i < runs.count;) {
      const row_range row{i, internal::row_end(runs, i)};
      if (i > 0 && int64_t{runs.row(i - 1)} + 1 == runs.row(i)) {
        label_row(above, row);
      } else {
        open_bottom(above);
        open_top(row);
      }
      above = row;
      i = row.last;
    }
    open_bottom(above);
    sets_.number_sets();
  }

  // Whether gap i separates two runs of the result.
  bool separates(size_t i) const {
    return labels_[i] != kNone && sets_.number(labels_[i]) == kOutside;
  }

 private:
  static constexpr int64_t kFar = int64_t{1} << 40;  // beyond every column

  bool touching(size_t i) const {
    return int64_t{runs_.end(i - 1)} + 1 >= runs_.begin(i);
  }

  // Gap i of a row: `first` and `last` stand for what lies left and right of
  // all its runs.
  int64_t gap_begin(const row_range& row, size_t i) const {
    return i == row.first ? -kFar : int64_t{runs_.end(i - 1)} + 1;
  }
  int64_t gap_end(const row_range& row, size_t i) const {
    return i == row.last ? kFar : int64_t{runs_.begin(i)} - 1;
  }
  bool inner(const row_range& row, size_t i) const {
    return i != row.first && i != row.last;
  }

  void label_row(const row_range& above, const row_range& row) {
    size_t j = above.first;
    for (size_t i = row.first; i <= row.last; ++i) {
      if (inner(row, i) && touching(i)) {
        labels_[i] = kNone;
        continue;
      }
      const int32_t own = inner(row, i) ? kNone : kOutside;
      const int32_t label =
          label_gap(above, gap_begin(row, i), gap_end(row, i), own, &j);
      if (inner(row, i)) labels_[i] = label;
    }
  }

  // Unites the gaps above that share a column with begin..end, from gap *j on,
  // with the set `label`; makes one if there is none yet.
  int32_t label_gap(const row_range& above, int64_t begin, int64_t end,
                    int32_t label, size_t* j) {
    while (gap_end(above, *j) < begin) ++*j;
    for (;; ++*j) {
      if (gap_begin(above, *j) > end) break;
      const int32_t other = inner(above, *j) ? labels_[*j] : kOutside;
      if (label == kNone) {
        label = other;
      } else if (other != kNone && other != label) {
        label = sets_.unite(label, other);
      }
      if (gap_end(above, *j) >= end) break;
    }
    return label == kNone ? sets_.make() : label;
  }

  // Above this row there is nothing.
  void open_top(const row_range& row) {
    for (size_t i = row.first + 1; i < row.last; ++i) {
      labels_[i] = touching(i) ? kNone : kOutside;
    }
  }

  // Below this row there is nothing.
  void open_bottom(const row_range& row) {
    for (size_t i = row.first + 1; i < row.last; ++i) {
      if (labels_[i] != kNone) sets_.unite(labels_[i], kOutside);
    }
  }

  const View& runs_;
  buffer<int32_t> labels_;
  label_sets sets_;
};

// Calls emit(row, begin, end) for the runs of the filled region, in order.
template <class View, class Emit>
void fill_gaps(const View& runs, const gap_labels<View>& gaps, Emit emit) {
  size_t first = 0;
  for (size_t i = 1; i <= runs.count; ++i) {
    if (i < runs.count && runs.row(i) == runs.row(first) &&
        !gaps.separates(i)) {
      continue;
    }
    emit(runs.row(first), runs.begin(first), runs.end(i - 1));
    first = i;
  }
}

void carry_image_size(const region& input, region* result) {
  result->width = input.width;
  result->height = input.height;
}

}  // namespace

void fill_up(region& input, region* result) {
  const auto runs = internal::chords_of(input);
  if (runs.count == 0 || input.child_count > 0) return;
  internal::chord_buffer filled(runs.count);
  fill_gaps(runs, gap_labels(runs),
            [&](int32_t row, int32_t begin, int32_t end) {
              filled.push({begin, end, row, 0});
            });
  carry_image_size(input, result);
  filled.move_to(result);
}

void fill_up_y(const region& input, region* result) {
  const auto runs = internal::runs_of(input);
  if (runs.count == 0 || input.child_count > 0) return;
  internal::run_buffer filled(runs.count);
  fill_gaps(runs, gap_labels(runs),
            [&](int32_t row, int32_t begin, int32_t end) {
              filled.push(row, begin, end);
            });
  carry_image_size(input, result);
  filled.move_to(result);
}

void fill_up_y2(const region& input, region* result) {
  fill_up_y(input, result);
}

}  // namespace vexo
