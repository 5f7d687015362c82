// SPDX-License-Identifier: MIT
#include "region/internal/runs.h"

namespace vexo::internal {

chord_buffer to_chords(const run_view& runs) {
  if (runs.count > kMaxChords) throw_realloc_failed();
  chord_buffer chords(runs.count);
  for (size_t i = 0; i < runs.count; ++i)
    chords.data()[i] = {runs.begins[i], runs.ends[i], runs.rows[i], 0};
  chords.set_size(runs.count);
  return chords;
}

run_buffer to_runs(const chord* chords, int32_t count) {
  const size_t n = static_cast<size_t>(std::max(count, 0));
  run_buffer runs(n);
  for (size_t i = 0; i < n; ++i) {
    runs.rows()[i] = chords[i].row;
    runs.begins()[i] = chords[i].col_begin;
    runs.ends()[i] = chords[i].col_end;
  }
  runs.set_size(n);
  return runs;
}

}  // namespace vexo::internal
