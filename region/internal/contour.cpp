// SPDX-License-Identifier: MIT
#include "region/internal/contour.h"

#include <algorithm>
#include <vector>

namespace vexo::internal {
namespace {

// Background columns reach this far beyond the region on either side.
constexpr int64_t kFar = int64_t{1} << 40;

struct gap {
  int64_t begin;
  int64_t end;
};

// The background, as gaps between runs. Every row with runs is there with one
// gap more than runs; so are its two neighbour rows, as one gap when empty.
// Of wider stretches of empty rows nothing more is needed: all of it belongs
// to the background at infinity, as do the outermost gaps of every row.
struct background {
  std::vector<int64_t> rows;
  std::vector<size_t> firsts;  // of each row, and one past the last
  std::vector<gap> gaps;

  void add_row(int64_t row) {
    rows.push_back(row);
    firsts.push_back(gaps.size());
  }
  void add_empty_row(int64_t row) {
    add_row(row);
    gaps.push_back({-kFar, kFar});
  }
};

background background_of(const run_view& runs, const row_table& rows) {
  background result;
  result.gaps.reserve(runs.count + 3 * rows.count());
  for (size_t r = 0; r < rows.count(); ++r) {
    const int64_t row = runs.row(rows.first(r));
    if (result.rows.empty() || result.rows.back() < row - 1)
      result.add_empty_row(row - 1);
    result.add_row(row);
    int64_t begin = -kFar;
    for (size_t i = rows.first(r); i < rows.last(r); ++i) {
      result.gaps.push_back({begin, runs.begins[i] - int64_t{1}});
      begin = runs.ends[i] + int64_t{1};
    }
    result.gaps.push_back({begin, kFar});
    if (r + 1 == rows.count() || runs.row(rows.first(r + 1)) != row + 1)
      result.add_empty_row(row + 1);
  }
  result.firsts.push_back(result.gaps.size());
  return result;
}

// Sets of runs; each is known by its first run.
class partition {
 public:
  explicit partition(size_t n) : parents_(n) {
    if (n > UINT32_MAX) throw_realloc_failed();
    for (size_t i = 0; i < n; ++i) parents_[i] = static_cast<uint32_t>(i);
  }
  size_t first_of(size_t i) {
    while (parents_[i] != i) i = parents_[i] = parents_[parents_[i]];
    return i;
  }
  void join(size_t a, size_t b) {
    a = first_of(a);
    b = first_of(b);
    parents_[std::max(a, b)] = static_cast<uint32_t>(std::min(a, b));
  }

 private:
  std::vector<uint32_t> parents_;
};

// Joins the runs of two neighbouring rows that share a column, or with reach 1
// touch at a corner.
template <typename Begin, typename End>
void join_rows(size_t a, size_t a_last, size_t b, size_t b_last, int64_t reach,
               Begin begin, End end, partition* sets) {
  while (a < a_last && b < b_last) {
    if (begin(b) <= end(a) + reach && begin(a) <= end(b) + reach)
      sets->join(a, b);
    ++(end(a) < end(b) ? a : b);
  }
}

partition components(const run_view& runs, const row_table& rows) {
  partition sets(runs.count);
  for (size_t r = 1; r < rows.count(); ++r) {
    if (runs.row(rows.first(r)) != runs.row(rows.first(r - 1)) + int64_t{1})
      continue;
    join_rows(
        rows.first(r - 1), rows.last(r - 1), rows.first(r), rows.last(r), 1,
        [&](size_t i) { return int64_t{runs.begins[i]}; },
        [&](size_t i) { return int64_t{runs.ends[i]}; }, &sets);
  }
  return sets;
}

partition components(const background& back) {
  partition sets(back.gaps.size());
  for (size_t r = 0; r < back.rows.size(); ++r) {
    // Outermost gaps are one set, the background at infinity.
    sets.join(0, back.firsts[r]);
    sets.join(0, back.firsts[r + 1] - 1);
    if (r == 0 || back.rows[r] != back.rows[r - 1] + 1) continue;
    join_rows(
        back.firsts[r - 1], back.firsts[r], back.firsts[r], back.firsts[r + 1],
        0, [&](size_t i) { return back.gaps[i].begin; },
        [&](size_t i) { return back.gaps[i].end; }, &sets);
  }
  return sets;
}

class contour_finder {
 public:
  explicit contour_finder(const run_view& source)
      : source_(source),
        rows_(source),
        back_(background_of(source, rows_)),
        components_(components(source, rows_)),
        surroundings_(components(back_)),
        surrounding_(source.count) {}

  run_buffer find() {
    run_buffer out;
    size_t b = 0;  // the row's place in the background
    for (size_t r = 0; r < rows_.count(); ++r) {
      while (back_.rows[b] != source_.row(rows_.first(r))) ++b;
      size_t above = back_.firsts[b - 1];
      size_t below = back_.firsts[b + 1];
      for (size_t i = rows_.first(r); i < rows_.last(r); ++i) {
        const size_t left = back_.firsts[b] + (i - rows_.first(r));
        const size_t around = surrounding_of(i, left);
        found_.clear();
        add_if(surroundings_.first_of(left) == around, source_.begins[i],
               source_.begins[i]);
        above = add_edges(i, above, back_.firsts[b], around);
        below = add_edges(i, below, back_.firsts[b + 2], around);
        add_if(surroundings_.first_of(left + 1) == around, source_.ends[i],
               source_.ends[i]);
        append(source_.row(rows_.first(r)), &out);
      }
    }
    return out;
  }

 private:
  // The background set around the component of run i. A component's first run
  // has it to its left.
  size_t surrounding_of(size_t i, size_t left) {
    const size_t first = components_.first_of(i);
    if (first == i)
      surrounding_[i] = static_cast<uint32_t>(surroundings_.first_of(left));
    return surrounding_[first];
  }

  void add_if(bool found, int32_t begin, int32_t end) {
    if (found) found_.push_back({begin, end});
  }

  // Adds what run i shares with gaps of a neighbouring row that surround it.
  // Returns the first gap that may matter to the next run.
  size_t add_edges(size_t i, size_t g, size_t g_last, size_t around) {
    const int64_t begin = source_.begins[i];
    const int64_t end = source_.ends[i];
    while (g < g_last && back_.gaps[g].end < begin) ++g;
    for (size_t k = g; k < g_last && back_.gaps[k].begin <= end; ++k) {
      if (surroundings_.first_of(k) == around)
        found_.push_back({std::max(begin, back_.gaps[k].begin),
                          std::min(end, back_.gaps[k].end)});
    }
    return g;
  }

  void append(int32_t row, run_buffer* out) {
    std::sort(found_.begin(), found_.end(),
              [](const gap& a, const gap& b) { return a.begin < b.begin; });
    for (const gap& f : found_) {
      push_joined(row, static_cast<int32_t>(f.begin),
                  static_cast<int32_t>(f.end), out);
    }
  }

  const run_view source_;
  const row_table rows_;
  const background back_;
  partition components_;
  partition surroundings_;
  std::vector<uint32_t> surrounding_;  // by a component's first run
  std::vector<gap> found_;             // of the run at hand
};

}  // namespace

run_buffer outer_contours(const run_view& source) {
  const canonical_runs canonical(source);
  return contour_finder(canonical.view()).find();
}

}  // namespace vexo::internal
