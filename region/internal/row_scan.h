// SPDX-License-Identifier: MIT
//
// From grey pixels to runs, the rows of one band of an image at a time. Every
// vector width gives the same runs; the best one that the processor has is
// chosen when the program runs.
#ifndef VEXO_REGION_INTERNAL_ROW_SCAN_H_
#define VEXO_REGION_INTERNAL_ROW_SCAN_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/vector_level.h"
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

// The steps of extraction: count() first, then one of the others. Nothing is
// written beyond the runs that count() announced, and nothing is allocated:
// scratch is scratch_bytes(width) bytes, a multiple of 64.
struct row_scan {
  size_t (*scratch_bytes)(size_t width);
  size_t (*count)(const scan_input& in);
  void (*to_runs)(const scan_input& in, char* scratch, const run_arrays& out);
  void (*to_chords)(const scan_input& in, char* scratch, chord* out);
};

// The form for the current vector level; plain goes pixel by pixel.
const row_scan& current_row_scan();

#ifdef VEXO_X86_VECTORS
extern const row_scan kRowScanAvx2;
extern const row_scan kRowScanAvx512;
#endif

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_ROW_SCAN_H_
