// SPDX-License-Identifier: MIT
#include <algorithm>
#include <functional>
#include <utility>

#include "region/internal/runs.h"
#include "region/internal/set_runs.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::chord_buffer;

// The chords of a region as a range; none when it has no array.
struct chord_range {
  const chord* next;
  const chord* end;
  explicit chord_range(const region& r)
      : next(r.chords), end(r.chords + std::max(r.chord_count, 0)) {}
  bool done() const { return next == end; }
};

bool same_pixels(const chord& a, const chord& b) {
  return a.row == b.row && a.col_begin == b.col_begin && a.col_end == b.col_end;
}

void push_coalesced(const chord& c, chord_buffer* out) {
  chord* last = out->data() + out->size() - 1;
  if (out->size() > 0 && last->row == c.row &&
      c.col_begin <= int64_t{last->col_end} + 1) {
    last->col_end = std::max(last->col_end, c.col_end);
  } else {
    out->push(c);
  }
}

chord_buffer unite(chord_range a, chord_range b) {
  const std::less<chord> before;
  chord_buffer out;
  while (!a.done() || !b.done()) {
    const bool take_a = b.done() || (!a.done() && !before(*b.next, *a.next));
    if (take_a && !b.done() && same_pixels(*a.next, *b.next)) ++b.next;
    push_coalesced(take_a ? *a.next++ : *b.next++, &out);
  }
  return out;
}

chord_buffer intersect(chord_range a, chord_range b) {
  chord_buffer out;
  while (!a.done() && !b.done()) {
    const chord& p = *a.next;
    const chord& q = *b.next;
    if (p.row != q.row) {
      ++(p.row < q.row ? a : b).next;
    } else if (p.col_end < q.col_begin) {
      ++a.next;
    } else if (q.col_end < p.col_begin) {
      ++b.next;
    } else {
      out.push({std::max(p.col_begin, q.col_begin),
                std::min(p.col_end, q.col_end), p.row, 0});
      ++(p.col_end < q.col_end ? a : b).next;
    }
  }
  return out;
}

// What is left of `c` beside the chords from b on; b stays on the last of them,
// which may reach into the next chord of the first list as well.
void subtract_from(const chord& c, chord_range* b, chord_buffer* out) {
  int64_t begin = c.col_begin;
  for (;;) {
    const chord& hole = *b->next;
    if (begin < hole.col_begin)
      out->push({static_cast<int32_t>(begin), hole.col_begin - 1, c.row, 0});
    begin = int64_t{hole.col_end} + 1;
    const chord* following = b->next + 1;
    if (following == b->end || following->row != c.row ||
        following->col_begin > c.col_end)
      break;
    b->next = following;
  }
  if (begin <= c.col_end)
    out->push({static_cast<int32_t>(begin), c.col_end, c.row, 0});
}

chord_buffer subtract(chord_range a, chord_range b) {
  chord_buffer out;
  for (; !a.done(); ++a.next) {
    const chord& c = *a.next;
    while (!b.done() &&
           (b.next->row < c.row ||
            (b.next->row == c.row && b.next->col_end < c.col_begin)))
      ++b.next;
    if (b.done() || b.next->row > c.row || b.next->col_begin > c.col_end) {
      out.push(c);
    } else {
      subtract_from(c, &b, &out);
    }
  }
  return out;
}

template <typename Combine>
void combine_chords(const region& first, const region& second, region* result,
                    Combine combine) {
  if (first.child_count != 0 || second.child_count != 0) return;
  combine(chord_range(first), chord_range(second)).move_to(result);
}

template <typename Combine>
void combine_runs(const region& first, const region& second, region* result,
                  Combine combine) {
  if (first.child_count != 0 || second.child_count != 0) return;
  internal::with_region_errors([&] {
    combine(internal::runs_of(first), internal::runs_of(second))
        .move_to(result);
  });
}

}  // namespace

void union2(region& first, region& second, region* result) {
  combine_chords(first, second, result, unite);
}

void difference(region& first, region& second, region* result) {
  combine_chords(first, second, result, subtract);
}

void intersection(region& first, region& second, region* result) {
  combine_chords(first, second, result, intersect);
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
