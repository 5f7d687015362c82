// SPDX-License-Identifier: MIT
#include <functional>

#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/operations.h"

namespace vexo {
namespace {

bool is_sorted(const int* rows, const int* begins, const int* ends, int n) {
  for (int i = 1; i < n; ++i) {
    if (std::tie(rows[i], begins[i], ends[i]) <
        std::tie(rows[i - 1], begins[i - 1], ends[i - 1])) {
      return false;
    }
  }
  return true;
}

}  // namespace

void sort_y(int* rows, int* col_begins, int* col_ends, int n) {
  if (n < 2 || is_sorted(rows, col_begins, col_ends, n)) return;
  // Sorting whole records beats sorting indices into three arrays.
  internal::buffer<chord> records(n);
  for (int i = 0; i < n; ++i) {
    records[i] = {col_begins[i], col_ends[i], rows[i], 0};
  }
  internal::parallel_sort(records.begin(), records.end(), std::less<chord>());
  internal::parallel_invoke(
      [&] {
        for (int i = 0; i < n; ++i) rows[i] = records[i].row;
      },
      [&] {
        for (int i = 0; i < n; ++i) col_begins[i] = records[i].col_begin;
      },
      [&] {
        for (int i = 0; i < n; ++i) col_ends[i] = records[i].col_end;
      });
}

}  // namespace vexo
