// SPDX-License-Identifier: MIT
//
// What the mouse does in the image view: move handles of the current region of
// interest, pan, zoom by double clicks, and keep the position for the read-out.
#ifndef RENDAL_APP_VIEW_ROI_INTERACTION_H_
#define RENDAL_APP_VIEW_ROI_INTERACTION_H_

#include <vector>

#include "app/view/view_state.h"
#include "tools/workbench.h"

namespace rendal {

// A handle is hit within this distance [image px], and drawn with it.
inline constexpr float kHandleRadiusImagePx = 20;

// Event codes as the image library's mouse callback delivers them.
enum MouseEventCode : int {
  kMouseMove = 0,
  kLeftDown = 1,
  kLeftUp = 4,
  kLeftDoubleClick = 7,
  kRightDoubleClick = 8,
  kMiddleDoubleClick = 9,
};

struct MouseEvent {
  int code;
  int x;  // [view px]
  int y;
  bool left_held = true;  // asked of moves only
};

// A press that moves less than this along both axes is a click [view px].
inline constexpr int kDragPx = 4;

// Changes state only; events outside the view, without an image or of other
// codes change nothing. True when the event ends a click: the left button goes
// up again after a press that grabbed nothing and was not dragged.
bool OnMouse(const MouseEvent& event, Workbench& workbench, ViewState& view);

// Points by which a shape is dragged, in image coordinates, in the order in
// which they are hit-tested:
//
//   line, band   start, end
//   circle       centre, (centre x + radius, centre y)
//   ellipse      centre, end of the first half-axis (sizes it), end of the
//                second (sizes it), opposite end of the first (turns the
//                ellipse)
//
// The ellipse's second half-axis lies a quarter turn counter-clockwise (on
// screen) from the first.
std::vector<cv::Point2f> HandlesOf(const RoiShape& shape);

// Number of the first handle less than kHandleRadiusImagePx away from the view
// position; -1 if none is.
int HitHandle(const RoiShape& shape, const ViewState& view, int view_x,
              int view_y);

// Moves a handle to an image position and changes the shape accordingly. A
// radius or half-axis stays at 1 or above, an angle within -180..180.
void MoveHandle(RoiShape& shape, int handle, cv::Point2f image);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_ROI_INTERACTION_H_
