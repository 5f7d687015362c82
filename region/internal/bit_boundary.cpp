// SPDX-License-Identifier: MIT
#include "region/internal/bit_boundary.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "region/internal/bit_lines.h"
#include "region/internal/parallel.h"
#include "region/internal/row_list.h"

namespace vexo::internal {
namespace {

struct columns {
  int32_t min = INT32_MAX;
  int32_t max = INT32_MIN;
};

columns columns_of(const run_view& source) {
  columns c;
  kernels().span(source.begins, source.ends, source.count, &c.min, &c.max);
  return c;
}

// Result rows of one band, from top to bottom.
class edge_band {
 public:
  edge_band(const run_view& source, const row_list& rows, columns span,
            edge which, run_buffer* out)
      : source_(source),
        rows_(rows),
        which_(which),
        k_(kernels()),
        origin_(span.min - int64_t{1}),
        words_(words_for(origin_, span.max + int64_t{1})),
        loader_(words_, origin_),
        lines_(5, words_, 1),
        out_(out) {}

  void find(int64_t first_row, int64_t last_row) {
    next_ = rows_.find(first_row - 1);
    for (int64_t row = first_row; row <= last_row; ++row) {
      if (row != row_ + 1) {
        const int64_t nearest = rows_.row(next_);
        if (nearest > last_row + 1) return;
        row = std::max(row, nearest - 1);  // past rows that touch nothing
        above_ = load(row - 1, 0);
        at_ = load(row, 1);
        free_ = 2;
      } else {
        above_ = at_;
        at_ = below_;
      }
      below_ = load(row + 1, free_);
      free_ = (free_ + 1) % 3;
      append(row);
      row_ = above_ == zeros() && at_ == zeros() && below_ == zeros()
                 ? INT64_MIN
                 : row;
    }
  }

 private:
  const uint64_t* zeros() const { return lines_.line(4); }

  const uint64_t* load(int64_t row, size_t line) {
    while (rows_.row(next_) < row) ++next_;
    if (rows_.row(next_) != row) return zeros();
    const size_t first = rows_.first(next_);
    loader_.load(source_.begins + first, source_.ends + first,
                 rows_.last(next_) - first, lines_.line(line));
    return lines_.line(line);
  }

  void append(int64_t row) {
    uint64_t* result = lines_.line(3);
    if (which_ == edge::inner) {
      if (at_ == zeros()) return;
      k_.inner_edge(above_, at_, below_, result, words_);
    } else {
      k_.outer_edge(above_, at_, below_, result, words_);
    }
    append_runs(result, words_, origin_, static_cast<int32_t>(row), out_);
  }

  const run_view& source_;
  const row_list& rows_;
  const edge which_;
  const bit_kernels& k_;
  const int64_t origin_;
  const size_t words_;
  bit_loader loader_;
  bit_lines lines_;  // three source rows, the result, and a row of nothing
  run_buffer* const out_;
  size_t next_ = 0;
  size_t free_ = 0;
  int64_t row_ = INT64_MIN;  // the row before, when its lines are of use
  const uint64_t* above_ = nullptr;
  const uint64_t* at_ = nullptr;
  const uint64_t* below_ = nullptr;
};

// In nanoseconds, 9 for a run in the form of runs; in bits 1 for a run, 6 for
// every word of the rows and 10 for a row.
double cost_of_rows(double rows, size_t words) {
  return rows * (10 + 6 * static_cast<double>(words));
}

}  // namespace

bool dense_boundary(const run_view& source) {
  if (source.count == 0) return false;
  const columns span = columns_of(source);
  // Neighbours of the outermost pixels are columns and rows, too.
  const int32_t first_row = source.rows[0];
  const int32_t last_row = source.rows[source.count - 1];
  if (span.min == INT32_MIN || span.max == INT32_MAX ||
      first_row == INT32_MIN || last_row == INT32_MAX)
    return false;
  const double rows = int64_t{last_row} - first_row + 1.0;
  const size_t words = words_for(span.min, span.max);
  return words < (1 << 20) &&
         8 * static_cast<double>(source.count) > cost_of_rows(rows, words);
}

run_buffer bit_boundary(const run_view& source, edge which) {
  const row_list rows(source);
  const columns span = columns_of(source);
  const auto all_rows = static_cast<double>(rows.count());
  const double cost = static_cast<double>(source.count) +
                      cost_of_rows(all_rows, words_for(span.min, span.max));
  const size_t pieces =
      std::min(pieces_worth(cost), piece_count(rows.count(), 32));
  std::vector<run_buffer> parts(pieces);
  parallel_for(pieces, [&](size_t p) {
    const size_t first = piece_begin(rows.count(), pieces, p);
    const size_t last = piece_begin(rows.count(), pieces, p + 1);
    const size_t runs = rows.first(last) - rows.first(first);
    parts[p].ensure(runs + runs / 2);
    // Rows between two pieces belong to the upper one.
    const int64_t first_row = p == 0 ? rows.row(0) - 1 : rows.row(first);
    const int64_t last_row =
        p + 1 == pieces ? rows.row(last - 1) + 1 : rows.row(last) - 1;
    edge_band(source, rows, span, which, &parts[p]).find(first_row, last_row);
  });
  return joined(std::move(parts));
}

}  // namespace vexo::internal
