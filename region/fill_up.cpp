// SPDX-License-Identifier: MIT
//
// A gap is what lies between two neighbouring runs of a row. Gaps that share a
// column in neighbouring rows belong together; so do all that share one with
// the outside, which is everything left of a row's first run, right of its last
// run, and every row without runs. What does not belong to the outside is a
// hole. This is the same as labelling the background inside the bounding box,
// without building it. Where runs are many it is built, in bits.
#include <algorithm>
#include <optional>
#include <utility>

#include "region/internal/bit_fill.h"
#include "region/internal/memory.h"
#include "region/internal/row_overlaps.h"
#include "region/internal/union_find.h"
#include "region/internal/views.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::intervals;
using internal::run_buffer;
using internal::run_view;

constexpr int32_t kOutside = 0;  // the smallest label, so always its own root

// The runs first..last - 1 of a row. Gap i, first <= i <= last, lies before run
// i; gap first and gap last are outside.
struct row_range {
  size_t first;
  size_t last;

  size_t count() const { return last - first; }
};

// Labels every gap. Runs of a row must not touch. Label i is that of the gap
// before run i, kOutside for the first run of a row; one more stands at the
// end. So the entry behind a row is that of the gap behind its last run.
class gap_labeller {
 public:
  explicit gap_labeller(const run_view& runs)
      : runs_(runs),
        labels_(runs.count + 1),
        parent_(runs.count + 2),
        count_overlaps_(internal::current_count_overlaps()) {
    parent_[kOutside] = kOutside;
    row_range above{0, 0};
    for (size_t i = 0; i < runs.count;) {
      const row_range row{i, internal::row_end(runs, i)};
      labels_[row.first] = labels_[row.last] = kOutside;
      if (i > 0 && int64_t{runs.rows[i - 1]} + 1 == runs.rows[i]) {
        label_row(above, row);
      } else {
        open(above);
        std::fill(&labels_[row.first], &labels_[row.last], kOutside);
      }
      above = row;
      i = row.last;
    }
    open(above);
    for (int32_t i = 1; i < next_; ++i) parent_[i] = parent_[parent_[i]];
  }

  // Whether run i begins a run of the result.
  bool separates(size_t i) const { return parent_[labels_[i]] == kOutside; }

 private:
  void label_row(const row_range& above, const row_range& row) {
    open_first(above, row);
    open_last(above, row);
    const size_t gaps = row.count() - 1;
    if (gaps == 0) return;
    find_overlaps(above, row, gaps);
    const int32_t* const labels_above = &labels_[above.first];
    int32_t* const labels = &labels_[row.first + 1];
    size_t pairs = 0;
    for (size_t i = 0; i < gaps; ++i) {
      const size_t low = low_[i], high = high_[i];
      labels[i] = parent_[next_] = next_;
      next_ += low > high;
      const int32_t* const from = low <= high ? labels_above + low : labels + i;
      const int32_t label = labels[i] = *from;
      pairs_[pairs] = {label, labels_above[std::min(low + 1, above.count())]};
      pairs += low < high;
      for (size_t k = low + 2; k <= high; ++k) {
        pairs_[pairs++] = {label, labels_above[k]};
      }
    }
    for (size_t i = 0; i < pairs; ++i) {
      internal::unite(parent_.data(), pairs_[i].first, pairs_[i].second);
    }
  }

  // For each inner gap of the row, the gaps low..high of the row above share a
  // column with it; none if low > high. A gap of the row above ends before
  // run k begins, and the next one begins behind its end: hence begins and ends
  // change places, and what must not touch lies two columns apart.
  void find_overlaps(const row_range& above, const row_range& row,
                     size_t gaps) {
    low_.ensure(gaps);
    high_.ensure(gaps);
    const intervals walls{runs_.ends + above.first, runs_.begins + above.first,
                          above.count()};
    const intervals inner{runs_.ends + row.first, runs_.begins + row.first + 1,
                          gaps};
    count_overlaps_(walls, inner, -2, low_.data(), high_.data());
    pairs_.ensure(gaps + 1 +
                  internal::count_contacts(low_.data(), high_.data(), gaps));
  }

  // Gaps above that reach to the left of the row's first run.
  void open_first(const row_range& above, const row_range& row) {
    const int64_t column = int64_t{runs_.begins[row.first]} - 1;
    for (size_t k = above.first + 1;
         k < above.last && int64_t{runs_.ends[k - 1]} + 1 <= column; ++k) {
      internal::unite(parent_.data(), labels_[k], kOutside);
    }
  }

  // Gaps above that reach to the right of the row's last run.
  void open_last(const row_range& above, const row_range& row) {
    const int64_t column = int64_t{runs_.ends[row.last - 1]} + 1;
    for (size_t k = above.last;
         k-- > above.first + 1 && int64_t{runs_.begins[k]} - 1 >= column;) {
      internal::unite(parent_.data(), labels_[k], kOutside);
    }
  }

  // Nothing lies below this row.
  void open(const row_range& row) {
    for (size_t i = row.first; i < row.last; ++i) {
      internal::unite(parent_.data(), labels_[i], kOutside);
    }
  }

  const run_view& runs_;
  buffer<int32_t> labels_;
  buffer<int32_t> parent_;
  internal::count_overlaps_function count_overlaps_;
  int32_t next_ = kOutside + 1;
  buffer<uint32_t> low_, high_;
  buffer<internal::label_pair> pairs_;
};

// Calls write(o, row, begin, end) with the runs of the filled region: run o
// again and again while it grows, without a branch on the picture. Returns how
// many there are.
template <class Write>
size_t write_filled(const run_view& runs, const gap_labeller& gaps,
                    Write write) {
  size_t written = 0;
  int32_t begin = 0;
  for (size_t i = 0; i < runs.count; ++i) {
    const bool separate = gaps.separates(i);
    begin = separate ? runs.begins[i] : begin;
    written += separate;
    write(written - 1, runs.rows[i], begin, runs.ends[i]);
  }
  return written;
}

// In unsigned arithmetic, which may wrap and which the compiler can widen.
bool touches_next(const run_view& runs, size_t i) {
  const int32_t end = runs.ends[i], begin = runs.begins[i + 1];
  const bool near =
      static_cast<uint32_t>(begin) - 1 == static_cast<uint32_t>(end);
  return (runs.rows[i] == runs.rows[i + 1]) & ((end >= begin) | near);
}

// The same pixels in runs that do not touch.
run_buffer coalesced(const run_view& runs) {
  run_buffer out(runs.count);
  for (size_t i = 0; i < runs.count; ++i) {
    const int32_t begin = runs.begins[i];
    int32_t end = runs.ends[i];
    for (; i + 1 < runs.count && touches_next(runs, i); ++i) {
      end = std::max(end, runs.ends[i + 1]);
    }
    out.push(runs.rows[i], begin, end);
  }
  return out;
}

run_buffer runs_from(const internal::chord_view& chords) {
  run_buffer runs(chords.count);
  for (size_t i = 0; i < chords.count; ++i) {
    runs.rows()[i] = chords.row(i);
    runs.begins()[i] = chords.begin(i);
    runs.ends()[i] = chords.end(i);
  }
  runs.set_size(chords.count);
  return runs;
}

// Calls fill(runs) with runs of which none touch.
template <class Fill>
void with_separate_runs(const run_view& runs, Fill fill) {
  if (runs.count > internal::kMaxChords) internal::throw_realloc_failed();
  bool touching = false;
  for (size_t i = 0; i + 1 < runs.count; ++i) touching |= touches_next(runs, i);
  if (touching) {
    const run_buffer separate = coalesced(runs);
    fill(view_of(separate));
  } else {
    fill(runs);
  }
}

std::optional<run_buffer> filled_in_bits(const run_view& runs) {
  if (!internal::dense_gaps(runs)) return std::nullopt;
  return internal::bit_fill_up(runs);
}

void carry_image_size(const region& input, region* result) {
  result->width = input.width;
  result->height = input.height;
}

}  // namespace

void fill_up(region& input, region* result) {
  const auto chords = internal::chords_of(input);
  if (chords.count == 0 || input.child_count > 0) return;
  const run_buffer unpacked = runs_from(chords);
  internal::chord_buffer filled(chords.count);
  with_separate_runs(view_of(unpacked), [&filled](const run_view& runs) {
    chord* const out = filled.data();
    if (const auto bits = filled_in_bits(runs)) {
      filled.set_size(bits->size());
      for (size_t i = 0; i < bits->size(); ++i) {
        out[i] = {bits->begins()[i], bits->ends()[i], bits->rows()[i], 0};
      }
      return;
    }
    filled.set_size(
        write_filled(runs, gap_labeller(runs),
                     [out](size_t o, int32_t row, int32_t begin, int32_t end) {
                       out[o] = {begin, end, row, 0};
                     }));
  });
  carry_image_size(input, result);
  filled.move_to(result);
}

void fill_up_y(const region& input, region* result) {
  const auto all = internal::runs_of(input);
  if (all.count == 0 || input.child_count > 0) return;
  run_buffer filled(all.count);
  with_separate_runs(all, [&filled](const run_view& runs) {
    if (auto bits = filled_in_bits(runs)) {
      filled = std::move(*bits);
      return;
    }
    int32_t* const rows = filled.rows();
    int32_t* const begins = filled.begins();
    int32_t* const ends = filled.ends();
    filled.set_size(
        write_filled(runs, gap_labeller(runs),
                     [=](size_t o, int32_t row, int32_t begin, int32_t end) {
                       rows[o] = row;
                       begins[o] = begin;
                       ends[o] = end;
                     }));
  });
  carry_image_size(input, result);
  filled.move_to(result);
}

void fill_up_y2(const region& input, region* result) {
  fill_up_y(input, result);
}

}  // namespace vexo
