// SPDX-License-Identifier: MIT
//
// Both inputs are walked in stretches of whole rows, which are combined as
// sorted keys: no branch depends on the picture. Careless runs and rows too
// wide for keys are merged run by run.
#include "region/internal/set_runs.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "region/internal/bit_rows.h"
#include "region/internal/parallel.h"
#include "region/internal/run_keys.h"

namespace vexo::internal {
namespace {

enum class set_operation { unite, subtract, intersect };

// Runs first..last - 1 of a list.
struct stretch {
  const run_view& runs;
  size_t first;
  size_t last;

  size_t count() const { return last - first; }
  bool done() const { return first == last; }
  int32_t row() const { return runs.rows[first]; }
  int32_t begin() const { return runs.begins[first]; }
  int32_t end() const { return runs.ends[first]; }
};

run_view view_of(const stretch& s) {
  return {s.runs.rows + s.first, s.runs.begins + s.first, s.runs.ends + s.first,
          s.count()};
}

// Appends runs to room that is known to be large enough. The run that may
// still grow is kept in hand.
class writer {
 public:
  writer(run_buffer* out, size_t room) : out_(out) {
    const size_t n = out->size();
    out->ensure(n + room);
    rows_ = out->rows() + n;
    begins_ = out->begins() + n;
    ends_ = out->ends() + n;
  }
  ~writer() {
    if (end_ >= begin_) put();
    out_->set_size(out_->size() + n_);
  }
  writer(const writer&) = delete;
  writer& operator=(const writer&) = delete;

  // A run that starts no earlier than the last one of its row.
  void add(int32_t row, int32_t begin, int32_t end) {
    if (row == row_ && begin <= end_ + 1) {
      end_ = std::max<int64_t>(end_, end);
      return;
    }
    if (end_ >= begin_) put();
    row_ = row;
    begin_ = begin;
    end_ = end;
  }

 private:
  void put() {
    rows_[n_] = row_;
    begins_[n_] = begin_;
    ends_[n_] = static_cast<int32_t>(end_);
    ++n_;
  }

  run_buffer* out_;
  int32_t* rows_;
  int32_t* begins_;
  int32_t* ends_;
  size_t n_ = 0;
  int32_t row_ = 0;
  int32_t begin_ = 0;
  int64_t end_ = INT64_MIN / 2;  // none in hand yet
};

void add_all(stretch a, writer* out) {
  for (; !a.done(); ++a.first) out->add(a.row(), a.begin(), a.end());
}

// Row and begin as one number; in the lowest row, too.
int64_t place(const stretch& s) {
  return int64_t{s.row()} * (int64_t{1} << 32) +
         (s.begin() - int64_t{INT32_MIN});
}

void unite(stretch a, stretch b, writer* out) {
  while (!a.done() && !b.done()) {
    if (place(a) < place(b)) {
      out->add(a.row(), a.begin(), a.end());
      ++a.first;
    } else {
      out->add(b.row(), b.begin(), b.end());
      ++b.first;
    }
  }
  add_all(a, out);
  add_all(b, out);
}

void subtract(stretch a, stretch b, writer* out) {
  for (; !a.done(); ++a.first) {
    const int32_t row = a.row();
    int64_t begin = a.begin();
    while (!b.done() && (b.row() < row || (b.row() == row && b.end() < begin)))
      ++b.first;
    while (!b.done() && b.row() == row && b.begin() <= a.end()) {
      if (begin < b.begin())
        out->add(row, static_cast<int32_t>(begin), b.begin() - 1);
      begin = int64_t{b.end()} + 1;
      if (begin > a.end()) break;  // b may reach into the next run
      ++b.first;
    }
    if (begin <= a.end()) out->add(row, static_cast<int32_t>(begin), a.end());
  }
}

void intersect(stretch a, stretch b, writer* out) {
  while (!a.done() && !b.done()) {
    if (a.row() != b.row()) {
      ++(a.row() < b.row() ? a : b).first;
      continue;
    }
    const int32_t begin = std::max(a.begin(), b.begin());
    const int32_t end = std::min(a.end(), b.end());
    if (begin <= end) out->add(a.row(), begin, end);
    ++(a.end() < b.end() ? a : b).first;
  }
}

class combination {
 public:
  explicit combination(set_operation operation)
      : operation_(operation), rows_(kernels()), keys_(current_key_kernels()) {}

  // Two stretches over the same rows.
  void combine(stretch a, stretch b, run_buffer* out) {
    while (!a.done() && !b.done()) {
      const int32_t row = std::min(likely_row(a), likely_row(b));
      const stretch from_a = take_until(&a, row);
      const stretch from_b = take_until(&b, row);
      if (from_b.done()) {
        if (operation_ != set_operation::intersect) append(from_a, out);
      } else if (from_a.done()) {
        if (operation_ == set_operation::unite) append(from_b, out);
      } else if (!combine_keys(from_a, from_b, out)) {
        combine_plain(from_a, from_b, out);
      }
    }
    if (operation_ != set_operation::intersect) append(a, out);
    if (operation_ == set_operation::unite) append(b, out);
  }

 private:
  // Runs of either list that are combined at once, and the rest of their row.
  static constexpr size_t kRuns = 512;

  static int32_t likely_row(const stretch& s) {
    return s.runs.rows[std::min(s.first + kRuns, s.last) - 1];
  }

  // Takes the rows up to `row`, which is not above likely_row(*s).
  stretch take_until(stretch* s, int32_t row) const {
    const size_t first = s->first;
    const int32_t* rows = s->runs.rows;
    const size_t likely = std::min(first + kRuns, s->last);
    s->first =
        rows[likely - 1] <= row
            ? rows_.row_end(rows, likely - 1, s->last)
            : static_cast<size_t>(
                  std::upper_bound(rows + first, rows + likely, row) - rows);
    return {s->runs, first, s->first};
  }

  bool is_canonical(const stretch& s) const {
    return rows_.are_canonical(s.runs.rows + s.first, s.runs.begins + s.first,
                               s.runs.ends + s.first, s.count());
  }

  void append(const stretch& s, run_buffer* out) const {
    if (!is_canonical(s)) {
      writer w(out, s.count());
      add_all(s, &w);
      return;
    }
    const size_t n = out->size();
    out->ensure(n + s.count());
    std::copy_n(s.runs.rows + s.first, s.count(), out->rows() + n);
    std::copy_n(s.runs.begins + s.first, s.count(), out->begins() + n);
    std::copy_n(s.runs.ends + s.first, s.count(), out->ends() + n);
    out->set_size(n + s.count());
  }

  // False, and nothing written, when a stretch is not canonical or too large
  // for keys.
  bool combine_keys(const stretch& a, const stretch& b, run_buffer* out) {
    room_.ensure(3, a.count() + b.count() + 1);
    const key_list of_a = room_.list(0, a.count());
    const key_list of_b = room_.list(1, b.count());
    if (!make_keys(a, b, of_a, of_b)) {
      columns_ = {};
      for (const stretch& s : {a, b}) keys_.widen(view_of(s), &columns_);
      if (!columns_.frame(&frame_) || !make_keys(a, b, of_a, of_b))
        return false;
    }
    if (!keys_.are_apart(of_a) || !keys_.are_apart(of_b)) return false;
    const size_t n = out->size();
    out->ensure(n + a.count() + b.count() + kRunSlack);
    int32_t* rows = out->rows() + n;
    int32_t* begins = out->begins() + n;
    int32_t* ends = out->ends() + n;
    size_t written;
    if (operation_ == set_operation::unite) {
      const key_list both = merged(of_a, of_b);
      written = keys_.write_united(both, frame_, rows, begins, ends);
    } else {
      const bool common = operation_ == set_operation::intersect;
      const key_list both = merged(of_a, common ? of_b : gaps_of(of_b));
      written = keys_.write_common(both, 2, frame_, rows, begins, ends);
    }
    out->set_size(n + written);
    return true;
  }

  // In the frame of the stretches before, as far as columns go. False when they
  // lie outside.
  bool make_keys(const stretch& a, const stretch& b, const key_list& of_a,
                 const key_list& of_b) {
    frame_.first_row = std::min(a.row(), b.row());
    return keys_.make(view_of(a), frame_, of_a).within(frame_) &&
           keys_.make(view_of(b), frame_, of_b).within(frame_);
  }

  key_list merged(const key_list& a, const key_list& b) {
    const key_list both = room_.list(2, a.count + b.count);
    keys_.merge(a, b, both);
    return both;
  }

  // What lies between the runs, in their place.
  static key_list gaps_of(const key_list& runs) {
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

  void combine_plain(const stretch& a, const stretch& b,
                     run_buffer* out) const {
    writer w(out, a.count() + b.count());
    switch (operation_) {
      case set_operation::unite:
        return unite(a, b, &w);
      case set_operation::subtract:
        return subtract(a, b, &w);
      case set_operation::intersect:
        return intersect(a, b, &w);
    }
  }

  const set_operation operation_;
  const bit_kernels& rows_;
  const key_kernels& keys_;
  key_room room_;
  key_columns columns_;
  key_frame frame_;
};

// The first run of the row that run i of `from` lies in, in either list.
size_t row_begin(const run_view& list, const run_view& from, size_t i) {
  if (i == from.count) return list.count;
  return static_cast<size_t>(
      std::lower_bound(list.rows, list.rows + list.count, from.rows[i]) -
      list.rows);
}

// Room that is not outgrown, as a rule: growing copies everything.
size_t expected_runs(set_operation operation, size_t a, size_t b) {
  constexpr size_t kLastStretches = 2048;
  return (operation == set_operation::unite ? a + b : std::max(a, b)) +
         kLastStretches;
}

// Pieces of whole rows, each with about as many runs, side by side.
run_buffer combine(set_operation operation, const run_view& a,
                   const run_view& b) {
  const run_view& larger = a.count >= b.count ? a : b;
  const size_t pieces = piece_count(larger.count, 16384);
  std::vector<run_buffer> parts;
  while (parts.size() < pieces) parts.emplace_back(size_t{0});
  parallel_for(pieces, [&](size_t p) {
    const size_t first = piece_begin(larger.count, pieces, p);
    const size_t last = piece_begin(larger.count, pieces, p + 1);
    const auto part_of = [&](const run_view& list) {
      return stretch{list, p == 0 ? 0 : row_begin(list, larger, first),
                     row_begin(list, larger, last)};
    };
    const stretch from_a = part_of(a);
    const stretch from_b = part_of(b);
    parts[p].ensure(expected_runs(operation, from_a.count(), from_b.count()));
    combination(operation).combine(from_a, from_b, &parts[p]);
  });
  return joined(std::move(parts));
}

}  // namespace

run_buffer unite_runs(const run_view& a, const run_view& b) {
  return combine(set_operation::unite, a, b);
}

run_buffer subtract_runs(const run_view& a, const run_view& b) {
  return combine(set_operation::subtract, a, b);
}

run_buffer intersect_runs(const run_view& a, const run_view& b) {
  return combine(set_operation::intersect, a, b);
}

run_buffer clip_runs(const run_view& runs, int32_t width, int32_t height) {
  run_buffer out;
  for (size_t i = 0; i < runs.count; ++i) {
    const int32_t begin = std::max(runs.begins[i], 0);
    const int32_t end = std::min(runs.ends[i], width - 1);
    if (runs.rows[i] >= 0 && runs.rows[i] < height && begin <= end)
      out.push(runs.rows[i], begin, end);
  }
  return out;
}

}  // namespace vexo::internal
