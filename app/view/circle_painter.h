// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_CIRCLE_PAINTER_H_
#define RENDAL_APP_VIEW_CIRCLE_PAINTER_H_

#include <opencv2/core.hpp>

#include "app/view/line_painter.h"

namespace rendal {

// Draws a circle, view coordinates. However large
// it is, the lines stay within 0.02 view pixels of it: only the arcs inside the
// picture are drawn, each with as many corners as that takes. What is not
// finite draws nothing.
void DrawCircle(cv::Point2d center, double radius, const Pen& pen,
                cv::Mat& picture);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_CIRCLE_PAINTER_H_
