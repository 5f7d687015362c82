// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "region/internal/runs.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::run_buffer;

// Half-widths of the disc's rows 0..r, from one octant of a midpoint circle and
// its mirror image about the diagonal, which overwrites where both give a row.
std::vector<int32_t> half_widths(int64_t r) {
  std::vector<int32_t> row_of_col{static_cast<int32_t>(r)};
  int64_t x = 0;
  int64_t y = r;
  int64_t d = 3 - 2 * r;
  while (x < y) {
    if (d >= 0) {
      // 14, not the textbook 10: deliberate, the outline of every disc so far.
      d += 4 * (x - y) + 14;
      --y;
    } else {
      d += 4 * x + 6;
    }
    ++x;
    row_of_col.push_back(static_cast<int32_t>(y));
  }
  std::vector<int32_t> half(static_cast<size_t>(r) + 1, 0);
  const size_t last = row_of_col.size() - 1;
  for (size_t i = 0; i <= last; ++i)
    half[static_cast<size_t>(row_of_col[i])] = static_cast<int32_t>(i);
  for (size_t i = 0; i < last; ++i) half[i] = row_of_col[i];
  return half;
}

// Both storage forms at once, so that an element serves every operation.
void store(run_buffer runs, region* element) {
  internal::chord_buffer chords = internal::to_chords(view_of(runs));
  internal::drop_children(element);
  runs.move_to(element);
  chords.move_to(element);
  element->width = -1;
  element->height = -1;
}

int at_least(int value, int smallest, int otherwise) {
  return value >= smallest ? value : otherwise;
}

}  // namespace

void gen_se_circle(int radius, region* element) {
  internal::with_region_errors([&] {
    const int64_t r = at_least(radius, 2, 1);
    const int64_t count = 2 * r + 1;
    if (count > INT32_MAX) internal::throw_realloc_failed();
    run_buffer runs(static_cast<size_t>(count));
    const std::vector<int32_t> half = half_widths(r);
    for (int64_t row = -r; row <= r; ++row) {
      const int32_t h = half[static_cast<size_t>(row < 0 ? -row : row)];
      runs.push(static_cast<int32_t>(row), -h, h);
    }
    store(std::move(runs), element);
  });
}

void gen_se_rectangle(int width, int height, region* element) {
  internal::with_region_errors([&] {
    // Never smaller than 2 by 2: deliberate.
    const int w = at_least(width, 3, 2);
    const int h = at_least(height, 3, 2);
    run_buffer runs(static_cast<size_t>(h));
    for (int row = 0; row < h; ++row) runs.push(row, 0, w - 1);
    store(std::move(runs), element);
  });
}

void gen_se_cross(int width, int height, region* element) {
  internal::with_region_errors([&] {
    const int w = at_least(width, 3, 2);
    const int h = at_least(height, 3, 2);
    const int stem = w / 2;
    const int bar = h / 2;
    run_buffer runs(static_cast<size_t>(h));
    for (int row = 0; row < h; ++row) {
      if (row == bar) {
        runs.push(row, 0, w - 1);
      } else {
        runs.push(row, stem, stem);
      }
    }
    store(std::move(runs), element);
  });
}

}  // namespace vexo
