// SPDX-License-Identifier: MIT
#include "region/internal/run_keys.h"

#include <algorithm>
#include <bit>

#include "region/internal/run_key_bodies.h"
#include "region/internal/vector_level.h"

namespace vexo::internal {
namespace {

void widen_plain(const run_view& runs, key_columns* columns) {
  widen_body(runs, columns);
}

key_extent make_plain(const run_view& runs, const key_frame& frame,
                      const key_list& to) {
  return make_body(runs, frame, to);
}

void move_plain(const key_list& keys, uint32_t begins, uint32_t ends) {
  move_body(keys, begins, ends);
}

bool are_apart_plain(const key_list& keys) { return are_apart_body(keys); }

int32_t split_plain(const chord* chords, size_t count, int32_t* rows,
                    int32_t* begins, int32_t* ends) {
  return split_body(chords, count, rows, begins, ends);
}

void join_plain(const int32_t* rows, const int32_t* begins, const int32_t* ends,
                size_t count, chord* chords) {
  join_body(rows, begins, ends, count, chords);
}

// Begins and ends in turn: two chains of dependent loads side by side.
void merge_plain(const key_list& a, const key_list& b, const key_list& to) {
  size_t a_begin = 0, a_end = 0, b_begin = 0, b_end = 0;
  for (size_t i = 0; i < to.count; ++i) {
    const uint32_t x = a.begins[a_begin], y = b.begins[b_begin];
    const uint32_t u = a.ends[a_end], v = b.ends[b_end];
    to.begins[i] = std::min(x, y);
    to.ends[i] = std::min(u, v);
    a_begin += x <= y;
    b_begin += x > y;
    a_end += u <= v;
    b_end += u > v;
  }
}

struct decoder {
  const key_frame& frame;
  uint32_t columns = (uint32_t{1} << frame.bits) - 1;

  int32_t row(uint32_t key) const {
    return static_cast<int32_t>((key >> frame.bits) +
                                static_cast<uint32_t>(frame.first_row));
  }
  int32_t col(uint32_t key) const {
    return static_cast<int32_t>((key & columns) +
                                static_cast<uint32_t>(frame.first_col));
  }
};

size_t write_united_plain(const key_list& keys, const key_frame& frame,
                          int32_t* rows, int32_t* begins, int32_t* ends) {
  const decoder d{frame};
  size_t started = 0, stopped = 0;
  uint32_t before = 0;
  for (size_t i = 0; i < keys.count; ++i) {
    const uint32_t begin = keys.begins[i], end = keys.ends[i];
    rows[started] = d.row(begin);
    begins[started] = d.col(begin);
    ends[stopped] = d.col(end);
    started += begin - 1 > before;
    stopped += keys.begins[i + 1] - 1 > end;
    before = end;
  }
  return started;
}

size_t write_common_plain(const key_list& keys, size_t lists,
                          const key_frame& frame, int32_t* rows,
                          int32_t* begins, int32_t* ends) {
  const decoder d{frame};
  size_t n = 0;
  for (size_t i = 0; i + lists <= keys.count; ++i) {
    const uint32_t begin = keys.begins[i + lists - 1], end = keys.ends[i];
    rows[n] = d.row(begin);
    begins[n] = d.col(begin);
    ends[n] = d.col(end);
    n += begin <= end;
  }
  return n;
}

constexpr key_kernels kKeyKernelsPlain = {
    widen_plain,        make_plain,  move_plain,
    are_apart_plain,    merge_plain, write_united_plain,
    write_common_plain, split_plain, join_plain};

}  // namespace

const key_kernels& current_key_kernels() {
#ifdef VEXO_X86_VECTORS
  const vector_level level = current_vector_level();
  if (level == vector_level::kAvx512) return kKeyKernelsAvx512;
  if (level == vector_level::kAvx2) return kKeyKernelsAvx2;
#endif
  return kKeyKernelsPlain;
}

bool key_columns::frame(key_frame* f) const {
  const auto columns =
      static_cast<uint64_t>(int64_t{max} - min + 1) + 2 * key_frame::kSpare;
  // Two rows at least, and the slack's.
  constexpr uint32_t kMostBits = 30;
  const auto bits = static_cast<uint32_t>(std::bit_width(columns - 1));
  if (bits > kMostBits) return false;
  const uint64_t left_over = (uint64_t{1} << bits) - columns;
  f->bits = bits;
  f->first_col =
      static_cast<int32_t>(static_cast<uint32_t>(min) - key_frame::kSpare -
                           static_cast<uint32_t>(left_over / 2));
  return true;
}

void key_room::ensure(size_t lists, size_t most) {
  stride_ = (kKeyLead + most + 2 * kKeySlack) / kKeyLead * kKeyLead;
  memory_.ensure(2 * lists * stride_);
}

key_list key_room::list(size_t i, size_t count) const {
  uint32_t* begins = memory_.data() + 2 * i * stride_ + kKeyLead;
  uint32_t* ends = begins + stride_;
  ends[-1] = 0;
  std::fill_n(begins + count, kKeySlack, kLastKey);
  std::fill_n(ends + count, kKeySlack, kLastKey);
  return {begins, ends, count};
}

}  // namespace vexo::internal
