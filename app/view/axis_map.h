// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_AXIS_MAP_H_
#define RENDAL_APP_VIEW_AXIS_MAP_H_

#include <algorithm>
#include <vector>

#include "app/view/view_state.h"

namespace rendal {

// The image columns (or rows) that a stretch of view columns (or rows) shows,
// computed once per picture. They never decrease along it.
class AxisMap {
 public:
  // View columns (rows) first .. first + count - 1.
  static AxisMap Columns(const ViewState& view, int first, int count) {
    return {view.zoom, view.offsetX, first, count,
            [&view](int u) { return view.ImageColumn(u); }};
  }
  static AxisMap Rows(const ViewState& view, int first, int count) {
    return {view.zoom, view.offsetY, first, count,
            [&view](int v) { return view.ImageRow(v); }};
  }

  int operator[](int position) const { return m_shown[position - m_first]; }

  // First view position that shows image position `wanted` or one behind it;
  // the end of the stretch when none does. Starts from the inverse of the
  // mapping and corrects its rounding against the table, so it is exact.
  int FirstAtLeast(int wanted) const {
    const int count = static_cast<int>(m_shown.size());
    const double guess = (wanted - 0.5) * m_zoom + m_offset - m_first;
    int i = static_cast<int>(std::clamp(guess, 0.0, 1.0 * count));
    while (i > 0 && m_shown[i - 1] >= wanted) --i;
    while (i < count && m_shown[i] < wanted) ++i;
    return m_first + i;
  }

  // Whether the stretch shows none of the image positions begin..end.
  bool Misses(int begin, int end) const {
    return m_shown.empty() || end < m_shown.front() || begin > m_shown.back();
  }

 private:
  template <typename ToImage>
  AxisMap(float zoom, float offset, int first, int count, ToImage to_image)
      : m_zoom(zoom),
        m_offset(offset),
        m_first(first),
        m_shown(std::max(count, 0)) {
    for (int i = 0; i < count; ++i) m_shown[i] = to_image(first + i);
  }

  double m_zoom;
  double m_offset;
  int m_first;
  std::vector<int> m_shown;
};

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_AXIS_MAP_H_
