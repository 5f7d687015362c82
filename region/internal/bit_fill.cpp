// SPDX-License-Identifier: MIT
#include "region/internal/bit_fill.h"

#include <algorithm>
#include <bit>

#include "region/internal/bit_lines.h"
#include "region/internal/row_list.h"

namespace vexo::internal {
namespace {

// Passes down or up. Textures and noise take 6 to 10.
constexpr int kMostPasses = 16;

struct columns {
  int32_t min;
  int32_t max;
};

columns columns_of(const run_view& runs) {
  columns c{runs.begins[0], runs.ends[0]};
  kernels().span(runs.begins, runs.ends, runs.count, &c.min, &c.max);
  return c;
}

// `reached`, some of the ones of `open`, with all others of the same runs of
// ones. A sum carries from a bit to the end of its run; down to its beginning 6
// steps reach 64 bits.
uint64_t flood(uint64_t reached, uint64_t open) {
  reached |= (open + reached) ^ open;
  reached &= open;
  for (int step = 1; step < 64; step *= 2) {
    reached |= open & reached >> step;
    open &= open >> step;
  }
  return reached;
}

// What the outside reaches of the gaps. Rows of the picture that hold runs have
// a line each; there is none for those between, which are outside. Behind the
// last column every line has an open one, in which the outside comes down.
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
    }
  }

  // Whether it came to an end.
  bool spread() {
    const size_t count = rows_.count();
    for (int pass = 0; pass < kMostPasses; ++pass) {
      bool grows = false;
      if (pass % 2 == 0) {
        for (size_t i = 0; i < count; ++i) grows |= enter(i, i - 1);
      } else {
        for (size_t i = count; i-- > 0;) grows |= enter(i, i + 1);
      }
      // What nothing enters from below has nothing new to send down.
      if (!grows && pass > 0) return true;
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
  // Takes over what is reached in line `from`, the one before or behind, or
  // everything if that is no neighbour, and floods the row with it. Whether
  // there was any news.
  bool enter(size_t row, size_t from) {
    const uint64_t* const open = open_.line(row);
    uint64_t* const reached = reached_.line(row);
    const bool near = are_neighbours(row, from);
    const uint64_t* const next = near ? reached_.line(from) : open;
    uint64_t carry = open[0] & 1;  // from the left side
    bool news = false;
    for (size_t w = 0; w < words_; ++w) {
      const uint64_t more = (next[w] | carry) & open[w] & ~reached[w];
      if (more != 0) {
        reached[w] = flood(reached[w] | more, open[w]);
        news = true;
      }
      carry = reached[w] >> 63;
    }
    if (news) flood_down(open, reached);
    return news;
  }

  // From words into those before them.
  void flood_down(const uint64_t* open, uint64_t* reached) const {
    uint64_t above = 0;
    for (size_t w = words_; w-- > 0;) {
      if (above > reached[w] >> 63) {
        const int length = std::countl_one(open[w]);
        if (length > 0) reached[w] |= ~uint64_t{0} << (64 - length);
      }
      above = reached[w] & 1;
    }
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
  // In nanoseconds: labels take 10 for a run, bits 33 for a word.
  const columns span = columns_of(runs);
  const double rows = int64_t{runs.rows[runs.count - 1]} - runs.rows[0] + 1.0;
  const auto words = static_cast<double>(words_for(span.min, span.max));
  return 33 * rows * words < 10 * static_cast<double>(runs.count) &&
         kernels().are_canonical(runs.rows, runs.begins, runs.ends, runs.count);
}

std::optional<run_buffer> bit_fill_up(const run_view& runs) {
  const row_list rows(runs);
  const columns span = columns_of(runs);
  outside out(runs, rows, span);
  if (!out.spread()) return std::nullopt;
  // There are no more runs than before; the rest is what append_runs() wants.
  run_buffer filled(runs.count + 32 * std::min<size_t>(out.words(), 128) +
                    kRunSlack);
  for (size_t i = 0; i < rows.count(); ++i) {
    append_runs(out.inside(i), out.words(), span.min,
                static_cast<int32_t>(rows.row(i)), &filled);
  }
  return filled;
}

}  // namespace vexo::internal
