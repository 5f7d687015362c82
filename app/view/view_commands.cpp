// SPDX-License-Identifier: MIT
#include "app/view/view_commands.h"

#include <utility>

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

void Highlight(Workbench& workbench, ViewState& view,
               std::vector<int32_t> components) {
  if (view.highlighted == components) return;
  view.highlighted = std::move(components);
  workbench.RearmRedraw();
}

void ShowComponent(Workbench& workbench, ViewState& view, size_t component) {
  if (component >= workbench.m_components.size()) return;
  const int32_t* const box = workbench.m_components[component].bbox;
  view.BringIntoSight({box[1], box[0]}, {box[3], box[2]});
  workbench.RearmRedraw();
}

std::optional<size_t> ComponentAt(const Workbench& workbench,
                                  const ViewState& view, int x, int y) {
  if (!workbench.ShowsComponents()) return std::nullopt;
  return workbench.m_components.At(view.ImageColumn(x), view.ImageRow(y));
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
