// SPDX-License-Identifier: MIT
//
// Placing measure rectangles along a line, a circle or an ellipse.
//
// Arguments are checked by the caller for being finite and moderate; what else
// can be wrong with them is answered here with the codes of vexolab.h. *out
// receives five floats a rectangle and is not to be used after an error.
#ifndef VEXOLAB_RECTANGLES_H_
#define VEXOLAB_RECTANGLES_H_

#include <vector>

namespace vexolab {

// What the rectangles of one measurement share.
struct caliper {
  double length;  // full extent along the scan
  double width;   // full extent across it
  int direction;  // +1 or -1
  int count;      // 0: as many as fit side by side
};

int rectangles_on_line(double x1, double y1, double x2, double y2,
                       const caliper& c, std::vector<float>* out);

int rectangles_on_circle(double cx, double cy, double radius, const caliper& c,
                         std::vector<float>* out);

int rectangles_on_ellipse(double cx, double cy, double angle, double a,
                          double b, const caliper& c, std::vector<float>* out);

// The rectangle that scans from the first point to the second.
void rectangle_between(double x1, double y1, double x2, double y2, double width,
                       float* rectangle);

}  // namespace vexolab

#endif  // VEXOLAB_RECTANGLES_H_
