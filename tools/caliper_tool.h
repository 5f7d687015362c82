// SPDX-License-Identifier: MIT
//
// What the measure button does, without the button: one caliper measurement
// along the region of interest of the current tool mode.
#ifndef RENDAL_TOOLS_CALIPER_TOOL_H_
#define RENDAL_TOOLS_CALIPER_TOOL_H_

#include <string>
#include <vector>

#include "tools/residuals.h"
#include "tools/workbench.h"

namespace rendal {

// The caliper group's controls, in their order, with their defaults.
struct CaliperParameters {
  double length = 40;     // of each rectangle, along its scan [image px]
  double width = 20;      // across its scan; the band's width [image px]
  double amplitude = 20;  // smallest step that counts [grey levels]
  double sigma = 1;       // smoothing [image px]
  double reps = 2;        // how far from the fit points still count
  int count = 0;          // of rectangles; 0: as many as fit side by side
  int direction = +1;     // see ScanDirection()
  std::string selection = "first+";
  bool operator==(const CaliperParameters&) const = default;
};

// Direction combo: its first item scans one way, any other the other way.
inline int ScanDirection(int index) { return index == 0 ? +1 : -1; }

// A measurement in full precision.
struct MeasureReport {
  bool done = false;  // false: there was nothing to measure, or no image
  RoiShape roi = {};
  int code = 0;      // of the library; the first negative one, else 0
  int calipers = 0;  // 1 for a band
  std::vector<EdgePoint> points;
  // As do_fit gives it; zeros for a band and when the fit failed.
  double shape[5] = {};
  Residuals residuals;  // zeros likewise
};

// Measures, prints the fitted shape (line, circle, ellipse) or every edge
// (band) below the time that the library took, and leaves one record as the
// only result, shown with the next refresh instead of the region overlay.
//
// Without an image or in mode "none" nothing happens at all. No answer of the
// library but that its memory ran out keeps it from going on: a fit that failed
// leaves zeros, which are printed and draw nothing. Library memory is released
// before this returns.
// When it throws (out of memory), results and overlay are as they were.
MeasureReport Measure(Workbench& workbench,
                      const CaliperParameters& parameters);

// Degrees of a fitted line from its direction components: 0 for (1, 0),
// counter-clockwise on screen, in (-180, 180].
double LineAngle(double direction1, double direction2);

}  // namespace rendal

#endif  // RENDAL_TOOLS_CALIPER_TOOL_H_
