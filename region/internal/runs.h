// SPDX-License-Identifier: MIT
//
// What the operations that build runs share: appending with joining, and the
// way between the two storage forms.
#ifndef VEXO_REGION_INTERNAL_RUNS_H_
#define VEXO_REGION_INTERNAL_RUNS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <vector>

#include "region/internal/memory.h"
#include "region/internal/views.h"
#include "region/region.h"

namespace vexo::internal {

inline run_view view_of(const run_buffer& runs) {
  return {runs.rows(), runs.begins(), runs.ends(), runs.size()};
}

// Appends a run that starts no earlier than the last one; if it overlaps or
// touches the last one, that one grows instead.
inline void push_joined(int32_t row, int32_t begin, int32_t end,
                        run_buffer* out) {
  const size_t n = out->size();
  if (n > 0 && out->rows()[n - 1] == row &&
      begin <= int64_t{out->ends()[n - 1]} + 1) {
    out->ends()[n - 1] = std::max(out->ends()[n - 1], end);
  } else {
    out->push(row, begin, end);
  }
}

// A copy in the other form. Fourth words are 0.
chord_buffer to_chords(const run_view& runs);
run_buffer to_runs(const chord* chords, int32_t count);

// The runs of all parts, one after the other.
run_buffer joined(std::vector<run_buffer> parts);
chord_buffer joined(std::vector<chord_buffer> parts);

// Runs as the fast forms need them: ordered, apart, none inverted. Usually
// those of the caller; else a copy, put in order and joined, so that careless
// input costs time and nothing else.
class canonical_runs {
 public:
  explicit canonical_runs(const run_view& runs);
  const run_view& view() const { return view_; }

 private:
  run_buffer copy_;
  run_view view_;
};

inline void copy_image_size(const region& source, region* result) {
  result->width = source.width;
  result->height = source.height;
}

// Runs `work`; what the standard library throws for want of memory leaves as
// the library's own error.
template <typename Work>
void with_region_errors(Work&& work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    throw_malloc_failed();
  } catch (const std::length_error&) {
    throw_malloc_failed();
  }
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_RUNS_H_
