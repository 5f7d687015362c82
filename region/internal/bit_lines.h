// SPDX-License-Identifier: MIT
//
// Rows of bits in memory, and the way from runs and back.
#ifndef VEXO_REGION_INTERNAL_BIT_LINES_H_
#define VEXO_REGION_INTERNAL_BIT_LINES_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "region/internal/bit_rows.h"
#include "region/internal/memory.h"

namespace vexo::internal {

inline size_t whole_blocks(int64_t words) {
  const auto n = static_cast<size_t>(words);
  return (n + kWordsPerBlock - 1) / kWordsPerBlock * kWordsPerBlock;
}

// Words for columns min..max and for the mark behind the last of them.
inline size_t words_for(int64_t min, int64_t max) {
  return whole_blocks((max - min + 1) / 64 + 1);
}

// `count` lines of `words` words, with `guard` words of zeros before and after
// each; lines start at whole blocks. All zero at first.
class bit_lines {
 public:
  bit_lines(size_t count, size_t words, size_t guard = 0)
      : words_(words),
        guard_(whole_blocks(static_cast<int64_t>(guard))),
        stride_(words + 2 * guard_),
        memory_(count * stride_ + kWordsPerBlock),
        first_(memory_.data()) {
    std::memset(first_, 0, memory_.size() * sizeof(uint64_t));
    while (reinterpret_cast<uintptr_t>(first_) % (8 * kWordsPerBlock) != 0)
      ++first_;
  }

  size_t words() const { return words_; }
  uint64_t* line(size_t i) const { return first_ + i * stride_ + guard_; }

 private:
  size_t words_;
  size_t guard_;
  size_t stride_;
  buffer<uint64_t> memory_;
  uint64_t* first_;
};

// Turns canonical runs of one row into bits; column `origin` is bit 0.
class bit_loader {
 public:
  bit_loader(size_t words, int64_t origin)
      : k_(kernels()), words_(words), origin_(origin), marks_(64 * words) {
    std::memset(marks_.data(), 0, marks_.size());
  }
  void load(const int32_t* begins, const int32_t* ends, size_t count,
            uint64_t* line) {
    k_.mark_runs(begins, ends, count, origin_, marks_.data());
    k_.fill_between(marks_.data(), words_, line);
  }

 private:
  const bit_kernels& k_;
  size_t words_;
  int64_t origin_;
  buffer<unsigned char> marks_;
};

// Appends the runs of a line; bit 0 is column `origin`, modulo 2^32.
inline void append_runs(const uint64_t* line, size_t words, int64_t origin,
                        int32_t row, run_buffer* out) {
  // Longer lines are counted before room is made for their runs.
  constexpr size_t kCountFrom = 128;
  const bit_kernels& k = kernels();
  const size_t n = out->size();
  const size_t most =
      words <= kCountFrom ? 32 * words : k.count_runs(line, words);
  out->ensure(n + most + kRunSlack);
  const size_t written = k.write_runs(line, words, static_cast<int32_t>(origin),
                                      out->begins() + n, out->ends() + n);
  std::fill_n(out->rows() + n, written, row);
  out->set_size(n + written);
}

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_BIT_LINES_H_
