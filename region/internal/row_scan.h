// SPDX-License-Identifier: MIT
//
// From grey pixels to runs, the rows of one band of an image at a time. Every
// vector width gives the same runs; the best one that the processor has is
// chosen when the program runs.
#ifndef VEXO_REGION_INTERNAL_ROW_SCAN_H_
#define VEXO_REGION_INTERNAL_ROW_SCAN_H_

#include <cstddef>
#include <cstdint>

#include "region/region.h"

namespace vexo::internal {

// Rows of an image without padding, and the grey values that are inside.
struct scan_input {
  const uint8_t* pixels;  // of first_row
  size_t width;
  int32_t first_row;
  int32_t last_row;  // one past
  uint8_t min;
  uint8_t max;

  size_t rows() const { return static_cast<size_t>(last_row - first_row); }
};

struct run_arrays {
  int32_t* rows;
  int32_t* begins;
  int32_t* ends;
};

// The three steps of extraction, in the order in which they are used. Nothing
// is written beyond the runs that count() announced.
struct row_scan {
  size_t (*count)(const scan_input& in);
  void (*to_runs)(const scan_input& in, const run_arrays& out);
  void (*to_chords)(const scan_input& in, chord* out);
};

// plain: pixel by pixel. Levels that the processor lacks are lowered.
enum class vector_level { kPlain, kAvx2, kAvx512 };
vector_level best_vector_level();
const row_scan& row_scan_of(vector_level level);

// The best level, or the limit set for tests and benches.
const row_scan& current_row_scan();
vector_level current_vector_level();
void set_vector_limit(vector_level level);

#if defined(__x86_64__) && defined(__GNUC__)
#define VEXO_X86_VECTORS 1
extern const row_scan kRowScanAvx2;
extern const row_scan kRowScanAvx512;
#endif

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_SCAN_H_
