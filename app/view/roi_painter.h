// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_ROI_PAINTER_H_
#define RENDAL_APP_VIEW_ROI_PAINTER_H_

#include "app/view/view_state.h"
#include "tools/workbench.h"

namespace rendal {

// Draws a region of interest over the picture: outlines in yellow, handles in
// cyan, thickness 2.
//
//   line      arrow from start to end, a handle circle at each
//   circle    the circle, and a cross of the handles' size at its centre
//   band      as the line, the rectangle of `band_width` image pixels around
//             it, and the upright bounding box of that rectangle
//   ellipse   the ellipse, a cross at its centre, an arrow along its first
//             axis, handle circles of fixed size at the ends of both axes
void DrawRoi(const RoiShape& shape, double band_width, const ViewState& view,
             cv::Mat& picture);

// Closed outline of an ellipse in view coordinates; the angle is in degrees,
// counter-clockwise positive on screen. About one point per two view pixels, at
// least 64 and at most 720.
std::vector<cv::Point2d> EllipseOutline(cv::Point2d center, float half_axis1,
                                        float half_axis2, float angle);

// Nearest view pixel, half away from zero, kept within what the drawing
// functions can count in.
cv::Point NearestPixel(cv::Point2f at);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_ROI_PAINTER_H_
