// SPDX-License-Identifier: MIT
#include "region/internal/candidate_erosion.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "region/internal/bit_rows.h"

namespace vexo::internal {
namespace {

constexpr size_t kBatch = 256;

// Nanoseconds for a candidate and a run of the element: most of it goes into
// the search for the runs around it (bench_morphology).
double cost_with(size_t runs, size_t rows) {
  const double in_a_row = static_cast<double>(runs) / static_cast<double>(rows);
  return 6 + 3.5 * std::log2(std::max(1.0, in_a_row));
}

}  // namespace

candidate_erosion::candidate_erosion(const run_view& source,
                                     const row_list& rows,
                                     const element_runs& element)
    : source_(source), rows_(rows), element_(element) {}

bool candidate_erosion::run(double others, run_buffer* out) {
  order_runs();
  if (estimate(others) > 0.7 * others) return false;
  begin(1, 1);
  for (size_t i = 1; i < order_.size() && !candidates_.empty(); ++i)
    reduce_by(order_[i]);
  out->ensure(out->size() + candidates_.size());
  for (const interval& c : candidates_) out->push(c.row, c.begin, c.end);
  return true;
}

// The cost in nanoseconds, from some candidates of some batches. Infinity when
// it is not worth while to find out.
double candidate_erosion::estimate(double others) {
  // Looks that even a candidate of which nothing is left takes.
  constexpr double kFewLooks = 4;
  constexpr size_t kSomeBatches = 8, kSome = 16;
  constexpr double kNever = std::numeric_limits<double>::infinity();
  const double each = cost_with(source_.count, rows_.count());
  const size_t batches = (source_.count + kBatch - 1) / kBatch;
  const size_t step = (batches + kSomeBatches - 1) / kSomeBatches;
  const size_t seen = begin(step, 0);
  const auto all = static_cast<double>(seen * step);
  if (seen == 0) return 0;
  if (all * kFewLooks * each > 0.7 * others) return kNever;
  begin(step, seen / kSome + 1);
  const auto some = static_cast<double>(candidates_.size());
  double looks = some;
  for (size_t i = 1; i < order_.size() && !candidates_.empty(); ++i) {
    looks += static_cast<double>(candidates_.size());
    if (looks * each > others / 16) return kNever;
    reduce_by(order_[i]);
  }
  return all * std::max(kFewLooks, looks / some) * each;
}

// The longest run; then the middle of all, of both halves, of all quarters ...
void candidate_erosion::order_runs() {
  const size_t n = element_.size();
  const auto length = [](const element_run& r) { return r.end - r.begin; };
  const auto longest = static_cast<size_t>(
      std::max_element(element_.begin(), element_.end(),
                       [&](const element_run& a, const element_run& b) {
                         return length(a) < length(b);
                       }) -
      element_.begin());
  order_.reserve(n);
  order_.push_back(element_[longest]);
  for (size_t step = std::bit_ceil(n); step > 1; step /= 2) {
    for (size_t i = step / 2; i < n; i += step)
      if (i != longest) order_.push_back(element_[i]);
  }
  if (longest != 0) order_.push_back(element_[0]);
}

// How many candidates there are in every batch of runs, or in every second one,
// third one ...; each n-th of them is taken, none for 0.
size_t candidate_erosion::begin(size_t step, size_t each_of) {
  const element_run& run = order_[0];
  const int64_t length = run.end - run.begin;
  size_t seen = 0;
  candidates_.clear();
  for (size_t first = 0; first < source_.count; first += step * kBatch) {
    const size_t last = std::min(source_.count, first + kBatch);
    if (each_of == 0) {
      for (size_t i = first; i < last; ++i)
        seen += int64_t{source_.ends[i]} - source_.begins[i] >= length;
      continue;
    }
    if (!kernels().reaches(source_.begins + first, source_.ends + first,
                           last - first, length))
      continue;
    for (size_t i = first; i < last; ++i) {
      if (int64_t{source_.ends[i]} - source_.begins[i] >= length &&
          seen++ % each_of == 0)
        candidates_.push_back(moved(i, run));
    }
  }
  return seen;
}

// What run i of the source leaves of the run of an element.
candidate_erosion::interval candidate_erosion::moved(
    size_t i, const element_run& run) const {
  return {static_cast<int32_t>(source_.rows[i] - run.row),
          static_cast<int32_t>(source_.begins[i] - run.begin),
          static_cast<int32_t>(source_.ends[i] - run.end)};
}

void candidate_erosion::reduce_by(const element_run& run) {
  reduced_.clear();
  size_t row = rows_.find(candidates_[0].row + run.row);
  size_t at = rows_.first(row);
  for (const interval& c : candidates_) {
    while (rows_.row(row) < c.row + run.row) at = rows_.first(++row);
    if (rows_.row(row) != c.row + run.row) continue;
    const size_t last = rows_.last(row);
    at = first_reaching(at, last, c.begin + run.end);
    for (size_t i = at; i < last; ++i) {
      const int64_t begin = source_.begins[i] - run.begin;
      if (begin > c.end) break;
      const int64_t end = source_.ends[i] - run.end;
      const interval left{c.row, std::max(c.begin, static_cast<int32_t>(begin)),
                          std::min(c.end, static_cast<int32_t>(end))};
      if (left.begin <= left.end) reduced_.push_back(left);
    }
  }
  candidates_.swap(reduced_);
}

// The first of runs first..last - 1, which are of one row, that ends in
// `column` or behind it.
size_t candidate_erosion::first_reaching(size_t first, size_t last,
                                         int64_t column) const {
  constexpr size_t kFew = 16;
  if (last - first > kFew)
    return static_cast<size_t>(
        std::lower_bound(source_.ends + first, source_.ends + last, column) -
        source_.ends);
  while (first < last && source_.ends[first] < column) ++first;
  return first;
}

}  // namespace vexo::internal
