// SPDX-License-Identifier: MIT
//
// The loops over run keys that every vector width compiles for itself.
#ifndef VEXO_REGION_INTERNAL_RUN_KEY_BODIES_H_
#define VEXO_REGION_INTERNAL_RUN_KEY_BODIES_H_

#include <algorithm>

#include "region/internal/run_keys.h"
#include "region/internal/vector_level.h"

#if defined(VEXO_X86_VECTORS)
#define VEXO_INLINE inline __attribute__((always_inline))
#else
#define VEXO_INLINE inline
#endif

namespace vexo::internal {

VEXO_INLINE void widen_body(const run_view& runs, key_columns* columns) {
  int32_t low = columns->min;
  int32_t high = columns->max;
  for (size_t i = 0; i < runs.count; ++i) {
    low = std::min(low, std::min(runs.begins[i], runs.ends[i]));
    high = std::max(high, std::max(runs.begins[i], runs.ends[i]));
  }
  *columns = {low, high};
}

VEXO_INLINE key_extent make_body(const run_view& runs, const key_frame& frame,
                                 const key_list& to) {
  const auto first_row = static_cast<uint32_t>(frame.first_row);
  const auto first_col =
      static_cast<uint32_t>(frame.first_col) + key_frame::kSpare;
  uint32_t* __restrict begins = to.begins;
  uint32_t* __restrict ends = to.ends;
  uint32_t last_row = 0, last_col = 0;
  for (size_t i = 0; i < runs.count; ++i) {
    const uint32_t row = static_cast<uint32_t>(runs.rows[i]) - first_row;
    const uint32_t begin = static_cast<uint32_t>(runs.begins[i]) - first_col;
    const uint32_t end = static_cast<uint32_t>(runs.ends[i]) - first_col;
    last_row = std::max(last_row, row);
    last_col = std::max(last_col, std::max(begin, end));
    const uint32_t start = (row << frame.bits) + key_frame::kSpare;
    begins[i] = start + begin;
    ends[i] = start + end;
  }
  return {last_row, last_col};
}

VEXO_INLINE void move_body(const key_list& keys, uint32_t begins,
                           uint32_t ends) {
  for (size_t i = 0; i < keys.count; ++i) keys.begins[i] += begins;
  for (size_t i = 0; i < keys.count; ++i) keys.ends[i] += ends;
}

VEXO_INLINE bool are_apart_body(const key_list& keys) {
  uint32_t wrong = 0;
  for (size_t i = 0; i < keys.count; ++i) {
    wrong |= keys.begins[i] > keys.ends[i];
    wrong |= keys.begins[i + 1] <= keys.ends[i] + 1;  // or the slack's
  }
  return wrong == 0;
}

VEXO_INLINE int32_t split_body(const chord* chords, size_t count, int32_t* rows,
                               int32_t* begins, int32_t* ends) {
  int32_t labels = 0;
  for (size_t i = 0; i < count; ++i) {
    const chord& c = chords[i];
    begins[i] = c.col_begin;
    ends[i] = c.col_end;
    rows[i] = c.row;
    labels |= c.label;
  }
  return labels;
}

VEXO_INLINE void join_body(const int32_t* rows, const int32_t* begins,
                           const int32_t* ends, size_t count, chord* chords) {
  for (size_t i = 0; i < count; ++i)
    chords[i] = {begins[i], ends[i], rows[i], 0};
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_RUN_KEY_BODIES_H_
