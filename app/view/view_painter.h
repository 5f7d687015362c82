// SPDX-License-Identifier: MIT
//
// The one place where the image view is drawn: the periodic refresh.
#ifndef RENDAL_APP_VIEW_VIEW_PAINTER_H_
#define RENDAL_APP_VIEW_VIEW_PAINTER_H_

#include <optional>
#include <string>

#include "app/view/view_state.h"
#include "tools/workbench.h"

namespace rendal {

// Image pixel under the pointer and its grey value, 0 outside the image.
struct ReadOut {
  int column = 0;
  int row = 0;
  int grey = 0;
  bool operator==(const ReadOut&) const = default;
};

// "column, row, grey", as the read-out label shows it.
std::string FormatReadOut(const ReadOut& read_out);

// One tick. Without a request (m_redraw below 1) or an image nothing happens
// and there is no value. Otherwise rebuilds *picture (8-bit, three channels,
// the view's size; made so if it is not): black, the image by nearest
// neighbour, every view pixel whose image pixel lies in a chord of the overlay,
// the outlines of highlighted components, the current region of interest, and
// the results unless they are hidden; then negates the request.
//
// Throws cv::Exception or std::bad_alloc when memory runs out; the request
// stays then. Cost: proportional to the view's pixels plus the overlay's
// chords in the visible rows.
std::optional<ReadOut> RefreshView(Workbench& workbench, const ViewState& view,
                                   cv::Mat* picture);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_VIEW_PAINTER_H_
