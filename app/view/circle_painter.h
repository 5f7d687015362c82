// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_CIRCLE_PAINTER_H_
#define RENDAL_APP_VIEW_CIRCLE_PAINTER_H_

#include <opencv2/core.hpp>

namespace rendal {

// Lines are drawn between positions this fine, 1/64 view pixel: rounding their
// ends first and their pixels again would move them by up to a pixel.
inline constexpr int kFractionBits = 6;

// A view position in those units, kept within what the drawing functions can
// count in.
cv::Point WithFraction(cv::Point2d at);

// Draws a circle, view coordinates, with lines of that thickness. However large
// it is, the lines stay within 0.02 view pixels of it: only the arcs inside the
// picture are drawn, each with as many corners as that takes. What is not
// finite draws nothing.
void DrawCircle(cv::Point2d center, double radius, const cv::Scalar& color,
                int thickness, cv::Mat& picture);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_CIRCLE_PAINTER_H_
