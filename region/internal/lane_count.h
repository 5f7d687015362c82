// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_INTERNAL_LANE_COUNT_H_
#define VEXO_REGION_INTERNAL_LANE_COUNT_H_

#include <cstddef>
#include <cstdint>

namespace vexo::internal {

// How many lanes a mask of up to 16 holds. GCC 12, short of registers, stores a
// mask as 16 bits and counts those of 32: it has to hold the number in a
// general register.
__attribute__((always_inline)) inline size_t lane_count(uint32_t mask) {
  asm("" : "+r"(mask));
  return static_cast<size_t>(__builtin_popcount(mask));
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_LANE_COUNT_H_
