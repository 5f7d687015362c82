/* SPDX-License-Identifier: MIT
 *
 * The measurement library from plain C: an upright edge at column 50.3, found
 * by calipers along a line and fitted. */
#include <math.h>
#include <stdio.h>

#include "vexolab/vexolab.h"

enum { kWidth = 100, kHeight = 80 };

int main(void) {
  static unsigned char image[kWidth * kHeight];
  const double edge = 50.3;
  for (int row = 0; row < kHeight; ++row)
    for (int col = 0; col < kWidth; ++col) {
      /* Grey value of a pixel = share of it right of the edge. */
      double share = col + 0.5 - edge;
      share = share < 0 ? 0 : share > 1 ? 1 : share;
      image[row * kWidth + col] = (unsigned char)(50.5 + 150 * share);
    }

  float* rectangles = NULL;
  int rectangle_count = 0;
  const int rectangle_id =
      gen_measure_line(edge, 10, edge, 70, 20, 5, 1, 0, &rectangles,
                       &rectangle_count);
  double* points = NULL;
  int point_count = 0;
  const int point_id =
      do_measure(image, kWidth, kHeight, 1.0, 30.0, "strongest", rectangles,
                 rectangle_count, &points, &point_count);
  double line[5] = {0, 0, 0, 0, 0};
  const int status = do_fit(points, point_count, 0, 7, 2.0f, 20, 2, line);
  clear_mems(rectangle_id);
  clear_mems(point_id);

  printf("%d calipers, %d points, edge at column %.3f\n", rectangle_count,
         point_count, line[2]);
  const int right = status == 0 && point_count == rectangle_count &&
                    fabs(line[2] - edge) < 0.05;
  printf("%s\n", right ? "as expected" : "NOT as expected");
  return right ? 0 : 1;
}
