// SPDX-License-Identifier: MIT
//
// From the contacts of a row's runs with those above to their labels. The
// vector form takes 16 runs at a time; both forms join the same runs.
#ifndef VEXO_REGION_INTERNAL_ROW_LABELS_H_
#define VEXO_REGION_INTERNAL_ROW_LABELS_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/memory.h"
#include "region/internal/vector_level.h"

namespace vexo::internal {

// Labels that are still to be united: first[i] and second[i].
struct label_pairs {
  static constexpr size_t kSlack = 16;  // entries that vectors may overrun

  buffer<int32_t> first, second;
  size_t count = 0;

  void clear(size_t room) {
    first.ensure(room + kSlack);
    second.ensure(room + kSlack);
    count = 0;
  }
  void push(int32_t a, int32_t b) {
    first[count] = a;
    second[count] = b;
    ++count;
  }
};

// A row whose run i touches the runs low[i]..high[i] - 1 of the row above.
struct row_contacts {
  const uint32_t* low;
  const uint32_t* high;
  size_t count;
};

// Gives each run the label of the first that it touches, or a new one: next,
// next + 1, ..., each its own parent. *pairs gets the labels of what else
// touches a run beside the run's own. Returns the next new label.
using take_labels_function = int32_t (*)(const row_contacts& row,
                                         const int32_t* labels_above,
                                         int32_t next, int32_t* labels,
                                         int32_t* parent, label_pairs* pairs);

take_labels_function current_take_labels();

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_LABELS_H_
