// SPDX-License-Identifier: MIT
#include "region/internal/key_morphology.h"

#include <algorithm>
#include <utility>

namespace vexo::internal {
namespace {

constexpr size_t kMostRuns = 3;
constexpr int64_t kReach = 1;
static_assert(kReach + 2 <= key_frame::kSpare);  // writing looks two further

}  // namespace

bool key_morphology::possible(const element_runs& element) {
  return element.size() <= kMostRuns &&
         std::all_of(element.begin(), element.end(),
                     [](const element_run& run) {
                       return run.begin >= -kReach && run.end <= kReach;
                     });
}

key_morphology::key_morphology(const run_view& source, const row_list& rows,
                               const element_runs& element, of which,
                               const key_columns& columns)
    : source_(source),
      rows_(rows),
      element_(element),
      which_(which),
      keys_(current_key_kernels()),
      framed_(columns.frame(&frame_)) {}

bool key_morphology::append(int64_t first_row, int64_t last_row,
                            run_buffer* out) {
  const size_t before = out->size();
  while (framed_ && first_row <= last_row) {
    const int64_t last = last_of_stretch(first_row, last_row);
    if (!append_stretch(first_row, last, out)) {
      out->set_size(before);
      return false;
    }
    first_row = last + 1;
  }
  return framed_;
}

// The result rows that a few hundred runs reach.
int64_t key_morphology::last_of_stretch(int64_t first_row,
                                        int64_t last_row) const {
  constexpr size_t kRuns = 384;
  const int64_t up = element_.front().row;
  size_t i = rows_.find(first_row - element_.back().row);
  if (i == rows_.count()) return last_row;
  const size_t first_run = rows_.first(i);
  while (i < rows_.count() &&
         (rows_.last(i) - first_run < kRuns || rows_.row(i) + up < first_row))
    ++i;
  return i == rows_.count() ? last_row : std::min(last_row, rows_.row(i) + up);
}

bool key_morphology::append_stretch(int64_t first_row, int64_t last_row,
                                    run_buffer* out) {
  run_view runs[kMostRuns];
  size_t total = 0;
  for (size_t i = 0; i < element_.size(); ++i) {
    const int64_t up = element_[i].row;
    runs[i] = runs_between(first_row - up, last_row - up);
    const bool needed = which_ == of::intersections;
    if (needed && runs[i].count == 0) return true;
    total += runs[i].count;
  }
  if (total == 0) return true;
  room_.ensure(3, total);
  // The runs so far in one list, more in another, both in the third.
  key_list sum = room_.list(0, runs[0].count);
  if (!make_keys(element_[0], first_row, runs[0], sum)) return false;
  size_t free_list = 2;
  for (size_t i = 1; i < element_.size(); ++i) {
    const key_list more = room_.list(1, runs[i].count);
    if (!make_keys(element_[i], first_row, runs[i], more)) return false;
    const key_list both = room_.list(free_list, sum.count + more.count);
    keys_.merge(sum, more, both);
    free_list = 2 - free_list;
    sum = both;
  }
  write(sum, first_row, out);
  return true;
}

run_view key_morphology::runs_between(int64_t first_row,
                                      int64_t last_row) const {
  const size_t first = rows_.first(rows_.find(first_row));
  const size_t last = rows_.first(rows_.find(last_row + 1));
  return {source_.rows + first, source_.begins + first, source_.ends + first,
          last - first};
}

// The runs moved by one of the element; row first_row is row 0 of the keys.
bool key_morphology::make_keys(const element_run& step, int64_t first_row,
                               const run_view& runs, const key_list& keys) {
  frame_.first_row = static_cast<int32_t>(first_row - step.row);
  if (!keys_.make(runs, frame_, keys).within(frame_)) return false;
  const bool widen = which_ == of::unions;
  keys_.move(keys, static_cast<uint32_t>(widen ? step.begin : step.end),
             static_cast<uint32_t>(widen ? step.end : step.begin));
  return true;
}

void key_morphology::write(const key_list& keys, int64_t first_row,
                           run_buffer* out) {
  frame_.first_row = static_cast<int32_t>(first_row);
  const size_t n = out->size();
  out->ensure(n + keys.count + kRunSlack);
  int32_t* rows = out->rows() + n;
  int32_t* begins = out->begins() + n;
  int32_t* ends = out->ends() + n;
  const size_t written =
      which_ == of::unions
          ? keys_.write_united(keys, frame_, rows, begins, ends)
          : keys_.write_common(keys, element_.size(), frame_, rows, begins,
                               ends);
  out->set_size(n + written);
}

}  // namespace vexo::internal
