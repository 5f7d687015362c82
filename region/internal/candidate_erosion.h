// SPDX-License-Identifier: MIT
//
// Erosion where little is left: the source runs that the element's longest run
// fits into give candidates, and its other runs take away from these, those of
// rows far apart first, since they disagree most.
#ifndef VEXO_REGION_INTERNAL_CANDIDATE_EROSION_H_
#define VEXO_REGION_INTERNAL_CANDIDATE_EROSION_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "region/internal/element.h"
#include "region/internal/row_list.h"
#include "region/internal/runs.h"

namespace vexo::internal {

class candidate_erosion {
 public:
  // Results must fit into 32 bits. The element is not mirrored.
  candidate_erosion(const run_view& source, const row_list& rows,
                    const element_runs& element);

  // Writes the result to *out. False, and nothing written, when that takes
  // more than two thirds of the nanoseconds that other ways take, by what
  // becomes of a few candidates; about a twentieth of them is lost then.
  bool run(double others, run_buffer* out);

 private:
  struct interval {
    int32_t row;
    int32_t begin;
    int32_t end;
  };

  void order_runs();
  double estimate(double others);
  size_t begin(size_t step, size_t each_of);
  interval moved(size_t i, const element_run& run) const;
  void reduce_by(const element_run& run);
  size_t first_reaching(size_t first, size_t last, int64_t column) const;

  const run_view& source_;
  const row_list& rows_;
  const element_runs& element_;
  std::vector<element_run> order_;  // the longest one first
  std::vector<interval> candidates_, reduced_;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_CANDIDATE_EROSION_H_
