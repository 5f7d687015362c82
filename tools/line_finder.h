// SPDX-License-Identifier: MIT
//
// What the "Do" button does, without the button: finds straight edges in the
// image, lays calipers along the first one and measures it twice.
#ifndef RENDAL_TOOLS_LINE_FINDER_H_
#define RENDAL_TOOLS_LINE_FINDER_H_

#include <vector>

#include "tools/residuals.h"
#include "tools/workbench.h"

namespace rendal {

// Index of the display combo: what of a line is drawn. With any other value
// nothing is.
enum FindLineDisplay : int {
  kShowSegment = 0,   // the segment as it was found
  kShowCalipers = 1,  // the calipers, their edge points, the fitted line
  kShowEdges = 2,     // every edge in every caliper; where a caliper has both a
                      // rising and a falling edge, the distance of the first
                      // ones, with a line between them
};

// What was found, in full precision.
struct LineReport {
  bool done = false;                // false: no image
  std::vector<cv::Vec4i> segments;  // x1, y1, x2, y2, as they were found
  // Of the first segment, when there is one:
  int code = 0;  // of the library; the first negative one, else 0
  int calipers = 0;
  std::vector<EdgePoint> points;  // that the line was fitted to
  double line[4] = {};            // direction x, y, centre x, y
  Residuals residuals;
  std::vector<EdgePoint> edges;  // every edge of every caliper
};

// Prints how many segments there are, the counts and codes of the first
// measurement, and every edge of the second, and leaves one record as the only
// result, shown with the next refresh instead of the region overlay.
//
// Only segments as long as the image is wide count as lines, so only images
// that are taller than wide have any. Without an image nothing happens; without
// a segment nothing but the first console line. A fit
// that fails ends the work after its line: the record holds what was drawn by
// then. Library memory is released before this returns. When it throws (out of
// memory), results and overlay are as they were.
LineReport FindLine(Workbench& workbench, int display);

}  // namespace rendal

#endif  // RENDAL_TOOLS_LINE_FINDER_H_
