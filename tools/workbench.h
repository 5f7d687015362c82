// SPDX-License-Identifier: MIT
//
// The state that every tool and the image view read and write. The main dialog
// derives from Workbench, so these are its members; tests and the command line
// run the same tools on a bare Workbench.
//
// One thread (the dialog's) owns a Workbench. Nothing here is locked.
#ifndef RENDAL_TOOLS_WORKBENCH_H_
#define RENDAL_TOOLS_WORKBENCH_H_

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "region/region.h"
#include "tools/components.h"
#include "tools/measurement_library.h"
#include "tools/region_overlay.h"

namespace rendal {

// Values of Workbench::m_toolMode. The first four are also the kinds of
// RoiShape and its index in Workbench::m_roiShapes.
enum ToolMode : int32_t {
  kToolLine = 0,
  kToolCircle = 1,
  kToolBand = 2,  // line with a width
  kToolEllipse = 3,
  kToolNone = 99,
};

// Values of Workbench::m_language.
enum Language : int32_t { kChinese = 0, kEnglish = 1 };

// A region of interest in image coordinates, angles in degrees,
// counter-clockwise positive on screen.
//
//   kind  values
//   0     start x, start y, end x, end y, -
//   1     centre x, centre y, radius, -, -
//   2     start x, start y, end x, end y, -   (width: Workbench::m_bandWidth)
//   3     centre x, centre y, angle, first half-axis, second half-axis
struct RoiShape {
  uint8_t kind;
  float values[5];
  bool operator==(const RoiShape&) const = default;
};

// Kinds of ShapeEntry.
enum ShapeKind : uint8_t {
  kFittedLine = 0,     // direction 1, direction 2, centre x, centre y, -
  kFittedCircle = 1,   // centre x, centre y, radius, -, -
  kFittedEllipse = 3,  // centre x, centre y, angle, first size, second size
  kSegment = 4,        // x, y, x2, y2, -
  kNumber = 5,         // value, x, y, x2, y2
};

struct ShapeEntry {
  uint8_t kind;
  float values[5];
};

// What one measurement leaves to be drawn.
struct Result {
  std::vector<MeasureRectangle> rectangles;
  std::vector<cv::Point2f> points;
  std::vector<ShapeEntry> shapes;
};

struct Workbench {
  Workbench();

  cv::Mat m_srcImage;   // 8-bit grey once loaded; see HasImage()
  cv::Size m_viewSize;  // [view px]
  int32_t m_language = kChinese;
  int32_t m_parallelMode = 1;  // 1 parallel, 0 sequential region operations

  // Above 0: the next refresh draws, and negates it when done. At 0 or below:
  // nothing to do.
  int32_t m_redraw = 0;
  // Not 0: results are not drawn and shapes can be edited. Stays next to
  // m_redraw, after it.
  int32_t m_hideResults = 0;

  int32_t m_toolMode = kToolNone;
  std::vector<RoiShape> m_roiShapes;  // one per kind 0 to 3
  // Value of the caliper's width edit [image px], for the band's picture.
  double m_bandWidth = 20;
  std::vector<Result> m_results;

  // Binarisations, oldest first, at most kHistoryLength of them. Each holds its
  // pixels both as runs and as chords.
  std::vector<vexo::region> m_regionHistory;
  RegionOverlay m_regionOverlay;

  // What the newest region tool left, for tools that go on from there; null
  // when that are the components, and at the start.
  std::shared_ptr<vexo::region> m_lastRegion;
  // Of the newest labelling, as far as a selection kept them.
  ComponentSet m_components;

  // False where nobody looks: tools then make neither overlay nor list rows.
  bool m_isShown = true;
  // True in runs over many images: a binarisation without pixels enters the
  // history like any other, and what follows works on nothing.
  bool m_keepsEmptyRegions = false;

  // Image files that claim more are refused.
  uint64_t m_maxImagePixels = 500'000'000;

  // What measures; tests put functions of their own here.
  MeasurementLibrary m_measurementLibrary = LinkedMeasurementLibrary();

  // Whether m_srcImage can be worked on. A refused two-channel image stays in
  // m_srcImage but no tool touches it.
  bool HasImage() const {
    return !m_srcImage.empty() && m_srcImage.type() == CV_8UC1;
  }

  // Whether the overlay is that of m_components.
  bool ShowsComponents() const {
    return m_lastRegion == nullptr && !m_regionOverlay.empty();
  }

  // The image as the libraries take it: rows follow one another without a gap.
  // Shares the pixels of m_srcImage unless that is a part of a larger image.
  cv::Mat ImageWithoutPadding() const;

  // The shape of the current tool mode; null in mode "none".
  RoiShape* CurrentShape();
  const RoiShape* CurrentShape() const;

  // Makes a measurement's record the only result, shown from the next refresh
  // on in place of the region overlay. If memory runs out nothing changes.
  void ShowResult(Result result);

  // Asks for a picture.
  void RequestRedraw() { m_redraw = 1; }
  // Asks for the picture again if there ever was one.
  void RearmRedraw() {
    if (m_redraw < 0) m_redraw = -m_redraw;
  }
};

// The shapes before any image is loaded.
std::vector<RoiShape> InitialShapes();

// The shapes that a newly loaded image of that size starts with.
std::vector<RoiShape> ShapesForImage(int width, int height);

}  // namespace rendal

#endif  // RENDAL_TOOLS_WORKBENCH_H_
