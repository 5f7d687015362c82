// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_HIGHLIGHT_PAINTER_H_
#define RENDAL_APP_VIEW_HIGHLIGHT_PAINTER_H_

#include "app/view/view_state.h"
#include "tools/components.h"

namespace rendal {

// Outlines the components that the view highlights: around the view pixels that
// show them a ring of white and one of black, each of kHighlightRingPx, so that
// they stand out from any colour. A component too small for the zoom counts as
// one view pixel. Numbers that the set does not have draw nothing.
//
// Cost: proportional to the view's pixels plus the runs of these components.
void DrawHighlight(const ComponentSet& components, const ViewState& view,
                   cv::Mat& picture);

inline constexpr int kHighlightRingPx = 2;

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_HIGHLIGHT_PAINTER_H_
