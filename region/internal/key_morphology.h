// SPDX-License-Identifier: MIT
//
// Dilation and erosion by up to three runs that reach one column to either
// side, as of a rectangle or a cross of three: the source, moved by each run,
// is united or intersected as sorted keys.
#ifndef VEXO_REGION_INTERNAL_KEY_MORPHOLOGY_H_
#define VEXO_REGION_INTERNAL_KEY_MORPHOLOGY_H_

#include <cstdint>

#include "region/internal/element.h"
#include "region/internal/row_list.h"
#include "region/internal/run_keys.h"
#include "region/internal/runs.h"

namespace vexo::internal {

class key_morphology {
 public:
  enum class of { unions, intersections };

  // Whether the element is one of these.
  static bool possible(const element_runs& element);

  // Columns are those of the source. The element of an erosion comes mirrored.
  key_morphology(const run_view& source, const row_list& rows,
                 const element_runs& element, of which,
                 const key_columns& columns);

  // Appends rows first_row..last_row of the result. False, and *out as it was,
  // when rows or columns lie too far apart for keys.
  bool append(int64_t first_row, int64_t last_row, run_buffer* out);

 private:
  int64_t last_of_stretch(int64_t first_row, int64_t last_row) const;
  bool append_stretch(int64_t first_row, int64_t last_row, run_buffer* out);
  run_view runs_between(int64_t first_row, int64_t last_row) const;
  bool make_keys(const element_run& step, int64_t first_row,
                 const run_view& runs, const key_list& keys);
  void write(const key_list& keys, int64_t first_row, run_buffer* out);

  const run_view& source_;
  const row_list& rows_;
  const element_runs& element_;
  const of which_;
  const key_kernels& keys_;
  key_room room_;
  key_frame frame_;
  bool framed_;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_KEY_MORPHOLOGY_H_
