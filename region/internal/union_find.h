// SPDX-License-Identifier: MIT
//
// Disjoint sets of labels: parent leads from every label to a smaller one of
// the same set, or from the smallest to itself.
#ifndef VEXO_REGION_INTERNAL_UNION_FIND_H_
#define VEXO_REGION_INTERNAL_UNION_FIND_H_

#include <algorithm>
#include <cstdint>

namespace vexo::internal {

inline int32_t root(int32_t* parent, int32_t label) {
  while (parent[label] != label) {
    label = parent[label] = parent[parent[label]];
  }
  return label;
}

inline void unite(int32_t* parent, int32_t a, int32_t b) {
  if (a == b) return;
  a = root(parent, a);
  b = root(parent, b);
  parent[std::max(a, b)] = std::min(a, b);
}

// Labels that are to be united once a row is done.
struct label_pair {
  int32_t first;
  int32_t second;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_UNION_FIND_H_
