// SPDX-License-Identifier: MIT
#include "region/internal/plain_morphology.h"

#include <algorithm>
#include <vector>

namespace vexo::internal {
namespace {

struct interval {
  int64_t begin;
  int64_t end;
};
using intervals = std::vector<interval>;  // ascending, neither touching

void append_joined(interval next, intervals* list) {
  if (!list->empty() && next.begin <= list->back().end + 1) {
    list->back().end = std::max(list->back().end, next.end);
  } else {
    list->push_back(next);
  }
}

// into = first united with second.
void unite(const intervals& first, const intervals& second, intervals* into) {
  into->clear();
  auto a = first.begin();
  auto b = second.begin();
  while (a != first.end() || b != second.end()) {
    const bool take_a =
        b == second.end() || (a != first.end() && a->begin <= b->begin);
    append_joined(take_a ? *a++ : *b++, into);
  }
}

// into = first intersected with second.
void intersect(const intervals& first, const intervals& second,
               intervals* into) {
  into->clear();
  auto a = first.begin();
  auto b = second.begin();
  while (a != first.end() && b != second.end()) {
    const interval both{std::max(a->begin, b->begin), std::min(a->end, b->end)};
    if (both.begin <= both.end) into->push_back(both);
    ++(a->end < b->end ? a : b);
  }
}

int32_t fitting(int64_t coordinate) {
  if (coordinate != static_cast<int32_t>(coordinate)) throw_realloc_failed();
  return static_cast<int32_t>(coordinate);
}

void append_row(int64_t row, const intervals& list, run_buffer* out) {
  for (const interval& i : list)
    out->push(fitting(row), fitting(i.begin), fitting(i.end));
}

// Runs of one source row as intervals, begins moved by `left`, ends by `right`.
// Those that this turns inside out are left out.
void moved(const run_view& source, size_t first, size_t last, int64_t left,
           int64_t right, intervals* into) {
  into->clear();
  for (size_t i = first; i < last; ++i) {
    const interval next{source.begins[i] + left, source.ends[i] + right};
    if (next.begin <= next.end) append_joined(next, into);
  }
}

constexpr int64_t kNoRow = INT64_MAX;

}  // namespace

run_buffer plain_dilate(const run_view& source, const element_runs& element) {
  const row_table rows(source);
  std::vector<size_t> cursors(element.size(), 0);
  intervals row_runs, shifted, merged;
  run_buffer out;
  for (;;) {
    int64_t row = kNoRow;
    for (size_t e = 0; e < element.size(); ++e) {
      if (cursors[e] < rows.count())
        row =
            std::min(row, source.row(rows.first(cursors[e])) + element[e].row);
    }
    if (row == kNoRow) return out;
    row_runs.clear();
    for (size_t e = 0; e < element.size(); ++e) {
      size_t& at = cursors[e];
      if (at == rows.count() ||
          source.row(rows.first(at)) + element[e].row != row)
        continue;
      moved(source, rows.first(at), rows.last(at), element[e].begin,
            element[e].end, &shifted);
      unite(row_runs, shifted, &merged);
      row_runs.swap(merged);
      ++at;
    }
    append_row(row, row_runs, &out);
  }
}

run_buffer plain_erode(const run_view& source, const element_runs& element) {
  const row_table rows(source);
  std::vector<size_t> cursors(element.size(), 0);
  intervals row_runs, shifted, both;
  run_buffer out;
  for (size_t lead = 0; lead < rows.count(); ++lead) {
    const int64_t row = source.row(rows.first(lead)) - element[0].row;
    for (size_t e = 0; e < element.size(); ++e) {
      size_t& at = cursors[e];
      while (at < rows.count() &&
             source.row(rows.first(at)) < row + element[e].row)
        ++at;
      if (at == rows.count()) return out;
      if (source.row(rows.first(at)) != row + element[e].row) {
        row_runs.clear();
        break;
      }
      moved(source, rows.first(at), rows.last(at), -element[e].begin,
            -element[e].end, e == 0 ? &row_runs : &shifted);
      if (e > 0) {
        intersect(row_runs, shifted, &both);
        row_runs.swap(both);
      }
      if (row_runs.empty()) break;
    }
    append_row(row, row_runs, &out);
  }
  return out;
}

}  // namespace vexo::internal
