// SPDX-License-Identifier: MIT
#include "region/internal/set_keys.h"

#include <algorithm>

namespace vexo::internal {
namespace {

// What lies between the runs, in their place.
key_list gaps_of(const key_list& runs) {
  // The begins move up by one place: they take the room of the ends.
  for (size_t i = 0; i < runs.count; ++i) {
    runs.begins[i] -= 1;
    runs.ends[i] += 1;
  }
  const key_list gaps{runs.ends - 1, runs.begins, runs.count + 1};
  gaps.begins[0] = 0;
  gaps.ends[runs.count] = kLastKey - 1;
  return gaps;
}

}  // namespace

bool key_combination::combine(const run_view& a, const run_view& b,
                              int32_t* rows, int32_t* begins, int32_t* ends,
                              size_t* count) {
  room_.ensure(3, a.count + b.count + 1);
  const key_list of_a = room_.list(0, a.count);
  const key_list of_b = room_.list(1, b.count);
  if (!make_keys(a, b, of_a, of_b)) {
    columns_ = {};
    for (const run_view& runs : {a, b}) keys_.widen(runs, &columns_);
    if (!columns_.frame(&frame_) || !make_keys(a, b, of_a, of_b)) return false;
  }
  if (!keys_.are_apart(of_a) || !keys_.are_apart(of_b)) return false;
  if (operation_ == set_operation::unite) {
    *count = keys_.write_united(merged(of_a, of_b), frame_, rows, begins, ends);
  } else {
    const bool common = operation_ == set_operation::intersect;
    const key_list both = merged(of_a, common ? of_b : gaps_of(of_b));
    *count = keys_.write_common(both, 2, frame_, rows, begins, ends);
  }
  return true;
}

// In the frame of the lists before, as far as columns go. False when they lie
// outside.
bool key_combination::make_keys(const run_view& a, const run_view& b,
                                const key_list& of_a, const key_list& of_b) {
  frame_.first_row = std::min(a.row(0), b.row(0));
  return keys_.make(a, frame_, of_a).within(frame_) &&
         keys_.make(b, frame_, of_b).within(frame_);
}

key_list key_combination::merged(const key_list& a, const key_list& b) const {
  const key_list both = room_.list(2, a.count + b.count);
  keys_.merge(a, b, both);
  return both;
}

}  // namespace vexo::internal
