// SPDX-License-Identifier: MIT
//
// Dilation and erosion of sparse rows. Runs that lie under one another form
// strips: one run a row, each sharing a column with the next. An element whose
// rows are such a strip as well turns a strip into a strip,
//
//   begin'(y) = min over s of begin(y - s) + element begin(s)
//   end'(y)   = max over s of end(y - s) + element end(s),
//
// because neighbouring terms overlap. So the work on element rows is done on
// whole columns of numbers at once, and only the strips that a result row meets
// are merged, however high the element is. Erosion is the dilation of the
// background, whose runs are the gaps, and the gaps of that.
#ifndef VEXO_REGION_INTERNAL_STRIP_MORPHOLOGY_H_
#define VEXO_REGION_INTERNAL_STRIP_MORPHOLOGY_H_

#include <cstdint>
#include <vector>

#include "region/internal/element.h"
#include "region/internal/row_list.h"
#include "region/internal/runs.h"

namespace vexo::internal {

// An element as one strip: row first_row + i is begins[i]..ends[i].
struct element_strip {
  int64_t first_row = 0;
  std::vector<int32_t> begins;
  std::vector<int32_t> ends;

  // Empty when the element is no strip.
  explicit element_strip(const element_runs& element);
  bool empty() const { return begins.empty(); }
  size_t height() const { return begins.size(); }
  int64_t last_row() const {
    return first_row + static_cast<int64_t>(height()) - 1;
  }
};

// The strips that matter to rows first_row..last_row of a result. Coordinates
// must stay far from the ends of 32 bits.
class strip_band {
 public:
  enum class of { runs, gaps };

  strip_band(const run_view& source, const row_list& rows, of which,
             const element_strip& element, int64_t first_row, int64_t last_row);

  size_t strips() const { return strips_.size(); }
  size_t intervals() const { return begins_.size(); }

  // The dilation of the runs, or what the dilation of the gaps leaves.
  void append_result(run_buffer* out);

 private:
  struct strip {
    int64_t first_row;  // of the source, later of the result
    size_t length;
    size_t offset;  // of its first row in the columns
  };
  // A strip at the result row at hand: where its begin and end stand.
  struct front {
    int32_t begin;
    size_t at;
    size_t last;  // one past
  };

  void add_row(int64_t row, size_t first, size_t last);
  void add_interval(int32_t begin, int32_t end, int64_t row);
  void link_rows();
  void sort_into_columns();
  void dilate_columns();
  void meet_new_fronts(int64_t row);
  void sort_fronts();
  void append_row(int64_t row, run_buffer* out);

  const run_view& source_;
  const of which_;
  const element_strip& element_;
  const int64_t first_row_, last_row_;

  // Intervals of the source rows, and the strip of each.
  std::vector<int32_t> begins_, ends_;
  std::vector<uint32_t> owners_;
  std::vector<size_t> row_firsts_;  // and one past the last
  std::vector<int64_t> row_numbers_;
  std::vector<strip> strips_;

  // Begins and ends strip after strip: of the source, then of the result.
  std::vector<int32_t> column_begins_, column_ends_;
  std::vector<front> fronts_, merged_;
  size_t next_strip_ = 0;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_STRIP_MORPHOLOGY_H_
