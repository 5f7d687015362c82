// SPDX-License-Identifier: MIT
#include "app/view/highlight_painter.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "app/view/axis_map.h"

namespace rendal {
namespace {

const cv::Scalar kInnerColor(255, 255, 255);
const cv::Scalar kOuterColor(0, 0, 0);

// Rings of what lies beyond the view reach into it from this far.
constexpr int kMarginPx = 2 * kHighlightRingPx;

// The view pixels that show highlighted components, on a mask that is larger
// than the view by the margin on each side.
class HighlightMask {
 public:
  explicit HighlightMask(const ViewState& view)
      : m_columns(AxisMap::Columns(view, -kMarginPx, Extent(view.viewWidth))),
        m_rows(AxisMap::Rows(view, -kMarginPx, Extent(view.viewHeight))),
        m_mask(cv::Mat::zeros(Extent(view.viewHeight), Extent(view.viewWidth),
                              CV_8U)) {}

  void Add(const vexo::region& component) {
    bool is_seen = false;
    ForEachRun(component, [&](int32_t row, int32_t begin, int32_t end) {
      is_seen |= Mark(Shown(m_rows, row, row), Shown(m_columns, begin, end));
    });
    const int32_t* const box = component.bbox;
    if (is_seen || m_rows.Misses(box[0], box[2]) ||
        m_columns.Misses(box[1], box[3])) {
      return;
    }
    // It lies between what neighbouring view pixels show.
    const int v = Shown(m_rows, box[0], box[2]).start;
    const int u = Shown(m_columns, box[1], box[3]).start;
    Mark({v, v + 1}, {u, u + 1});
  }

  const cv::Mat& Mat() const { return m_mask; }

 private:
  static int Extent(int length) { return length + 2 * kMarginPx; }

  bool Mark(const cv::Range& down, const cv::Range& across) {
    if (down.empty() || across.empty()) return false;
    m_mask(down, across).setTo(255);
    return true;
  }

  // Places on the mask that show image positions begin..end.
  static cv::Range Shown(const AxisMap& map, int begin, int end) {
    return {map.FirstAtLeast(begin) + kMarginPx,
            map.FirstAtLeast(end + 1) + kMarginPx};
  }

  AxisMap m_columns;
  AxisMap m_rows;
  cv::Mat m_mask;
};

cv::Mat Grown(const cv::Mat& mask) {
  constexpr int kSize = 2 * kHighlightRingPx + 1;
  cv::Mat grown;
  cv::dilate(mask, grown,
             cv::getStructuringElement(cv::MORPH_RECT, {kSize, kSize}));
  return grown;
}

}  // namespace

void DrawHighlight(const ComponentSet& components, const ViewState& view,
                   cv::Mat& picture) {
  if (view.highlighted.empty() || components.size() == 0) return;
  HighlightMask mask(view);
  for (const int32_t number : view.highlighted) {
    const size_t i = static_cast<size_t>(number);
    if (number >= 0 && i < components.size()) mask.Add(components[i]);
  }
  const cv::Mat inner = Grown(mask.Mat());
  const cv::Mat outer = Grown(inner);
  const cv::Rect shown(kMarginPx, kMarginPx, picture.cols, picture.rows);
  picture.setTo(kOuterColor, (outer - inner)(shown));
  picture.setTo(kInnerColor, (inner - mask.Mat())(shown));
}

}  // namespace rendal
