// SPDX-License-Identifier: MIT
//
// Both inputs are walked in stretches of whole rows, which are combined as
// sorted keys: no branch depends on the picture. Careless runs and rows too
// wide for keys are merged run by run.
#include "region/internal/set_runs.h"

#include <algorithm>

#include "region/internal/bit_rows.h"
#include "region/internal/set_keys.h"
#include "region/internal/set_stretches.h"

namespace vexo::internal {
namespace {

using run_stretch = stretch<run_view>;

run_view view_of(const run_stretch& s) {
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

void add_all(run_stretch a, writer* out) {
  for (; !a.done(); ++a.first) out->add(a.row(), a.begin(), a.end());
}

// Row and begin as one number; in the lowest row, too.
int64_t place(const run_stretch& s) {
  return int64_t{s.row()} * (int64_t{1} << 32) +
         (s.begin() - int64_t{INT32_MIN});
}

void unite(run_stretch a, run_stretch b, writer* out) {
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

void subtract(run_stretch a, run_stretch b, writer* out) {
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

void intersect(run_stretch a, run_stretch b, writer* out) {
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
      : operation_(operation), keys_(operation) {}

  // Two stretches over the same rows.
  void combine(run_stretch a, run_stretch b, run_buffer* out) {
    while (!a.done() && !b.done()) {
      const int32_t row = std::min(likely_row(a), likely_row(b));
      const run_stretch from_a = take_until(&a, row);
      const run_stretch from_b = take_until(&b, row);
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
  static void append(const run_stretch& s, run_buffer* out) {
    const run_view runs = view_of(s);
    if (!kernels().are_canonical(runs.rows, runs.begins, runs.ends,
                                 runs.count)) {
      writer w(out, runs.count);
      add_all(s, &w);
      return;
    }
    const size_t n = out->size();
    out->ensure(n + runs.count);
    std::copy_n(runs.rows, runs.count, out->rows() + n);
    std::copy_n(runs.begins, runs.count, out->begins() + n);
    std::copy_n(runs.ends, runs.count, out->ends() + n);
    out->set_size(n + runs.count);
  }

  bool combine_keys(const run_stretch& a, const run_stretch& b,
                    run_buffer* out) {
    const size_t n = out->size();
    out->ensure(n + a.count() + b.count() + kRunSlack);
    size_t written;
    if (!keys_.combine(view_of(a), view_of(b), out->rows() + n,
                       out->begins() + n, out->ends() + n, &written))
      return false;
    out->set_size(n + written);
    return true;
  }

  void combine_plain(const run_stretch& a, const run_stretch& b,
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
  key_combination keys_;
};

// Room that is not outgrown, as a rule: growing copies everything.
size_t expected_runs(set_operation operation, size_t a, size_t b) {
  constexpr size_t kLastStretches = 2048;
  return (operation == set_operation::unite ? a + b : std::max(a, b)) +
         kLastStretches;
}

run_buffer combine(set_operation operation, const run_view& a,
                   const run_view& b) {
  return joined(combine_pieces<run_buffer>(
      a, b,
      [&](const run_stretch& of_a, const run_stretch& of_b, run_buffer* part) {
        part->ensure(expected_runs(operation, of_a.count(), of_b.count()));
        combination(operation).combine(of_a, of_b, part);
      }));
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
