// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_INTERNAL_LABELLING_H_
#define VEXO_REGION_INTERNAL_LABELLING_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/views.h"

namespace vexo::internal {

// The component of every run, numbered from 0 in the order in which the
// components are first met, and where its runs stand when runs are ordered by
// component, each component's in their own order.
//
// Runs are counted and placed in `streams` equal ranges, two by each thread
// side by side: a large component would otherwise make every run wait for the
// count of the run before.
struct labelling {
  buffer<int32_t> labels;   // one a run
  buffer<uint32_t> firsts;  // of each component, and the number of all runs
  buffer<uint32_t> starts;  // of each component in each stream
  int32_t components = 0;
  size_t streams = 2;

  size_t first(size_t component) const { return firsts[component]; }
  size_t count(size_t component) const {
    return firsts[component + 1] - firsts[component];
  }
  uint32_t* stream(size_t s) const {
    return starts.data() + s * static_cast<size_t>(components);
  }
};

// Calls visit(i, table) for every run i with the table of its stream.
template <class Visit>
void for_each_run(const labelling& all, Visit visit) {
  const size_t n = all.labels.size();
  parallel_for(all.streams / 2, [&](size_t pair) {
    uint32_t* const a = all.stream(2 * pair);
    uint32_t* const b = all.stream(2 * pair + 1);
    size_t i = piece_begin(n, all.streams, 2 * pair);
    const size_t middle = piece_begin(n, all.streams, 2 * pair + 1);
    const size_t last = piece_begin(n, all.streams, 2 * pair + 2);
    size_t k = middle;
    for (; k < last; ++i, ++k) {
      visit(i, a);
      visit(k, b);
    }
    if (i < middle) visit(i, a);
  });
}

// Calls place(i, to) for every run, where `to` is its place in the order by
// component. Once only.
template <class Place>
void place_runs(const labelling& all, Place place) {
  for_each_run(
      all, [&](size_t i, uint32_t* next) { place(i, next[all.labels[i]]++); });
}

// Runs of neighbouring rows belong together when they are at most `reach`
// columns apart: 0 joins those that share a column. At most kMaxChords runs,
// else "realloc failed". Bands of rows are labelled side by side and joined at
// their seams.
labelling label_runs(const run_view& runs, int32_t reach);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_LABELLING_H_
