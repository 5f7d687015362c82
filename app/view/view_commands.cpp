// SPDX-License-Identifier: MIT
#include "app/view/view_commands.h"

namespace rendal {

void ZoomOne(Workbench& workbench, ViewState& view) {
  if (!workbench.HasImage()) return;
  view.OneToOne(workbench.m_srcImage.size());
  workbench.RearmRedraw();
}

void ZoomFit(Workbench& workbench, ViewState& view) {
  if (!workbench.HasImage()) return;
  view.ShowFit(workbench.m_srcImage.size());
  workbench.RearmRedraw();
}

void ZoomWheel(Workbench& workbench, ViewState& view, int x, int y, int delta) {
  if (!workbench.HasImage()) return;
  if (view.WheelAt(workbench.m_srcImage.size(), x, y, delta)) {
    workbench.RearmRedraw();
  }
}

void SelectToolMode(Workbench& workbench, int32_t mode) {
  workbench.m_toolMode = mode;
  workbench.RequestRedraw();
}

Status ClearDisplay(Workbench& workbench) {
  workbench.RequestRedraw();
  workbench.m_hideResults = 1;
  workbench.m_regionOverlay.clear();
  return messages::DisplayCleared();
}

}  // namespace rendal
