// SPDX-License-Identifier: MIT
//
// Lines, 8-connected, in a picture of three channels and as if it had no
// borders: what of a line is inside lies on the very pixels of the whole line.
// (The image library's own functions move a line by up to a pixel where the
// border cuts it.)
#ifndef RENDAL_APP_VIEW_LINE_PAINTER_H_
#define RENDAL_APP_VIEW_LINE_PAINTER_H_

#include <opencv2/core.hpp>

namespace rendal {

// How a line is drawn; thickness 1 or 2.
struct Pen {
  cv::Scalar color;
  int thickness = 1;
};

// From one position to another, both included: the nearest pixel in every
// column or, of a line that is steeper than that, in every row; of thickness 2
// also what lies up to a pixel to its sides, and the ends' neighbours. Between
// whole pixels and of thickness 1 it is cv::line's. What is not finite draws
// nothing. Cost: the picture's columns or rows, however long the line is.
void DrawLine(cv::Point2d from, cv::Point2d to, const Pen& pen,
              cv::Mat& picture);

// A line and the two lines of its tip at `to`, each `tip` times as long.
void DrawArrow(cv::Point from, cv::Point to, double tip, const Pen& pen,
               cv::Mat& picture);

// The line through a position with a direction, from border to border. Nothing
// for direction (0, 0).
void DrawEndlessLine(cv::Point2d on, cv::Point2d direction, const Pen& pen,
                     cv::Mat& picture);

// The lines from corner to corner and back to the first.
template <typename Corners>
void DrawPolygon(const Corners& corners, const Pen& pen, cv::Mat& picture) {
  const size_t count = std::size(corners);
  for (size_t i = 0; i < count; ++i) {
    DrawLine(corners[i], corners[(i + 1) % count], pen, picture);
  }
}

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_LINE_PAINTER_H_
