// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_PLACEMENT_H_
#define RENDAL_APP_PLACEMENT_H_

#include <afxwin.h>

#include <algorithm>

namespace rendal {

// Where a window has to go so that all of it is inside the work area or, when
// it is larger, its title is: centring a dialog on a smaller screen would put
// the title out of reach.
inline CPoint PlaceForTitle(const CRect& window, const CRect& work) {
  const auto fit = [](LONG position, LONG size, LONG low, LONG high) {
    return static_cast<int>(std::max(low, std::min(position, high - size)));
  };
  return {fit(window.left, window.Width(), work.left, work.right),
          fit(window.top, window.Height(), work.top, work.bottom)};
}

// Whether an operator can drag the window back: enough of its title is inside
// the work area of the screen that is nearest.
inline bool IsTitleInReach(const CRect& window, const CRect& work,
                           int title_height) {
  constexpr LONG kGrip = 100;
  const LONG left = std::max(window.left, work.left);
  const LONG right = std::min(window.right, work.right);
  return right - left >= kGrip && window.top >= work.top &&
         window.top + title_height <= work.bottom;
}

}  // namespace rendal

#endif  // RENDAL_APP_PLACEMENT_H_
