// SPDX-License-Identifier: MIT
//
// Dilation and erosion of dense rows, as rows of bits: every source row is
// widened step by step through the element's widths, and each width is merged
// into the rows that the element has it on (van den Boomgaard and van Balen,
// "Methods for fast morphological image transforms using bitmapped binary
// images", CVGIP 54, 1992). Only as many rows as the element is high are held
// as bits at a time.
#ifndef VEXO_REGION_INTERNAL_BIT_MORPHOLOGY_H_
#define VEXO_REGION_INTERNAL_BIT_MORPHOLOGY_H_

#include <cstdint>
#include <vector>

#include "region/internal/element.h"
#include "region/internal/row_list.h"
#include "region/internal/runs.h"

namespace vexo::internal {

// How to get from a source row to everything that the element makes of it.
class bit_plan {
 public:
  struct step {
    bool restart;    // begin again at the source row, moved by `up`
    ptrdiff_t down;  // how far to spread
    ptrdiff_t up;
    size_t first_row, last_row;  // in rows(): where the outcome is merged,
    size_t window;  // or how many rows from rows()[first_row] on have it; or 0
  };

  // Runs of the element around any origin, ordered by row.
  explicit bit_plan(const element_runs& element);

  const std::vector<step>& steps() const { return steps_; }
  const std::vector<int64_t>& rows() const { return rows_; }
  // Rows of bits that are joined or merged for each source row.
  size_t merges() const { return merges_; }
  int64_t min_row() const { return min_row_; }
  int64_t max_row() const { return max_row_; }
  // Column 0 of the steps in the element's own columns, and how far the steps
  // reach from there.
  int64_t origin() const { return origin_; }
  int64_t reach_down() const { return reach_down_; }
  int64_t reach_up() const { return reach_up_; }
  // The longest run of the element and a row that has it.
  int64_t longest() const { return longest_; }
  int64_t longest_row() const { return longest_row_; }

 private:
  void reach_width(int64_t begin, int64_t end);
  void merge_into(const std::vector<int64_t>& rows, size_t window);

  std::vector<step> steps_;
  std::vector<int64_t> rows_;
  size_t merges_ = 0;
  int64_t min_row_, max_row_;
  int64_t origin_;
  int64_t reach_down_ = 0;
  int64_t reach_up_ = 0;
  int64_t longest_ = 0;
  int64_t longest_row_ = 0;
  int64_t begin_ = 0;  // the width reached so far
  int64_t end_ = 0;
};

// Rows `first_row`..`last_row` of a result, appended to *out.
//
// bit_dilate(): united over the plan's runs, source row + element row.
// bit_erode(): intersected over them; the plan is that of the reflected
// element. Coordinates of the result must fit into 32 bits.
void bit_dilate(const run_view& source, const row_list& rows,
                const bit_plan& plan, int64_t first_row, int64_t last_row,
                run_buffer* out);
void bit_erode(const run_view& source, const row_list& rows,
               const bit_plan& plan, int64_t first_row, int64_t last_row,
               run_buffer* out);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_BIT_MORPHOLOGY_H_
