// SPDX-License-Identifier: MIT
//
// Disjoint sets of provisional labels 0, 1, 2, ... (union-find); the smallest
// label of a set is its root.
#ifndef VEXO_REGION_INTERNAL_LABEL_SETS_H_
#define VEXO_REGION_INTERNAL_LABEL_SETS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"

namespace vexo::internal {

class label_sets {
 public:
  explicit label_sets(size_t most) : parent_(most) {}

  int32_t make() {
    parent_[count_] = count_;
    return count_++;
  }

  int32_t root(int32_t label) const {
    while (parent_[label] != label) {
      label = parent_[label] = parent_[parent_[label]];
    }
    return label;
  }

  // Returns the root of the united set.
  int32_t unite(int32_t a, int32_t b) {
    a = root(a);
    b = root(b);
    const int32_t smaller = std::min(a, b);
    parent_[std::max(a, b)] = smaller;
    return smaller;
  }

  // Ends the building: number() then gives the sets' numbers, from 0 in the
  // order of their roots. Returns how many sets there are.
  int32_t number_sets() {
    int32_t next = 0;
    for (int32_t i = 0; i < count_; ++i) {
      parent_[i] = parent_[i] == i ? next++ : parent_[parent_[i]];
    }
    return next;
  }
  int32_t number(int32_t label) const { return parent_[label]; }

 private:
  buffer<int32_t> parent_;
  int32_t count_ = 0;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_LABEL_SETS_H_
