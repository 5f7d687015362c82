// SPDX-License-Identifier: MIT
#include "region/internal/row_scan.h"

namespace vexo::internal {
namespace {

// Calls emit(row, begin, end) for every run: one table look-up a pixel.
template <class Emit>
void scan(const scan_input& in, Emit emit) {
  bool table[256];
  for (int g = 0; g < 256; ++g) table[g] = in.min <= g && g <= in.max;
  const uint8_t* pixels = in.pixels;
  const auto width = static_cast<int32_t>(in.width);
  for (int32_t row = in.first_row; row < in.last_row; ++row) {
    bool inside = false;
    int32_t begin = 0;
    for (int32_t c = 0; c < width; ++c) {
      const bool now = table[pixels[c]];
      if (now == inside) continue;
      if (inside) emit(row, begin, c - 1);
      begin = c;
      inside = now;
    }
    if (inside) emit(row, begin, width - 1);
    pixels += in.width;
  }
}

size_t count_plain(const scan_input& in) {
  size_t n = 0;
  scan(in, [&n](int32_t, int32_t, int32_t) { ++n; });
  return n;
}

void to_runs_plain(const scan_input& in, char*, const run_arrays& out) {
  size_t i = 0;
  scan(in, [&](int32_t row, int32_t begin, int32_t end) {
    out.rows[i] = row;
    out.begins[i] = begin;
    out.ends[i] = end;
    ++i;
  });
}

void to_chords_plain(const scan_input& in, char*, chord* out) {
  scan(in, [&out](int32_t row, int32_t begin, int32_t end) {
    *out++ = {begin, end, row, 0};
  });
}

constexpr row_scan kRowScanPlain{[](size_t) -> size_t { return 0; },
                                 count_plain, to_runs_plain, to_chords_plain};

}  // namespace

const row_scan& current_row_scan() {
  switch (current_vector_level()) {
#ifdef VEXO_X86_VECTORS
    case vector_level::kAvx512:
      return kRowScanAvx512;
    case vector_level::kAvx2:
      return kRowScanAvx2;
#endif
    default:
      return kRowScanPlain;
  }
}

}  // namespace vexo::internal
