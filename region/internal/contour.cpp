// SPDX-License-Identifier: MIT
#include "region/internal/contour.h"

#include <algorithm>
#include <vector>

namespace vexo::internal {
namespace {

// Background columns reach this far beyond the region on either side.
constexpr int64_t kFar = int64_t{1} << 40;

struct interval {
  int32_t begin;
  int32_t end;
};

// The background, as gaps between runs; these follow from the runs, so that
// only the rows are kept. Every row with runs is there with one gap more than
// runs; so are its two neighbour rows, as one gap when empty. Of wider
// stretches of empty rows nothing more is needed: all of it belongs to the
// background at infinity, as do the outermost gaps of every row.
class background {
 public:
  background(const run_view& runs, const row_table& rows);

  size_t rows() const { return entries_.size() - 1; }
  int64_t row(size_t r) const { return entries_[r].row; }
  // Gaps are numbered from the first row's on.
  size_t gaps() const { return entries_.back().gap; }
  size_t first(size_t r) const { return entries_[r].gap; }
  size_t last(size_t r) const { return entries_[r + 1].gap; }  // one past
  // Columns of a gap of row r.
  int64_t begin(size_t r, size_t gap) const {
    if (gap == first(r)) return -kFar;
    return int64_t{runs_.ends[run_after(r, gap) - 1]} + 1;
  }
  int64_t end(size_t r, size_t gap) const {
    if (gap + 1 == last(r)) return kFar;
    return int64_t{runs_.begins[run_after(r, gap)]} - 1;
  }

 private:
  struct entry {
    int64_t row;
    size_t gap;  // the first one
    size_t run;  // the first one
  };

  size_t run_after(size_t r, size_t gap) const {
    return entries_[r].run + (gap - entries_[r].gap);
  }

  const run_view runs_;
  std::vector<entry> entries_;
};

background::background(const run_view& runs, const row_table& rows)
    : runs_(runs) {
  size_t gap = 0;
  const auto add = [&](int64_t row, size_t first, size_t last) {
    entries_.push_back({row, gap, first});
    gap += last - first + 1;
  };
  for (size_t r = 0; r < rows.count(); ++r) {
    const size_t first = rows.first(r);
    const int64_t row = runs.row(first);
    if (entries_.empty() || entries_.back().row < row - 1)
      add(row - 1, first, first);
    add(row, first, rows.last(r));
    if (r + 1 == rows.count() || runs.row(rows.last(r)) != row + 1)
      add(row + 1, first, first);
  }
  entries_.push_back({INT64_MAX, gap, runs.count});
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
  partition sets(back.gaps());
  for (size_t r = 0; r < back.rows(); ++r) {
    // Outermost gaps are one set, the background at infinity.
    sets.join(0, back.first(r));
    sets.join(0, back.last(r) - 1);
    if (r == 0 || back.row(r) != back.row(r - 1) + 1) continue;
    const auto row_of = [&](size_t i) { return i < back.first(r) ? r - 1 : r; };
    join_rows(
        back.first(r - 1), back.last(r - 1), back.first(r), back.last(r), 0,
        [&](size_t i) { return back.begin(row_of(i), i); },
        [&](size_t i) { return back.end(row_of(i), i); }, &sets);
  }
  return sets;
}

class contour_finder {
 public:
  explicit contour_finder(const run_view& source)
      : source_(source),
        rows_(source),
        back_(source, rows_),
        components_(components(source, rows_)),
        surroundings_(components(back_)),
        surrounding_(source.count) {}

  run_buffer find() {
    run_buffer out;
    size_t b = 0;  // the row's place in the background
    for (size_t r = 0; r < rows_.count(); ++r) {
      while (back_.row(b) != source_.row(rows_.first(r))) ++b;
      size_t above = back_.first(b - 1);
      size_t below = back_.first(b + 1);
      for (size_t i = rows_.first(r); i < rows_.last(r); ++i) {
        const size_t left = back_.first(b) + (i - rows_.first(r));
        const size_t around = surrounding_of(i, left);
        found_.clear();
        add_if(surroundings_.first_of(left) == around, source_.begins[i]);
        above = add_edges(i, b - 1, above, around);
        below = add_edges(i, b + 1, below, around);
        add_if(surroundings_.first_of(left + 1) == around, source_.ends[i]);
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

  void add_if(bool found, int32_t column) {
    if (found) found_.push_back({column, column});
  }

  // Adds what run i shares with gaps of a neighbouring row, from gap g on, that
  // surround it. Returns the first gap that may matter to the next run.
  size_t add_edges(size_t i, size_t row, size_t g, size_t around) {
    const int64_t begin = source_.begins[i];
    const int64_t end = source_.ends[i];
    const size_t last = back_.last(row);
    while (g < last && back_.end(row, g) < begin) ++g;
    for (size_t k = g; k < last && back_.begin(row, k) <= end; ++k) {
      if (surroundings_.first_of(k) == around)
        add(std::max(begin, back_.begin(row, k)),
            std::min(end, back_.end(row, k)));
    }
    return g;
  }

  void add(int64_t begin, int64_t end) {
    found_.push_back({static_cast<int32_t>(begin), static_cast<int32_t>(end)});
  }

  void append(int32_t row, run_buffer* out) {
    std::sort(
        found_.begin(), found_.end(),
        [](const interval& a, const interval& b) { return a.begin < b.begin; });
    for (const interval& f : found_) push_joined(row, f.begin, f.end, out);
  }

  const run_view source_;
  const row_table rows_;
  const background back_;
  partition components_;
  partition surroundings_;
  std::vector<uint32_t> surrounding_;  // by a component's first run
  std::vector<interval> found_;        // of the run at hand
};

}  // namespace

run_buffer outer_contours(const run_view& source) {
  const canonical_runs canonical(source);
  return contour_finder(canonical.view()).find();
}

}  // namespace vexo::internal
