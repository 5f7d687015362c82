// SPDX-License-Identifier: MIT
#include "region/internal/set_chords.h"
#include "region/internal/set_runs.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::set_operation;
using internal::with_region_errors;

void combine_chords(set_operation operation, const region& first,
                    const region& second, region* result) {
  if (first.child_count != 0 || second.child_count != 0) return;
  with_region_errors([&] {
    internal::combine_chords(operation, internal::chords_of(first),
                             internal::chords_of(second))
        .move_to(result);
  });
}

template <typename Combine>
void combine_runs(const region& first, const region& second, region* result,
                  Combine combine) {
  if (first.child_count != 0 || second.child_count != 0) return;
  with_region_errors([&] {
    combine(internal::runs_of(first), internal::runs_of(second))
        .move_to(result);
  });
}

}  // namespace

void union2(region& first, region& second, region* result) {
  combine_chords(set_operation::unite, first, second, result);
}

void difference(region& first, region& second, region* result) {
  combine_chords(set_operation::subtract, first, second, result);
}

void intersection(region& first, region& second, region* result) {
  combine_chords(set_operation::intersect, first, second, result);
}

void union2_y(region& first, region& second, region* result) {
  combine_runs(first, second, result, internal::unite_runs);
}

void difference_y(region& first, region& second, region* result) {
  combine_runs(first, second, result, internal::subtract_runs);
}

void intersection_y(region& first, region& second, region* result) {
  combine_runs(first, second, result, internal::intersect_runs);
}

}  // namespace vexo
