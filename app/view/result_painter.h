// SPDX-License-Identifier: MIT
//
// Draws measurement results over the image. Every coordinate is mapped by the
// view and rounded to the nearest view pixel; lines are 8-connected and, unless
// said otherwise, of thickness 1; where the picture's border cuts them they
// stay on the pixels of the whole line. Values that are no numbers draw
// nothing.
#ifndef RENDAL_APP_VIEW_RESULT_PAINTER_H_
#define RENDAL_APP_VIEW_RESULT_PAINTER_H_

#include "app/view/view_state.h"
#include "tools/workbench.h"

namespace rendal {

// How an edge point is marked.
enum MarkerStyle : int {
  kMarkerPixel = 0,          // the one view pixel
  kMarkerCross = 1,          // horizontal and vertical stroke
  kMarkerDiagonalCross = 2,  // both diagonals of the same square
  kMarkerCircle = 3,         // radius and thickness 2, whatever the zoom
};

// A whole record: its rectangles, then its points as circles, then its shapes.
void DrawResult(const Result& result, const ViewState& view, cv::Mat& picture);

// A measure rectangle: a red arrow along which its profile is scanned, and its
// four sides in green.
void DrawMeasureRectangle(const MeasureRectangle& rectangle,
                          const ViewState& view, cv::Mat& picture);

// An edge point in magenta; crosses reach 10 image pixels. Any other style
// draws nothing.
void DrawMarker(cv::Point2f image_point, int style, const ViewState& view,
                cv::Mat& picture);

// A shape entry by its kind:
//
//   line      through the whole picture, blue     nothing for direction (0, 0)
//   circle    blue                                nothing for radius 0
//   ellipse   blue                                nothing without half-axes
//   segment   white                               nothing if all zero
//   number    "%.3f" in white at its position,    nothing if all zero
//             then a line from there to its end
void DrawShape(const ShapeEntry& shape, const ViewState& view,
               cv::Mat& picture);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_RESULT_PAINTER_H_
