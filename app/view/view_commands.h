// SPDX-License-Identifier: MIT
//
// The dialog's commands that only change what is shown. None of them draws.
#ifndef RENDAL_APP_VIEW_VIEW_COMMANDS_H_
#define RENDAL_APP_VIEW_VIEW_COMMANDS_H_

#include <cstdint>
#include <optional>
#include <vector>

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

// Outlines these components and no others.
void Highlight(Workbench& workbench, ViewState& view,
               std::vector<int32_t> components);

// Pans until all of a component is in sight, if it is not.
void ShowComponent(Workbench& workbench, ViewState& view, size_t component);

// The component that the view shows at a view pixel. None in the background,
// and none while something else is shown than components.
std::optional<size_t> ComponentAt(const Workbench& workbench,
                                  const ViewState& view, int x, int y);

// Tool-mode radio buttons.
void SelectToolMode(Workbench& workbench, int32_t mode);

// "Clear display": hides results, forgets the region overlay, empties the
// status label.
Status ClearDisplay(Workbench& workbench);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_VIEW_COMMANDS_H_
