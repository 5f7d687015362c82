/* SPDX-License-Identifier: MIT
 *
 * The header is C: this file is compiled as such. */
#include "vexolab/vexolab.h"

int call_from_c(float* rectangle);

int call_from_c(float* rectangle) {
  float* rectangles = 0;
  int count = 0;
  int id;
  ppw_to_rr(0, 0, 10, 0, 4, rectangle);
  id = gen_measure_line(0, 0, 100, 0, 10, 5, 1, 0, &rectangles, &count);
  clear_mems(id);
  return count;
}
