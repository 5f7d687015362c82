// SPDX-License-Identifier: MIT
#include "region/internal/set_runs.h"

#include <algorithm>

namespace vexo::internal {
namespace {

bool starts_before(const run_view& a, size_t i, const run_view& b, size_t j) {
  return a.rows[i] < b.rows[j] ||
         (a.rows[i] == b.rows[j] && a.begins[i] < b.begins[j]);
}

}  // namespace

run_buffer unite_runs(const run_view& a, const run_view& b) {
  run_buffer out;
  size_t i = 0;
  size_t j = 0;
  while (i < a.count || j < b.count) {
    if (j == b.count || (i < a.count && starts_before(a, i, b, j))) {
      push_joined(a.rows[i], a.begins[i], a.ends[i], &out);
      ++i;
    } else {
      push_joined(b.rows[j], b.begins[j], b.ends[j], &out);
      ++j;
    }
  }
  return out;
}

run_buffer subtract_runs(const run_view& a, const run_view& b) {
  run_buffer out;
  size_t j = 0;
  for (size_t i = 0; i < a.count; ++i) {
    const int32_t row = a.rows[i];
    int64_t begin = a.begins[i];
    while (j < b.count &&
           (b.rows[j] < row || (b.rows[j] == row && b.ends[j] < begin)))
      ++j;
    // The last hole may reach into the next run: look ahead without moving j.
    for (size_t k = j;
         k < b.count && b.rows[k] == row && b.begins[k] <= a.ends[i]; ++k) {
      if (begin < b.begins[k])
        push_joined(row, static_cast<int32_t>(begin), b.begins[k] - 1, &out);
      begin = int64_t{b.ends[k]} + 1;
      j = k;
    }
    if (begin <= a.ends[i])
      push_joined(row, static_cast<int32_t>(begin), a.ends[i], &out);
  }
  return out;
}

run_buffer intersect_runs(const run_view& a, const run_view& b) {
  run_buffer out;
  size_t i = 0;
  size_t j = 0;
  while (i < a.count && j < b.count) {
    if (a.rows[i] != b.rows[j]) {
      ++(a.rows[i] < b.rows[j] ? i : j);
      continue;
    }
    const int32_t begin = std::max(a.begins[i], b.begins[j]);
    const int32_t end = std::min(a.ends[i], b.ends[j]);
    if (begin <= end) push_joined(a.rows[i], begin, end, &out);
    ++(a.ends[i] < b.ends[j] ? i : j);
  }
  return out;
}

run_buffer clip_runs(const run_view& runs, int32_t width, int32_t height) {
  run_buffer out;
  for (size_t i = 0; i < runs.count; ++i) {
    const int32_t begin = std::max(runs.begins[i], 0);
    const int32_t end = std::min(runs.ends[i], width - 1);
    if (runs.rows[i] >= 0 && runs.rows[i] < height && begin <= end)
      out.push(runs.rows[i], begin, end);
  }
  return out;
}

}  // namespace vexo::internal
