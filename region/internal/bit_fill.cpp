// SPDX-License-Identifier: MIT
#include "region/internal/bit_fill.h"

#include <algorithm>
#include <bit>

#include "region/internal/bit_lines.h"
#include "region/internal/row_list.h"

namespace vexo::internal {
namespace {

// Passes down or up. Noise takes 4 to 8, shapes 3.
constexpr int kMostPasses = 16;

struct columns {
  int32_t min = INT32_MAX;
  int32_t max = INT32_MIN;
};

columns columns_of(const run_view& runs) {
  columns c;
  kernels().span(runs.begins, runs.ends, runs.count, &c.min, &c.max);
  return c;
}

// Every bit of `open` from which a way along `open` leads up to one of
// `reached`, itself included. 6 steps reach 64 bits.
uint64_t flood_down(uint64_t reached, uint64_t open) {
  for (int step = 1; step < 64; step *= 2) {
    reached |= open & reached >> step;
    open &= open >> step;
  }
  return reached;
}

// `reached`, bits of `open`, spreads to all bits that are connected to it along
// the row. A sum carries from a bit to the end of its run of ones.
void flood(const uint64_t* open, uint64_t* reached, size_t words) {
  uint64_t carry = 0;
  for (size_t w = 0; w < words; ++w) {
    const uint64_t sum = open[w] + reached[w];
    const uint64_t all = sum + carry;
    carry = (sum < open[w]) | (all < sum);
    reached[w] |= (all ^ open[w]) & open[w];
    reached[w] = flood_down(reached[w], open[w]);
  }
  uint64_t above = 0;
  for (size_t w = words; w-- > 0;) {
    const int length = std::countl_one(open[w]);
    if (above != 0 && length > 0) reached[w] |= ~uint64_t{0} << (64 - length);
    above = reached[w] & 1;
  }
}

// What the outside reaches of the gaps. Rows of the picture that hold runs have
// a line each; there is none for those between, which are outside.
class outside {
 public:
  outside(const run_view& runs, const row_list& rows, columns span)
      : rows_(rows),
        words_(words_for(span.min, span.max)),
        open_(rows.count(), words_),
        reached_(rows.count(), words_) {
    bit_loader loader(words_, span.min);
    for (size_t i = 0; i < rows.count(); ++i) {
      uint64_t* const open = open_.line(i);
      const size_t first = rows.first(i);
      loader.load(runs.begins + first, runs.ends + first, rows.last(i) - first,
                  open);
      for (size_t w = 0; w < words_; ++w) open[w] = ~open[w];
      // The sides; there is always a column behind the last one.
      reached_.line(i)[0] = open[0] & 1;
      reached_.line(i)[words_ - 1] |= uint64_t{1} << 63;
    }
  }

  // Whether it came to an end.
  bool spread() {
    const size_t count = rows_.count();
    for (size_t i = 0; i < count; ++i) {
      enter(i, i > 0 ? i - 1 : count);
      flood(open_.line(i), reached_.line(i), words_);
    }
    for (int pass = 1; pass < kMostPasses; ++pass) {
      bool grows = false;
      if (pass % 2 == 1) {
        for (size_t i = count; i-- > 0;) grows |= step(i, i + 1);
      } else {
        for (size_t i = 1; i < count; ++i) grows |= step(i, i - 1);
      }
      // Nothing came from below: nothing can go down again.
      if (!grows) return true;
    }
    return false;
  }

  size_t words() const { return words_; }
  // Filled row i: whatever is not outside.
  uint64_t* inside(size_t i) const {
    uint64_t* const line = reached_.line(i);
    for (size_t w = 0; w < words_; ++w) line[w] = ~line[w];
    return line;
  }

 private:
  bool step(size_t row, size_t from) {
    if (!enter(row, from)) return false;
    flood(open_.line(row), reached_.line(row), words_);
    return true;
  }

  // Takes over what is reached in line `from`, the one before or behind, or
  // everything if that is no neighbour. Whether that was news.
  bool enter(size_t row, size_t from) {
    const uint64_t* const open = open_.line(row);
    uint64_t* const reached = reached_.line(row);
    uint64_t news = 0;
    if (are_neighbours(row, from)) {
      const uint64_t* const next = reached_.line(from);
      for (size_t w = 0; w < words_; ++w) {
        const uint64_t more = next[w] & open[w] & ~reached[w];
        reached[w] |= more;
        news |= more;
      }
    } else {
      for (size_t w = 0; w < words_; ++w) {
        news |= open[w] & ~reached[w];
        reached[w] = open[w];
      }
    }
    return news != 0;
  }

  bool are_neighbours(size_t a, size_t b) const {
    if (b >= rows_.count()) return false;
    const int64_t distance = rows_.row(a) - rows_.row(b);
    return distance == 1 || distance == -1;
  }

  const row_list& rows_;
  size_t words_;
  bit_lines open_;
  bit_lines reached_;
};

}  // namespace

bool dense_gaps(const run_view& runs) {
  if (runs.count == 0) return false;
  // In nanoseconds: labels take 12 for a gap; bits 2 for a run, 10 for a word.
  const columns span = columns_of(runs);
  const double rows = int64_t{runs.rows[runs.count - 1]} - runs.rows[0] + 1.0;
  const auto words = static_cast<double>(words_for(span.min, span.max));
  return 10 * rows * words < 10 * static_cast<double>(runs.count) &&
         kernels().are_canonical(runs.rows, runs.begins, runs.ends, runs.count);
}

std::optional<run_buffer> bit_fill_up(const run_view& runs) {
  const row_list rows(runs);
  const columns span = columns_of(runs);
  outside out(runs, rows, span);
  if (!out.spread()) return std::nullopt;
  // There are no more runs than before; the rest is what append_runs() wants.
  run_buffer filled(runs.count + 32 * std::min<size_t>(out.words(), 128) + kRunSlack);
  for (size_t i = 0; i < rows.count(); ++i) {
    append_runs(out.inside(i), out.words(), span.min,
                static_cast<int32_t>(rows.row(i)), &filled);
  }
  return filled;
}

}  // namespace vexo::internal
