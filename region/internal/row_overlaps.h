// SPDX-License-Identifier: MIT
//
// Which intervals of one row lie over which of another: the merge at the heart
// of labelling, as two counts for each interval. The vector form looks 16
// intervals ahead at once and so does without a branch that depends on the
// picture; both forms give the same counts.
#ifndef VEXO_REGION_INTERNAL_ROW_OVERLAPS_H_
#define VEXO_REGION_INTERNAL_ROW_OVERLAPS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "region/internal/vector_level.h"

namespace vexo::internal {

// Ascending begins and ends.
struct intervals {
  const int32_t* begins;
  const int32_t* ends;
  size_t count;
};

// For every interval i of `row`:
//   low[i]   how many of `above` have end < row.begins[i] - reach
//   high[i]  how many of `above` have begin <= row.ends[i] + reach
// so that those that touch it are low[i]..high[i] - 1. reach is a few columns.
using count_overlaps_function = void (*)(const intervals& above,
                                         const intervals& row, int32_t reach,
                                         uint32_t* low, uint32_t* high);

count_overlaps_function current_count_overlaps();

// How many touch, over all intervals of the row: at most as many as both rows
// have when each is in order and disjoint, any number otherwise.
inline size_t count_contacts(const uint32_t* low, const uint32_t* high,
                             size_t count) {
  size_t sum = 0;
  for (size_t i = 0; i < count; ++i) {
    sum += std::max(high[i], low[i]) - low[i];
  }
  return sum;
}

void count_overlaps_plain(const intervals& above, const intervals& row,
                          int32_t reach, uint32_t* low, uint32_t* high);
#ifdef VEXO_X86_VECTORS
void count_overlaps_avx512(const intervals& above, const intervals& row,
                           int32_t reach, uint32_t* low, uint32_t* high);
#endif

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_OVERLAPS_H_
