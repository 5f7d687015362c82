// SPDX-License-Identifier: MIT
//
// The rules of the chord forms of the set operations, word by word, for lists
// in any order. Written once more for tests and fuzzers.
#ifndef VEXO_TESTS_REGION_CHORD_RULES_H_
#define VEXO_TESTS_REGION_CHORD_RULES_H_

#include <algorithm>
#include <functional>
#include <vector>

#include "region/region.h"

namespace vexo_test {

using Chords = std::vector<vexo::chord>;

inline Chords by_rule_union(const Chords& a, const Chords& b) {
  const std::less<vexo::chord> before;
  Chords out;
  for (size_t i = 0, k = 0; i < a.size() || k < b.size();) {
    const bool from_a = k == b.size() || (i < a.size() && !before(b[k], a[i]));
    const vexo::chord c = from_a ? a[i] : b[k];
    if (from_a && k < b.size() && !before(a[i], b[k])) ++k;  // identical
    ++(from_a ? i : k);
    if (!out.empty() && out.back().row == c.row &&
        c.col_begin <= out.back().col_end + 1)
      out.back().col_end = std::max(out.back().col_end, c.col_end);
    else
      out.push_back(c);
  }
  return out;
}

inline Chords by_rule_difference(const Chords& a, const Chords& b) {
  Chords out;
  size_t k = 0;
  for (const vexo::chord& c : a) {
    while (k < b.size() && (b[k].row < c.row ||
                            (b[k].row == c.row && b[k].col_end < c.col_begin)))
      ++k;
    if (k == b.size() || b[k].row > c.row || b[k].col_begin > c.col_end) {
      out.push_back(c);
      continue;
    }
    int begin = c.col_begin;
    for (size_t n = k; n < b.size() && b[n].row == c.row &&
                       (n == k || b[n].col_begin <= c.col_end);
         k = n++) {
      if (begin < b[n].col_begin)
        out.push_back({begin, b[n].col_begin - 1, c.row, 0});
      begin = b[n].col_end + 1;
    }
    if (begin <= c.col_end) out.push_back({begin, c.col_end, c.row, 0});
  }
  return out;
}

inline Chords by_rule_intersection(const Chords& a, const Chords& b) {
  Chords out;
  for (size_t i = 0, k = 0; i < a.size() && k < b.size();) {
    if (a[i].row != b[k].row) {
      ++(a[i].row < b[k].row ? i : k);
    } else if (a[i].col_end < b[k].col_begin) {
      ++i;
    } else if (b[k].col_end < a[i].col_begin) {
      ++k;
    } else {
      out.push_back({std::max(a[i].col_begin, b[k].col_begin),
                     std::min(a[i].col_end, b[k].col_end), a[i].row, 0});
      ++(a[i].col_end < b[k].col_end ? i : k);
    }
  }
  return out;
}

}  // namespace vexo_test

#endif  // VEXO_TESTS_REGION_CHORD_RULES_H_
