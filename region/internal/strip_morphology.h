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
#include "region/internal/memory.h"
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
  size_t intervals() const { return owners_.size(); }

  // The dilation of the runs, or what the dilation of the gaps leaves.
  void append_result(run_buffer* out);

 private:
  struct strip {
    int64_t first_row;
    int64_t last_row;
    // The columns hold row r of the strip at base + r.
    int64_t base;
  };
  struct row_span {
    int64_t row;
    size_t first;  // of its intervals
    size_t last;   // one past
  };

  void find_rows(const row_list& rows);
  void add_gaps(int64_t row, size_t first, size_t last);
  void link_rows();
  bool continues(const row_span& above, const row_span& now);
  void link(const row_span& above, const row_span& now);
  void sort_into_columns();
  void dilate_columns();
  void admit(int64_t row);
  void dismiss(int64_t row);
  void sort_fronts(size_t n, int64_t row);
  bool append_row(int64_t row, run_buffer* out);

  const of which_;
  const element_strip& element_;
  const int64_t first_row_, last_row_;

  // Intervals of the source rows: the runs themselves, or gaps made here. And
  // the strip that each one is part of.
  const int32_t* begins_;
  const int32_t* ends_;
  std::vector<int32_t> gap_begins_, gap_ends_;
  std::vector<row_span> spans_;
  buffer<uint32_t> owners_;
  std::vector<strip> strips_;

  // Begins and ends strip after strip: of the source, then of the result.
  buffer<int32_t> column_begins_, column_ends_;
  // The strips that the result row at hand meets, in the order of their begins,
  // and the first row that one of them does not reach any more.
  std::vector<strip> fronts_, merged_;
  size_t next_strip_ = 0;
  int64_t next_end_ = 0;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_STRIP_MORPHOLOGY_H_
