// SPDX-License-Identifier: MIT
//
// Canonical chords are combined as sorted keys, stretch by stretch. Few chords,
// careless ones and those whose fourth words matter go through plain merges,
// which take them as they come.
#include "region/internal/set_chords.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <utility>

#include "region/internal/runs.h"
#include "region/internal/set_stretches.h"

namespace vexo::internal {
namespace {

struct chord_range {
  const chord* next;
  const chord* end;
  explicit chord_range(const chord_view& v)
      : next(v.chords), end(v.chords + v.count) {}
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

chord_buffer combine_plain(set_operation operation, const chord_view& a,
                           const chord_view& b) {
  switch (operation) {
    case set_operation::unite:
      return unite(chord_range(a), chord_range(b));
    case set_operation::subtract:
      return subtract(chord_range(a), chord_range(b));
    case set_operation::intersect:
      break;
  }
  return intersect(chord_range(a), chord_range(b));
}

using chord_stretch = stretch<chord_view>;

class chord_combination {
 public:
  explicit chord_combination(set_operation operation)
      : operation_(operation), keys_(operation) {}

  // Two stretches over the same rows. False, and *out of no use, when only the
  // plain merge will do: that walks over what has no partner in this piece, and
  // where rows do not ascend it may stay there in the next.
  bool combine(chord_stretch a, chord_stretch b, chord_buffer* out) {
    const bool is_last = ends_list(a) && ends_list(b);
    while (is_last ? matters(a, b) : !a.done() || !b.done()) {
      const int32_t row = std::min(last_row(a), last_row(b));
      if (!combine_rows(taken(&a, row), taken(&b, row), out)) return false;
      if (!follows(a, row) || !follows(b, row)) return false;
    }
    return true;
  }

 private:
  static bool ends_list(const chord_stretch& s) {
    return s.last == s.runs.count;
  }
  // Whether anything can come of what is left.
  bool matters(const chord_stretch& a, const chord_stretch& b) const {
    if (operation_ == set_operation::unite) return !a.done() || !b.done();
    return !a.done() && (operation_ == set_operation::subtract || !b.done());
  }
  static int32_t last_row(const chord_stretch& s) {
    return s.done() ? INT32_MAX : likely_row(s);
  }
  static chord_stretch taken(chord_stretch* s, int32_t row) {
    return s->done() ? *s : take_until(s, row);
  }
  static bool follows(const chord_stretch& s, int32_t row) {
    return s.done() || s.row() > row;
  }

  bool combine_rows(const chord_stretch& a, const chord_stretch& b,
                    chord_buffer* out) {
    const bool labels_in_a = split(a, &of_a_);
    const bool labels_in_b = split(b, &of_b_);
    if (a.done() || b.done()) {
      if (!is_canonical(of_a_) || !is_canonical(of_b_)) return false;
      if (operation_ != set_operation::intersect) append(a, out);
      if (operation_ == set_operation::unite) append(b, out);
      return true;
    }
    if (labels_in_a && operation_ != set_operation::intersect) return false;
    if (labels_in_b && operation_ == set_operation::unite) return false;
    return combine_keys(out);
  }

  // Returns whether some fourth word is not 0.
  static bool split(const chord_stretch& s, run_buffer* to) {
    to->ensure(s.count());
    to->set_size(s.count());
    return current_key_kernels().split(s.runs.chords + s.first, s.count(),
                                       to->rows(), to->begins(),
                                       to->ends()) != 0;
  }
  static bool is_canonical(const run_buffer& runs) {
    return kernels().are_canonical(runs.rows(), runs.begins(), runs.ends(),
                                   runs.size());
  }

  static void append(const chord_stretch& s, chord_buffer* out) {
    const size_t n = out->size();
    out->ensure(n + s.count());
    std::copy_n(s.runs.chords + s.first, s.count(), out->data() + n);
    out->set_size(n + s.count());
  }

  bool combine_keys(chord_buffer* out) {
    result_.ensure(of_a_.size() + of_b_.size() + kRunSlack);
    size_t count;
    if (!keys_.combine(view_of(of_a_), view_of(of_b_), result_.rows(),
                       result_.begins(), result_.ends(), &count))
      return false;
    const size_t n = out->size();
    out->ensure(n + count);
    current_key_kernels().join(result_.rows(), result_.begins(), result_.ends(),
                               count, out->data() + n);
    out->set_size(n + count);
    return true;
  }

  const set_operation operation_;
  key_combination keys_;
  run_buffer of_a_, of_b_, result_;
};

// Where rows have few chords the branches of a plain merge are foreseen, and it
// is faster by up to a half (bench_set_operations): the one place where the
// form is chosen. A union takes more branches than the others.
bool few_in_a_row(set_operation operation, const chord_view& v) {
  const int64_t few = operation == set_operation::unite ? 6 : 9;
  if (v.count == 0) return true;
  const int64_t rows = int64_t{v.row(v.count - 1)} - v.row(0) + 1;
  return static_cast<int64_t>(v.count) < few * rows;
}

}  // namespace

chord_buffer combine_chords(set_operation operation, const chord_view& first,
                            const chord_view& second) {
  if (few_in_a_row(operation, first) && few_in_a_row(operation, second))
    return combine_plain(operation, first, second);
  std::atomic<bool> done{true};
  std::vector<chord_buffer> parts = combine_pieces<chord_buffer>(
      first, second,
      [&](const chord_stretch& a, const chord_stretch& b, chord_buffer* part) {
        part->ensure(operation == set_operation::unite
                         ? a.count() + b.count()
                         : std::max(a.count(), b.count()));
        if (!chord_combination(operation).combine(a, b, part))
          done.store(false, std::memory_order_relaxed);
      });
  return done.load() ? joined(std::move(parts))
                     : combine_plain(operation, first, second);
}

}  // namespace vexo::internal
