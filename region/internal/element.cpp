// SPDX-License-Identifier: MIT
#include "region/internal/element.h"

#include <algorithm>

namespace vexo::internal {
namespace {

struct box {
  int64_t min_row, min_col, max_row, max_col;
};

box bounds(const run_view& runs) {
  if (runs.count == 0) return {0, 0, 0, 0};
  box b{runs.rows[0], INT32_MAX, runs.rows[runs.count - 1], INT32_MIN};
  for (size_t i = 0; i < runs.count; ++i) {
    b.min_col = std::min<int64_t>(b.min_col, runs.begins[i]);
    b.max_col = std::max<int64_t>(b.max_col, runs.ends[i]);
  }
  return b;
}

}  // namespace

point upper_middle(const run_view& element) {
  const box b = bounds(element);
  return {b.min_col + (b.max_col - b.min_col + 1) / 2,
          b.min_row + (b.max_row - b.min_row + 1) / 2};
}

point lower_middle(const run_view& element) {
  const box b = bounds(element);
  return {(b.min_col + b.max_col) / 2, (b.min_row + b.max_row) / 2};
}

element_runs placed(const run_view& element, point reference) {
  element_runs result(element.count);
  for (size_t i = 0; i < element.count; ++i) {
    result[i] = {element.rows[i] - reference.row,
                 element.begins[i] - reference.col,
                 element.ends[i] - reference.col};
  }
  return result;
}

element_runs reflected(const element_runs& element) {
  element_runs result;
  result.reserve(element.size());
  for (auto run = element.rbegin(); run != element.rend(); ++run)
    result.push_back({-run->row, -run->end, -run->begin});
  return result;
}

element_runs placed_by_request(const region& element, int ref_col,
                               int ref_row) {
  const canonical_runs canonical(runs_of(element));
  const run_view& runs = canonical.view();
  const bool automatic = ref_col == -1 || ref_row == -1;
  return placed(runs, automatic ? upper_middle(runs) : point{ref_col, ref_row});
}

element_runs centred_by_chords(const region& element) {
  const run_buffer copy = to_runs(element.chords, element.chord_count);
  const canonical_runs canonical(view_of(copy));
  const run_view& runs = canonical.view();
  const bool as_it_stands = element.child_count != 0;
  return placed(runs, as_it_stands ? point{0, 0} : lower_middle(runs));
}

}  // namespace vexo::internal
