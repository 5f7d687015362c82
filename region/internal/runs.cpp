// SPDX-License-Identifier: MIT
#include "region/internal/runs.h"

#include <cstring>
#include <utility>

#include "region/internal/bit_rows.h"
#include "region/internal/parallel.h"
#include "region/operations.h"

namespace vexo::internal {

chord_buffer to_chords(const run_view& runs) {
  if (runs.count > kMaxChords) throw_realloc_failed();
  chord_buffer chords(runs.count);
  for (size_t i = 0; i < runs.count; ++i)
    chords.data()[i] = {runs.begins[i], runs.ends[i], runs.rows[i], 0};
  chords.set_size(runs.count);
  return chords;
}

run_buffer to_runs(const chord* chords, int32_t count) {
  const size_t n = static_cast<size_t>(std::max(count, 0));
  run_buffer runs(n);
  for (size_t i = 0; i < n; ++i) {
    runs.rows()[i] = chords[i].row;
    runs.begins()[i] = chords[i].col_begin;
    runs.ends()[i] = chords[i].col_end;
  }
  runs.set_size(n);
  return runs;
}

namespace {

// Where each part begins, and where the last one ends.
template <class Part>
std::vector<size_t> offsets_of(const std::vector<Part>& parts) {
  std::vector<size_t> offsets{0};
  for (const Part& part : parts)
    offsets.push_back(offsets.back() + part.size());
  return offsets;
}

}  // namespace

run_buffer joined(std::vector<run_buffer> parts) {
  if (parts.size() == 1) return std::move(parts[0]);
  const std::vector<size_t> offsets = offsets_of(parts);
  run_buffer all(std::max<size_t>(offsets.back(), 2000));
  parallel_for(parts.size(), [&](size_t i) {
    const size_t bytes = parts[i].size() * sizeof(int32_t);
    if (bytes == 0) return;
    std::memcpy(all.rows() + offsets[i], parts[i].rows(), bytes);
    std::memcpy(all.begins() + offsets[i], parts[i].begins(), bytes);
    std::memcpy(all.ends() + offsets[i], parts[i].ends(), bytes);
  });
  all.set_size(offsets.back());
  return all;
}

chord_buffer joined(std::vector<chord_buffer> parts) {
  if (parts.size() == 1) return std::move(parts[0]);
  const std::vector<size_t> offsets = offsets_of(parts);
  if (offsets.back() > kMaxChords) throw_realloc_failed();
  chord_buffer all(offsets.back());
  parallel_for(parts.size(), [&](size_t i) {
    std::copy_n(parts[i].data(), parts[i].size(), all.data() + offsets[i]);
  });
  all.set_size(offsets.back());
  return all;
}

canonical_runs::canonical_runs(const run_view& runs)
    : copy_(size_t{0}), view_(runs) {
  if (kernels().are_canonical(runs.rows, runs.begins, runs.ends, runs.count))
    return;
  if (runs.count > kMaxChords) throw_realloc_failed();
  run_buffer ordered(runs.count);
  for (size_t i = 0; i < runs.count; ++i) {
    if (runs.begins[i] <= runs.ends[i])
      ordered.push(runs.rows[i], runs.begins[i], runs.ends[i]);
  }
  sort_y(ordered.rows(), ordered.begins(), ordered.ends(),
         static_cast<int>(ordered.size()));
  copy_ = run_buffer(ordered.size());
  for (size_t i = 0; i < ordered.size(); ++i)
    push_joined(ordered.rows()[i], ordered.begins()[i], ordered.ends()[i],
                &copy_);
  view_ = view_of(copy_);
}

}  // namespace vexo::internal
