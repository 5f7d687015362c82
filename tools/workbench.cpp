// SPDX-License-Identifier: MIT
#include "tools/workbench.h"

#include <algorithm>
#include <utility>

#include "tools/blob_tool.h"

namespace rendal {

Workbench::Workbench() : m_roiShapes(InitialShapes()) {
  m_regionHistory.reserve(kHistoryLength + 1);
}

cv::Mat Workbench::ImageWithoutPadding() const {
  return m_srcImage.isContinuous() ? m_srcImage : m_srcImage.clone();
}

const RoiShape* Workbench::CurrentShape() const {
  if (m_toolMode < 0 || m_toolMode >= static_cast<int>(m_roiShapes.size())) {
    return nullptr;
  }
  return &m_roiShapes[m_toolMode];
}

RoiShape* Workbench::CurrentShape() {
  return const_cast<RoiShape*>(std::as_const(*this).CurrentShape());
}

void Workbench::ShowResult(Result result) {
  std::vector<Result> results;
  results.push_back(std::move(result));
  m_results.swap(results);
  m_regionOverlay.clear();
  m_hideResults = 0;
  RequestRedraw();
}

std::vector<RoiShape> InitialShapes() {
  return {{kToolLine, {0, 0, 100, 100, 0}},
          {kToolCircle, {0, 0, 100, 0, 0}},
          {kToolBand, {0, 0, 100, 100, 0}},
          {kToolEllipse, {100, 100, 0, 40, 20}}};
}

std::vector<RoiShape> ShapesForImage(int width, int height) {
  const float w = static_cast<float>(width);
  const float h = static_cast<float>(height);
  return {{kToolLine, {0.25f * w, 0.5f * h, 0.75f * w, 0.5f * h, 0}},
          {kToolCircle, {0.5f * w, 0.5f * h, 0.25f * std::min(w, h), 0, 0}},
          {kToolBand, {0.25f * w, 0.5f * h, 0.75f * w, 0.5f * h, 0}},
          {kToolEllipse, {0.5f * w, 0.5f * h, 0, 0.25f * w, 0.25f * h}}};
}

}  // namespace rendal
