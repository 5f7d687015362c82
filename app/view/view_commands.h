// SPDX-License-Identifier: MIT
//
// The dialog's commands that only change what is shown. None of them draws.
#ifndef RENDAL_APP_VIEW_VIEW_COMMANDS_H_
#define RENDAL_APP_VIEW_VIEW_COMMANDS_H_

#include "app/view/view_state.h"
#include "tools/status.h"
#include "tools/workbench.h"

namespace rendal {

// "1:1" and "Fit"; nothing without an image.
void ZoomOne(Workbench& workbench, ViewState& view);
void ZoomFit(Workbench& workbench, ViewState& view);

// Mouse wheel at a position of the dialog's client area, which starts where
// the view does. Nothing outside the view, for delta 0 or without an image.
void ZoomWheel(Workbench& workbench, ViewState& view, int x, int y, int delta);

// Tool-mode radio buttons.
void SelectToolMode(Workbench& workbench, int32_t mode);

// "Clear display": hides results, forgets the region overlay, empties the
// status label.
Status ClearDisplay(Workbench& workbench);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_VIEW_COMMANDS_H_
